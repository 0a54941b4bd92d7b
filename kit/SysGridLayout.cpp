#include "kit/SysGridLayout.h"

SysGridLayout::SysGridLayout(QWidget* parent) : QGridLayout(parent) {}
