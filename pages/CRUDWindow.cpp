#include "pages/CRUDWindow.h"

CRUDWindow::CRUDWindow(QWidget* parent) : TabWinBase(parent) {}
