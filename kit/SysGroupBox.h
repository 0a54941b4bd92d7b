#pragma once

#include <QGroupBox>

#include <string>

// Group box of the kit: a rounded themed border with the title sitting on it.
class SysGroupBox : public QGroupBox {
    Q_OBJECT

public:
    // The title is trimmed; a box without a title drops the room kept for it above the border.
    explicit SysGroupBox(QWidget* parent = nullptr, const QString& title = QString());

    void setFontSize(int px);
    void setFontWeight(int weight);
    void setTitleFontWeight(int weight);
    void setTitleColor(std::string color);
    void setTitleBackgroundColor(std::string color);
    void setTitlePadding(float em);
    void setTitleRadius(float em);
    // Moves the title up by `em` and keeps that much room above the border.
    void setTitleOffset(float em);
    void setRadius(float em);
    void setCornerRadii(float topLeft, float topRight, float bottomLeft, float bottomRight);
    void setBackgroundColor(std::string color);
    // The border is drawn in a light shade of `color`.
    void setBorderColor(std::string color);
    void setThemeColor(std::string color);
    void setPadding(float em);
    void setBorderWidth(int px);
};
