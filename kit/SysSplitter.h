#pragma once

#include <QSplitter>

#include <string>

// Splitter of the kit: transparent, with a transparent handle; children cannot be collapsed.
class SysSplitter : public QSplitter {
    Q_OBJECT

public:
    explicit SysSplitter(QWidget* parent = nullptr);

    void setBackgroundColor(std::string color);
    void setPadding(float em);
    void setHandleWidth(int px);
    void setRadius(float em);

    // true lays the children side by side, false one above the other.
    void setHorizontal(bool horizontal);
    // Deletes every child widget; the splitter is empty afterwards.
    void clearWidgets();

    // As SysWidget::sizeDeferred, for a page that is a splitter.
    bool sizeDeferred = false;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    // A deferred splitter leaves its children unmeasured until its first show.
    bool event(QEvent* event) override;
};
