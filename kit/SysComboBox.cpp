#include "kit/SysComboBox.h"

#include "kit/SysLabel.h"
#include "kit/SysSheet.h"
#include "kit/SysStyle.h"
#include "kit/SysWidget.h"

#include <QListView>
#include <private/qcombobox_p.h>

SysComboBox::SysComboBox(QWidget* parent, const QStringList& items) : QComboBox(parent) {
    SysSheet::set(
        this,
        QStringLiteral(
            "\tQComboBox {\t\tfont-family: '微软雅黑';\t\tborder: 1px solid transparent;"
            "\t\tpadding: .125em .5em;\t\tmin-width: 4em;\t\tmin-height: 1em;\t}"
            "\tQComboBox:on {\t\tborder-bottom: none;\t\tborder-bottom-left-radius: 0px;"
            "\t\tborder-bottom-right-radius: 0px;\t}"
            "\tQComboBox:disabled {\t\tcolor: #c0c0c0;\t\tbackground-color: #fafafa;"
            "\t\tborder-color: #c0c0c0;\t}"
            "\tQComboBox::drop-down {\t\tsubcontrol-origin: padding;"
            "\t\tsubcontrol-position: top right;\t\twidth: 2em;"
            "\t\tborder-left: 1px solid #f5f5f5;\t}"
            "\tQComboBox::down-arrow {\t\twidth: 0px;\t\theight: 0px;"
            "\t\tborder-left: 6px solid rgba(255, 255, 255, .01);"
            "\t\tborder-right: 6px solid rgba(255, 255, 255, .01);\t\tborder-top: 8px solid;\t}"
            "\tQComboBox::down-arrow:on {\t\tborder-top: none;\t\tborder-bottom: 8px solid;\t}"
            "\tQComboBox QAbstractItemView {\t\tfont-family: '微软雅黑';\t\toutline: 0px;\t}"
            "\tQComboBox QAbstractItemView::item {\t\tborder-bottom: 1px solid #f5f5f5;\t}"
            "\tQComboBox QAbstractItemView::item:last {\t\tborder-bottom: none;\t}"
            "\tQComboBox QAbstractItemView::item:hover {\t\tfont-weight: bold;\t}"
            "\tQComboBox QMenu {\t\tfont-family: '微软雅黑';\t}"
            "\tQComboBox QScrollBar:vertical {\t\twidth: 8px;\t\tborder-radius: 4px;"
            "\t\tpadding: 1px;\t}"
            "\tQComboBox QScrollBar:horizontal {\t\theight: 8px;\t\tborder-radius: 4px;"
            "\t\tpadding: 1px;\t}"
            "\tQComboBox QScrollBar::handle {\t\tborder-radius: 2px;\t}"
            "\tQComboBox QScrollBar::handle:vertical {\t\tmin-height: 7px;\t}"
            "\tQComboBox QScrollBar::handle:horizontal {\t\tmin-width: 7px;\t}"
            "\tQComboBox QScrollBar::add-line, QComboBox QScrollBar::sub-line {\t\twidth: 0px;"
            "\t\theight: 0px;\t\tborder: none;\t\tbackground: transparent;\t}"
            "\tQComboBox QScrollBar::add-page, QComboBox QScrollBar::sub-page {\t\twidth: 0px;"
            "\t\theight: 0px;\t\tbackground: transparent;\t}"));
    setScrollBarColor("#ddd");
    setThemeColor("#409eff");
    setFontSize(18);
    setItemPadding(0.375f, 0.25f);
    setRadius(0.625f);
    addItems(items);
    connect(this, QOverload<int>::of(&QComboBox::activated), this,
            &SysComboBox::restorePlaceholder);
}

QStringList SysComboBox::items() const {
    QStringList texts;
    for (int i = 0; i < count(); ++i)
        texts << itemText(i);
    return texts;
}

void SysComboBox::setItems(const QStringList& items) {
    clear();
    addItems(items);
}

void SysComboBox::hideItem(int row) {
    if (!hasPopup()) {
        hiddenItems_.append(QPersistentModelIndex(model()->index(row, modelColumn())));
        return;
    }
    if (auto* list = qobject_cast<QListView*>(view()))
        list->setRowHidden(row, true);
}

bool SysComboBox::hasPopup() const {
    // The popup is a child of the box and holds its list.
    return findChild<QAbstractItemView*>() != nullptr;
}

void SysComboBox::showPopup() {
    installListView();
    QComboBox::showPopup();
}

void SysComboBox::installListView() {
    if (listInstalled_)
        return;
    listInstalled_ = true;
    // Rows hidden on a list that Qt made before this one stay hidden.
    QList<int> hidden;
    if (hasPopup()) {
        if (auto* earlier = qobject_cast<QListView*>(view()))
            for (int row = 0; row < count(); ++row)
                if (earlier->isRowHidden(row))
                    hidden << row;
    }
    for (const QPersistentModelIndex& item : qAsConst(hiddenItems_))
        if (item.isValid())
            hidden << item.row();
    hiddenItems_.clear();
    // The default popup of some styles draws itself and ignores the sheet; a list view obeys
    // it.
    auto* list = new QListView;
    setView(list);
    for (int row : qAsConst(hidden))
        list->setRowHidden(row, true);
}

// QComboBoxPrivate's type information is not exported, so the sanitizer's dynamic type check
// cannot be linked here; the cast is to the box's own private part.
__attribute__((no_sanitize("vptr"))) void SysComboBox::changeEvent(QEvent* event) {
    // Before the popup exists, a new style or font only changes the box's size. QComboBox
    // would make the popup here to restyle it, and most boxes are never opened.
    const bool styleOrFont =
        event->type() == QEvent::StyleChange || event->type() == QEvent::FontChange;
    if (!styleOrFont || hasPopup()) {
        QComboBox::changeEvent(event);
        return;
    }
    auto* d = static_cast<QComboBoxPrivate*>(QWidgetPrivate::get(this));
    d->sizeHint = QSize();
    d->minimumSizeHint = QSize();
    if (event->type() == QEvent::StyleChange)
        d->setLayoutItemMargins(QStyle::SE_ComboBoxLayoutItem);
    QWidget::changeEvent(event);
}

void SysComboBox::setPlaceholder(const QString& text) {
    if (!hasPlaceholder) {
        hasPlaceholder = true;
        addItem(text);
    } else {
        setItemText(count() - 1, text);
    }
    placeholderText = text;
    applyPlaceholderColors();
    hideItem(count() - 1);
    setCurrentIndex(count() - 1);
}

void SysComboBox::applyPlaceholderColors() {
    setBorderColor(themeColor);
    setBackgroundColor(themeColor);
    setTextColor("#FFF");
    setArrowColor("#FFF");
}

void SysComboBox::restorePlaceholder() {
    if (hasPlaceholder)
        setCurrentIndex(count() - 1);
}

void SysComboBox::setFontSize(int px) {
    SysSheet::append(
        this, QString::asprintf("\tQComboBox {\t\tfont-size: %dpx;\t}"
                                "\tQComboBox::drop-down {\t\tfont-size: %dpx;\t}"
                                "\tQComboBox QAbstractItemView::item {\t\tfont-size: %dpx;\t}",
                                px, px, px));
}

void SysComboBox::setFontWeight(int weight) {
    SysSheet::append(
        this, QString::asprintf("\tQComboBox {\t\tfont-weight: %d;\t}"
                                "\tQComboBox QAbstractItemView::item {\t\tfont-weight: %d;\t}",
                                weight, weight));
}

void SysComboBox::setItemPadding(float horizontal, float vertical) {
    SysSheet::append(this, QString::asprintf("\tQComboBox QAbstractItemView::item {"
                                             "\t\tpadding: %.2fem %.2fem;\t}",
                                             vertical, horizontal));
}

void SysComboBox::setRadius(float em) {
    SysSheet::append(this,
                     QString::asprintf("\tQComboBox {\t\tborder-radius: %.2fem;\t}"
                                       "\tQComboBox QAbstractItemView {\t\tborder-radius: 0px;\t}"
                                       "\tQComboBox QAbstractItemView::item:last {"
                                       "\t\tborder-radius: 0px;\t}",
                                       em));
}

void SysComboBox::setBorderWidth(int px) {
    SysSheet::append(this, QString::asprintf("\tQComboBox {\t\tborder-width: %dpx;\t}", px));
}

void SysComboBox::setBorderColor(std::string color) {
    SysSheet::append(this,
                     QString::asprintf("\tQComboBox {\t\tborder-color: %s;\t}", color.c_str()));
}

void SysComboBox::setMinWidth(float em) {
    SysSheet::append(this, QString::asprintf("\tQComboBox {\t\tmin-width: %.2fem;\t}", em));
}

void SysComboBox::setMaxWidth(float em) {
    SysSheet::append(this, QString::asprintf("\tQComboBox {\t\tmax-width: %.2fem;\t}", em));
}

void SysComboBox::setBackgroundColor(std::string color) {
    SysSheet::append(this,
                     QString::asprintf("\tQComboBox {\t\tbackground-color: %s;\t}", color.c_str()));
}

void SysComboBox::setTextColor(std::string color) {
    SysSheet::append(this, QString::asprintf("\tQComboBox {\t\tcolor: %s;\t}", color.c_str()));
}

void SysComboBox::setArrowColor(std::string color) {
    const char* c = color.c_str();
    SysSheet::append(this, QString::asprintf("\tQComboBox::drop-down {\t\tborder-left-color: %s;\t}"
                                             "\tQComboBox::down-arrow {\t\tborder-top-color: %s;"
                                             "\t\tborder-bottom-color: %s;\t}",
                                             c, c, c));
}

void SysComboBox::setScrollBarColor(std::string color) {
    SysSheet::append(this, sysScrollBarRules("QComboBox", color));
}

void SysComboBox::setThemeColor(std::string color) {
    const char* c = color.c_str();
    const std::string dropLine = sysLighten(color, 0.25f);
    const std::string hover = sysLighten(color, 0.5f);
    SysSheet::append(
        this, QString::asprintf("\tQComboBox {\t\tborder-color: %s;\t}"
                                "\tQComboBox::drop-down {\t\tborder-left-color: %s;\t}"
                                "\tQComboBox::down-arrow {\t\tborder-top-color: %s;"
                                "\t\tborder-bottom-color: %s;\t}"
                                "\tQComboBox QAbstractItemView {\t\tborder-left: 1px solid %s;"
                                "\t\tborder-right: 1px solid %s;"
                                "\t\tborder-bottom: 1px solid %s;\t}"
                                "\tQComboBox QAbstractItemView::item:hover {"
                                "\t\tbackground-color: %s;\t}"
                                "\tQComboBox QAbstractItemView::item:selected {"
                                "\t\tbackground-color: %s;\t}",
                                c, dropLine.c_str(), c, c, c, c, c, hover.c_str(), c));
    themeColor = color;
    if (hasPlaceholder)
        applyPlaceholderColors();
}

QList<QWidget*> sysMakeComboRow(QString label, QStringList items, QWidget* parent) {
    auto* combo = new SysComboBox(parent, items);
    SysWidget* row = sysMakeWidgetRow(label, combo, parent, Qt::AlignVCenter);
    return {row, combo};
}
