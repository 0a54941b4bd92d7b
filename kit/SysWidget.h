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

    // Set by SysTab on a page it has not shown yet: the page gives no size, so that measuring
    // the tab widget styles and lays out nothing that no one sees. Cleared at the first show.
    bool sizeDeferred = false;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
};
