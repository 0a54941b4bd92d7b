#include "kit/SysToolBox.h"

SysToolBox::SysToolBox(QWidget* parent) : QToolBox(parent) {}
