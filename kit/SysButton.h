#pragma once

#include <QPushButton>

#include <string>

// Push button of the kit: white text on the theme colour, lighter when hovered and pressed.
class SysButton : public QPushButton {
    Q_OBJECT

public:
    explicit SysButton(QWidget* parent = nullptr, const QString& text = QString());

    void setFontSize(int px);
    void setFontWeight(int weight);
    void setTextColor(std::string color);
    void setRadius(float em);
    void setCornerRadii(float topLeft, float topRight, float bottomLeft, float bottomRight);
    void setBorderWidth(int px);
    void setBorderWidths(int left, int top, int right, int bottom);
    void setPadding(float horizontal, float vertical);
    // One background for the normal, hovered and pressed button alike.
    void setFlatColor(std::string color);
    void setDisabledBackgroundColor(std::string color);
    void setDisabledTextColor(std::string color);
    // Shows only `icon` at `size`, on no ground and without padding or border.
    void setIconOnly(const QIcon& icon, const QSize& size);
    // Background `color`, border and tool tip in its light shades, lighter when hovered and
    // pressed.
    void setThemeColor(std::string color);
};
