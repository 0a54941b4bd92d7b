#include "kit/SysCheckBox.h"

#include "kit/SysSheet.h"

#include <utility>

SysCheckBox::SysCheckBox(QWidget* parent, const QString& text) : QCheckBox(text, parent) {
    SysSheet::set(this,
                  QStringLiteral("\tQCheckBox {\t\tfont-family: '微软雅黑';\t\tcolor: #000;\t}"
                                 "\tQCheckBox:disabled {\t\tcolor: #c0c0c0;\t}"));
    setFontSize(18);
}

void SysCheckBox::setFontSize(int px) {
    SysSheet::append(this, QString::asprintf("\tQCheckBox {\t\tfont-size: %dpx;\t}", px));
}

void SysCheckBox::setFontWeight(int weight) {
    SysSheet::append(this, QString::asprintf("\tQCheckBox {\t\tfont-weight: %d;\t}", weight));
}

void SysCheckBox::setTextColor(std::string color) {
    SysSheet::append(this, QString::asprintf("\tQCheckBox {\t\tcolor: %s;\t}", color.c_str()));
}

void SysCheckBox::onChecked(std::function<void(bool)> cb) {
    connect(this, &QCheckBox::stateChanged, this,
            [this, cb = std::move(cb)](int) { cb(isChecked()); });
}
