// The reply side of both engines: the first byte picks an operation, the rest is the board's
// script of replies (see ScriptedBoard). Frames, single-byte answers and text replies all go
// through ComPort's reads and the engines' own parsing and logging.
#include "FuzzInput.h"
#include "ScriptedBoard.h"
#include "base/ComPort.h"
#include "engines/AppQZ4410Imple.h"
#include "engines/AppQZ4420Imple.h"

#include <functional>
#include <vector>

namespace {

QByteArray pattern(int size) {
    QByteArray bytes(size, '\0');
    for (int i = 0; i < size; ++i)
        bytes[i] = char(i * 7 + 3);
    return bytes;
}

// A loop's "go on?" that says yes twice.
AppQZ4420Imple::KeepGoing twice() {
    return [left = 2]() mutable { return left-- > 0; };
}

using Op = std::function<void(ComPort&, AppQZ4420Imple&, AppQZ4410Imple&)>;

const std::vector<Op>& operations() {
    static const std::vector<Op> ops = {
        [](ComPort& p, AppQZ4420Imple& e, AppQZ4410Imple&) { e.pingBoard(p); },
        [](ComPort& p, AppQZ4420Imple& e, AppQZ4410Imple&) {
            e.downloadData(p, SysByteArray(pattern(3000)), 0x10000);
        },
        [](ComPort& p, AppQZ4420Imple& e, AppQZ4410Imple&) {
            e.downloadTrunk(p, SysByteArray(pattern(100)), 0x20000000, true, 3);
        },
        [](ComPort& p, AppQZ4420Imple& e, AppQZ4410Imple&) { e.changeBaud(p, 2000000); },
        [](ComPort& p, AppQZ4420Imple& e, AppQZ4410Imple&) {
            SysByteArray out;
            e.setBlockSize(128);
            e.readFlash(p, 0x1000, 300, out);
        },
        [](ComPort& p, AppQZ4420Imple& e, AppQZ4410Imple&) { e.eraseFlash(p, 0, 0x2000); },
        [](ComPort& p, AppQZ4420Imple& e, AppQZ4410Imple&) { e.eraseAll(p); },
        [](ComPort& p, AppQZ4420Imple& e, AppQZ4410Imple&) { e.startSoftware(p, 0x10000); },
        [](ComPort& p, AppQZ4420Imple& e, AppQZ4410Imple&) { e.makeSureState(p, 1); },
        [](ComPort& p, AppQZ4420Imple& e, AppQZ4410Imple&) { e.softwareRestart(p, true); },
        [](ComPort& p, AppQZ4420Imple& e, AppQZ4410Imple&) { e.setEcho(p, false, 1000); },
        [](ComPort& p, AppQZ4420Imple& e, AppQZ4410Imple&) {
            QString mac;
            e.getMac(p, mac);
        },
        [](ComPort& p, AppQZ4420Imple& e, AppQZ4410Imple&) {
            QString value;
            e.getNv(p, 2, QStringLiteral("name"), value);
        },
        [](ComPort& p, AppQZ4420Imple& e, AppQZ4410Imple&) {
            QList<QStringList> entries;
            e.readAllNv(p, 3, entries);
        },
        [](ComPort& p, AppQZ4420Imple& e, AppQZ4410Imple&) {
            unsigned value = 0;
            e.getRegister(p, 0x40000000, value);
        },
        [](ComPort& p, AppQZ4420Imple& e, AppQZ4410Imple&) {
            QString sign;
            int state = 0;
            e.getTestSign(p, sign);
            e.getStationSign(p, 3, state);
            e.setStationSign(p, 2, 1);
        },
        [](ComPort& p, AppQZ4420Imple& e, AppQZ4410Imple&) {
            EfuseState state;
            e.getEfuseState(p, state);
            e.writeStateBits(p, 4, 2, 3);
        },
        [](ComPort& p, AppQZ4420Imple& e, AppQZ4410Imple&) {
            QList<unsigned> words;
            e.readAesKey(p, words);
            e.readEccKey(p, words);
            e.readReservedArea(p, words);
        },
        [](ComPort& p, AppQZ4420Imple& e, AppQZ4410Imple&) {
            QString text;
            e.readEfuseText(p, AppQZ4420Imple::kEfuseReservedOffset, 12, text);
        },
        [](ComPort& p, AppQZ4420Imple& e, AppQZ4410Imple&) {
            int count = 0;
            e.stopRx(p, count);
            e.stopBleRx(p, count);
        },
        [](ComPort& p, AppQZ4420Imple& e, AppQZ4410Imple&) {
            int a = 0, b = 0, c = 0;
            bool flag = false;
            e.getFreqOffset(p, a, b, c);
            e.getTxGain(p, a);
            e.getTxGainFlag(p, flag);
            e.getFinishFlag(p, flag);
            e.getFreqOffsetFlag(p, flag);
        },
        [](ComPort& p, AppQZ4420Imple& e, AppQZ4410Imple&) {
            unsigned high = 0, low = 0;
            QString error;
            e.getDcCalRegister(p, high, low);
            e.setApcIndex(p, 5, error);
        },
        [](ComPort& p, AppQZ4420Imple& e, AppQZ4410Imple&) {
            int gain = 0;
            e.txGainTest(p, 2, 3, 6, 0, gain);
        },
        [](ComPort& p, AppQZ4420Imple& e, AppQZ4410Imple&) {
            int count = 0;
            e.txTest(p, 2, 3, 6, 0, twice());
            e.rxTest(p, 6, 0, twice(), count);
            e.bleRxTest(p, 0, 19, twice(), count);
        },
        [](ComPort& p, AppQZ4420Imple&, AppQZ4410Imple& r) {
            int mode = 0;
            r.syncBoard(p, &mode, 100);
            r.changeBaud(p, 2000000, 100);
        },
        [](ComPort& p, AppQZ4420Imple&, AppQZ4410Imple& r) {
            const QByteArray data = pattern(3000);
            r.downloadUbootData(p, ByteBuffer(data.constData(), data.size()), 0x20000000, true);
        },
        [](ComPort& p, AppQZ4420Imple&, AppQZ4410Imple& r) {
            const QByteArray data = pattern(2500);
            r.downloadTrunk(p, 2, 0x10000, ByteBuffer(data.constData(), data.size()));
            r.sendFinish(p);
        },
        [](ComPort& p, AppQZ4420Imple&, AppQZ4410Imple& r) {
            float a = 0, b = 0, c = 0, d = 0;
            r.measureSignal(p, 100, a, b, c, d, 200);
        },
        [](ComPort& p, AppQZ4420Imple&, AppQZ4410Imple& r) {
            QString mac;
            r.getMacOtp(p, mac);
            r.getMacAmt(p, mac);
        },
        [](ComPort& p, AppQZ4420Imple&, AppQZ4410Imple& r) {
            QString sign;
            int state = 0;
            r.getTestSign(p, sign);
            r.getStationSign(p, 4, state);
            r.setStationSign(p, 1, 2);
        },
        [](ComPort& p, AppQZ4420Imple&, AppQZ4410Imple& r) {
            QString value;
            r.calibrateFreqOffset(p, 1, 2, 6, 0, 5, value);
            r.calibrateTxPower(p, 2, 6, value);
        },
        [](ComPort& p, AppQZ4420Imple&, AppQZ4410Imple& r) {
            int count = 0;
            r.stopPhyRx(p, 6, count);
            r.writeAmtKey(p, QStringLiteral("key"), QStringLiteral("value"));
            r.writeAmtNvKey(p, QStringLiteral("key"), QStringLiteral("value"));
        },
    };
    return ops;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::startQt();
    if (size < 1)
        return 0;
    const auto& ops = operations();
    ScriptedBoard& board = ScriptedBoard::instance();
    board.load(data + 1, size - 1);
    {
        ComPort port;
        port.open(std::string("scripted"), 2000000);
        AppQZ4420Imple qz4420;
        AppQZ4410Imple qz4410;
        ops[data[0] % ops.size()](port, qz4420, qz4410);
    }
    board.finish();
    return 0;
}
