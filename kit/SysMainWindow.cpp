#include "kit/SysMainWindow.h"

#include "kit/SysMessageBox.h"
#include "kit/SysSheet.h"

#include <QStatusBar>

#include <cstdarg>

SysMainWindow::SysMainWindow(QWidget* parent) : QMainWindow(parent) {
    // Qt::Window keeps this a top-level window whatever the parent.
    setWindowFlags(Qt::Window | Qt::WindowCloseButtonHint | Qt::WindowMinimizeButtonHint |
                   Qt::WindowMaximizeButtonHint | Qt::CustomizeWindowHint);
    setBaseStyle("#fff");
    statusBar()->setSizeGripEnabled(false);
    statusBar()->hide();
}

void SysMainWindow::setBaseStyle(std::string color) {
    SysSheet::set(this,
                  QString::asprintf("\tQMainWindow {\t\tfont-size: 18px;\t\tbackground-color: %s;"
                                    "\t\tpadding: 0px;\t}",
                                    color.c_str()));
    backgroundColor = color;
}

void SysMainWindow::setPadding(float em) {
    SysSheet::append(this, QString::asprintf("\tQMainWindow {\t\tpadding: %.2fem;\t}", em));
}

void SysMainWindow::setStatusItemBorder(int px) {
    SysSheet::append(this,
                     QString::asprintf("\tQMainWindow QStatusBar::item {\t\tborder: %dpx;\t}", px));
}

void SysMainWindow::showError(const char* format, ...) {
    va_list args;
    va_start(args, format);
    const QString text = QString::vasprintf(format, args);
    va_end(args);
    SysMessageBox::exec(SysMessageBox::Error, windowTitle(), text);
}

void SysMainWindow::showInfo(const char* format, ...) {
    va_list args;
    va_start(args, format);
    const QString text = QString::vasprintf(format, args);
    va_end(args);
    SysMessageBox::exec(SysMessageBox::Info, windowTitle(), text);
}
