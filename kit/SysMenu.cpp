#include "kit/SysMenu.h"

#include "kit/SysSheet.h"

SysMenu::SysMenu(QWidget* parent) : QMenu(parent) {
    // Style sheets know no overflow property; setRadius rounds the end entries instead so
    // that they do not stick out of a rounded menu.
    SysSheet::set(
        this,
        QStringLiteral(
            "\tQMenu {\t\tfont-family: '微软雅黑';\t\tbackground-color: #fff;\t\tborder: none;\t}"
            "\tQMenu::item {\t\tcolor: #000;\t\tpadding: .25em .75em;\t}"
            "\tQMenu::item:selected {\t\tcolor: #fff;\t}"
            "\tQMenu::item:disabled {\t\tcolor: #999;\t}"));
    setThemeColor("#409eff");
    setFontSize(18);
    setItemPadding(0.75f, 0.25f);
}

void SysMenu::setFontSize(int px) {
    SysSheet::append(this, QString::asprintf("\tQMenu {\t\tfont-size: %dpx;\t}"
                                             "\tQMenu::item {\t\tfont-size: %dpx;\t}",
                                             px, px));
}

void SysMenu::setRadius(float em) {
    SysSheet::append(this, QString::asprintf("\tQMenu {\t\tborder-radius: %.2fem;\t}"
                                             "\tQMenu::item:first {"
                                             "\t\tborder-top-left-radius: %.2fem;"
                                             "\t\tborder-top-right-radius: %.2fem;\t}"
                                             "\tQMenu::item:last {"
                                             "\t\tborder-bottom-left-radius: %.2fem;"
                                             "\t\tborder-bottom-right-radius: %.2fem;\t}",
                                             em, em, em, em, em));
}

void SysMenu::setItemPadding(float horizontal, float vertical) {
    SysSheet::append(this, QString::asprintf("\tQMenu::item {\t\tpadding: %.2fem %.2fem;\t}",
                                             vertical, horizontal));
}

void SysMenu::setThemeColor(std::string color) {
    SysSheet::append(this, QString::asprintf("\tQMenu {\t\tborder: 1px solid %s;\t}"
                                             "\tQMenu::item:selected {"
                                             "\t\tbackground-color: %s;\t}",
                                             color.c_str(), color.c_str()));
}
