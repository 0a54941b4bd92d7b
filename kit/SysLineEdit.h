#pragma once

#include <QLineEdit>
#include <QList>

#include <string>

// One-line text field of the kit: white, rounded, with a border and selection in the theme
// colour.
class SysLineEdit : public QLineEdit {
    Q_OBJECT

public:
    explicit SysLineEdit(QWidget* parent = nullptr);

    void setFontSize(int px);
    void setFontWeight(int weight);
    void setTextColor(std::string color);
    // Left, right, or centred (any of the centring flags); other values change nothing.
    void setTextAlign(Qt::Alignment align);
    void setRadius(float em);
    void setCornerRadii(float topLeft, float topRight, float bottomLeft, float bottomRight);
    void setBorderWidth(int px);
    void setBorderWidths(int left, int top, int right, int bottom);
    void setBackgroundColor(std::string color);
    void setMinWidth(float em);
    void setMaxWidth(float em);
    // Minimum and maximum width both `em`.
    void setFixedWidthEm(float em);
    void setFullWidth();
    void setSelectionColor(std::string color);
    // Border, focus border, selection and the context menu in `color`.
    void setThemeColor(std::string color);

    // The shortest text that the page wants; the field itself does not enforce it, the
    // longest is QLineEdit::maxLength.
    void setMinLength(int length);

    int minLength = 0;
};

// A form row "<label>:" with a line edit taking `minLength` to `maxLength` characters.
// Gives back the row widget, then the line edit.
QList<QWidget*> sysMakeLineRow(QString label, int minLength, int maxLength, QWidget* parent);
