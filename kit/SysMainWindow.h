#pragma once

#include <QMainWindow>

#include <string>

// Main window of the kit: one flat background, no size grip, the status bar hidden until a
// subclass puts something in it.
class SysMainWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit SysMainWindow(QWidget* parent = nullptr);

    // Replaces the whole sheet with the window's base rule in `color`.
    void setBaseStyle(std::string color);
    void setPadding(float em);
    void setStatusItemBorder(int px);

    // One-line message dialogs titled with the window's title; printf-like formats.
    void showError(const char* format, ...) __attribute__((format(printf, 2, 3)));
    void showInfo(const char* format, ...) __attribute__((format(printf, 2, 3)));

    std::string backgroundColor;
};
