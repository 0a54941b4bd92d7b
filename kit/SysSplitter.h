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
};
