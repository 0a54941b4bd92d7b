#include "pages/FlashRun.h"

#include "base/ComPort.h"
#include "engines/AppImpleUtils.h"
#include "engines/NvItem.h"
#include "engines/SysByteArray.h"
#include "pages/PageSession.h"
#include "shell/MainWindow.h"

#include <QStringList>

#include <thread>

namespace {

// The rate the board is left at after an upload, whatever the page's work rate says.
constexpr uint32_t kRestBaud = 115200;
// The NV sector that names the OTA status range: the first one of the flash.
constexpr uint32_t kNvSectorAddr = 0;
constexpr uint32_t kNvSectorSize = 0x1000;

} // namespace

FlashRun::FlashRun(std::shared_ptr<PageSession> session, FlashSettings settings, Action action)
    : session_(std::move(session)), settings_(std::move(settings)), action_(action) {}

bool FlashRun::start(std::shared_ptr<PageSession> session, FlashSettings settings, Action action) {
    if (!session->claim())
        return false;
    std::thread([run = FlashRun(std::move(session), std::move(settings), action)]() mutable {
        run.run();
    }).detach();
    return true;
}

void FlashRun::logError(const char* key) {
    session_->log(SYS_LOG_ERROR, [key] { return MainWindow::formatText(key); });
}

void FlashRun::logInfo(const char* key) {
    session_->log(SYS_LOG_INFO, [key] { return MainWindow::formatText(key); });
}

bool FlashRun::run() {
    const int msg = action_ == Action::Upload ? kUploadMsg : kEraseMsg;
    session_->sendMsg(msg, true);
    bool ok = false;
    switch (action_) {
    case Action::Upload:
        ok = upload();
        break;
    case Action::Erase:
        ok = erase();
        break;
    case Action::EraseAll:
        ok = eraseAll();
        break;
    case Action::EraseOta:
        ok = eraseOta();
        break;
    }
    // Free before the last message, so that a click made as soon as the page is back is taken.
    session_->release();
    session_->sendMsg(msg, false);
    return ok;
}

bool FlashRun::openPort(ComPort& port) {
    if (settings_.portNumber < 0) {
        logError("crud/pleaseSelectPort");
        return false;
    }
    if (!port.open(settings_.portNumber, settings_.workBaud.toInt())) {
        session_->log(SYS_LOG_ERROR, [this] {
            return MainWindow::formatText("crud/openPortFailedFmt",
                                          settings_.portText.toStdString().c_str());
        });
        return false;
    }
    return true;
}

bool FlashRun::upload() {
    AppQZ4420Imple& engine = session_->engine;
    bool ok = false;
    {
        ComPort port;
        if (!openPort(port)) {
            ok = false;
        } else if (!engine.changeBaud(port, uint32_t(settings_.uploadBaud.toInt()))) {
            logError("crud/flashOper/uploadFlash/switchToUploadBaudFailed");
        } else {
            ok = engine.readFlashToFile(port, settings_.address, settings_.length, settings_.path);
            // Back to the boot rate even after a failed read, so that the next action finds
            // the board where a fresh one would be.
            if (!engine.changeBaud(port, kRestBaud)) {
                logError("crud/flashOper/uploadFlash/switchToWorkBaudFailed");
                ok = false;
            }
        }
    } // the port closes before the end line
    if (ok)
        logInfo("crud/flashOper/uploadFlash/readFlashSuccess");
    else
        logError("crud/flashOper/uploadFlash/readFlashFailed");
    return ok;
}

bool FlashRun::erase() {
    bool ok;
    {
        ComPort port;
        ok = openPort(port) &&
             session_->engine.eraseFlash(port, settings_.address, settings_.length);
    }
    if (ok)
        logInfo("crud/flashOper/eraseFlash/eraseFlashSuccess");
    else
        logError("crud/flashOper/eraseFlash/eraseFlashFailed");
    return ok;
}

bool FlashRun::eraseAll() {
    bool ok = false;
    {
        ComPort port;
        if (openPort(port)) {
            ok = session_->engine.eraseAll(port);
            if (!ok)
                logError("crud/flashOper/eraseFlash/eraseAllFailed");
        }
    }
    if (ok)
        logInfo("crud/flashOper/eraseFlash/eraseAllSuccess");
    else
        logError("crud/flashOper/eraseFlash/eraseAllFailed");
    return ok;
}

bool FlashRun::eraseOta() {
    bool ok;
    {
        ComPort port;
        ok = openPort(port) && eraseOtaSteps(port);
    }
    if (ok)
        logInfo("crud/flashOper/eraseFlash/eraseOtaStatusSuccess");
    else
        logError("crud/flashOper/eraseFlash/eraseOtaStatusFailed");
    return ok;
}

bool FlashRun::eraseOtaSteps(ComPort& port) {
    SysByteArray sector;
    if (!session_->engine.readFlash(port, kNvSectorAddr, kNvSectorSize, sector)) {
        logError("crud/flashOper/uploadFlash/readFlashFailed");
        return false;
    }
    // A codec of its own whose lines go nowhere: the page words the failure itself.
    AppImpleUtils codec;
    QList<NvItem> items;
    int type = 0;
    if (!codec.nvToKv(sector.bytes(), items, type)) {
        logError("crud/flashOper/eraseFlash/parseNvDataFailed");
        return false;
    }
    const NvItem* ota = nullptr;
    for (const NvItem& item : items) {
        if (item.name == QLatin1String("ota_status")) {
            ota = &item;
            break;
        }
    }
    if (!ota) {
        logError("crud/flashOper/eraseFlash/canNotFindOtaStatus");
        return false;
    }
    // "<address>,<size>" in hexadecimal. Without the size there is nothing safe to erase.
    const QStringList parts = ota->value.split(',', Qt::KeepEmptyParts);
    if (parts.size() < 2 || !session_->engine.eraseFlash(port, FlashSettings::hexField(parts[0]),
                                                         FlashSettings::hexField(parts[1]))) {
        logError("crud/flashOper/eraseFlash/eraseFlashFailed");
        return false;
    }
    return true;
}
