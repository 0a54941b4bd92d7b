#include "kit/SysList.h"

#include "kit/SysSheet.h"
#include "kit/SysStyle.h"

SysList::SysList(QWidget* parent) : QListWidget(parent) {
    SysSheet::set(
        this,
        QStringLiteral(
            "\tQListWidget {\t\tfont-family: '微软雅黑';\t\tbackground-color: #fff;"
            "\t\toutline: 0px;\t\tborder: 1px solid transparent;\t\tborder-radius: .25em;\t}"
            "\tQListWidget:disabled {\t\tcolor: #c0c0c0;\t\tbackground-color: #fafafa;"
            "\t\tborder-color: #c0c0c0;\t}"
            "\tQListWidget::item {\t\ttext-align: center;\t\tborder-radius: 0px;"
            "\t\tbackground-color: transparent;\t\tborder-bottom: 1px solid #f0f0f0;\t}"
            "\tQListWidget QMenu {\t\tfont-family: '微软雅黑';\t}"
            "\tQListWidget QScrollBar:vertical {\t\twidth: 8px;\t\tborder-radius: 4px;"
            "\t\tpadding: 1px;\t}"
            "\tQListWidget QScrollBar:horizontal {\t\theight: 8px;\t\tborder-radius: 4px;"
            "\t\tpadding: 1px;\t}"
            "\tQListWidget QScrollBar::handle {\t\tborder-radius: 2px;\t}"
            "\tQListWidget QScrollBar::handle:vertical {\t\tmin-height: 7px;\t}"
            "\tQListWidget QScrollBar::handle:horizontal {\t\tmin-width: 7px;\t}"
            "\tQListWidget QScrollBar::add-line, QListWidget QScrollBar::sub-line {\t\twidth: 0px;"
            "\t\theight: 0px;\t\tborder: none;\t\tbackground: transparent;\t}"
            "\tQListWidget QScrollBar::add-page, QListWidget QScrollBar::sub-page {\t\twidth: 0px;"
            "\t\theight: 0px;\t\tbackground: transparent;\t}"));
    setFontSize(18);
    setItemTextColor("#000");
    setSelectedTextColor("#fff");
    setThemeColor("#409eff");
    setScrollBarColor("#ddd");
    setItemBorderStyle("solid");
    setItemBorderColor("#f0f0f0");
}

void SysList::setFontSize(int px) {
    SysSheet::append(this, QString::asprintf("\tQListWidget {\t\tfont-size: %dpx;\t}"
                                             "\tQListWidget::item {\t\tfont-size: %dpx;\t}",
                                             px, px));
}

void SysList::setFontWeight(int weight) {
    SysSheet::append(this, QString::asprintf("\tQListWidget {\t\tfont-weight: %d;\t}", weight));
}

void SysList::setItemTextColor(std::string color) {
    SysSheet::append(this,
                     QString::asprintf("\tQListWidget::item {\t\tcolor: %s;\t}", color.c_str()));
}

void SysList::setBackgroundColor(std::string color) {
    SysSheet::append(
        this, QString::asprintf("\tQListWidget {\t\tbackground-color: %s;\t}", color.c_str()));
}

void SysList::setSelectedTextColor(std::string color) {
    SysSheet::append(
        this, QString::asprintf("\tQListWidget::item:selected {\t\tcolor: %s;\t}", color.c_str()));
}

void SysList::setItemPadding(float horizontal, float vertical) {
    SysSheet::append(this, QString::asprintf("\tQListWidget::item {\t\tpadding: %.2fem %.2fem;\t}",
                                             vertical, horizontal));
}

void SysList::setItemRadius(float em) {
    SysSheet::append(this,
                     QString::asprintf("\tQListWidget::item {\t\tborder-radius: %.2fem;\t}", em));
}

void SysList::setItemBorderStyle(std::string style) {
    SysSheet::append(this, QString::asprintf("\tQListWidget::item {"
                                             "\t\tborder-bottom-style: %s;\t}",
                                             style.c_str()));
}

void SysList::setItemBorderColor(std::string color) {
    SysSheet::append(this, QString::asprintf("\tQListWidget::item {"
                                             "\t\tborder-bottom-color: %s;\t}",
                                             color.c_str()));
}

void SysList::setNoBorder() {
    SysSheet::append(this, QString::asprintf("\tQListWidget {\t\tborder: none;\t}"));
}

void SysList::setScrollBarColor(std::string color) {
    SysSheet::append(this, sysScrollBarRules("QListWidget", color));
}

void SysList::setThemeColor(std::string color) {
    const char* c = color.c_str();
    const std::string hover = sysLighten(color, 0.25f);
    SysSheet::append(this,
                     QString::asprintf("\tQListWidget::item:hover {\t\tbackground-color: %s;\t}"
                                       "\tQListWidget::item:selected {\t\tbackground-color: %s;\t}"
                                       "\tQListWidget::item:selected:!active {"
                                       "\t\tbackground-color: %s;\t}"
                                       "\tQListWidget {\t\tborder-color: %s;\t}",
                                       hover.c_str(), c, c, c));
}
