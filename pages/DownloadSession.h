#pragma once

#include "base/ComPort.h"
#include "engines/AppQZ4420Imple.h"
#include "shell/SysLogLevel.h"

#include <QVariant>

#include <atomic>
#include <functional>
#include <mutex>

class TabWinBase;

// What the download page shares with a run on its own thread: the page's port and frame
// engine, and the way back to the page. A run holds the session for as long as it goes on, so
// closing the window during a run leaves the run a live port and engine; once the page is
// gone, the run's lines and messages are dropped instead of reaching a dead page.
class DownloadSession {
public:
    explicit DownloadSession(TabWinBase* page);

    ComPort port;
    AppQZ4420Imple engine;

    // Called by the page as it dies; waits for a line or message that is on its way.
    void detach();
    // Makes the line and logs it while the page lives; the page cannot go meanwhile.
    void log(SYS_LOG_LEVEL level, const std::function<QString()>& line);
    void sendMsg(int id, const QVariant& value);
    // Routes an engine's lines through log(), on the thread that logs them.
    void hookEngine(AppImpleBase* engine);

    // One run at a time owns the port and engine. The controls go off only when message 0
    // reaches the page, so a second start can come before that; it is refused here instead
    // of reopening the port under the run that holds it.
    bool claim() { return !busy_.exchange(true); }
    void release() { busy_ = false; }

private:
    std::atomic<bool> busy_{false};
    std::mutex mutex_;
    TabWinBase* page_;
};
