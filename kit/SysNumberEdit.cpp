#include "kit/SysNumberEdit.h"

#include "kit/SysLabel.h"
#include "kit/SysSheet.h"
#include "kit/SysStyle.h"
#include "kit/SysWidget.h"

SysNumberEdit::SysNumberEdit(QWidget* parent, int value) : QSpinBox(parent) {
    SysSheet::set(
        this,
        QStringLiteral(
            "\tQSpinBox {\t\tfont-family: '微软雅黑';\t\tborder: 1px solid transparent;"
            "\t\tselection-color: #fff;\t\tpadding: .125em .5em;\t\tmin-width: 4em;"
            "\t\tmin-height: 1em;\t\tlineedit-password-character: 9679;\t}"
            "\tQSpinBox:read-only {\t\tcolor: lightgray;\t}"
            "\tQSpinBox:disabled {\t\tcolor: #c0c0c0;\t\tbackground-color: #fafafa;"
            "\t\tborder-color: #c0c0c0;\t}"
            "\tQSpinBox QMenu {\t\tfont-family: '微软雅黑';\t}"
            "\tQSpinBox::up-button, QSpinBox::down-button {\t\tbackground: transparent;"
            "\t\tborder: none;\t}"
            "\tQSpinBox::up-arrow {\t\twidth: 0px;\t\theight: 0px;"
            "\t\tborder-left: 6px solid rgba(255, 255, 255, .01);"
            "\t\tborder-right: 6px solid rgba(255, 255, 255, .01);\t\tborder-bottom: 8px solid;\t}"
            "\tQSpinBox::down-arrow {\t\twidth: 0px;\t\theight: 0px;"
            "\t\tborder-left: 6px solid rgba(255, 255, 255, .01);"
            "\t\tborder-right: 6px solid rgba(255, 255, 255, .01);\t\tborder-top: 8px solid;\t}"));
    setThemeColor("#409eff");
    setFontSize(18);
    setRadius(0.625f);
    setBorderWidth(1);
    setValue(value);
    connect(this, QOverload<int>::of(&QSpinBox::valueChanged), this,
            &SysNumberEdit::valueChangedPriv);
}

void SysNumberEdit::setMinWidth(float em) {
    SysSheet::append(this, QString::asprintf("\tQSpinBox {\t\tmin-width: %.2fem;\t}", em));
}

void SysNumberEdit::setMaxWidth(float em) {
    SysSheet::append(this, QString::asprintf("\tQSpinBox {\t\tmax-width: %.2fem;\t}", em));
}

void SysNumberEdit::setRadius(float em) {
    SysSheet::append(this, QString::asprintf("\tQSpinBox {\t\tborder-radius: %.2fem;\t}", em));
}

void SysNumberEdit::setBorderWidth(int px) {
    SysSheet::append(this, QString::asprintf("\tQSpinBox {\t\tborder-width: %dpx;\t}", px));
}

void SysNumberEdit::setFontSize(int px) {
    SysSheet::append(this, QString::asprintf("\tQSpinBox {\t\tfont-size: %dpx;\t}", px));
}

void SysNumberEdit::setThemeColor(std::string color) {
    const char* c = color.c_str();
    const std::string hover = sysDarken(color, 0.25f);
    const char* h = hover.c_str();
    SysSheet::append(this,
                     QString::asprintf("\tQSpinBox {\t\tcolor: #000;\t\tborder-color: %s;"
                                       "\t\tselection-background-color: %s;\t}"
                                       "\tQSpinBox:focus {\t\tborder-color: %s;\t}"
                                       "\tQSpinBox::up-arrow {\t\tborder-bottom-color: %s;\t}"
                                       "\tQSpinBox::up-arrow:hover {\t\tborder-bottom-color: %s;\t}"
                                       "\tQSpinBox::down-arrow {\t\tborder-top-color: %s;\t}"
                                       "\tQSpinBox::down-arrow:hover {\t\tborder-top-color: %s;\t}"
                                       "\tQSpinBox QMenu {\t\tborder: 1px solid %s;\t}"
                                       "\tQSpinBox QMenu::item:selected {\t\tcolor: #fff;"
                                       "\t\tbackground-color: %s;\t}",
                                       c, c, c, c, h, c, h, c, c));
}

void SysNumberEdit::valueChangedPriv(int v) {
    emit valueChangedPrivPriv(v);
}

QList<QWidget*> sysMakeNumberRow(QString label, int minimum, int maximum, QWidget* parent) {
    auto* edit = new SysNumberEdit(parent, 0);
    edit->setMinimum(minimum);
    edit->setMaximum(maximum);
    SysWidget* row = sysMakeWidgetRow(label, edit, parent, Qt::AlignVCenter);
    return {row, edit};
}
