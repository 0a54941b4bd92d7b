#include "pages/CmdWindow.h"

CmdWindow::CmdWindow(QWidget* parent) : TabWinBase(parent) {}
