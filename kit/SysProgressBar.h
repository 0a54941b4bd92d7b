#pragma once

#include <QProgressBar>
#include <QStringList>

#include <string>

// Progress bar of the kit: white track, chunk in the theme colour, centred white text.
class SysProgressBar : public QProgressBar {
    Q_OBJECT

public:
    explicit SysProgressBar(QWidget* parent = nullptr);

    // Rounds bar and chunk alike.
    void setRadius(float em);
    void setBorderWidth(int px);
    void setBorderColor(std::string color);
    void setFontSize(int px);
    void setTextColors(std::string color);
    void setNoBorder();
    // Fills the chunk with a left-to-right gradient; colour i of n stops at i / n.
    void setChunkGradient(QStringList colors);
    void setBarHeight(int px);
    // "{}" in `format` becomes the percentage (mode 0) or "value/maximum" (mode 1).
    void setTextFormat(std::string format, int mode);
    void setThemeColor(std::string color);

    std::string textColor;
    std::string themeColor;
};
