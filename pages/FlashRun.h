#pragma once

#include "pages/FlashSettings.h"

#include <QString>

#include <memory>

class ComPort;
class PageSession;

// One action of the flash page, on a thread of its own with a port of its own: read a range
// of flash to a file, erase a range, erase all, or erase the OTA status that the board's NV
// sector points at. It works on a copy of the page's values and tells the page only through
// the session: message true first, message false last, lines in between.
class FlashRun {
public:
    enum class Action { Upload, Erase, EraseAll, EraseOta };

    // The page's messages: the upload sends 0, the three erases 1.
    static constexpr int kUploadMsg = 0;
    static constexpr int kEraseMsg = 1;

    FlashRun(std::shared_ptr<PageSession> session, FlashSettings settings, Action action);

    // Runs the action on the calling thread, and frees the session before the last message;
    // true when it succeeded.
    bool run();
    // Starts run() on a detached thread that keeps the session alive. False, and nothing
    // started, while another action holds the session.
    static bool start(std::shared_ptr<PageSession> session, FlashSettings settings, Action action);

private:
    bool openPort(ComPort& port);
    bool upload();
    bool erase();
    bool eraseAll();
    bool eraseOta();
    bool eraseOtaSteps(ComPort& port);

    void logError(const char* key);
    void logInfo(const char* key);

    std::shared_ptr<PageSession> session_;
    FlashSettings settings_;
    Action action_;
};
