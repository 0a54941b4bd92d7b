#pragma once

#include "engines/AioEntry.h"
#include "engines/AppImpleBase.h"
#include "engines/DownloadItem.h"
#include "engines/SysByteArray.h"

#include <QByteArray>
#include <QStringList>
#include <QVector>

#include <cstdint>

class ComPort;

// The QZ4420 engine. Behind the boot ROM it speaks request and reply frames to the stub:
// downloads to RAM and flash, baud change, flash read and erase, software start; it also
// writes and reads the "oneb" all-in-one image. It owns no port: every operation takes the
// open port, blocks until the board has answered or the wait is over, and returns a bool.
class AppQZ4420Imple : public AppImpleBase {
    Q_OBJECT
public:
    AppQZ4420Imple();
    ~AppQZ4420Imple() override;

    void setBlockSize(int size) { blockSize = size; }
    int getBlockSize() const { return blockSize; }
    void setLogProgress(bool on) { logProgress = on; }
    // Reports, once, that the board's last reply said its flash is too small.
    bool takeFlashNotEnough();

    // Frame layer.
    static uint8_t frameSum(const uint8_t* bytes, int count);
    bool sendReq(ComPort& port, uint8_t type, const QByteArray& payload);
    bool recvRsp(ComPort& port, uint8_t type, QByteArray* out, uint32_t timeoutMs);
    bool recvRsp(ComPort& port, uint8_t type, uint32_t timeoutMs);
    bool exchange(ComPort& port, uint8_t type, const QByteArray& payload, uint32_t timeoutMs);
    bool exchange(ComPort& port, uint8_t type, const QByteArray& payload, QByteArray* out,
                  uint32_t timeoutMs);

    // Replaces out with the whole file.
    bool readFile(const QString& path, SysByteArray& out);

    // Flash services.
    bool pingBoard(ComPort& port);
    bool downloadFile(ComPort& port, const QString& path, uint32_t address);
    bool downloadData(ComPort& port, const SysByteArray& data, uint32_t address);
    bool downloadEntry(ComPort& port, const DownloadItem& item);
    bool downloadTrunk(ComPort& port, const SysByteArray& data, uint32_t address, bool toRam,
                       int tries);
    bool changeBaud(ComPort& port, uint32_t baud);
    bool startSoftware(ComPort& port, uint32_t address);
    bool readFlash(ComPort& port, uint32_t address, uint32_t length, SysByteArray& out);
    bool readFlashToFile(ComPort& port, uint32_t address, uint32_t length, const QString& path);
    bool eraseFlash(ComPort& port, uint32_t address, uint32_t size);
    bool eraseAll(ComPort& port);

    // All-in-one image "oneb": the stub first, then the entries in list order.
    bool createAio(const QString& stubPath, const QVector<AioEntry>& entries,
                   const QString& outPath, uint32_t stubAddr);
    bool parseAio(const QString& path, SysByteArray& stub, QVector<AioEntry>& entries,
                  uint32_t& stubAddr);

    // Text command channel of running firmware: one line out with a CR, the reply read until
    // `expect` stands anywhere in it or the limit is over. Nothing is logged at this level.
    bool sendCmd(ComPort& port, const QString& cmd, const QString& expect, int timeoutMs);
    bool sendCmdRsp(ComPort& port, const QString& cmd, const QString& expect, ByteBuffer& rsp,
                    int timeoutMs);
    bool openComPort(ComPort& port, int portNo, int baud, bool closeEcho);
    bool openComPortInState(ComPort& port, int portNo, int baud, int state);
    bool switchVersion(ComPort& port, int state);
    bool switchToState(ComPort& port, int state);
    bool makeSureState(ComPort& port, int state);
    bool getVersionState(ComPort& port, int& state);
    bool isVersionState(ComPort& port, int state);
    bool versionStateKnown(ComPort& port);
    bool setEcho(ComPort& port, bool on, int totalMs);
    bool hardwareRestart(ComPort& port, int drainMs);
    bool softwareRestart(ComPort& port, bool ping);
    bool pingAtState(ComPort& port, int pauseMs, int totalMs);

    // The reply as text up to its first zero byte, split at commas with empty parts kept.
    static QStringList commaItems(ByteBuffer rsp);

private:
    int blockSize = 1024;
    bool logProgress = false;
    bool flashNotEnough = false;
    // Both stay on for the life of the object; each use tests them.
    bool frameCheck = true;
    bool blockRetryMark = true;
};
