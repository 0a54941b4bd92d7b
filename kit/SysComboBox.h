#pragma once

#include <QComboBox>
#include <QList>
#include <QPersistentModelIndex>
#include <QStringList>

#include <string>

// Drop-down list of the kit. With a placeholder it becomes a menu of actions under a fixed
// caption: the caption is the hidden last item, and the box returns to it after every choice,
// so the page reads the chosen index from the activated signal.
class SysComboBox : public QComboBox {
    Q_OBJECT

public:
    explicit SysComboBox(QWidget* parent = nullptr, const QStringList& items = QStringList());

    // Texts of all items in order, the placeholder included.
    QStringList items() const;
    void setItems(const QStringList& items);
    // Hides the item from the popup list; it stays in the box.
    void hideItem(int row);
    // The popup is made when it first opens (or when view() is first asked for).
    void showPopup() override;

    // Shows `text` as a fixed caption on a box filled with the theme colour. A second call
    // renames the caption rather than adding another.
    void setPlaceholder(const QString& text);

    // Box, drop-down and items.
    void setFontSize(int px);
    // Box and items.
    void setFontWeight(int weight);
    void setItemPadding(float horizontal, float vertical);
    // Rounds the box; the popup and its last item keep square corners.
    void setRadius(float em);
    void setBorderWidth(int px);
    void setBorderColor(std::string color);
    void setMinWidth(float em);
    void setMaxWidth(float em);
    void setBackgroundColor(std::string color);
    void setTextColor(std::string color);
    // The line left of the drop-down and the arrow.
    void setArrowColor(std::string color);
    void setScrollBarColor(std::string color);
    // Border, arrow and popup in `color`, with its lighter shades for the drop-down line and
    // hovered items. A box with a placeholder is filled with the new colour as well.
    void setThemeColor(std::string color);

    std::string themeColor;
    bool hasPlaceholder = false;
    QString placeholderText;

private:
    // Items hidden before the popup was made.
    QList<QPersistentModelIndex> hiddenItems_;
    bool listInstalled_ = false;

protected:
    void changeEvent(QEvent* event) override;

private:
    bool hasPopup() const;
    // Puts the kit's list view into the popup, once.
    void installListView();
    void applyPlaceholderColors();
    void restorePlaceholder();
};

// A form row "<label>:" with a combo box holding `items`. Gives back the row widget, then the
// combo box.
QList<QWidget*> sysMakeComboRow(QString label, QStringList items, QWidget* parent);
