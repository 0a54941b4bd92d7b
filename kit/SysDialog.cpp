#include "kit/SysDialog.h"

#include "kit/SysSheet.h"
#include "kit/SysStyle.h"

SysDialog::SysDialog(QWidget* parent) : QDialog(parent) {
    setAttribute(Qt::WA_StyledBackground);
    SysSheet::set(this, QStringLiteral("\tQDialog {\t\tfont-family: '微软雅黑';\t\twidth: auto;"
                                       "\t\theight: auto;\t}"));
    setFontSize(18);
    setBackgroundColor("#FFF");
    setWindowFlags(Qt::Dialog | Qt::WindowMinMaxButtonsHint | Qt::WindowCloseButtonHint);
}

void SysDialog::setFontSize(int px) {
    SysSheet::append(this, QString::asprintf("\tQDialog {\t\tfont-size: %dpx;\t}", px));
}

void SysDialog::setBackgroundColor(std::string color) {
    SysSheet::append(this,
                     QString::asprintf("\tQDialog {\t\tbackground-color: %s;\t}", color.c_str()));
}

void SysDialog::setPadding(float em) {
    SysSheet::append(this, QString::asprintf("\tQDialog {\t\tpadding: %.2fem;\t}", em));
}

void SysDialog::resizeRelative(float ratio, QWidget* reference) {
    sysResizeRelative(this, reference, ratio);
}
