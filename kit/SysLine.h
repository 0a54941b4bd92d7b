#pragma once

#include <QFrame>

#include <string>

// A thin separator line, horizontal or vertical, drawn by its style sheet's border.
class SysLine : public QFrame {
    Q_OBJECT

public:
    explicit SysLine(QWidget* parent = nullptr, bool horizontal = true);

    void setHorizontal(bool horizontal);
    // Replaces the whole sheet: the line is nothing but one border in `color`.
    void setLineColor(std::string color);

    bool horizontal = true;
};
