#include "kit/SysScrollArea.h"

SysScrollArea::SysScrollArea(QWidget* parent) : QScrollArea(parent) {}
