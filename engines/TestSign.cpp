#include "engines/TestSign.h"

#include "base/ComPort.h"
#include "engines/AppImpleBase.h"

namespace {
constexpr int kReplyWaitMs = 500;
constexpr int kReplySettleMs = 100;
} // namespace

bool TestSign::set(AppImpleBase& engine, ComPort& port, const QString& sign) {
    if (!port.writeLine(QStringLiteral("nvsamt TEST_SIGN %1").arg(sign).toStdString(), false)) {
        engine.logError("SET_TEST_SIGN:  write at cmd failed!");
        return false;
    }
    ByteBuffer rsp;
    if (!port.timedRead(rsp, kReplyWaitMs, kReplySettleMs)) {
        engine.logError("SET_TEST_SIGN: recv rsp timeout!");
        return false;
    }
    return rsp.find("SUCCESS", 0, false) >= 0;
}

bool TestSign::get(AppImpleBase& engine, ComPort& port, QString& sign) {
    if (!port.writeLine("nvgamt TEST_SIGN", false)) {
        engine.logError("GET_TEST_SIGN:  write at cmd failed!");
        return false;
    }
    ByteBuffer rsp;
    if (!port.timedRead(rsp, kReplyWaitMs, kReplySettleMs)) {
        engine.logError("GET_TEST_SIGN: recv rsp timeout!");
        return false;
    }
    // The firmware answers "ERROR" for a board that was never signed.
    if (rsp.find("ERROR", 0, false) >= 0) {
        sign = QString::fromLatin1(kUnsigned);
        return true;
    }
    const std::string open = "value:[";
    const int at = rsp.find(open, 0, false);
    const int close = at < 0 ? -1 : rsp.find("]", at, false);
    if (close < 0) {
        engine.logError("GET_TEST_SIGN: match value failed!");
        return false;
    }
    const int from = at + int(open.size());
    std::string between;
    rsp.slice(from, close - from, between);
    sign = QString::fromStdString(between).trimmed();
    return true;
}

bool TestSign::getStation(AppImpleBase& engine, ComPort& port, int index, int& state) {
    QString sign;
    if (!get(engine, port, sign)) {
        engine.logError("GET_ST_SIGN:  get test sign failed");
        return false;
    }
    if (index < 0 || index >= sign.size()) {
        engine.logError("GET_ST_SIGN: invalid station index: %d", index);
        return false;
    }
    const QChar mark = sign.at(index);
    state = mark == '0' ? 0 : mark == '1' ? 1 : mark == '2' ? 2 : 3;
    return true;
}

bool TestSign::setStation(AppImpleBase& engine, ComPort& port, int index, int state) {
    QString sign;
    if (!get(engine, port, sign)) {
        engine.logError("SET_ST_SIGN:  get test sign failed");
        return false;
    }
    if (state < 0 || state > 2) {
        engine.logError("SET_ST_SIGN: invalid test sign: %c", state);
        return false;
    }
    if (index < 0 || index >= sign.size()) {
        engine.logError("SET_ST_SIGN: invalid station index: %d", index);
        return false;
    }
    sign[index] = QChar('0' + state);
    return set(engine, port, sign);
}
