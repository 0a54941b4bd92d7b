#include "pages/BlendWindow.h"

BlendWindow::BlendWindow(QWidget* parent) : TabWinBase(parent) {}
