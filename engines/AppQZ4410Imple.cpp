#include "engines/AppQZ4410Imple.h"

#include "base/BaseUtils.h"
#include "base/ComPort.h"

#include <QFile>

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
constexpr uint32_t kBaudCodes[] = {115200, 57600,   0,       380400,  460800,
                                   576000, 691200,  806400,  921600,  1561600,
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
