#include "kit/SysWidget.h"

#include "kit/SysSheet.h"

#include <QApplication>
#include <QDesktopWidget>

SysWidget::SysWidget(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_StyledBackground);
    SysSheet::set(this, QStringLiteral("\tQWidget {\t\tfont-family: '微软雅黑';\t\tpadding: 0px;"
                                       "\t\tmargin: 0px;\t}"));
    setBackgroundColor("transparent");
    setFontSize(18);
}

void SysWidget::setFontSize(int px) {
    SysSheet::append(this, QString::asprintf("\tQWidget {\t\tfont-size: %dpx;\t}", px));
}

void SysWidget::setBackgroundColor(std::string color) {
    SysSheet::append(this,
                     QString::asprintf("\tQWidget {\t\tbackground-color: %s;\t}", color.c_str()));
}

void SysWidget::setMinimumSizeRelative(float ratio) {
    const QWidget* desktop = QApplication::desktop();
    setMinimumSize(static_cast<int>(static_cast<float>(desktop->width()) * ratio),
                   static_cast<int>(static_cast<float>(desktop->height()) * ratio));
}

QSize SysWidget::sizeHint() const {
    return sizeDeferred ? QSize(0, 0) : QWidget::sizeHint();
}

QSize SysWidget::minimumSizeHint() const {
    return sizeDeferred ? QSize(0, 0) : QWidget::minimumSizeHint();
}
