#include "pages/DownloadRun.h"

#include "base/Deadline.h"
#include "engines/AppQZ4410Imple.h"
#include "pages/DownloadSession.h"
#include "shell/MainWindow.h"

#include <QFile>

#include <thread>

namespace {

constexpr int kSyncPollMs = 2;
constexpr int kSyncWindowMs = 1000;
constexpr uint8_t kSyncRomRaw = 1;
constexpr uint8_t kSyncFrames = 51;
// The board answers every sync word, and the polls run ahead of a slow answer: what comes in
// for this long after the answer that counted belongs to earlier polls and is dropped, so that
// it cannot pass for the reply to the stub's first header.
constexpr int kLateSyncAnswersMs = 10;

// A word of the host filled like every logged line: conversions take args, "%%" gives "%".
template <typename... Args> QString line(const char* key, Args... args) {
    return MainWindow::formatText(key, args...);
}

} // namespace

DownloadRun::DownloadRun(std::shared_ptr<DownloadSession> session, DownloadSettings settings)
    : session_(std::move(session)), settings_(std::move(settings)) {}

bool DownloadRun::start(std::shared_ptr<DownloadSession> session, DownloadSettings settings) {
    if (!session->claim())
        return false;
    std::thread([run = DownloadRun(std::move(session), std::move(settings))]() mutable {
        run.run();
    }).detach();
    return true;
}

void DownloadRun::logError(const DownloadSettings::Line& line) {
    session_->log(SYS_LOG_ERROR, line);
}

void DownloadRun::logInfo(const DownloadSettings::Line& line) {
    session_->log(SYS_LOG_INFO, line);
}

DownloadSettings::Log DownloadRun::logger() {
    return [this](SYS_LOG_LEVEL level, const DownloadSettings::Line& line) {
        session_->log(level, line);
    };
}

bool DownloadRun::run() {
    session_->sendMsg(0, settings_.runMode);
    bool ok = prepare();
    if (ok) {
        ok = runFlow();
        finish();
    }
    if (ok)
        logInfo([&] { return line("download/dlTab/download/success"); });
    else
        logError([&] { return line("download/dlTab/download/failed"); });
    // Free before message 1, so that a start made as soon as the controls are back is taken.
    session_->release();
    session_->sendMsg(1, settings_.runMode);
    return ok;
}

bool DownloadRun::prepare() {
    if (settings_.portNumber < 0) {
        logError([&] { return line("download/dlTab/pleaseSelectPort"); });
        return false;
    }
    session_->engine.setBlockSize(settings_.bigBlock ? 4096 : 1024);
    if (settings_.runMode == 0 && !settings_.validateList(logger()))
        return false;
    const int baud = settings_.bootBaud.toInt(nullptr, 10);
    if (!session_->port.open(settings_.portNumber, baud)) {
        logError([&] { return line("download/dlTab/canOpenPortFmt", settings_.portNumber, baud); });
        return false;
    }
    return true;
}

bool DownloadRun::runFlow() {
    if (settings_.runMode == 0)
        return stubStage() && fileStage();
    return aioStage();
}

void DownloadRun::finish() {
    session_->port.close();
}

bool DownloadRun::syncStep(AppQZ4410Imple& boot) {
    boot.setLogEnabled(false);
    if (settings_.uartBoot)
        session_->engine.hardwareRestart(session_->port, 0);
    bool synced = false;
    const Deadline deadline(kSyncWindowMs);
    while (!deadline.expired()) {
        int mode = 0;
        if (!boot.syncBoard(session_->port, &mode, kSyncPollMs))
            continue;
        if (mode == kSyncRomRaw || mode == kSyncFrames) {
            bootMode_ = mode == kSyncRomRaw ? 0 : 1;
            synced = true;
            session_->port.drainFor(kLateSyncAnswersMs);
            break;
        }
    }
    boot.setLogEnabled(true);
    if (!synced)
        logError([&] { return line("download/dlTab/syncFailed"); });
    return synced;
}

bool DownloadRun::stubStage() {
    logInfo([&] { return line("download/dlTab/startDownloadStub"); });
    const QString path = settings_.stubPath;
    AppQZ4410Imple boot;
    boot.setLogProgress(true);
    session_->hookEngine(&boot);
    if (!syncStep(boot))
        return false;
    const uint32_t address = settings_.startupAddress();
    logInfo(
        [&] { return line("download/dlTab/startDownloadFileExFmt", path.toStdString().c_str()); });
    const bool ok = bootMode_ == 0 ? boot.downloadUboot(session_->port, path, address, false)
                                   : session_->engine.downloadFile(session_->port, path, address);
    if (!ok)
        logError([&] {
            return line("download/dlTab/downloadStubFileFailedFmt", path.toStdString().c_str());
        });
    return ok;
}

bool DownloadRun::fileStage() {
    QVector<AioEntry> entries;
    if (!settings_.collectEntries(entries, logger()))
        return false;
    if (entries.isEmpty())
        return true; // the stub alone: no rate change, no software start
    if (!switchBaud())
        return false;
    for (const AioEntry& entry : entries) {
        const std::string path = entry.path.toStdString();
        logInfo([&] { return line("download/dlTab/startDownloadFileExFmt", path.c_str()); });
        DownloadItem item;
        item.startAddr = entry.startAddr;
        item.toRam = entry.toRam;
        item.path = entry.path;
        if (!session_->engine.downloadEntry(session_->port, item)) {
            logError([&] { return line("download/dlTab/downloadFileFailedFmt", path.c_str()); });
            return false;
        }
    }
    return verifyStep(entries) && startStep();
}

bool DownloadRun::aioStage() {
    const QString path = settings_.aioPath;
    SysByteArray stub;
    QVector<AioEntry> entries;
    uint32_t stubAddr = 0;
    if (!session_->engine.parseAio(path, stub, entries, stubAddr)) {
        logError([&] {
            return line("download/dlTab/parseAllInOneFileFailedFmt", path.toStdString().c_str());
        });
        return false;
    }
    {
        AppQZ4410Imple boot;
        boot.setLogProgress(true);
        session_->hookEngine(&boot);
        if (!syncStep(boot))
            return false;
        const ByteBuffer stubBytes(stub.constData(), stub.size());
        logInfo([&] { return line("download/dlTab/startDownloadFileFmt", stubBytes.size()); });
        const bool ok = bootMode_ == 0
                            ? boot.downloadUbootData(session_->port, stubBytes, stubAddr, false)
                            : session_->engine.downloadData(session_->port, stub, stubAddr);
        if (!ok) {
            logError([&] {
                return line("download/dlTab/downloadFileFailedFmt", path.toStdString().c_str());
            });
            return false;
        }
    }
    if (!switchBaud())
        return false;
    for (const AioEntry& entry : entries) {
        logInfo([&] {
            const std::string target =
                line(entry.toRam ? "download/dlTab/toRam/yes" : "download/dlTab/toRam/no")
                    .toStdString();
            return line("download/dlTab/startDownloadDataFmt", target.c_str(), entry.startAddr,
                        entry.data.size());
        });
        const SysByteArray data(
            QByteArray(reinterpret_cast<const char*>(entry.data.data()), entry.data.size()));
        if (!session_->engine.downloadTrunk(session_->port, data, entry.startAddr, entry.toRam,
                                            3)) {
            logError([&] { return line("download/dlTab/downloadFileFailed"); });
            return false;
        }
    }
    return verifyStep(entries) && startStep();
}

bool DownloadRun::verifyStep(const QVector<AioEntry>& entries) {
    if (!settings_.verify)
        return true;
    logInfo([&] { return line("download/dlTab/verifyStart"); });
    for (const AioEntry& entry : entries) {
        if (entry.toRam)
            continue;
        QByteArray expected(reinterpret_cast<const char*>(entry.data.data()), entry.data.size());
        if (!entry.path.isEmpty()) {
            QFile file(entry.path);
            if (file.open(QIODevice::ReadOnly))
                expected = file.readAll();
        }
        SysByteArray stored;
        if (!session_->engine.readFlash(session_->port, entry.startAddr, uint32_t(expected.size()),
                                        stored)) {
            logError([&] { return line("download/dlTab/verifyReadFailedFmt", entry.startAddr); });
            return false;
        }
        const QByteArray& got = stored.bytes();
        for (int i = 0; i < expected.size(); ++i) {
            if (i >= got.size() || got[i] != expected[i]) {
                const unsigned at = entry.startAddr + unsigned(i);
                logError([&] { return line("download/dlTab/verifyFailedFmt", at); });
                return false;
            }
        }
    }
    logInfo([&] { return line("download/dlTab/verifySuccess"); });
    return true;
}

bool DownloadRun::switchBaud() {
    const int baud = settings_.dlBaud.toInt(nullptr, 10);
    if (!session_->engine.changeBaud(session_->port, uint32_t(baud))) {
        logError([&] { return line("download/dlTab/switchBaudrateFailedFmt", baud); });
        return false;
    }
    return true;
}

bool DownloadRun::startStep() {
    logInfo([&] { return line("download/dlTab/startupSoftVer"); });
    if (!session_->engine.startSoftware(session_->port, settings_.startupAddress())) {
        logError([&] { return line("download/dlTab/softverStartCmdSendFailed"); });
        return false;
    }
    logInfo([&] { return line("download/dlTab/softverStartSuccess"); });
    return true;
}
