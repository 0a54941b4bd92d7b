#include "kit/SysRadioButton.h"

SysRadioButton::SysRadioButton(QWidget* parent, const QString& text) : QRadioButton(text, parent) {
    setStyleSheet(QStringLiteral("\tQRadioButton {\t\tfont-family: '微软雅黑';\t\tcolor: #000;\t}"
                                 "\tQRadioButton:disabled {\t\tcolor: #c0c0c0;\t}"));
    setFontSize(18);
}

void SysRadioButton::setFontSize(int px) {
    setStyleSheet(styleSheet() + QString::asprintf("\tQRadioButton {\t\tfont-size: %dpx;\t}", px));
}

void SysRadioButton::setFontWeight(int weight) {
    setStyleSheet(styleSheet() +
                  QString::asprintf("\tQRadioButton {\t\tfont-weight: %d;\t}", weight));
}

void SysRadioButton::setTextColor(std::string color) {
    setStyleSheet(styleSheet() +
                  QString::asprintf("\tQRadioButton {\t\tcolor: %s;\t}", color.c_str()));
}
