#pragma once

#include "engines/AppQZ4420Imple.h"
#include "shell/SysLogLevel.h"

#include <QVariant>

#include <atomic>
#include <functional>
#include <mutex>

class TabWinBase;

// What a page shares with the work it runs on a thread of its own: the page's frame engine and
// the way back to the page. A worker holds the session for as long as it goes on, so closing
// the window meanwhile leaves the worker a live engine; once the page is gone, the worker's
// lines and messages are dropped instead of reaching a dead page.
class PageSession {
public:
    using Sink = std::function<void(SYS_LOG_LEVEL level, const QString& line)>;

    explicit PageSession(TabWinBase* page);
    // A session without a page (the command line's): lines go to `sink`, messages nowhere.
    explicit PageSession(Sink sink);
    virtual ~PageSession() = default;

    AppQZ4420Imple engine;

    // Called by the page as it dies; waits for a line or message that is on its way.
    void detach();
    // Makes the line and logs it while the page lives; the page cannot go meanwhile.
    void log(SYS_LOG_LEVEL level, const std::function<QString()>& line);
    void sendMsg(int id, const QVariant& value);
    // Routes an engine's lines through log(), on the thread that logs them.
    void hookEngine(AppImpleBase* engine);

    // One worker at a time owns the engine (and the port). The controls go off only when the
    // worker's first message reaches the page, so a second start can come before that; it is
    // refused here instead of running beside the first.
    bool claim() { return !busy_.exchange(true); }
    void release() { busy_ = false; }

private:
    std::atomic<bool> busy_{false};
    std::mutex mutex_;
    TabWinBase* page_ = nullptr;
    Sink sink_;
};
