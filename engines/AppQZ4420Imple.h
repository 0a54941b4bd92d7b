#pragma once

#include "engines/AioEntry.h"
#include "engines/AppImpleBase.h"
#include "engines/DownloadItem.h"
#include "engines/EfuseState.h"
#include "engines/SysByteArray.h"

#include <QByteArray>
#include <QStringList>
#include <QVector>

#include <cstdint>
#include <functional>

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

    // Bytes per block; a size below 1 is no size and leaves the one there was.
    void setBlockSize(int size) {
        if (size > 0)
            blockSize = size;
    }
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

    // Board parameters: MAC, NV stores 1 AMT, 2 DEVELOP, 3 CUSTOMER, registers, test sign.
    bool setMac(ComPort& port, int location, const QString& mac);
    bool getMac(ComPort& port, QString& mac);
    bool setNv(ComPort& port, int nvType, const QString& name, const QString& value);
    bool getNv(ComPort& port, int nvType, const QString& name, QString& value);
    bool removeNv(ComPort& port, int nvType, const QString& name);
    bool readAllNv(ComPort& port, int nvType, QList<QStringList>& entries);
    bool setRegister(ComPort& port, unsigned address, unsigned value);
    bool getRegister(ComPort& port, unsigned address, unsigned& value);
    bool setTestSign(ComPort& port, const QString& sign);
    bool getTestSign(ComPort& port, QString& sign);
    bool getStationSign(ComPort& port, int index, int& state);
    bool setStationSign(ComPort& port, int index, int state);
    bool writeAmtKey(ComPort& port, const QString& key, const QString& value, int waitMs,
                     int settleMs);

    // Efuse: byte offsets into the one-time-programmable area, words in rising address order.
    static constexpr int kEfuseStateOffset = 0x20;
    static constexpr int kEfuseAesOffset = 0x24;
    static constexpr int kEfuseAesBytes = 16;
    static constexpr int kEfuseEccOffset = 0x34;
    static constexpr int kEfuseEccBytes = 32;
    static constexpr int kEfuseReservedOffset = 0x54;
    static constexpr int kEfuseReservedBytes = 44;
    bool readEfuse(ComPort& port, int offset, int bytes, QList<unsigned>& words);
    bool writeEfuseWord(ComPort& port, int offset, unsigned word);
    bool writeEfuseWords(ComPort& port, int offset, const QList<unsigned>& words);
    bool confirmEfuseWrite(ComPort& port);
    bool readEfuseState(ComPort& port, unsigned& word);
    bool writeEfuseState(ComPort& port, unsigned word);
    bool readStateBits(ComPort& port, int offset, int width, unsigned char& value);
    bool writeStateBits(ComPort& port, int offset, int width, unsigned char value);
    bool readStateBit(ComPort& port, int bit, bool& value);
    bool writeStateBit(ComPort& port, int bit, bool value);
    bool getEfuseState(ComPort& port, EfuseState& state);
    bool readAesKey(ComPort& port, QList<unsigned>& words);
    bool readEccKey(ComPort& port, QList<unsigned>& words);
    bool readReservedArea(ComPort& port, QList<unsigned>& words);
    bool writeAesKey(ComPort& port, const QList<unsigned>& words);
    bool writeEccKey(ComPort& port, const QList<unsigned>& words);
    bool writeReservedArea(ComPort& port, const QList<unsigned>& words);
    bool loadEccKeyFile(const QString& path, QList<unsigned>& words);
    bool writeEccKeyFile(ComPort& port, const QString& path);
    bool writeAesFromTrng(ComPort& port);
    bool readEfuseText(ComPort& port, int offset, int bytes, QString& text);
    bool writeEfuseText(ComPort& port, int offset, const QString& text);

    // Wi-Fi RF tests and trims. `mode` is the panel's index of the eight-mode list.
    using KeepGoing = std::function<bool()>;
    static int wifiModeNumber(int modeIndex);
    bool startTx(ComPort& port, int mode, int rate, int channel, int bandwidth, int ruLocation,
                 int duty, int continuesType);
    bool stopTx(ComPort& port);
    bool startRx(ComPort& port, int channel, int bandwidth);
    bool stopRx(ComPort& port, int& pkgCount);
    bool startSingleTone(ComPort& port);
    bool setDcValue(ComPort& port, int value);
    bool setCfo(ComPort& port, int fine, int coarse);
    bool setPaBias(ComPort& port, int value);
    bool setApcIndex(ComPort& port, int value, QString& errorText);
    bool setApcIndex(ComPort& port, int value);
    bool getFreqOffset(ComPort& port, int& first, int& second, int& third);
    bool setFreqOffset(ComPort& port, int first, int second, int third);
    bool getFreqOffsetFlag(ComPort& port, bool& flag);
    bool setFreqOffsetFlag(ComPort& port, bool flag);
    bool getTxGain(ComPort& port, int& gain);
    bool setTxGain(ComPort& port, int gain);
    bool getTxGainFlag(ComPort& port, bool& flag);
    bool setTxGainFlag(ComPort& port, bool flag);
    bool getFinishFlag(ComPort& port, bool& flag);
    bool setFinishFlag(ComPort& port, bool flag);
    bool setLoLeakage(ComPort& port, int channel, unsigned high, unsigned low);
    bool setDcCalRegister(ComPort& port, unsigned high, unsigned low);
    bool getDcCalRegister(ComPort& port, unsigned& high, unsigned& low);
    bool txTest(ComPort& port, int mode, int rate, int channel, int bandwidth,
                const KeepGoing& keepGoing);
    bool rxTest(ComPort& port, int channel, int bandwidth, const KeepGoing& keepGoing,
                int& pkgCount);
    bool txGainTest(ComPort& port, int mode, int rate, int channel, int bandwidth, int& gain);
    bool txApcTest(ComPort& port, int mode, int rate, int channel, int bandwidth, int value,
                   int ruLocation, int duty, int continuesType);

    // RF words and numbers shared by the RF panels.
    static QStringList rfThreeModeList();
    static QString rfModeName(int modeIndex);
    static QString rfBandwidthName(int index);
    static QStringList rfRateNames(int mode);
    static QStringList rfChannelNames(int mode);
    static int rfRateCount(int mode);
    static int rfChannelCount(int mode);
    static qint64 wifiChannelHz(int channel);
    static qint64 bleChannelHz(int channel);

    // BLE RF tests.
    bool startBleTone(ComPort& port, int phy, int channel, int powerLevel);
    bool startBleTx(ComPort& port, int phy, int channel, int pkgType, int pduLength,
                    int powerLevel);
    bool stopBleTx(ComPort& port);
    bool startBleRx(ComPort& port, int phy, int channel);
    bool stopBleRx(ComPort& port, int& pkgCount);
    bool resetBle(ComPort& port);
    bool setBleDc(ComPort& port, int value);
    bool setBleTxStep(ComPort& port, int value);
    bool bleTxTest(ComPort& port, int phy, int channel, int pkgType, int pduLength, int powerLevel,
                   const KeepGoing& keepGoing);
    bool bleRxTest(ComPort& port, int phy, int channel, const KeepGoing& keepGoing, int& pkgCount);

private:
    // The command word of an NV store for set (0), get (1) or delete (2); empty after logging
    // an unknown store.
    QString nvWord(int nvType, int action);
    // Sends an "OK" command and reads item 0 of its comma-shaped reply as a decimal flag.
    bool readFlag(ComPort& port, const QString& cmd, const char* shortLine, bool exactlyTwo,
                  bool& flag);
    bool okCommand(ComPort& port, const QString& cmd);

    int blockSize = 1024;
    bool logProgress = false;
    bool flashNotEnough = false;
    // Both stay on for the life of the object; each use tests them.
    bool frameCheck = true;
    bool blockRetryMark = true;
};
