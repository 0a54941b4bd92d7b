#pragma once

#include <QSlider>

#include <string>

class QLabel;

// Horizontal slider of the kit, 0 to 100. While the handle is held, a small label above it
// shows the value and follows it.
class SysSlider : public QSlider {
    Q_OBJECT

public:
    explicit SysSlider(QWidget* parent = nullptr);

    // Rewrites the whole sheet: handle and the filled part in `color`, the rest white with a
    // light border.
    void setThemeColor(std::string color);
    std::string themeColor() const;

    // The value shown while the handle is held; hidden otherwise.
    QLabel* valueLabel;

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

private:
    std::string theme;
};
