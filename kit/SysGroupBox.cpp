#include "kit/SysGroupBox.h"

#include "kit/SysSheet.h"
#include "kit/SysStyle.h"

SysGroupBox::SysGroupBox(QWidget* parent, const QString& title)
    : QGroupBox(title.trimmed(), parent) {
    SysSheet::set(this,
                  QStringLiteral("\tQGroupBox {\t\tfont-family: '微软雅黑';\t\tborder-width: 1px;"
                                 "\t\tborder-style: solid;\t\tmargin-top: .5em;\t}"
                                 "\tQGroupBox::title {\t\ttop: -.5em;\t\tleft: 1em;"
                                 "\t\tmargin-top: 0;\t\tpadding: 0px;\t\tcolor: #000;\t}"));
    setBorderColor("#409eff");
    setFontSize(18);
    setBackgroundColor("transparent");
    setRadius(0.5);
    if (this->title().isEmpty())
        SysSheet::append(this, QStringLiteral("\tQGroupBox {\t\tmargin-top: 0px;\t}"));
}

void SysGroupBox::setFontSize(int px) {
    SysSheet::append(this, QString::asprintf("\tQGroupBox {\t\tfont-size: %dpx;\t}"
                                             "\tQGroupBox::title {\t\tfont-size: %dpx;\t}",
                                             px, px));
}

void SysGroupBox::setFontWeight(int weight) {
    SysSheet::append(this, QString::asprintf("\tQGroupBox {\t\tfont-weight: %d;\t}"
                                             "\tQGroupBox::title {\t\tfont-weight: %d;\t}",
                                             weight, weight));
}

void SysGroupBox::setTitleFontWeight(int weight) {
    SysSheet::append(this,
                     QString::asprintf("\tQGroupBox::title {\t\tfont-weight: %d;\t}", weight));
}

void SysGroupBox::setTitleColor(std::string color) {
    SysSheet::append(this,
                     QString::asprintf("\tQGroupBox::title {\t\tcolor: %s;\t}", color.c_str()));
}

void SysGroupBox::setTitleBackgroundColor(std::string color) {
    SysSheet::append(
        this, QString::asprintf("\tQGroupBox::title {\t\tbackground-color: %s;\t}", color.c_str()));
}

void SysGroupBox::setTitlePadding(float em) {
    SysSheet::append(this, QString::asprintf("\tQGroupBox::title {\t\tpadding: %.2fem;\t}", em));
}

void SysGroupBox::setTitleRadius(float em) {
    SysSheet::append(this,
                     QString::asprintf("\tQGroupBox::title {\t\tborder-radius: %.2fem;\t}", em));
}

void SysGroupBox::setTitleOffset(float em) {
    SysSheet::append(this, QString::asprintf("\tQGroupBox {\t\tmargin-top: %.2fem;\t}"
                                             "\tQGroupBox::title {\t\ttop: %.2fem;\t}",
                                             em, -em));
}

void SysGroupBox::setRadius(float em) {
    SysSheet::append(this, QString::asprintf("\tQGroupBox {\t\tborder-radius: %.2fem;\t}", em));
}

void SysGroupBox::setCornerRadii(float topLeft, float topRight, float bottomLeft,
                                 float bottomRight) {
    SysSheet::append(this, QString::asprintf("\tQGroupBox {\t\tborder-top-left-radius: %.2fem;"
                                             "\t\tborder-top-right-radius: %.2fem;"
                                             "\t\tborder-bottom-left-radius: %.2fem;"
                                             "\t\tborder-bottom-right-radius: %.2fem;\t}",
                                             topLeft, topRight, bottomLeft, bottomRight));
}

void SysGroupBox::setBackgroundColor(std::string color) {
    SysSheet::append(this,
                     QString::asprintf("\tQGroupBox {\t\tbackground-color: %s;\t}", color.c_str()));
}

void SysGroupBox::setBorderColor(std::string color) {
    SysSheet::append(this, QString::asprintf("\tQGroupBox {\t\tborder-color: %s;\t}",
                                             sysLighten(color, 0.75f).c_str()));
}

void SysGroupBox::setThemeColor(std::string color) {
    setBorderColor(color);
}

void SysGroupBox::setPadding(float em) {
    SysSheet::append(this, QString::asprintf("\tQGroupBox {\t\tpadding: %.2fem;\t}", em));
}

void SysGroupBox::setBorderWidth(int px) {
    SysSheet::append(this, QString::asprintf("\tQGroupBox {\t\tborder-width: %dpx;\t}", px));
}
