#include "kit/SysTextBrowser.h"

#include "kit/SysSheet.h"
#include "kit/SysStyle.h"

SysTextBrowser::SysTextBrowser(QWidget* parent) : QTextBrowser(parent) {
    SysSheet::set(
        this,
        QStringLiteral(
            "\tQTextBrowser {\t\tfont-family: '微软雅黑';\t\tbackground-color: #fff;"
            "\t\tborder: 1px solid transparent;\t\tselection-color: #fff;\t\tborder-radius: .75em;"
            "\t\tpadding: .25em .5em;\t\tline-height: 1.25em;\t}"
            "\tQTextBrowser:read-only {\t\tcolor: lightgray;\t}"
            "\tQTextBrowser:disabled {\t\tcolor: #c0c0c0;\t\tbackground-color: #fafafa;"
            "\t\tborder-color: #c0c0c0;\t}"
            "\tQTextBrowser QMenu {\t\tfont-family: '微软雅黑';\t}"
            "\tQTextBrowser QScrollBar:vertical {\t\twidth: 8px;\t\tborder-radius: 4px;"
            "\t\tpadding: 1px;\t}"
            "\tQTextBrowser QScrollBar:horizontal {\t\theight: 8px;\t\tborder-radius: 4px;"
            "\t\tpadding: 1px;\t}"
            "\tQTextBrowser QScrollBar::handle {\t\tborder-radius: 2px;\t}"
            "\tQTextBrowser QScrollBar::handle:vertical {\t\tmin-height: 7px;\t}"
            "\tQTextBrowser QScrollBar::handle:horizontal {\t\tmin-width: 7px;\t}"
            "\tQTextBrowser QScrollBar::add-line, QTextBrowser QScrollBar::sub-line {"
            "\t\twidth: 0px;\t\theight: 0px;\t\tborder: none;\t\tbackground: transparent;\t}"
            "\tQTextBrowser QScrollBar::add-page, QTextBrowser QScrollBar::sub-page {"
            "\t\twidth: 0px;\t\theight: 0px;\t\tbackground: transparent;\t}"));
    // Style sheets have no word-break; long words such as hex dumps wrap anywhere instead.
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    setThemeColor("#409eff");
    setScrollBarColor("#ddd");
    setFontSize(18);
    setRadius(0.75f);
}

void SysTextBrowser::setFontSize(int px) {
    SysSheet::append(this, QString::asprintf("\tQTextBrowser {\t\tfont-size: %dpx;\t}", px));
}

void SysTextBrowser::setTextColor(std::string color) {
    SysSheet::append(this, QString::asprintf("\tQTextBrowser {\t\tcolor: %s;\t}", color.c_str()));
}

void SysTextBrowser::setRadius(float em) {
    SysSheet::append(this, QString::asprintf("\tQTextBrowser {\t\tborder-radius: %.2fem;\t}", em));
}

void SysTextBrowser::setFocusColors(std::string border, std::string focusBorder) {
    SysSheet::append(this, QString::asprintf("\tQTextBrowser {\t\tborder-color: %s;\t}"
                                             "\tQTextBrowser:focus {\t\tborder-color: %s;\t}",
                                             border.c_str(), focusBorder.c_str()));
}

void SysTextBrowser::setBackgroundColor(std::string color) {
    SysSheet::append(
        this, QString::asprintf("\tQTextBrowser {\t\tbackground-color: %s;\t}", color.c_str()));
}

void SysTextBrowser::setScrollBarColor(std::string color) {
    SysSheet::append(this, sysScrollBarRules("QTextBrowser", color));
}

void SysTextBrowser::setThemeColor(std::string color) {
    const char* c = color.c_str();
    SysSheet::append(this, QString::asprintf("\tQTextBrowser {\t\tborder-color: %s;"
                                             "\t\tselection-background-color: %s;\t}"
                                             "\tQTextBrowser:focus {\t\tborder-color: %s;\t}"
                                             "\tQTextBrowser QMenu {\t\tborder: 1px solid %s;\t}"
                                             "\tQTextBrowser QMenu::item:selected {\t\tcolor: #fff;"
                                             "\t\tbackground-color: %s;\t}",
                                             c, c, c, c, c));
}
