#include "kit/SysLayout.h"

SysLayout::SysLayout(QWidget* parent) : QLayout(parent) {}
