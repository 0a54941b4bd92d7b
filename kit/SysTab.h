#pragma once

#include <QTabWidget>

#include <functional>
#include <string>
#include <utility>
#include <vector>

// Tab widget of the kit: a rounded pane with tabs in the theme colour.
class SysTab : public QTabWidget {
    Q_OBJECT

public:
    explicit SysTab(QWidget* parent = nullptr);

    // QTabWidget::addTab, moving the finished page in without styling its tree again. A page
    // that is not the current one is styled and measured when it is first shown, not before:
    // most pages wait for a click, and the program's start does not pay for them.
    int addTab(QWidget* page, const QString& label);

    void setFontSize(int px);
    // Rounds the top corners of the widget and the tabs, and the whole pane.
    void setRadius(float em);
    void setPaneBorderWidth(int px);
    void setPaneRadius(float em);
    void setPaneBorderColor(std::string color);
    void setPanePadding(float em);
    void setPaneBackgroundColor(std::string color);
    void setTabTextColor(std::string color);
    void setTabBackgroundColor(std::string color);
    void setTabHoverColor(std::string color);
    void setTabSelectedColor(std::string color);
    void setThemeColor(std::string color);

    // Rounds only the tab corners that face away from the pane, following tabPosition().
    void fitTabCorners(float radius);

    // Calls `cb(true)` when tab `index` becomes current and `cb(false)` when it stops being
    // current. The tab shown first, when the widget gets its first tab, is no change.
    void onTabActive(int index, std::function<void(bool)> cb);

    // The current index as of the last change; -1 while there is no tab.
    int lastIndex = -1;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void tabChanged(int index);
    // Keeps the page's tree out of styling and measuring until its first show.
    void defer(QWidget* page);
    static void setSizeDeferred(QWidget* page, bool deferred);

    std::vector<std::pair<int, std::function<void(bool)>>> tabHooks;
};
