#include "kit/SysSlider.h"

#include "kit/SysSheet.h"
#include "kit/SysStyle.h"

#include <QLabel>

SysSlider::SysSlider(QWidget* parent) : QSlider(Qt::Horizontal, parent) {
    setRange(0, 100);
    valueLabel = new QLabel(this);
    SysSheet::set(
        valueLabel,
        QStringLiteral("QLabel{background-color: transparent;color: #000;min-width:20px;}"));
    valueLabel->setAutoFillBackground(true);
    valueLabel->setAlignment(Qt::AlignCenter);
    valueLabel->hide();
    valueLabel->move(0, 3);
    setThemeColor("#409eff");
}

void SysSlider::setThemeColor(std::string color) {
    const char* c = color.c_str();
    const std::string hover = sysDarken(color, 0.25f);
    const std::string rest = sysLighten(color, 0.5f);
    SysSheet::set(this, QString::asprintf(
                            "\tQSlider {\t\tfont-family: '微软雅黑';\t\tfont-size: 18px;\t}"
                            "\tQSlider::groove:horizontal {\t\theight: 6px;\t\tborder-radius: 3px;"
                            "\t\tbackground: transparent;\t}"
                            "\tQSlider::handle:horizontal {\t\twidth: 16px;\t\tmargin: -6px 0px;"
                            "\t\tborder-radius: 8px;\t\tbackground-color: %s;\t}"
                            "\tQSlider::handle:horizontal:hover {\t\tbackground-color: %s;\t}"
                            "\tQSlider::add-page:horizontal {\t\tborder: 1px solid %s;"
                            "\t\tbackground-color: #fff;\t\tborder-radius: 3px;\t}"
                            "\tQSlider::sub-page:horizontal {\t\tborder: 1px solid %s;"
                            "\t\tbackground-color: %s;\t\tborder-radius: 3px;\t}",
                            c, hover.c_str(), rest.c_str(), c, c));
    // Font size of the value label, a descendant that the slider's sheet reaches.
    SysSheet::append(this, QString::asprintf("QLabel{font-size: %dpx;}", 18));
    theme = color;
}

std::string SysSlider::themeColor() const {
    return theme;
}

void SysSlider::mousePressEvent(QMouseEvent* event) {
    if (valueLabel->isHidden()) {
        valueLabel->show();
        valueLabel->setText(QString::number(value()));
    }
    QSlider::mousePressEvent(event);
}

void SysSlider::mouseMoveEvent(QMouseEvent* event) {
    valueLabel->setText(QString::number(value()));
    const int span = maximum() - minimum();
    // With an empty range there is no place to follow; the label stays put.
    if (span != 0)
        valueLabel->move((width() - valueLabel->width()) * value() / span, -3);
    QSlider::mouseMoveEvent(event);
}

void SysSlider::mouseReleaseEvent(QMouseEvent* event) {
    if (!valueLabel->isHidden())
        valueLabel->hide();
    QSlider::mouseReleaseEvent(event);
}
