#pragma once

#include "kit/SysMainWindow.h"
#include "kit/SysProgressBar.h"
#include "shell/HostTextService.h"

#include <QString>

// The window that the host sees: what the plug-in offers the host beyond a QMainWindow.
// The host sets its HostTextService before init() and shows the window itself.
class PluginUIBase : public SysMainWindow {
    Q_OBJECT
public:
    PluginUIBase();
    ~PluginUIBase() override;

    virtual QString pluginTitle() = 0;
    virtual QString versionLog() = 0;
    virtual void init() = 0;
    virtual bool queryFlag() { return false; }

    // Written by the host only.
    void setTextService(HostTextService* service) { textService_ = service; }
    HostTextService* textService() const { return textService_; }
    void setHostFlag(bool flag) { hostFlag_ = flag; }

protected:
    HostTextService* textService_;
    bool hostFlag_;
    SysProgressBar progressBar_;
};
