#pragma once

#include "pages/DownloadSettings.h"

#include <memory>

class AppQZ4410Imple;
class DownloadSession;

// One download, from the sync to the software start, on a thread of its own. It works on a
// copy of the page's values and on the session's port and engine, and tells the page only
// through the session: message 0 first, message 1 last, lines in between.
class DownloadRun {
public:
    DownloadRun(std::shared_ptr<DownloadSession> session, DownloadSettings settings);

    // Runs the whole download on the calling thread, and frees the session before message 1;
    // true when the software started (or the stub alone went in).
    bool run();
    // Starts run() on a detached thread that keeps the session alive. False, and nothing
    // started, while another run holds the session.
    static bool start(std::shared_ptr<DownloadSession> session, DownloadSettings settings);

private:
    bool prepare();
    bool runFlow();
    void finish();
    bool syncStep(AppQZ4410Imple& boot);
    bool stubStage();
    bool fileStage();
    bool aioStage();
    bool switchBaud();
    // With verify on: every flash entry read back and compared; entries without data are
    // read from their files.
    bool verifyStep(const QVector<AioEntry>& entries);
    bool startStep();

    void logError(const DownloadSettings::Line& line);
    void logInfo(const DownloadSettings::Line& line);
    DownloadSettings::Log logger();

    std::shared_ptr<DownloadSession> session_;
    DownloadSettings settings_;
    int bootMode_ = -1; // 0: the ROM answered 1, the stub goes in raw; 1: it answered 51
};
