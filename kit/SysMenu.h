#pragma once

#include <QMenu>

#include <string>

// Pop-up menu of the kit: white, with the selected entry in the theme colour.
class SysMenu : public QMenu {
    Q_OBJECT

public:
    explicit SysMenu(QWidget* parent = nullptr);

    // Menu and entries.
    void setFontSize(int px);
    // Rounds the menu, the top corners of its first entry and the bottom corners of its last.
    void setRadius(float em);
    void setItemPadding(float horizontal, float vertical);
    // Border and selected entry in `color`.
    void setThemeColor(std::string color);
};
