#pragma once

#include <QListWidget>

#include <string>

// List of the kit: white, centred entries separated by thin lines, the selected entry filled
// with the theme colour.
class SysList : public QListWidget {
    Q_OBJECT

public:
    explicit SysList(QWidget* parent = nullptr);

    // List and entries.
    void setFontSize(int px);
    void setFontWeight(int weight);
    void setItemTextColor(std::string color);
    void setBackgroundColor(std::string color);
    void setSelectedTextColor(std::string color);
    void setItemPadding(float horizontal, float vertical);
    void setItemRadius(float em);
    // Style of the line under each entry ("solid", "dashed", "none", ...).
    void setItemBorderStyle(std::string style);
    void setItemBorderColor(std::string color);
    void setNoBorder();
    void setScrollBarColor(std::string color);
    // Border and selected entries in `color`, hovered entries in a light shade of it.
    void setThemeColor(std::string color);
};
