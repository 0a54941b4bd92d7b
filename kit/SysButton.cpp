#include "kit/SysButton.h"

#include "kit/SysSheet.h"
#include "kit/SysStyle.h"

SysButton::SysButton(QWidget* parent, const QString& text) : QPushButton(parent) {
    SysSheet::set(
        this,
        QStringLiteral("\tQPushButton {\t\tfont-family: '微软雅黑';\t\tcolor: #fff;"
                       "\t\tborder: 1px solid transparent;\t\tpadding: .25em 1em;\t}"
                       "\tQPushButton:disabled {\t\tcolor: #fafafa;\t\tbackground-color: #c0c0c0;"
                       "\t\tborder-color: #c0c0c0;\t}"
                       "\tQPushButton QMenu {\t\tfont-family: '微软雅黑';\t}"
                       "\tQToolTip {\t\tborder-radius: .25rem;\t\tcolor: #FFF;\t}"));
    // Style sheets have no cursor property; the hand is set on the widget.
    setCursor(Qt::PointingHandCursor);
    setFontSize(18);
    setThemeColor("#409eff");
    setRadius(0.75f);
    setText(text);
}

void SysButton::setFontSize(int px) {
    SysSheet::append(this, QString::asprintf("\tQPushButton {\t\tfont-size: %dpx;\t}", px));
}

void SysButton::setFontWeight(int weight) {
    SysSheet::append(this, QString::asprintf("\tQPushButton {\t\tfont-weight: %d;\t}", weight));
}

void SysButton::setTextColor(std::string color) {
    SysSheet::append(this, QString::asprintf("\tQPushButton {\t\tcolor: %s;\t}", color.c_str()));
}

void SysButton::setRadius(float em) {
    SysSheet::append(this, QString::asprintf("\tQPushButton {\t\tborder-radius: %.2fem;\t}", em));
}

void SysButton::setCornerRadii(float topLeft, float topRight, float bottomLeft, float bottomRight) {
    SysSheet::append(this, QString::asprintf("\tQPushButton {\t\tborder-top-left-radius: %.2fem;"
                                             "\t\tborder-top-right-radius: %.2fem;"
                                             "\t\tborder-bottom-left-radius: %.2fem;"
                                             "\t\tborder-bottom-right-radius: %.2fem;\t}",
                                             topLeft, topRight, bottomLeft, bottomRight));
}

void SysButton::setBorderWidth(int px) {
    SysSheet::append(this, QString::asprintf("\tQPushButton {\t\tborder-width: %dpx;\t}", px));
}

void SysButton::setBorderWidths(int left, int top, int right, int bottom) {
    SysSheet::append(this, QString::asprintf("\tQPushButton {\t\tborder-left-width: %dpx;"
                                             "\t\tborder-top-width: %dpx;"
                                             "\t\tborder-right-width: %dpx;"
                                             "\t\tborder-bottom-width: %dpx;\t}",
                                             left, top, right, bottom));
}

void SysButton::setPadding(float horizontal, float vertical) {
    SysSheet::append(this, QString::asprintf("\tQPushButton {\t\tpadding: %.2fem %.2fem;\t}",
                                             vertical, horizontal));
}

void SysButton::setFlatColor(std::string color) {
    const char* c = color.c_str();
    SysSheet::append(this, QString::asprintf("\tQPushButton {\t\tbackground-color: %s;\t}"
                                             "\tQPushButton:hover {\t\tbackground-color: %s;\t}"
                                             "\tQPushButton:pressed {\t\tbackground-color: %s;\t}",
                                             c, c, c));
}

void SysButton::setDisabledBackgroundColor(std::string color) {
    SysSheet::append(this, QString::asprintf("\tQPushButton:disabled {\t\tbackground-color: "
                                             "%s;\t}",
                                             color.c_str()));
}

void SysButton::setDisabledTextColor(std::string color) {
    SysSheet::append(this,
                     QString::asprintf("\tQPushButton:disabled {\t\tcolor: %s;\t}", color.c_str()));
}

void SysButton::setIconOnly(const QIcon& icon, const QSize& size) {
    setIcon(icon);
    setIconSize(size);
    SysSheet::append(this,
                     QString::asprintf("QPushButton, QPushButton:hover, QPushButton:pressed{"
                                       "background: transparent;padding: 0px;border: none;}"));
}

void SysButton::setThemeColor(std::string color) {
    const std::string border = sysLighten(color, 0.75f);
    const std::string hover = sysLighten(color, 0.125f);
    const std::string pressed = sysLighten(color, 0.25f);
    SysSheet::append(
        this, QString::asprintf("\tQPushButton {\t\tbackground-color: %s;\t\tborder-color: %s;\t}"
                                "\tQPushButton:hover {\t\tbackground-color: %s;\t}"
                                "\tQPushButton:pressed {\t\tbackground-color: %s;\t}"
                                "\tQToolTip {\t\tcolor: #FFF;\t\tbackground-color: %s;"
                                "\t\tborder: 1px solid %s;\t}",
                                color.c_str(), border.c_str(), hover.c_str(), pressed.c_str(),
                                pressed.c_str(), pressed.c_str()));
}
