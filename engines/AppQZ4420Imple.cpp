#include "engines/AppQZ4420Imple.h"

#include "base/BaseUtils.h"
#include "base/ByteBuffer.h"
#include "base/ComPort.h"
#include "base/Deadline.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cmath>

namespace {

// Request frame types of the stub.
enum FrameType : uint8_t {
    kPing = 0,
    kDownloadRam = 1,
    kDownloadFlash = 2,
    kReadFlash = 3,
    kEraseRange = 4,
    kEraseAll = 5,
    kStartSoftware = 6,
    kChangeBaud = 7,
};

constexpr uint8_t kRequestStart = 0xA5;
constexpr uint8_t kReplyStart = 0x5A;
constexpr uint32_t kHeaderWaitMs = 15000;
constexpr uint32_t kBlockWaitMs = 500;
constexpr uint32_t kShortWaitMs = 500;
constexpr uint32_t kReadWaitMs = 3000;
constexpr uint32_t kEraseWaitMs = 10000;
// One read of a reply may itself wait this long; the reply's own limit is looked at between.
constexpr int kReplyReadMs = 3000;
// Text command channel.
constexpr int kCommandWaitMs = 500;
constexpr int kResetDrainMs = 60;
constexpr int kAfterStateDrainMs = 200;
constexpr int kRebootWaitMs = 1000;
constexpr int kRebootSettleMs = 50;
// The count byte of an all-in-one image holds the stub and every entry.
constexpr int kAioMaxRecords = 255;

QByteArray words(std::initializer_list<uint32_t> values) {
    SysByteArray bytes;
    for (uint32_t v : values)
        bytes.appendU32(v);
    return bytes.bytes();
}

// Writes the image bytes to a fresh file at path, making its folder first.
bool writeWholeFile(const QString& path, const QByteArray& bytes, qint64* written) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    *written = file.write(bytes);
    file.close();
    return true;
}

} // namespace

AppQZ4420Imple::AppQZ4420Imple() = default;

AppQZ4420Imple::~AppQZ4420Imple() = default;

bool AppQZ4420Imple::takeFlashNotEnough() {
    const bool was = flashNotEnough;
    flashNotEnough = false;
    return was;
}

uint8_t AppQZ4420Imple::frameSum(const uint8_t* bytes, int count) {
    uint8_t sum = 0;
    for (int i = 0; i < count; ++i)
        sum = uint8_t(sum + bytes[i]);
    return sum;
}

bool AppQZ4420Imple::sendReq(ComPort& port, uint8_t type, const QByteArray& payload) {
    ByteBuffer frame;
    frame.appendByte(kRequestStart);
    frame.appendByte(type);
    frame.appendU16(unsigned(payload.size()));
    frame.append(payload.constData(), payload.size());
    frame.appendByte(frameCheck ? frameSum(frame.data(), frame.size()) : uint8_t(0));
    if (!port.write(frame)) {
        logError("SEND_REQ: write data failed!");
        return false;
    }
    return true;
}

bool AppQZ4420Imple::recvRsp(ComPort& port, uint8_t type, QByteArray* out, uint32_t timeoutMs) {
    const Deadline deadline(timeoutMs);
    ByteBuffer reply;
    ByteBuffer chunk;
    bool complete = false;
    int payloadLen = 0;
    while (!deadline.expired()) {
        if (!port.timedRead(chunk, kReplyReadMs, 0) || chunk.empty()) {
            sleepMs(1);
            continue;
        }
        reply.append(chunk.data(), chunk.size());
        if (reply.size() < 4)
            continue;
        if (reply[0] != kReplyStart) {
            logError("RECV_RSP: recv magic is error!");
            return false;
        }
        payloadLen = reply[2] | reply[3] << 8;
        if (reply.size() >= 6 + payloadLen) {
            complete = true;
            break;
        }
    }
    if (!complete) {
        logError("RECV_RSP: recv timeout: recv length is: %d", reply.size());
        return false;
    }
    if (reply[1] != type) {
        logError("RECV_RSP: recv frame type is wrong: %02x!", reply[1]);
        return false;
    }
    flashNotEnough = false;
    const uint8_t state = reply[4 + payloadLen];
    if (state == 1) {
        logError("RECV_RSP: rsp sign indicates [FAILED]!");
        return false;
    }
    if (state == 2) {
        logError("RECV_RSP: FLASH is not enough!");
        flashNotEnough = true;
        return false;
    }
    if (state != 0) {
        logError("RECV_RSP: state sign value is wrong: %02x", state);
        return false;
    }
    if (frameCheck) {
        const uint8_t sum = frameSum(reply.data(), 5 + payloadLen);
        if (sum != reply[5 + payloadLen]) {
            logError("RECV_RSP: crc is wrong: %02x => %02x", sum, reply[5 + payloadLen]);
            return false;
        }
    }
    if (payloadLen != 0 && out)
        out->append(reinterpret_cast<const char*>(reply.at(4)), payloadLen);
    return true;
}

bool AppQZ4420Imple::recvRsp(ComPort& port, uint8_t type, uint32_t timeoutMs) {
    return recvRsp(port, type, nullptr, timeoutMs);
}

bool AppQZ4420Imple::exchange(ComPort& port, uint8_t type, const QByteArray& payload,
                              uint32_t timeoutMs) {
    return exchange(port, type, payload, nullptr, timeoutMs);
}

bool AppQZ4420Imple::exchange(ComPort& port, uint8_t type, const QByteArray& payload,
                              QByteArray* out, uint32_t timeoutMs) {
    return sendReq(port, type, payload) && recvRsp(port, type, out, timeoutMs);
}

bool AppQZ4420Imple::readFile(const QString& path, SysByteArray& out) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        logError("RD_FILE: can not open file: %s", path.toStdString().c_str());
        return false;
    }
    out = SysByteArray(file.readAll());
    return true;
}

bool AppQZ4420Imple::pingBoard(ComPort& port) {
    return exchange(port, kPing, QByteArray(), kShortWaitMs);
}

bool AppQZ4420Imple::downloadFile(ComPort& port, const QString& path, uint32_t address) {
    SysByteArray data;
    return readFile(path, data) && downloadData(port, data, address);
}

bool AppQZ4420Imple::downloadData(ComPort& port, const SysByteArray& data, uint32_t address) {
    return downloadTrunk(port, data, address, true, 3);
}

bool AppQZ4420Imple::downloadEntry(ComPort& port, const DownloadItem& item) {
    SysByteArray data;
    return readFile(item.path, data) &&
           downloadTrunk(port, data, item.startAddr, item.toRam, 3);
}

bool AppQZ4420Imple::downloadTrunk(ComPort& port, const SysByteArray& data, uint32_t address,
                                   bool toRam, int tries) {
    const uint8_t type = toRam ? kDownloadRam : kDownloadFlash;
    const uint32_t size = uint32_t(data.size());

    bool headerTaken = false;
    for (int t = 0; t < tries && !headerTaken; ++t) {
        headerTaken = exchange(port, type, words({address, size}), kHeaderWaitMs);
        if (headerTaken)
            break;
        if (takeFlashNotEnough())
            return false;
        logInfo("DL_TRUNK: try file header send, addr: 0x%02x, len: 0x%02x", address, size);
    }
    if (!headerTaken) {
        logError("DL_TRUNK: file header info send failed, addr: 0x%02x, len: 0x%02x", address,
                 size);
        return false;
    }

    const int blocks = int((size + uint32_t(blockSize) - 1) / uint32_t(blockSize));
    logInfo("DL_TRUNK: the file will be slice to %d blocks...", blocks);
    float lastPercent = 0;
    for (int i = 0; i < blocks; ++i) {
        const int offset = i * blockSize;
        const int length = std::min(blockSize, int(size) - offset);
        QByteArray payload;
        if (blockRetryMark)
            payload.append('\0');
        payload.append(data.constData() + offset, length);

        bool written = false;
        for (int t = 0; t < tries; ++t) {
            if (blockRetryMark)
                payload[0] = char(t == 0 ? 0 : 1);
            written = exchange(port, type, payload, kBlockWaitMs);
            if (written)
                break;
            if (takeFlashNotEnough())
                return false;
            logInfo("DL_TRUNK: try data write, block: %d,  pos: (0x%02x, 0x%02x)", i, offset,
                    length);
        }
        if (!written) {
            logError("DL_TRUNK: data write failed, block: %d,  pos: (0x%02x, 0x%02x)", i, offset,
                     length);
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

bool AppQZ4420Imple::changeBaud(ComPort& port, uint32_t baud) {
    port.flushInput();
    port.flushOutput();
    if (!sendReq(port, kChangeBaud, words({baud}))) {
        logError("CHG_BAUD: send change baudrate cmd failed!");
        return false;
    }
    sleepMs(3);
    const int oldBaud = port.baudrate();
    if (!port.setBaudrate(int(baud))) {
        logError("CHG_BAUD: can not change serial port baudrate to: %d", int(baud));
        return false;
    }
    if (!recvRsp(port, kChangeBaud, kShortWaitMs)) {
        port.setBaudrate(oldBaud);
        logError("CHG_BAUD: recv rsp failed!");
        return false;
    }
    return true;
}

bool AppQZ4420Imple::startSoftware(ComPort& port, uint32_t address) {
    return exchange(port, kStartSoftware, words({address}), kShortWaitMs);
}

bool AppQZ4420Imple::readFlash(ComPort& port, uint32_t address, uint32_t length,
                               SysByteArray& out) {
    const int trunks = int(std::ceil(float(length) / float(blockSize)));
    logInfo("UP_FLASH: the upload block will slice to %d trunks", trunks);
    if (trunks <= 0) {
        logError("UP_FLASH: no trunk can be upload!");
        return false;
    }
    int lastPercent = 0;
    for (int i = 0; i < trunks; ++i) {
        const uint32_t offset = uint32_t(i) * uint32_t(blockSize);
        const uint32_t position = address + offset;
        const uint32_t size = i == trunks - 1 ? length - offset : uint32_t(blockSize);
        QByteArray data;
        if (!exchange(port, kReadFlash, words({position, size}), &data, kReadWaitMs)) {
            logError("UP_FLASH: meet error when request the trunk %d,  pos: (0x%02x, 0x%02x)", i,
                     position, size);
            return false;
        }
        out.append(data.constData(), data.size());
        const float percent = float(i + 1) / float(trunks) * 100.0f;
        if (percent - float(lastPercent) >= 10.0f || i == trunks - 1) {
            logInfo("UP_FLASH: data uploaded %.2f%%", double(percent));
            lastPercent = int(percent);
        }
    }
    return true;
}

bool AppQZ4420Imple::readFlashToFile(ComPort& port, uint32_t address, uint32_t length,
                                     const QString& path) {
    SysByteArray data;
    if (!readFlash(port, address, length, data))
        return false;
    qint64 written = 0;
    if (!writeWholeFile(path, data.bytes(), &written)) {
        logError("UP_FLASH: open file failed!");
        return false;
    }
    return true;
}

bool AppQZ4420Imple::eraseFlash(ComPort& port, uint32_t address, uint32_t size) {
    return exchange(port, kEraseRange, words({address, size}), kEraseWaitMs);
}

bool AppQZ4420Imple::eraseAll(ComPort& port) {
    return exchange(port, kEraseAll, QByteArray(), kEraseWaitMs);
}

bool AppQZ4420Imple::createAio(const QString& stubPath, const QVector<AioEntry>& entries,
                               const QString& outPath, uint32_t stubAddr) {
    if (entries.size() + 1 > kAioMaxRecords) {
        logError("CREATE_AIO: too many files: %d, an all-in-one file holds at most %d with the "
                 "stub!",
                 entries.size() + 1, kAioMaxRecords);
        return false;
    }
    SysByteArray image;
    image.appendText(QStringLiteral("oneb"));
    image.appendU8(uint8_t(entries.size() + 1));

    auto appendRecord = [&image, this](const QString& path, uint8_t dlType, uint32_t address) {
        SysByteArray content;
        if (!readFile(path, content)) {
            logError("CREATE_AIO: read all data failed: %s", path.toStdString().c_str());
            return false;
        }
        image.appendU8(dlType);
        image.appendU32(address);
        image.appendU32(uint32_t(content.size()));
        image.append(content);
        return true;
    };
    if (!appendRecord(stubPath, 0, stubAddr))
        return false;
    for (const AioEntry& entry : entries)
        if (!appendRecord(entry.path, entry.toRam ? 1 : 2, entry.startAddr))
            return false;

    qint64 written = 0;
    if (!writeWholeFile(outPath, image.bytes(), &written)) {
        logError("CREATE_AIO: can not create all-in-one file!");
        return false;
    }
    if (written != image.size()) {
        logError("CREATE_AIO: data has not been written: %d => %d!", image.size(), int(written));
        return false;
    }
    return true;
}

bool AppQZ4420Imple::parseAio(const QString& path, SysByteArray& stub, QVector<AioEntry>& entries,
                              uint32_t& stubAddr) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        logError("PARSE_AIO: can not open all-in-one file!");
        return false;
    }
    SysByteArray image(file.readAll());
    file.close();
    if (image.size() < 5 || !image.bytes().startsWith("oneb")) {
        logError("PARSE_AIO: can not find all-in-one start sign, file is invalid!");
        return false;
    }
    image.seek(4);
    const int count = image.readU8();
    logInfo("PARSE_AIO: find %d bin in all-in-one file", count);
    for (int i = 0; i < count; ++i) {
        if (!image.hasMore()) {
            logError("PARSE_AIO: has no file more to read! cur file index: %d", i);
            return false;
        }
        if (image.remaining() < 9) {
            logError("PARSE_AIO: no data remain to read file header! cur file index: %d", i);
            return false;
        }
        const uint8_t dlType = image.readU8();
        const uint32_t startAddr = image.readU32();
        const uint32_t len = image.readU32();
        logInfo("PARSE_AIO: get file %d info: dlType: %d, startAddr: 0x%02x, len: 0x%02x", i,
                dlType, startAddr, len);
        if (uint32_t(image.remaining()) < len) {
            logError("PARSE_AIO: no data remain to read file content! cur file index: %d", i);
            return false;
        }
        if (dlType == 0) {
            stubAddr = startAddr;
            image.readBytes(int(len), stub);
            continue;
        }
        AioEntry entry;
        entry.toRam = dlType == 1;
        entry.startAddr = startAddr;
        image.readBytes(int(len), entry.data);
        entries.append(entry);
    }
    if (entries.isEmpty()) {
        logError("PARSE_AIO: no any common file in all-in-one file!");
        return false;
    }
    return true;
}

bool AppQZ4420Imple::sendCmd(ComPort& port, const QString& cmd, const QString& expect,
                             int timeoutMs) {
    ByteBuffer scratch;
    return sendCmdRsp(port, cmd, expect, scratch, timeoutMs);
}

bool AppQZ4420Imple::sendCmdRsp(ComPort& port, const QString& cmd, const QString& expect,
                                ByteBuffer& rsp, int timeoutMs) {
    return port.sendAndWait(cmd.toStdString(), expect.toStdString(), rsp, timeoutMs, false);
}

QStringList AppQZ4420Imple::commaItems(ByteBuffer rsp) {
    rsp.fill(0, 1);
    return QString::fromStdString(rsp.text()).split(',', Qt::KeepEmptyParts);
}

bool AppQZ4420Imple::openComPort(ComPort& port, int portNo, int baud, bool closeEcho) {
    if (!port.open(portNo, baud)) {
        logError("OPEN_COM_PORT: open port failed: %d", portNo);
        return false;
    }
    if (closeEcho && !setEcho(port, false, 0)) {
        port.close();
        logError("OPEN_COM_PORT: close echo failed!");
        return false;
    }
    return true;
}

bool AppQZ4420Imple::openComPortInState(ComPort& port, int portNo, int baud, int state) {
    if (!port.open(portNo, baud)) {
        logError("OPEN_COM_PORT: open port failed: %d", portNo);
        return false;
    }
    if (!switchToState(port, state)) {
        port.close();
        logError("OPEN_COM_PORT: make sure state failed!");
        return false;
    }
    return true;
}

bool AppQZ4420Imple::switchVersion(ComPort& port, int state) {
    hardwareRestart(port, kResetDrainMs);
    if (!sendCmd(port, QStringLiteral("amt_start %1").arg(state), QStringLiteral("OK"),
                 kCommandWaitMs))
        return false;
    port.drainFor(kAfterStateDrainMs);
    return true;
}

bool AppQZ4420Imple::switchToState(ComPort& port, int state) {
    if (!switchVersion(port, state)) {
        logError("MAKE_SURE_STATE: can not switch to soft state: %d", state);
        return false;
    }
    return true;
}

bool AppQZ4420Imple::makeSureState(ComPort& port, int state) {
    int current = 0;
    if (!getVersionState(port, current)) {
        logError("MAKE_SURE_STATE: get cur state failed!");
        return false;
    }
    if (current == state)
        return true;
    if (!switchVersion(port, state)) {
        logError("MAKE_SURE_STATE: can not switch to soft state: %d", state);
        return false;
    }
    if (!setEcho(port, false, 0)) {
        logError("MAKE_SURE_STATE: close echo failed!");
        return false;
    }
    return true;
}

bool AppQZ4420Imple::getVersionState(ComPort& port, int& state) {
    ByteBuffer rsp;
    if (!sendCmdRsp(port, QStringLiteral("get_version_type"), QStringLiteral("OK"), rsp,
                    kCommandWaitMs))
        return false;
    const QStringList items = commaItems(rsp);
    if (items.size() < 2) {
        logError("GET_CUR_STATE: rsp can not slice to 2 items!");
        return false;
    }
    state = items[0].toInt(nullptr, 10);
    return true;
}

bool AppQZ4420Imple::isVersionState(ComPort& port, int state) {
    int current = 0;
    return getVersionState(port, current) && current == state;
}

bool AppQZ4420Imple::versionStateKnown(ComPort& port) {
    int current = 0;
    return getVersionState(port, current);
}

bool AppQZ4420Imple::setEcho(ComPort& port, bool on, int totalMs) {
    const Deadline deadline(uint32_t(std::max(totalMs, 0)));
    const QString cmd = QStringLiteral("echoclose %1").arg(on ? 1 : 0);
    for (;;) {
        if (sendCmd(port, cmd, QStringLiteral("OK"), kCommandWaitMs))
            return true;
        if (deadline.expired())
            return false;
    }
}

bool AppQZ4420Imple::hardwareRestart(ComPort& port, int drainMs) {
    port.setDtr(false);
    port.setRts(true);
    sleepMs(1);
    port.setRts(false);
    if (drainMs > 0)
        port.drainFor(drainMs);
    return true;
}

bool AppQZ4420Imple::softwareRestart(ComPort& port, bool ping) {
    if (!port.writeLine("reboot", false)) {
        logError("RESTART: reboot cmd send failed!");
        return false;
    }
    ByteBuffer scratch;
    port.timedRead(scratch, kRebootWaitMs, kRebootSettleMs);
    if (ping && !pingAtState(port, 100, 1000)) {
        logError("RESTART: ping AT state failed!");
        return false;
    }
    return true;
}

bool AppQZ4420Imple::pingAtState(ComPort& port, int pauseMs, int totalMs) {
    const Deadline deadline(uint32_t(std::max(totalMs, 0)));
    const bool wasEnabled = logEnabled;
    setLogEnabled(false);
    for (;;) {
        if (deadline.expired()) {
            setLogEnabled(wasEnabled);
            return false;
        }
        int state = 0;
        if (getVersionState(port, state)) {
            setLogEnabled(wasEnabled);
            return true;
        }
        sleepMs(pauseMs);
    }
}
