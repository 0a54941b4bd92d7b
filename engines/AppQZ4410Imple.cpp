#include "engines/AppQZ4410Imple.h"

#include "engines/TestSign.h"

#include "base/BaseUtils.h"
#include "base/ComPort.h"

#include <QFile>
#include <QRegularExpression>

#include <algorithm>
#include <cstdlib>

namespace {

constexpr uint8_t kSyncModeUart = 1;
constexpr uint8_t kSyncModeFlash = 2;
constexpr uint8_t kBaudChangedAck = 3;
constexpr uint8_t kOutOfStep = 0xFF;
constexpr int kHeaderSize = 12;
constexpr int kReplyWaitMs = 500;
constexpr int kResyncWaitMs = 200;
constexpr uint32_t kStubType = 1;

// The ROM's rate list; a rate's code is its place, from 1. Place 3 is a hole.
constexpr uint32_t kBaudCodes[] = {115200,  57600,   0,       380400,  460800,
                                   576000,  691200,  806400,  921600,  1561600,
                                   1400000, 1660000, 1760000, 1840000, 2000000};

ByteBuffer rawHeader(uint32_t type, uint32_t address, uint32_t length) {
    ByteBuffer header;
    header.appendU32(type);
    header.appendU32(address);
    header.appendU32(length);
    return header;
}

} // namespace

AppQZ4410Imple::AppQZ4410Imple() = default;

AppQZ4410Imple::~AppQZ4410Imple() = default;

QString AppQZ4410Imple::modeText(int mode) {
    if (mode == kSyncModeUart)
        return QStringLiteral("UART MODE");
    if (mode == kSyncModeFlash)
        return QStringLiteral("FLASH MODE");
    return QStringLiteral("INVALID MODE");
}

int AppQZ4410Imple::baudCode(uint32_t baud) {
    for (int i = 0; i < int(std::size(kBaudCodes)); ++i)
        if (kBaudCodes[i] != 0 && kBaudCodes[i] == baud)
            return i + 1;
    return 0;
}

bool AppQZ4410Imple::syncBoard(ComPort& port, int* mode, uint32_t timeoutMs) {
    if (!port.write(std::string("cnys"))) {
        logError("SYNC: write sync cmd failed!");
        return false;
    }
    ByteBuffer answer;
    if (!port.timedRead(answer, int(timeoutMs), 0)) {
        logError("SYNC: recv rsp timeout！");
        return false;
    }
    if (answer.empty()) {
        logError("SYNC: recv no data from board！");
        return false;
    }
    *mode = answer[0];
    return true;
}

bool AppQZ4410Imple::changeBaud(ComPort& port, uint32_t baud, int timeoutMs) {
    const int code = baudCode(baud);
    if (code == 0) {
        logError("CHG_BAUD: not supported baudrate: %d", int(baud));
        return false;
    }
    if (!port.writeByte(uint8_t(code))) {
        logError("CHG_BAUD: send change cmd failed: 0x%02x", code);
        return false;
    }
    const int oldBaud = port.baudrate();
    if (!port.setBaudrate(int(baud))) {
        logError("CHG_BAUD: can not change serial port baudrate to: %d", int(baud));
        return false;
    }
    sleepMs(200);
    ByteBuffer answer;
    if (!port.timedRead(answer, timeoutMs, 0)) {
        port.setBaudrate(oldBaud);
        logError("CHG_BAUD: recv rsp timeout!");
        return false;
    }
    if (answer[0] != kBaudChangedAck) {
        port.setBaudrate(oldBaud);
        logError("CHG_BAUD: recv wrong data: 0x%02x => 0x%02x", kBaudChangedAck, answer[0]);
        return false;
    }
    int mode = 0;
    if (!syncBoard(port, &mode, kReplyWaitMs)) {
        port.setBaudrate(oldBaud);
        logError("CHG_BAUD: sync after change failed!");
        return false;
    }
    if (mode != kSyncModeFlash) {
        port.setBaudrate(oldBaud);
        logError("CHG_BAUD: invalid sync ack: 0x%02x => 0x%02x", kSyncModeFlash, mode);
        return false;
    }
    return true;
}

bool AppQZ4410Imple::downloadUboot(ComPort& port, const QString& path, uint32_t address,
                                   bool syncAfter) {
    ByteBuffer data;
    if (!readFile(path, data)) {
        logError("DL_UBOOT: read all file data failed!");
        return false;
    }
    return downloadUbootData(port, data, address, syncAfter);
}

bool AppQZ4410Imple::downloadUbootData(ComPort& port, const ByteBuffer& data, uint32_t address,
                                       bool syncAfter) {
    if (!downloadTrunk(port, kStubType, address, data))
        return false;
    sleepMs(5);
    if (!syncAfter)
        return true;
    int mode = 0;
    if (!syncBoard(port, &mode, kReplyWaitMs))
        return false;
    if (mode != kSyncModeFlash) {
        logError("DL_UBOOT: UBOOT has not startup ok!");
        return false;
    }
    return true;
}

bool AppQZ4410Imple::downloadTrunk(ComPort& port, uint32_t type, uint32_t address,
                                   const ByteBuffer& data) {
    const int size = data.size();
    const int blocks = (size + blockSize - 1) / blockSize;
    logInfo("DL_TRUNK: the file will be slice to %d blocks...", blocks);

    const ByteBuffer header = rawHeader(type, address, uint32_t(size));
    if (!port.write(header)) {
        logError("DL_TRUNK: write file header data failed!");
        return false;
    }
    ByteBuffer answer;
    if (!port.timedRead(answer, kReplyWaitMs, 0)) {
        logError("DL_TRUNK: recv file header cmd's resp timeout!");
        return false;
    }
    if (answer[0] != 0 && answer[0] != kOutOfStep) {
        logError("DL_TRUNK: the resp notice: invalid response!");
        return false;
    }
    if (answer[0] == kOutOfStep) {
        // The board holds part of a header from before: feed it zero bytes, one at a time,
        // until it says it is back in step or a whole header's worth has gone out.
        for (int i = 0; i < kHeaderSize; ++i) {
            if (!port.writeByte(0)) {
                logError("DL_TRUNK: write empty data failed!");
                return false;
            }
            if (port.timedRead(answer, kResyncWaitMs, 0) && answer[0] == kOutOfStep)
                break;
        }
        if (!port.write(header)) {
            logError("DL_TRUNK: write file header data failed!");
            return false;
        }
        if (!port.timedRead(answer, kReplyWaitMs, 0)) {
            logError("DL_TRUNK: recv file header cmd's resp timeout!");
            return false;
        }
        if (answer[0] != 0) {
            logError("DL_TRUNK: the resp notice: board has crashed, sign: 0x%x", answer[0]);
            return false;
        }
    }

    float lastPercent = 0;
    for (int i = 0; i < blocks; ++i) {
        const int offset = i * blockSize;
        const int length = std::min(blockSize, size - offset);
        if (!port.writeRaw(data.at(offset), unsigned(length))) {
            logError("DL_TRUNK: data write failed, block: %d,  pos: (%d, %d)", i, offset, length);
            return false;
        }
        if (!port.timedRead(answer, kReplyWaitMs, 0)) {
            logError("DL_TRUNK: recv resp of file block %d timeout!", i);
            return false;
        }
        if (answer[0] != 0) {
            logError("DL_TRUNK: resp notice: board has crashed, cur block: %d!", i);
            return false;
        }
        if (logProgress) {
            const float percent = float(i + 1) / float(blocks) * 100.0f;
            if (percent - lastPercent >= 10.0f || i == blocks - 1) {
                logInfo("DL_TRUNK: trunk downloaded %.2f%%", double(percent));
                lastPercent = percent;
            }
        }
    }
    return true;
}

bool AppQZ4410Imple::downloadEntry(ComPort& port, const AioItem& item) {
    return downloadTrunk(port, item.dlType, item.startAddr, item.data);
}

bool AppQZ4410Imple::sendFinish(ComPort& port) {
    if (!port.write(rawHeader(0, 0, 0))) {
        logError("SEND_FINISH: write cmd failed!");
        return false;
    }
    return true;
}

bool AppQZ4410Imple::readFile(const QString& path, ByteBuffer& out) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        logError("RD_FILE: can not open file: %s", path.toStdString().c_str());
        return false;
    }
    const QByteArray bytes = file.readAll();
    out.append(bytes.constData(), bytes.size());
    return true;
}

bool AppQZ4410Imple::parseAio(const QString& path, QList<AioItem>& items) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        logError("PARSE_AIO: can not open all-in-one file!");
        return false;
    }
    const QByteArray image = file.readAll();
    file.close();
    if (image.size() < 8 || !image.startsWith("beno")) {
        logError("PARSE_AIO: can not find all-in-one start sign, file is invalid!");
        return false;
    }
    const auto* bytes = reinterpret_cast<const uint8_t*>(image.constData());
    auto u32At = [bytes](qint64 at) {
        return uint32_t(bytes[at]) | uint32_t(bytes[at + 1]) << 8 | uint32_t(bytes[at + 2]) << 16 |
               uint32_t(bytes[at + 3]) << 24;
    };
    const uint32_t count = u32At(4);
    logInfo("PARSE_AIO: find %d bin in all-in-one file", int(count));
    qint64 pos = 8;
    const qint64 end = image.size();
    // Every record is tested against the end of the data before it is read.
    for (uint32_t i = 0; i < count; ++i) {
        if (pos >= end) {
            logError("PARSE_AIO: has no file more to read! cur file index: %d", int(i));
            return false;
        }
        if (end - pos < kHeaderSize) {
            logError("PARSE_AIO: no data remain to read file header! cur file index: %d", int(i));
            return false;
        }
        AioItem item;
        item.dlType = u32At(pos);
        item.startAddr = u32At(pos + 4);
        const uint32_t len = u32At(pos + 8);
        pos += kHeaderSize;
        logInfo("PARSE_AIO: get file %d info: dlType: %d, startAddr: 0x%02x, len: 0x%02x", int(i),
                int(item.dlType), item.startAddr, len);
        if (qint64(len) > end - pos) {
            logError("PARSE_AIO: no data remain to read file content! cur file index: %d", int(i));
            return false;
        }
        item.data.append(bytes + pos, int(len));
        pos += len;
        items.append(item);
    }
    if (items.isEmpty()) {
        logError("PARSE_AIO: can not parse any file in all-in-one file!");
        return false;
    }
    return true;
}

namespace {

constexpr int kTextReplyMs = 500;
constexpr int kSignSettleMs = 100;
constexpr int kNvWriteMs = 3000;
constexpr int kLongCommandMs = 2000;
constexpr int kAfterRfSetMs = 50;
constexpr int kMacLength = 17;
constexpr int kTxPowerLength = 8;
const char* const kRecCount = "reccount";

std::string textFrom(const ByteBuffer& rsp, int pos, int len) {
    std::string out;
    rsp.slice(pos, len, out);
    return out;
}

QString flagText(bool flag) {
    return flag ? QStringLiteral("1") : QStringLiteral("0");
}

} // namespace

int AppQZ4410Imple::firmwareMode(int mode) {
    switch (mode) {
    case 0:
        return 1;
    case 1:
        return 0;
    case 2:
        return 3;
    default:
        return -1;
    }
}

QString AppQZ4410Imple::modeKeyText(int mode) {
    switch (mode) {
    case 0:
        return QStringLiteral("11B");
    case 1:
        return QStringLiteral("NONHT");
    case 2:
        return QStringLiteral("HT");
    default:
        return QString();
    }
}

int AppQZ4410Imple::modeLimit(int mode, int bandwidth) {
    if (mode == 0 || mode == 1)
        return 7;
    if (mode == 2 && bandwidth == 0)
        return 7;
    if (mode == 2 && bandwidth == 1)
        return 15;
    return -1;
}

bool AppQZ4410Imple::sendConfirmed(ComPort& port, const QString& cmd, const QString& expect,
                                   int timeoutMs) {
    ByteBuffer scratch;
    if (!port.sendAndWait(cmd.toStdString(), expect.toStdString(), scratch, timeoutMs, false)) {
        logError("SND_AT_CFM: send cmd and wait rsp failed: cmd: %s, rspMatch: %s",
                 cmd.toStdString().c_str(), expect.toStdString().c_str());
        return false;
    }
    return true;
}

bool AppQZ4410Imple::drainTimed(ComPort& port, int waitMs, int settleMs) {
    ByteBuffer scratch;
    return port.timedRead(scratch, waitMs, settleMs);
}

bool AppQZ4410Imple::measureSignal(ComPort& port, int count, float& sigRate, float& dutRate,
                                   float& rssi, float& dutRssi, int waitMs) {
    if (!port.writeLine(QStringLiteral("sigdsend %1").arg(count).toStdString(), false)) {
        logError("SIG_MEAS: send req failed!");
        return false;
    }
    // The board counts for a while before it reports; the read starts only after that.
    sleepMs(waitMs);
    ByteBuffer rsp;
    if (!port.timedRead(rsp, kTextReplyMs, 0)) {
        logError("SIG_MEAS: recv rsp timeout!");
        return false;
    }
    const int at = rsp.find("DUTR", 0, false);
    if (at < 0) {
        logError("SIG_MEAS: can not find DUTR word!");
        return false;
    }
    // From the word on the report must be this and nothing more, line end included.
    static const QRegularExpression report(QRegularExpression::anchoredPattern(
        QStringLiteral("DUTR:([0-9]+),SIGR:([0-9]+),RSSI:([0-9]+),DUT_RSSI:([0-9]+),")));
    const std::string tail = textFrom(rsp, at, rsp.size() - at);
    const QRegularExpressionMatch m = report.match(QString::fromStdString(tail));
    if (!m.hasMatch()) {
        logError("SIG_MEAS: recv data error: %s!", tail.c_str());
        return false;
    }
    const double dutr = m.captured(1).toDouble();
    const double sigr = m.captured(2).toDouble();
    dutRate = float(dutr / 250.0 * 100.0);
    sigRate = float(sigr / 250.0 * 100.0);
    rssi = float(m.captured(3).toDouble() - 255.0);
    dutRssi = float(m.captured(4).toDouble() - 255.0);
    return true;
}

bool AppQZ4410Imple::readMac(ComPort& port, const char* cmd, const char* tag, QString& mac) {
    if (!port.writeLine(cmd, false)) {
        logError("%s:  write at cmd failed!", tag);
        return false;
    }
    ByteBuffer rsp;
    if (!port.timedRead(rsp, kTextReplyMs, kSignSettleMs)) {
        logError("%s: recv rsp timeout!", tag);
        return false;
    }
    const std::string word = "OTP MAC:";
    const int at = rsp.find(word, 0, false);
    if (at < 0) {
        logError("%s: match mac failed！!", tag);
        return false;
    }
    const int from = at + int(word.size());
    if (from + kMacLength >= rsp.size()) {
        logError("%s: rsp length is small than wanna!", tag);
        return false;
    }
    mac = QString::fromStdString(textFrom(rsp, from, kMacLength));
    return true;
}

bool AppQZ4410Imple::getMacOtp(ComPort& port, QString& mac) {
    return readMac(port, "get_mac 1", "GET_MAC_OTP", mac);
}

bool AppQZ4410Imple::getMacAmt(ComPort& port, QString& mac) {
    return readMac(port, "get_mac 0", "GET_MAC_AMT", mac);
}

bool AppQZ4410Imple::setTestSign(ComPort& port, const QString& sign) {
    return TestSign::set(*this, port, sign);
}

bool AppQZ4410Imple::getTestSign(ComPort& port, QString& sign) {
    return TestSign::get(*this, port, sign);
}

bool AppQZ4410Imple::getStationSign(ComPort& port, int index, int& state) {
    return TestSign::getStation(*this, port, index, state);
}

bool AppQZ4410Imple::setStationSign(ComPort& port, int index, int state) {
    return TestSign::setStation(*this, port, index, state);
}

bool AppQZ4410Imple::writeAmtKey(ComPort& port, const QString& key, const QString& value) {
    ByteBuffer scratch;
    if (!port.sendAndWait(QStringLiteral("nvsamt %1 %2").arg(key, value).toStdString(), "OK",
                          scratch, kNvWriteMs, false)) {
        logError("WR_AMT_KEY: send cmd failed!");
        return false;
    }
    return true;
}

bool AppQZ4410Imple::writeAmtNvKey(ComPort& port, const QString& key, const QString& value) {
    ByteBuffer scratch;
    if (!port.sendAndWait(QStringLiteral("amt_nv_set %1 %2").arg(key, value).toStdString(),
                          "SUCCESS", scratch, kNvWriteMs, false)) {
        logError("WR_AMT_NV_KEY: send cmd failed!");
        return false;
    }
    return true;
}

bool AppQZ4410Imple::restartSystem(ComPort& port) {
    return sendConfirmed(port, QStringLiteral("resystem"), QStringLiteral("success"), kNvWriteMs);
}

bool AppQZ4410Imple::calibrateFreqOffset(ComPort& port, int mode, int fourth, int first,
                                         int bandwidth, int sixth, QString& value) {
    const QString cmd = QStringLiteral("amt_phy_tx_freqoffset_test %1 %2 %3 %4 %5 1 %6")
                            .arg(first)
                            .arg(bandwidth)
                            .arg(firmwareMode(mode))
                            .arg(fourth)
                            .arg(modeLimit(mode, bandwidth))
                            .arg(sixth);
    const std::string word = "freqoffset:";
    ByteBuffer rsp;
    if (!port.sendAndWait(cmd.toStdString(), word, rsp, kTextReplyMs, false)) {
        logError("SET_FREQ_CALV: send cmd failed!");
        return false;
    }
    // The value stands between the word and the "OK" behind it; the wait ended at the word,
    // so the "OK" is there only when the same read brought it.
    const int at = rsp.find(word, 0, false);
    const int from = at + int(word.size());
    const int ok = rsp.find("OK", at < 0 ? 0 : from, false);
    if (ok < 0) {
        logError("SET_FREQ_CALV: can not find OK sign!");
        return false;
    }
    if (at < 0) {
        logError("SET_FREQ_CALV: can not find [freqoffset:] sign!");
        return false;
    }
    value = QString::fromStdString(textFrom(rsp, from, ok - from));
    return true;
}

bool AppQZ4410Imple::saveFreqOffset(ComPort& port, const QString& value) {
    return writeAmtKey(port, QStringLiteral("FREQOFFSET"), value);
}

bool AppQZ4410Imple::saveFreqOffsetFlag(ComPort& port, bool flag) {
    return writeAmtNvKey(port, QStringLiteral("FREQOFFSET_FLAG"), flagText(flag));
}

bool AppQZ4410Imple::calibrateTxPower(ComPort& port, int mode, int first, QString& value) {
    const QString cmd = QStringLiteral("amt_txpower_cal %1 %2").arg(first).arg(firmwareMode(mode));
    const std::string word = "txpower:";
    ByteBuffer rsp;
    if (!port.sendAndWait(cmd.toStdString(), word, rsp, kLongCommandMs, false)) {
        logError("SET_POWER_CALV: send cmd failed!");
        return false;
    }
    if (rsp.find("OK", 0, false) < 0) {
        logError("SET_POWER_CALV: can not find OK sign!");
        return false;
    }
    const int at = rsp.find(word, 0, false);
    if (at < 0) {
        logError("SET_POWER_CALV: can not find [%s] sign!", word.c_str());
        return false;
    }
    // A fixed-width field behind the word. A reply that ends sooner holds no field at all,
    // and the empty cut is reported like a blank one.
    const QString field =
        QString::fromStdString(textFrom(rsp, at + int(word.size()), kTxPowerLength)).trimmed();
    if (field.isEmpty()) {
        logError("获取到寄存器的值为空!");
        return false;
    }
    value = field;
    return true;
}

bool AppQZ4410Imple::saveTxPower(ComPort& port, int mode, int channel, const QString& value) {
    const QString key =
        QStringLiteral("TXPOWER_%1CH%2").arg(modeKeyText(mode), QString::number(channel));
    return writeAmtKey(port, key, value);
}

bool AppQZ4410Imple::saveTxPowerFlag(ComPort& port, bool flag) {
    return writeAmtNvKey(port, QStringLiteral("TXPOWER_FLAG"), flagText(flag));
}

bool AppQZ4410Imple::saveCalibrationFlag(ComPort& port, bool flag) {
    return writeAmtNvKey(port, QStringLiteral("CALIBRATION"), flagText(flag));
}

bool AppQZ4410Imple::setRfBandwidth(ComPort& port, int bandwidth) {
    if (!sendConfirmed(port, QStringLiteral("rf bw_set %1").arg(bandwidth), QStringLiteral("OK"),
                       kTextReplyMs))
        return false;
    // Gives the radio time to settle before the next command.
    sleepMs(kAfterRfSetMs);
    return true;
}

bool AppQZ4410Imple::startPhyTx(ComPort& port, int mode, int fourth, int first, int bandwidth,
                                int fifth) {
    if (!setRfBandwidth(port, bandwidth))
        return false;
    const QString cmd = QStringLiteral("amt_phy_tx_test %1 %2 %3 %4 %5 %6")
                            .arg(first)
                            .arg(bandwidth)
                            .arg(firmwareMode(mode))
                            .arg(fourth)
                            .arg(fifth)
                            .arg(1);
    return sendConfirmed(port, cmd, QStringLiteral("OK"), kTextReplyMs);
}

bool AppQZ4410Imple::startPhyTxAuto(ComPort& port, int mode, int fourth, int first, int bandwidth) {
    return startPhyTx(port, mode, fourth, first, bandwidth, modeLimit(mode, bandwidth));
}

bool AppQZ4410Imple::startPhyTxFixed(ComPort& port) {
    if (!sendConfirmed(port, QStringLiteral("amt_phy_tx_test 1 0 1 1 1 0"), QStringLiteral("OK"),
                       kTextReplyMs))
        return false;
    sleepMs(kAfterRfSetMs);
    return true;
}

bool AppQZ4410Imple::startPhyRx(ComPort& port, int first, int bandwidth) {
    if (!setRfBandwidth(port, bandwidth))
        return false;
    return sendConfirmed(port, QStringLiteral("amt_phy_rx_test %1 1").arg(first),
                         QString::fromLatin1(kRecCount), kTextReplyMs);
}

bool AppQZ4410Imple::stopPhyRx(ComPort& port, int first, int& count) {
    const std::string word = kRecCount;
    ByteBuffer rsp;
    if (!port.sendAndWait(QStringLiteral("amt_phy_rx_test %1 0").arg(first).toStdString(), word,
                          rsp, kLongCommandMs, false)) {
        logError("STOP_RX: can not find [%s]!", kRecCount);
        return false;
    }
    // The count stands between the word and "end"; both came with the read that ended the wait.
    const int at = rsp.find(word, 0, false);
    const int from = at + int(word.size());
    const int end = at < 0 ? -1 : rsp.find("end", from, false);
    if (end < 0) {
        logError("STOP_RX: can not find %s or end sign!", kRecCount);
        return false;
    }
    count = std::atoi(textFrom(rsp, from, end - from).c_str());
    return true;
}
