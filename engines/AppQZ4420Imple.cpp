#include "engines/AppQZ4420Imple.h"

#include "engines/TestSign.h"

#include "base/BaseUtils.h"
#include "base/ByteBuffer.h"
#include "base/ComPort.h"
#include "base/Deadline.h"

#include <cstring>

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
    return readFile(item.path, data) && downloadTrunk(port, data, item.startAddr, item.toRam, 3);
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

// ---------------------------------------------------------------------------------------------
// Board parameters

bool AppQZ4420Imple::okCommand(ComPort& port, const QString& cmd) {
    return sendCmd(port, cmd, QStringLiteral("OK"), kCommandWaitMs);
}

QString AppQZ4420Imple::nvWord(int nvType, int action) {
    static const char* const kWords[3][3] = {
        {"anvs", "anvg", "anvd"}, {"dnvs", "dnvg", "dnvd"}, {"cnvs", "cnvg", "cnvd"}};
    if (nvType < 1 || nvType > 3) {
        logError("invalid nv type: %d", nvType);
        return QString();
    }
    return QString::fromLatin1(kWords[nvType - 1][action]);
}

bool AppQZ4420Imple::setMac(ComPort& port, int location, const QString& mac) {
    return okCommand(port, QStringLiteral("amt_set_mac %1 %2").arg(location).arg(mac));
}

bool AppQZ4420Imple::getMac(ComPort& port, QString& mac) {
    ByteBuffer rsp;
    if (!sendCmdRsp(port, QStringLiteral("amt_get_mac"), QStringLiteral("OK"), rsp, kCommandWaitMs))
        return false;
    rsp.fill(0, 1);
    const QStringList found = regexFindAll(QStringLiteral("[0-9a-fA-F]{2}(:[0-9a-fA-F]{2}){5}"),
                                           QString::fromStdString(rsp.text()));
    if (found.isEmpty())
        return false;
    mac = found.first();
    return true;
}

bool AppQZ4420Imple::setNv(ComPort& port, int nvType, const QString& name, const QString& value) {
    const QString word = nvWord(nvType, 0);
    return !word.isEmpty() && okCommand(port, QStringLiteral("%1 %2 %3").arg(word, name, value));
}

bool AppQZ4420Imple::getNv(ComPort& port, int nvType, const QString& name, QString& value) {
    const QString word = nvWord(nvType, 1);
    if (word.isEmpty())
        return false;
    ByteBuffer rsp;
    if (!sendCmdRsp(port, QStringLiteral("%1 %2").arg(word, name), QStringLiteral("OK"), rsp,
                    kCommandWaitMs))
        return false;
    for (int i = 0; i < rsp.size(); ++i)
        if (rsp[i] == '\r' || rsp[i] == '\n')
            rsp[i] = ' ';
    rsp.fill(0, 1);
    QString text = QString::fromStdString(rsp.text());
    text.remove(QStringLiteral("OK"));
    const QString mark = QStringLiteral("value: ");
    const int at = text.lastIndexOf(mark);
    // Without the word the firmware broke its side of the exchange; the whole text is all
    // there is to show.
    value = (at < 0 ? text : text.mid(at + mark.size())).trimmed();
    return true;
}

bool AppQZ4420Imple::removeNv(ComPort& port, int nvType, const QString& name) {
    const QString word = nvWord(nvType, 2);
    return !word.isEmpty() && okCommand(port, QStringLiteral("%1 %2").arg(word, name));
}

bool AppQZ4420Imple::readAllNv(ComPort& port, int nvType, QList<QStringList>& entries) {
    const QString word = nvWord(nvType, 1);
    if (word.isEmpty())
        return false;
    ByteBuffer rsp;
    if (!sendCmdRsp(port, QStringLiteral("%1 all").arg(word), QStringLiteral("OK"), rsp,
                    kCommandWaitMs))
        return false;
    rsp.fill(0, 1);
    QString text = QString::fromStdString(rsp.text());
    text.remove(QStringLiteral("OK"));
    for (const QString& line : text.split(QStringLiteral("\r\n"), Qt::KeepEmptyParts)) {
        const QStringList pair = line.split('=', Qt::KeepEmptyParts);
        if (pair.size() == 2)
            entries.append(pair);
    }
    return true;
}

bool AppQZ4420Imple::setRegister(ComPort& port, unsigned address, unsigned value) {
    return okCommand(port, QString::asprintf("amt_set 0x%x 0x%x", address, value));
}

bool AppQZ4420Imple::getRegister(ComPort& port, unsigned address, unsigned& value) {
    ByteBuffer rsp;
    if (!sendCmdRsp(port, QString::asprintf("amt_get 0x%x", address), QStringLiteral("OK"), rsp,
                    kCommandWaitMs))
        return false;
    const QStringList items = commaItems(rsp);
    if (items.size() < 2) {
        logError("GET_MAC: rsp can not slice to 2 items!");
        return false;
    }
    value = items[0].toLower().remove(QStringLiteral("0x")).toUInt(nullptr, 16);
    return true;
}

bool AppQZ4420Imple::setTestSign(ComPort& port, const QString& sign) {
    return TestSign::set(*this, port, sign);
}

bool AppQZ4420Imple::getTestSign(ComPort& port, QString& sign) {
    return TestSign::get(*this, port, sign);
}

bool AppQZ4420Imple::getStationSign(ComPort& port, int index, int& state) {
    return TestSign::getStation(*this, port, index, state);
}

bool AppQZ4420Imple::setStationSign(ComPort& port, int index, int state) {
    return TestSign::setStation(*this, port, index, state);
}

bool AppQZ4420Imple::writeAmtKey(ComPort& port, const QString& key, const QString& value,
                                 int waitMs, int settleMs) {
    if (!port.writeLine(QStringLiteral("nvsamt %1 %2").arg(key, value).toStdString(), false)) {
        logError("WR_AMT_KEY: send cmd failed!");
        return false;
    }
    ByteBuffer rsp;
    if (!port.timedRead(rsp, waitMs, settleMs)) {
        logError("WR_AMT_KEY: recv timeout!");
        return false;
    }
    if (rsp.find("SUCCESS", 0, false) < 0) {
        logError("WR_AMT_KEY: can not find SUCCESS sign!");
        return false;
    }
    return true;
}

// ---------------------------------------------------------------------------------------------
// Efuse

bool AppQZ4420Imple::readEfuse(ComPort& port, int offset, int bytes, QList<unsigned>& words) {
    ByteBuffer rsp;
    if (!sendCmdRsp(port, QString::asprintf("efuse read 0x%x %d", offset, bytes),
                    QStringLiteral("OK"), rsp, kCommandWaitMs))
        return false;
    rsp.fill(0, 1);
    QString text = QString::fromStdString(rsp.text());
    text.remove(QStringLiteral("OK"));
    text.remove('\r');
    text.remove('\n');
    text.remove(' ');
    for (const QString& item : text.split(',', Qt::KeepEmptyParts))
        words.append(item.toLower().remove(QStringLiteral("0x")).toUInt(nullptr, 16));
    return true;
}

bool AppQZ4420Imple::writeEfuseWord(ComPort& port, int offset, unsigned word) {
    return okCommand(port,
                     QString::asprintf("efuse write 0x%x 0x%08x 0x%8x", offset, word, ~word)) &&
           confirmEfuseWrite(port);
}

bool AppQZ4420Imple::writeEfuseWords(ComPort& port, int offset, const QList<unsigned>& words) {
    for (int i = 0; i < words.size(); ++i)
        if (!writeEfuseWord(port, offset + 4 * i, words[i]))
            return false;
    return true;
}

bool AppQZ4420Imple::confirmEfuseWrite(ComPort& port) {
    return okCommand(port, QStringLiteral("efuse write_confirmation"));
}

bool AppQZ4420Imple::readEfuseState(ComPort& port, unsigned& word) {
    QList<unsigned> words;
    if (!readEfuse(port, kEfuseStateOffset, 4, words) || words.isEmpty())
        return false;
    word = words.first();
    return true;
}

bool AppQZ4420Imple::writeEfuseState(ComPort& port, unsigned word) {
    return writeEfuseWord(port, kEfuseStateOffset, word);
}

// A field of the state word: one to eight bits, wholly inside the 32-bit word.
static bool stateFieldFits(int offset, int width) {
    return offset >= 0 && width >= 1 && width <= 8 && offset + width <= 32;
}

bool AppQZ4420Imple::readStateBits(ComPort& port, int offset, int width, unsigned char& value) {
    unsigned word = 0;
    if (!stateFieldFits(offset, width) || !readEfuseState(port, word))
        return false;
    value = static_cast<unsigned char>((word >> offset) & ((1u << width) - 1));
    return true;
}

bool AppQZ4420Imple::writeStateBits(ComPort& port, int offset, int width, unsigned char value) {
    unsigned word = 0;
    if (!stateFieldFits(offset, width) || !readEfuseState(port, word))
        return false;
    const unsigned mask = ((1u << width) - 1) << offset;
    // A value wider than its field burns nothing outside it: efuse bits cannot be cleared.
    word = (word & ~mask) | ((unsigned(value) << offset) & mask);
    return writeEfuseState(port, word);
}

bool AppQZ4420Imple::readStateBit(ComPort& port, int bit, bool& value) {
    unsigned char v = 0;
    if (!readStateBits(port, bit, 1, v))
        return false;
    value = v != 0;
    return true;
}

bool AppQZ4420Imple::writeStateBit(ComPort& port, int bit, bool value) {
    return writeStateBits(port, bit, 1, value ? 1 : 0);
}

bool AppQZ4420Imple::getEfuseState(ComPort& port, EfuseState& state) {
    unsigned word = 0;
    if (!readEfuseState(port, word))
        return false;
    auto bit = [word](int n) { return ((word >> n) & 1u) != 0; };
    state.flashEcryptCount = (word >> 8) & 0xFF;
    state.safeBootMode = bit(2);
    state.flashEncryptEnabled = bit(3);
    state.bit4 = bit(4);
    state.aesPrivateKeyReadable = bit(5);
    state.aesPrivateKeyWritable = bit(6);
    state.frequency = bit(16);
    state.bootromLogOutput = bit(17);
    state.bit18 = bit(18);
    state.bootromStartupType = bit(19);
    return true;
}

bool AppQZ4420Imple::readAesKey(ComPort& port, QList<unsigned>& words) {
    return readEfuse(port, kEfuseAesOffset, kEfuseAesBytes, words);
}

bool AppQZ4420Imple::readEccKey(ComPort& port, QList<unsigned>& words) {
    return readEfuse(port, kEfuseEccOffset, kEfuseEccBytes, words);
}

bool AppQZ4420Imple::readReservedArea(ComPort& port, QList<unsigned>& words) {
    return readEfuse(port, kEfuseReservedOffset, kEfuseReservedBytes, words);
}

bool AppQZ4420Imple::writeAesKey(ComPort& port, const QList<unsigned>& words) {
    return writeEfuseWords(port, kEfuseAesOffset, words);
}

bool AppQZ4420Imple::writeEccKey(ComPort& port, const QList<unsigned>& words) {
    return writeEfuseWords(port, kEfuseEccOffset, words);
}

bool AppQZ4420Imple::writeReservedArea(ComPort& port, const QList<unsigned>& words) {
    return writeEfuseWords(port, kEfuseReservedOffset, words);
}

bool AppQZ4420Imple::loadEccKeyFile(const QString& path, QList<unsigned>& words) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        logError("open file failed: %s", path.toStdString().c_str());
        return false;
    }
    const QByteArray key = file.readAll().left(kEfuseEccBytes);
    file.close();
    if (key.isEmpty())
        return false;
    for (int at = 0; at < key.size(); at += 4) {
        unsigned word = 0;
        for (int i = 0; i < 4 && at + i < key.size(); ++i)
            word |= unsigned(uint8_t(key[at + i])) << (8 * i);
        words.append(word);
    }
    return true;
}

bool AppQZ4420Imple::writeEccKeyFile(ComPort& port, const QString& path) {
    QList<unsigned> words;
    return loadEccKeyFile(path, words) && writeEccKey(port, words);
}

bool AppQZ4420Imple::writeAesFromTrng(ComPort& port) {
    return okCommand(port, QStringLiteral("efuse write_AES_TRNG")) && confirmEfuseWrite(port);
}

bool AppQZ4420Imple::readEfuseText(ComPort& port, int offset, int bytes, QString& text) {
    QList<unsigned> words;
    if (!readEfuse(port, offset, bytes, words))
        return false;
    SysByteArray raw;
    for (unsigned w : words)
        raw.appendU32(w);
    const QByteArray& b = raw.bytes();
    text = QString::fromStdString(
        std::string(b.constData(), strnlen(b.constData(), size_t(b.size()))));
    return true;
}

bool AppQZ4420Imple::writeEfuseText(ComPort& port, int offset, const QString& text) {
    for (int start = 0; start < text.size(); start += 4) {
        const std::string piece = text.mid(start, 4).toStdString();
        unsigned word = 0;
        for (size_t i = 0; i < piece.size() && i < 4; ++i)
            word |= unsigned(uint8_t(piece[i])) << (8 * i);
        if (!writeEfuseWord(port, offset + start, word))
            return false;
    }
    return true;
}

// ---------------------------------------------------------------------------------------------
// Wi-Fi RF tests

int AppQZ4420Imple::wifiModeNumber(int modeIndex) {
    static const int kNumbers[] = {0, 1, 2, -1, -1, -1, 5, 8};
    return modeIndex >= 0 && modeIndex < 8 ? kNumbers[modeIndex] : -1;
}

bool AppQZ4420Imple::startTx(ComPort& port, int mode, int rate, int channel, int bandwidth,
                             int ruLocation, int duty, int continuesType) {
    const int number = wifiModeNumber(mode);
    if (number < 0) {
        logError("invalid wifi mode: %d, origin mode value: %d", number, mode);
        return false;
    }
    return okCommand(port, QString::asprintf("amt_tx_start %d %d %d %d %d %d %d", number, rate,
                                             channel, bandwidth, ruLocation, duty, continuesType));
}

bool AppQZ4420Imple::stopTx(ComPort& port) {
    return okCommand(port, QStringLiteral("amt_tx_stop"));
}

bool AppQZ4420Imple::startRx(ComPort& port, int channel, int bandwidth) {
    return okCommand(port, QString::asprintf("amt_rx_start %d %d", channel, bandwidth));
}

bool AppQZ4420Imple::stopRx(ComPort& port, int& pkgCount) {
    ByteBuffer rsp;
    if (!sendCmdRsp(port, QStringLiteral("amt_rx_stop"), QStringLiteral("OK"), rsp,
                    kCommandWaitMs)) {
        logError("STOP_RX: send stop cmd failed");
        return false;
    }
    const QStringList items = commaItems(rsp);
    if (items.size() < 2) {
        logError("can not find [,] in rsp data: %s", items.join(',').toStdString().c_str());
        return false;
    }
    pkgCount = items[0].toInt(nullptr, 10);
    return true;
}

bool AppQZ4420Imple::startSingleTone(ComPort& port) {
    return okCommand(port, QStringLiteral("amt_tx_1M"));
}

bool AppQZ4420Imple::setDcValue(ComPort& port, int value) {
    return okCommand(port,
                     QString::asprintf("amt_tx_dc 0x%x", unsigned(value) << 12 | unsigned(value)));
}

bool AppQZ4420Imple::setCfo(ComPort& port, int fine, int coarse) {
    return okCommand(port, QString::asprintf("amt_set_cfo %d %d", fine, coarse));
}

bool AppQZ4420Imple::setPaBias(ComPort& port, int value) {
    return okCommand(port, QString::asprintf("amt_set_pa_bias %d", value));
}

bool AppQZ4420Imple::setApcIndex(ComPort& port, int value, QString& errorText) {
    ByteBuffer rsp;
    if (sendCmdRsp(port, QStringLiteral("amt_set_apcindex %1").arg(value), QStringLiteral("OK"),
                   rsp, kCommandWaitMs))
        return true;
    rsp.fill(0, 1);
    const QString text = QString::fromStdString(rsp.text());
    const int at = text.lastIndexOf(QStringLiteral("ERROR"));
    if (at >= 0)
        errorText = text.left(std::max(at - 1, 0)).trimmed();
    return false;
}

bool AppQZ4420Imple::setApcIndex(ComPort& port, int value) {
    QString scratch;
    return setApcIndex(port, value, scratch);
}

bool AppQZ4420Imple::getFreqOffset(ComPort& port, int& first, int& second, int& third) {
    ByteBuffer rsp;
    if (!sendCmdRsp(port, QStringLiteral("amt_get_freqoffset"), QStringLiteral("OK"), rsp,
                    kCommandWaitMs))
        return false;
    const QStringList items = commaItems(rsp);
    if (items.size() != 2) {
        logError("rsp can not split to 2 items!");
        return false;
    }
    const unsigned v = items[0].trimmed().toUInt(nullptr, 16);
    first = int((v >> 8) & 0xF);
    second = int(v & 0xF);
    third = int((v >> 12) & 0xF);
    return true;
}

bool AppQZ4420Imple::setFreqOffset(ComPort& port, int first, int second, int third) {
    return okCommand(port, QString::asprintf("amt_set_freqoffset %d %d %d", first, second, third));
}

bool AppQZ4420Imple::readFlag(ComPort& port, const QString& cmd, const char* shortLine,
                              bool exactlyTwo, bool& flag) {
    ByteBuffer rsp;
    if (!sendCmdRsp(port, cmd, QStringLiteral("OK"), rsp, kCommandWaitMs))
        return false;
    const QStringList items = commaItems(rsp);
    if (exactlyTwo ? items.size() != 2 : items.size() < 2) {
        logError("%s", shortLine);
        return false;
    }
    flag = items[0].toInt(nullptr, 10) == 1;
    return true;
}

bool AppQZ4420Imple::getFreqOffsetFlag(ComPort& port, bool& flag) {
    return readFlag(port, QStringLiteral("amt_get_freqoffset_flag"),
                    "rsp can not split to 2 items!", true, flag);
}

bool AppQZ4420Imple::setFreqOffsetFlag(ComPort& port, bool flag) {
    return okCommand(port, QString::asprintf("amt_set_freqoffset_flag %d", flag ? 1 : 0));
}

bool AppQZ4420Imple::getTxGain(ComPort& port, int& gain) {
    ByteBuffer rsp;
    if (!sendCmdRsp(port, QStringLiteral("amt_get_txgain"), QStringLiteral("OK"), rsp,
                    kCommandWaitMs))
        return false;
    const QStringList items = commaItems(rsp);
    if (items.size() < 2) {
        logError("GET_POWER_CAL_VAL: rsp can not slice to 2 items!");
        return false;
    }
    gain = int(items[0].toUInt(nullptr, 10) >> 8);
    return true;
}

bool AppQZ4420Imple::setTxGain(ComPort& port, int gain) {
    return okCommand(port, QStringLiteral("amt_set_txgain %1").arg(gain));
}

bool AppQZ4420Imple::getTxGainFlag(ComPort& port, bool& flag) {
    return readFlag(port, QStringLiteral("amt_get_txgain_flag"),
                    "GET_POWER_CAL_FLAG: rsp can not slice to 2 items!", false, flag);
}

bool AppQZ4420Imple::setTxGainFlag(ComPort& port, bool flag) {
    return okCommand(port, QStringLiteral("amt_set_txgain_flag %1").arg(flag ? 1 : 0));
}

bool AppQZ4420Imple::getFinishFlag(ComPort& port, bool& flag) {
    return readFlag(port, QStringLiteral("amt_get_finish_flag"),
                    "GET_POWER_CAL_FLAG: rsp can not slice to 2 items!", false, flag);
}

bool AppQZ4420Imple::setFinishFlag(ComPort& port, bool flag) {
    return okCommand(port, QStringLiteral("amt_set_finish_flag %1").arg(flag ? 1 : 0));
}

bool AppQZ4420Imple::setLoLeakage(ComPort& port, int channel, unsigned high, unsigned low) {
    const unsigned packed = high << 12 | low;
    if (!sendCmd(port, QString::asprintf("amt_set_lo_leakage %d 0x%x", channel, packed),
                 QStringLiteral("OK"), 1000)) {
        logError("set lo leakage failed, ch: %d, value: %x!", channel, packed);
        return false;
    }
    return true;
}

bool AppQZ4420Imple::setDcCalRegister(ComPort& port, unsigned high, unsigned low) {
    return setRegister(port, 0x203174, high << 12 | low);
}

bool AppQZ4420Imple::getDcCalRegister(ComPort& port, unsigned& high, unsigned& low) {
    unsigned v = 0;
    if (!getRegister(port, 0x203174, v))
        return false;
    high = v >> 12;
    low = v & 0xFFF;
    return true;
}

bool AppQZ4420Imple::txTest(ComPort& port, int mode, int rate, int channel, int bandwidth,
                            const KeepGoing& keepGoing) {
    if (!startTx(port, mode, rate, channel, bandwidth, 0, 90, 3)) {
        logError("TX_TEST: start tx test failed!");
        return false;
    }
    const bool going = !keepGoing || keepGoing();
    if (!stopTx(port)) {
        logError("TX_TEST: stop tx test failed!");
        return false;
    }
    return going;
}

bool AppQZ4420Imple::rxTest(ComPort& port, int channel, int bandwidth, const KeepGoing& keepGoing,
                            int& pkgCount) {
    if (!startRx(port, channel, bandwidth)) {
        logError("RX_TEST: start rx test failed!");
        return false;
    }
    const bool going = !keepGoing || keepGoing();
    if (!stopRx(port, pkgCount)) {
        logError("RX_TEST: stop rx test failed!");
        return false;
    }
    return going;
}

bool AppQZ4420Imple::txGainTest(ComPort& port, int mode, int rate, int channel, int bandwidth,
                                int& gain) {
    return startTx(port, mode, rate, channel, bandwidth, 0, 90, 3) && getTxGain(port, gain);
}

bool AppQZ4420Imple::txApcTest(ComPort& port, int mode, int rate, int channel, int bandwidth,
                               int value, int ruLocation, int duty, int continuesType) {
    return startTx(port, mode, rate, channel, bandwidth, ruLocation, duty, continuesType) &&
           setApcIndex(port, value);
}

QStringList AppQZ4420Imple::rfThreeModeList() {
    return {QStringLiteral("11B"), QStringLiteral("11G"), QStringLiteral("11N")};
}

QString AppQZ4420Imple::rfModeName(int modeIndex) {
    static const char* const kNames[] = {"11B",   "11G",  "11N",  "11A",
                                         "11N5G", "11AC", "11AX", "11AX_TB"};
    return modeIndex >= 0 && modeIndex < 8 ? QString::fromLatin1(kNames[modeIndex]) : QString();
}

QString AppQZ4420Imple::rfBandwidthName(int index) {
    static const char* const kNames[] = {"HT20", "HT40", "HT80"};
    return index >= 0 && index < 3 ? QString::fromLatin1(kNames[index]) : QString();
}

QStringList AppQZ4420Imple::rfRateNames(int mode) {
    const int count = mode == 0 ? 4 : mode == 5 ? 9 : 7;
    QStringList names;
    for (int i = 1; i <= count; ++i)
        names << QStringLiteral("MCS%1").arg(i);
    return names;
}

QStringList AppQZ4420Imple::rfChannelNames(int mode) {
    const int count = mode == 5 ? 9 : 7;
    QStringList names;
    for (int i = 1; i <= count; ++i)
        names << QStringLiteral("CHANNEL%1").arg(i);
    return names;
}

int AppQZ4420Imple::rfRateCount(int mode) {
    if (mode == 0)
        return 4;
    if (mode >= 1 && mode <= 4)
        return 8;
    return mode == 5 ? 10 : -1;
}

int AppQZ4420Imple::rfChannelCount(int mode) {
    if (mode >= 0 && mode <= 4)
        return 14;
    return mode == 5 ? 9 : -1;
}

qint64 AppQZ4420Imple::wifiChannelHz(int channel) {
    if (channel >= 1 && channel <= 13)
        return (2407 + 5 * qint64(channel)) * 1000000;
    return channel == 14 ? qint64(2484) * 1000000 : 0;
}

qint64 AppQZ4420Imple::bleChannelHz(int channel) {
    return channel >= 0 && channel <= 39 ? (2402 + 2 * qint64(channel)) * 1000000 : 0;
}

// ---------------------------------------------------------------------------------------------
// BLE RF tests

bool AppQZ4420Imple::startBleTone(ComPort& port, int phy, int channel, int powerLevel) {
    return okCommand(port,
                     QString::asprintf("amtBleTxToneStart %d %d %d", phy, channel, powerLevel));
}

bool AppQZ4420Imple::startBleTx(ComPort& port, int phy, int channel, int pkgType, int pduLength,
                                int powerLevel) {
    return okCommand(port, QString::asprintf("amtBleTxStart %d %d %d %d %d", phy, channel, pkgType,
                                             pduLength, powerLevel));
}

bool AppQZ4420Imple::stopBleTx(ComPort& port) {
    return okCommand(port, QStringLiteral("amtBleTxStop"));
}

bool AppQZ4420Imple::startBleRx(ComPort& port, int phy, int channel) {
    return okCommand(port, QString::asprintf("amtBleRxStart %d %d", phy, channel));
}

bool AppQZ4420Imple::stopBleRx(ComPort& port, int& pkgCount) {
    ByteBuffer rsp;
    if (!sendCmdRsp(port, QStringLiteral("amtBleRxStop"), QStringLiteral("OK"), rsp,
                    kCommandWaitMs))
        return false;
    const QStringList items = commaItems(rsp);
    if (items.size() < 2) {
        logError("STOP_RX_TEST_BLE: rsp can not slice to 2 items!");
        return false;
    }
    pkgCount = items[0].toInt(nullptr, 10);
    return true;
}

bool AppQZ4420Imple::resetBle(ComPort& port) {
    return okCommand(port, QStringLiteral("amtBleReset"));
}

bool AppQZ4420Imple::setBleDc(ComPort& port, int value) {
    return okCommand(
        port, QString::asprintf("amtBleDumpDc 0x%x", unsigned(value) << 12 | unsigned(value)));
}

bool AppQZ4420Imple::setBleTxStep(ComPort& port, int value) {
    return okCommand(port, QStringLiteral("bletxstep %1").arg(value));
}

bool AppQZ4420Imple::bleTxTest(ComPort& port, int phy, int channel, int pkgType, int pduLength,
                               int powerLevel, const KeepGoing& keepGoing) {
    if (!startBleTx(port, phy, channel, pkgType, pduLength, powerLevel)) {
        logError("TX_TEST_BLE: start tx test failed!");
        return false;
    }
    const bool going = !keepGoing || keepGoing();
    if (!stopBleTx(port)) {
        logError("TX_TEST_BLE: stop tx test failed!");
        return false;
    }
    return going;
}

bool AppQZ4420Imple::bleRxTest(ComPort& port, int phy, int channel, const KeepGoing& keepGoing,
                               int& pkgCount) {
    if (!startBleRx(port, phy, channel)) {
        logError("RX_TEST_BLE: start rx test failed!");
        return false;
    }
    const bool going = !keepGoing || keepGoing();
    if (!stopBleRx(port, pkgCount)) {
        logError("RX_TEST_BLE: stop rx test failed!");
        return false;
    }
    return going;
}
