#include "pages/DownloadWindow.h"

DownloadWindow::DownloadWindow(QWidget* parent) : TabWinBase(parent) {}
