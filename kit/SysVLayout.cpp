#include "kit/SysVLayout.h"

SysVLayout::SysVLayout(QWidget* parent) : QVBoxLayout(parent) {}
