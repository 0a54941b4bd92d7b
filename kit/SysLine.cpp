#include "kit/SysLine.h"

#include "kit/SysSheet.h"

SysLine::SysLine(QWidget* parent, bool horizontal) : QFrame(parent) {
    setHorizontal(horizontal);
    setLineColor("#f0f0f0");
}

void SysLine::setHorizontal(bool horizontal) {
    this->horizontal = horizontal;
    setFrameShape(horizontal ? QFrame::HLine : QFrame::VLine);
    setFrameShadow(QFrame::Sunken);
}

void SysLine::setLineColor(std::string color) {
    SysSheet::set(this, horizontal
                            ? QString::asprintf("border-top: 1px solid %s;", color.c_str())
                            : QString::asprintf("border-left: 1px solid %s;", color.c_str()));
}
