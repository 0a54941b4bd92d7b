#pragma once

#include "kit/SysEventFilter.h"

#include <QTextEdit>

#include <string>

// Multi-line text field of the kit, with thin scroll bars and a Return watcher that pages
// connect to (for instance to send a line on Ctrl+Return).
class SysTextEdit : public QTextEdit {
    Q_OBJECT

public:
    explicit SysTextEdit(QWidget* parent = nullptr);

    // Tells about Return and Ctrl+Return typed into this edit.
    SysEventFilter* returnFilter();

    void setFontSize(int px);
    void setFontWeight(int weight);
    void setTextColor(std::string color);
    void setDisabledTextColor(std::string color);
    void setRadius(float em);
    void setCornerRadii(float topLeft, float topRight, float bottomLeft, float bottomRight);
    void setBorderWidth(int px);
    void setBorderWidths(int left, int top, int right, int bottom);
    // The border without focus, then with focus.
    void setFocusColors(std::string border, std::string focusBorder);
    void setMaxWidth(int em);
    void setSelectionColor(std::string color);
    void setBackgroundColor(std::string color);
    void setDisabledBackgroundColor(std::string color);
    void setScrollBarColor(std::string color);
    // Border, focus border, selection and the context menu in `color`.
    void setThemeColor(std::string color);

private:
    SysEventFilter filter;
};
