#pragma once

#include <QTextBrowser>

#include <string>

// Read-mostly rich text view of the kit: the text edit's look without its minimum size.
class SysTextBrowser : public QTextBrowser {
    Q_OBJECT

public:
    explicit SysTextBrowser(QWidget* parent = nullptr);

    void setFontSize(int px);
    void setTextColor(std::string color);
    void setRadius(float em);
    // The border without focus, then with focus.
    void setFocusColors(std::string border, std::string focusBorder);
    void setBackgroundColor(std::string color);
    void setScrollBarColor(std::string color);
    // Border, focus border, selection and the context menu in `color`.
    void setThemeColor(std::string color);
};
