#pragma once

#include <QWidget>

#include <string>

// Plain container of the kit: transparent, no padding or margin, the kit's font.
class SysWidget : public QWidget {
    Q_OBJECT

public:
    explicit SysWidget(QWidget* parent = nullptr);

    void setFontSize(int px);
    void setBackgroundColor(std::string color);

    // Minimum size as a fraction of the desktop's width and height.
    void setMinimumSizeRelative(float ratio);
};
