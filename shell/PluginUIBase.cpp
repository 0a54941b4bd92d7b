#include "shell/PluginUIBase.h"

#include <QStatusBar>

PluginUIBase::PluginUIBase()
    : SysMainWindow(nullptr), textService_(nullptr), hostFlag_(false), progressBar_(nullptr) {
    // The bar sits in the hidden status bar, one pixel high; Bramble never drives it: progress
    // reaches the user as percent lines in the process log.
    statusBar()->insertPermanentWidget(0, &progressBar_, 1);
    setStatusItemBorder(0);
    progressBar_.setTextVisible(false);
    progressBar_.setBarHeight(1);
}

// The bar member is destroyed before the status bar that holds it, and leaves it on its own.
PluginUIBase::~PluginUIBase() = default;
