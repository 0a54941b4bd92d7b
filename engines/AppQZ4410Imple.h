#pragma once

#include "engines/AioItem.h"
#include "engines/AppImpleBase.h"

#include <QList>

#include <cstdint>

class ComPort;

// The QZ4410 engine: the raw dialogue of the boot ROM. A word for sync, single bytes for
// answers, bare 12-byte headers and unframed data blocks; no retries, only the resync of a
// header that the board did not take in step. It also reads the "beno" all-in-one image.
class AppQZ4410Imple : public AppImpleBase {
    Q_OBJECT
public:
    AppQZ4410Imple();
    ~AppQZ4410Imple() override;

    // Bytes per block; a size below 1 is no size and leaves the one there was.
    void setBlockSize(int size) {
        if (size > 0)
            blockSize = size;
    }
    void setLogProgress(bool on) { logProgress = on; }

    // One sync try: writes "cnys", hands back the first byte of the answer in *mode.
    bool syncBoard(ComPort& port, int* mode, uint32_t timeoutMs);
    bool changeBaud(ComPort& port, uint32_t baud, int timeoutMs);
    bool downloadUboot(ComPort& port, const QString& path, uint32_t address, bool syncAfter);
    bool downloadUbootData(ComPort& port, const ByteBuffer& data, uint32_t address, bool syncAfter);
    bool downloadTrunk(ComPort& port, uint32_t type, uint32_t address, const ByteBuffer& data);
    bool downloadEntry(ComPort& port, const AioItem& item);
    bool sendFinish(ComPort& port);
    static QString modeText(int mode);

    // Appends the whole file to out.
    bool readFile(const QString& path, ByteBuffer& out);
    bool parseAio(const QString& path, QList<AioItem>& items);

    // The code the ROM knows a rate by, 0 for a rate it does not know.
    static int baudCode(uint32_t baud);

    // Production commands of the running firmware. Every command goes out as one line that
    // ends in a CR; the reply is free text, read up to an expected word or for a fixed time.

    // One exchange up to the expected word; a failure logs the command and the word.
    bool sendConfirmed(ComPort& port, const QString& cmd, const QString& expect, int timeoutMs);
    // One timed read into a scratch buffer: true when anything came.
    bool drainTimed(ComPort& port, int waitMs, int settleMs);

    // "sigdsend <count>": the two counts come back out of 250 and are given as percentages,
    // the two strengths come as unsigned values offset by 255.
    bool measureSignal(ComPort& port, int count, float& sigRate, float& dutRate, float& rssi,
                       float& dutRssi, int waitMs);
    bool getMacOtp(ComPort& port, QString& mac);
    bool getMacAmt(ComPort& port, QString& mac);

    // The test sign: one mark a station, "0", "1", "2" or anything else for an unknown mark.
    // A board that has none reads as ten "0" marks.
    bool getTestSign(ComPort& port, QString& sign);
    bool setTestSign(ComPort& port, const QString& sign);
    bool getStationSign(ComPort& port, int index, int& state);
    bool setStationSign(ComPort& port, int index, int state);

    // "nvsamt <key> <value>", answered by "OK".
    bool writeAmtKey(ComPort& port, const QString& key, const QString& value);
    // "amt_nv_set <key> <value>", answered by "SUCCESS".
    bool writeAmtNvKey(ComPort& port, const QString& key, const QString& value);
    bool restartSystem(ComPort& port);

    bool calibrateFreqOffset(ComPort& port, int mode, int fourth, int first, int bandwidth,
                             int sixth, QString& value);
    bool saveFreqOffset(ComPort& port, const QString& value);
    bool saveFreqOffsetFlag(ComPort& port, bool flag);
    bool calibrateTxPower(ComPort& port, int mode, int first, QString& value);
    bool saveTxPower(ComPort& port, int mode, int channel, const QString& value);
    bool saveTxPowerFlag(ComPort& port, bool flag);
    bool saveCalibrationFlag(ComPort& port, bool flag);

    bool setRfBandwidth(ComPort& port, int bandwidth);
    bool startPhyTx(ComPort& port, int mode, int fourth, int first, int bandwidth, int fifth);
    // startPhyTx with the limit number of the mode and bandwidth as the fifth number.
    bool startPhyTxAuto(ComPort& port, int mode, int fourth, int first, int bandwidth);
    bool startPhyTxFixed(ComPort& port);
    bool startPhyRx(ComPort& port, int first, int bandwidth);
    // Stops the receive test; count is the number of packets the board received.
    bool stopPhyRx(ComPort& port, int first, int& count);

    // Modes 0, 1 and 2 (11b, non-HT, HT) as the firmware numbers them: 1, 0, 3; -1 for others.
    static int firmwareMode(int mode);
    // The mode's part of a calibration key: "11B", "NONHT", "HT", empty for others.
    static QString modeKeyText(int mode);
    // 7 for modes 0 and 1; for mode 2, 7 at bandwidth 0 and 15 at bandwidth 1; else -1.
    static int modeLimit(int mode, int bandwidth);

private:
    // getMacOtp and getMacAmt: the same dialogue under two tags.
    bool readMac(ComPort& port, const char* cmd, const char* tag, QString& mac);

    int blockSize = 1024;
    bool logProgress = false;
};
