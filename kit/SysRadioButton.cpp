#include "kit/SysRadioButton.h"

#include "kit/SysSheet.h"

SysRadioButton::SysRadioButton(QWidget* parent, const QString& text) : QRadioButton(text, parent) {
    SysSheet::set(this,
                  QStringLiteral("\tQRadioButton {\t\tfont-family: '微软雅黑';\t\tcolor: #000;\t}"
                                 "\tQRadioButton:disabled {\t\tcolor: #c0c0c0;\t}"));
    setFontSize(18);
}

void SysRadioButton::setFontSize(int px) {
    SysSheet::append(this, QString::asprintf("\tQRadioButton {\t\tfont-size: %dpx;\t}", px));
}

void SysRadioButton::setFontWeight(int weight) {
    SysSheet::append(this, QString::asprintf("\tQRadioButton {\t\tfont-weight: %d;\t}", weight));
}

void SysRadioButton::setTextColor(std::string color) {
    SysSheet::append(this, QString::asprintf("\tQRadioButton {\t\tcolor: %s;\t}", color.c_str()));
}
