#include "kit/SysHLayout.h"

SysHLayout::SysHLayout(QWidget* parent) : QHBoxLayout(parent) {}
