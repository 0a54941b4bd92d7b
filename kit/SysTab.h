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

    // QTabWidget::addTab, moving the finished page in without styling its tree again.
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

private:
    void tabChanged(int index);

    std::vector<std::pair<int, std::function<void(bool)>>> tabHooks;
};
