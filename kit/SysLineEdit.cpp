#include "kit/SysLineEdit.h"

#include "kit/SysLabel.h"
#include "kit/SysSheet.h"
#include "kit/SysWidget.h"

SysLineEdit::SysLineEdit(QWidget* parent) : QLineEdit(parent) {
    SysSheet::set(
        this,
        QStringLiteral(
            "\tQLineEdit {\t\tfont-family: '微软雅黑';\t\tbackground-color: #fff;"
            "\t\tborder: 1px solid transparent;\t\tselection-color: #fff;\t\tborder-radius: .75em;"
            "\t\tpadding: .125em .5em;\t\tmin-width: 6.5em;\t\tmin-height: 1em;"
            "\t\tline-height: 1.25em;\t\tlineedit-password-character: 9679;\t}"
            "\tQLineEdit:read-only {\t\tcolor: #A0A0A0;\t}"
            "\tQLineEdit:disabled {\t\tcolor: #c0c0c0;\t\tbackground-color: #fafafa;"
            "\t\tborder-color: #c0c0c0;\t}"
            "\tQLineEdit QMenu {\t\tfont-family: '微软雅黑';\t}"));
    setThemeColor("#409eff");
    setFontSize(18);
    setRadius(0.625f);
}

void SysLineEdit::setFontSize(int px) {
    SysSheet::append(this, QString::asprintf("\tQLineEdit {\t\tfont-size: %dpx;\t}", px));
}

void SysLineEdit::setFontWeight(int weight) {
    SysSheet::append(this, QString::asprintf("\tQLineEdit {\t\tfont-weight: %d;\t}", weight));
}

void SysLineEdit::setTextColor(std::string color) {
    SysSheet::append(this, QString::asprintf("\tQLineEdit {\t\tcolor: %s;\t}", color.c_str()));
}

void SysLineEdit::setTextAlign(Qt::Alignment align) {
    const char* value = nullptr;
    if (align == Qt::AlignLeft)
        value = "left";
    else if (align == Qt::AlignRight)
        value = "right";
    else if (align == Qt::AlignHCenter || align == Qt::AlignVCenter || align == Qt::AlignCenter)
        value = "center";
    if (!value)
        return;
    SysSheet::append(this, QString::asprintf("\tQLineEdit {\t\ttext-align: %s;\t}", value));
}

void SysLineEdit::setRadius(float em) {
    SysSheet::append(this, QString::asprintf("\tQLineEdit {\t\tborder-radius: %.2fem;\t}", em));
}

void SysLineEdit::setCornerRadii(float topLeft, float topRight, float bottomLeft,
                                 float bottomRight) {
    SysSheet::append(this, QString::asprintf("\tQLineEdit {\t\tborder-top-left-radius: %.2fem;"
                                             "\t\tborder-top-right-radius: %.2fem;"
                                             "\t\tborder-bottom-left-radius: %.2fem;"
                                             "\t\tborder-bottom-right-radius: %.2fem;\t}",
                                             topLeft, topRight, bottomLeft, bottomRight));
}

void SysLineEdit::setBorderWidth(int px) {
    SysSheet::append(this, QString::asprintf("\tQLineEdit {\t\tborder-width: %dpx;\t}", px));
}

void SysLineEdit::setBorderWidths(int left, int top, int right, int bottom) {
    SysSheet::append(this, QString::asprintf("\tQLineEdit {\t\tborder-left-width: %dpx;"
                                             "\t\tborder-top-width: %dpx;"
                                             "\t\tborder-right-width: %dpx;"
                                             "\t\tborder-bottom-width: %dpx;\t}",
                                             left, top, right, bottom));
}

void SysLineEdit::setBackgroundColor(std::string color) {
    SysSheet::append(this,
                     QString::asprintf("\tQLineEdit {\t\tbackground-color: %s;\t}", color.c_str()));
}

void SysLineEdit::setMinWidth(float em) {
    SysSheet::append(this, QString::asprintf("\tQLineEdit {\t\tmin-width: %.2fem;\t}", em));
}

void SysLineEdit::setMaxWidth(float em) {
    SysSheet::append(this, QString::asprintf("\tQLineEdit {\t\tmax-width: %.2fem;\t}", em));
}

void SysLineEdit::setFixedWidthEm(float em) {
    SysSheet::append(this, QString::asprintf("\tQLineEdit {\t\tmin-width: %.2fem;"
                                             "\t\tmax-width: %.2fem;\t}",
                                             em, em));
}

void SysLineEdit::setFullWidth() {
    SysSheet::append(this, QString::asprintf("\tQLineEdit {\t\twidth: 100%%;\t}"));
}

void SysLineEdit::setSelectionColor(std::string color) {
    SysSheet::append(this, QString::asprintf("\tQLineEdit {\t\tselection-background-color: "
                                             "%s;\t}",
                                             color.c_str()));
}

void SysLineEdit::setThemeColor(std::string color) {
    const char* c = color.c_str();
    SysSheet::append(this, QString::asprintf("\tQLineEdit {\t\tborder-color: %s;"
                                             "\t\tselection-background-color: %s;\t}"
                                             "\tQLineEdit:focus {\t\tborder-color: %s;\t}"
                                             "\tQLineEdit QMenu {\t\tborder: 1px solid %s;\t}"
                                             "\tQLineEdit QMenu::item:selected {\t\tcolor: #fff;"
                                             "\t\tbackground-color: %s;\t}",
                                             c, c, c, c, c));
}

void SysLineEdit::setMinLength(int length) {
    minLength = length;
}

QList<QWidget*> sysMakeLineRow(QString label, int minLength, int maxLength, QWidget* parent) {
    auto* edit = new SysLineEdit(parent);
    edit->setMinLength(minLength);
    edit->setMaxLength(maxLength);
    SysWidget* row = sysMakeWidgetRow(label, edit, parent, Qt::AlignVCenter);
    return {row, edit};
}
