#include "kit/SysTextEdit.h"

#include "kit/SysSheet.h"
#include "kit/SysStyle.h"

SysTextEdit::SysTextEdit(QWidget* parent) : QTextEdit(parent) {
    SysSheet::set(
        this,
        QStringLiteral(
            "\tQTextEdit {\t\tfont-family: '微软雅黑';\t\tbackground-color: #fff;"
            "\t\tborder: 1px solid transparent;\t\tselection-color: #fff;\t\tborder-radius: .75em;"
            "\t\tpadding: .25em .5em;\t\tmin-width: 10.5em;\t\tmin-height: 3em;"
            "\t\tline-height: 1.25em;\t}"
            "\tQTextEdit:read-only {\t\tcolor: lightgray;\t}"
            "\tQTextEdit:disabled {\t\tcolor: #c0c0c0;\t\tbackground-color: #fafafa;"
            "\t\tborder-color: #c0c0c0;\t}"
            "\tQTextEdit QMenu {\t\tfont-family: '微软雅黑';\t}"
            "\tQTextEdit QScrollBar:vertical {\t\twidth: 8px;\t\tborder-radius: 4px;"
            "\t\tpadding: 1px;\t}"
            "\tQTextEdit QScrollBar:horizontal {\t\theight: 8px;\t\tborder-radius: 4px;"
            "\t\tpadding: 1px;\t}"
            "\tQTextEdit QScrollBar::handle {\t\tborder-radius: 2px;\t}"
            "\tQTextEdit QScrollBar::handle:vertical {\t\tmin-height: 7px;\t}"
            "\tQTextEdit QScrollBar::handle:horizontal {\t\tmin-width: 7px;\t}"
            "\tQTextEdit QScrollBar::add-line, QTextEdit QScrollBar::sub-line {\t\twidth: 0px;"
            "\t\theight: 0px;\t\tborder: none;\t\tbackground: transparent;\t}"
            "\tQTextEdit QScrollBar::add-page, QTextEdit QScrollBar::sub-page {\t\twidth: 0px;"
            "\t\theight: 0px;\t\tbackground: transparent;\t}"));
    // Style sheets have no word-break; long words such as hex dumps wrap anywhere instead.
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    setThemeColor("#409eff");
    setScrollBarColor("#ddd");
    setFontSize(18);
    setRadius(0.75f);
    installEventFilter(&filter);
}

SysEventFilter* SysTextEdit::returnFilter() {
    return &filter;
}

void SysTextEdit::setFontSize(int px) {
    SysSheet::append(this, QString::asprintf("\tQTextEdit {\t\tfont-size: %dpx;\t}", px));
}

void SysTextEdit::setFontWeight(int weight) {
    SysSheet::append(this, QString::asprintf("\tQTextEdit {\t\tfont-weight: %d;\t}", weight));
}

void SysTextEdit::setTextColor(std::string color) {
    SysSheet::append(this, QString::asprintf("\tQTextEdit {\t\tcolor: %s;\t}", color.c_str()));
}

void SysTextEdit::setDisabledTextColor(std::string color) {
    SysSheet::append(this,
                     QString::asprintf("\tQTextEdit:disabled {\t\tcolor: %s;\t}", color.c_str()));
}

void SysTextEdit::setRadius(float em) {
    SysSheet::append(this, QString::asprintf("\tQTextEdit {\t\tborder-radius: %.2fem;\t}", em));
}

void SysTextEdit::setCornerRadii(float topLeft, float topRight, float bottomLeft,
                                 float bottomRight) {
    SysSheet::append(this, QString::asprintf("\tQTextEdit {\t\tborder-top-left-radius: %.2fem;"
                                             "\t\tborder-top-right-radius: %.2fem;"
                                             "\t\tborder-bottom-left-radius: %.2fem;"
                                             "\t\tborder-bottom-right-radius: %.2fem;\t}",
                                             topLeft, topRight, bottomLeft, bottomRight));
}

void SysTextEdit::setBorderWidth(int px) {
    SysSheet::append(this, QString::asprintf("\tQTextEdit {\t\tborder-width: %dpx;\t}", px));
}

void SysTextEdit::setBorderWidths(int left, int top, int right, int bottom) {
    SysSheet::append(this, QString::asprintf("\tQTextEdit {\t\tborder-left-width: %dpx;"
                                             "\t\tborder-top-width: %dpx;"
                                             "\t\tborder-right-width: %dpx;"
                                             "\t\tborder-bottom-width: %dpx;\t}",
                                             left, top, right, bottom));
}

void SysTextEdit::setFocusColors(std::string border, std::string focusBorder) {
    SysSheet::append(this, QString::asprintf("\tQTextEdit {\t\tborder-color: %s;\t}"
                                             "\tQTextEdit:focus {\t\tborder-color: %s;\t}",
                                             border.c_str(), focusBorder.c_str()));
}

void SysTextEdit::setMaxWidth(int em) {
    SysSheet::append(this, QString::asprintf("\tQTextEdit {\t\tmax-width: %dem;\t}", em));
}

void SysTextEdit::setSelectionColor(std::string color) {
    SysSheet::append(this, QString::asprintf("\tQTextEdit {\t\tselection-background-color: "
                                             "%s;\t}",
                                             color.c_str()));
}

void SysTextEdit::setBackgroundColor(std::string color) {
    SysSheet::append(this,
                     QString::asprintf("\tQTextEdit {\t\tbackground-color: %s;\t}", color.c_str()));
}

void SysTextEdit::setDisabledBackgroundColor(std::string color) {
    SysSheet::append(this, QString::asprintf("\tQTextEdit:disabled {\t\tbackground-color: "
                                             "%s;\t}",
                                             color.c_str()));
}

void SysTextEdit::setScrollBarColor(std::string color) {
    SysSheet::append(this, sysScrollBarRules("QTextEdit", color));
}

void SysTextEdit::setThemeColor(std::string color) {
    const char* c = color.c_str();
    SysSheet::append(this, QString::asprintf("\tQTextEdit {\t\tborder-color: %s;"
                                             "\t\tselection-background-color: %s;\t}"
                                             "\tQTextEdit:focus {\t\tborder-color: %s;\t}"
                                             "\tQTextEdit QMenu {\t\tborder: 1px solid %s;\t}"
                                             "\tQTextEdit QMenu::item:selected {\t\tcolor: #fff;"
                                             "\t\tbackground-color: %s;\t}",
                                             c, c, c, c, c));
}
