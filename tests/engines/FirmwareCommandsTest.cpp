// Every firmware command of the engines against the simulated firmware, through the real
// ComPort over the board's pty: the exact lines the firmware received, the values read back
// from its answers, and the exact log lines of each failure.
//
// Failures that run into a limit take their time, so each test runs its independent checks
// on boards of their own, on parallel threads.

#include "base/ComPort.h"
#include "base/PortTable.h"
#include "engines/AppQZ4410Imple.h"
#include "engines/AppQZ4420Imple.h"
#include "sim/SimFirmware.h"
#include "support/LogCatcher.h"
#include "support/TestFiles.h"
#include "support/Wire.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include <chrono>
#include <functional>
#include <thread>
#include <vector>

namespace {

using State = SimFirmwareState;
using Fault = SimLineFault;

// A wait that ran into its limit: all of it, and not much more even on a busy machine.
#define EXPECT_FULL_WAIT(timer, limitMs)                                                           \
    do {                                                                                           \
        const long elapsed_ = msSince(timer);                                                      \
        EXPECT_GE(elapsed_, (limitMs)-10);                                                         \
        EXPECT_LT(elapsed_, (limitMs) + 1000);                                                     \
    } while (0)

QStringList times(int n, const QString& line) {
    QStringList list;
    for (int i = 0; i < n; ++i)
        list << line;
    return list;
}

// Runs each check on a thread of its own and waits for all of them.
void inParallel(const std::vector<std::function<void()>>& checks) {
    std::vector<std::thread> threads;
    threads.reserve(checks.size());
    for (const auto& check : checks)
        threads.emplace_back(check);
    for (std::thread& t : threads)
        t.join();
}

// A board with its firmware and an engine on a port open on it. The firmware runs, in state
// 0, with echo off as the pages leave it, unless the bench is made with the board in its ROM.
template <typename Engine> struct BenchOf {
    BoardSim board;
    SimFirmware fw{board};
    ComPort port;
    Engine engine;
    LogCatcher log{&engine};
    explicit BenchOf(bool running = true) {
        EXPECT_TRUE(port.open(board.devicePath(), 115200));
        if (running) {
            board.startFirmware();
            fw.change([](State& s) { s.echo = false; });
        }
    }
    // Every byte that reached the running firmware.
    QByteArray wire() const { return board.firmwareInput(); }
    State state() const { return fw.state(); }
    // Out values for the calls of the refusal table, each at a value no answer gives: a failed
    // call must leave them as they were.
    int n = -1, n2 = -1, n3 = -1;
    bool flag = true;
    unsigned u = 7, u2 = 7;
    QString text = "kept";
    QList<unsigned> words;
    QList<QStringList> entries;
    EfuseState efuse;
};
using Bench = BenchOf<AppQZ4420Imple>;
using Bench4410 = BenchOf<AppQZ4410Imple>;

} // namespace

// ---- The channel ----

// How an answer ends the wait is ComPort's to test (sendAndWait); the engine sends each command
// without clearing what waits in the driver.
TEST(FirmwareCommands, ALateAnswerSatisfiesTheNextCommand) {
    Bench b;
    b.fw.inject(Fault::delay(600, "amt_tx_1M"));
    EXPECT_FALSE(b.engine.startSingleTone(b.port));
    // Well past the late answer, so that it waits alone in the driver even on a busy machine,
    // not together with the next command's own answer.
    sleepFor(350);
    // Its own answer comes late too, so that it cannot be read together with the first one
    // however the threads are scheduled.
    b.fw.inject(Fault::delay(100, "amtBleReset"));
    const auto t = Clock::now();
    EXPECT_TRUE(b.engine.resetBle(b.port));
    EXPECT_LT(msSince(t), 100);
    // ... and its own "OK" is left for the one after.
    b.fw.inject(Fault::withhold("amtBleTxStop"));
    EXPECT_TRUE(b.engine.stopBleTx(b.port));
    EXPECT_TRUE(b.fw.waitForLines(3, 500)); // it returned before its line got there
    EXPECT_EQ(b.wire(), QByteArray("amt_tx_1M\ramtBleReset\ramtBleTxStop\r")); // CR, no LF
}

TEST(FirmwareCommands, VersionStateEchoAndOpening) {
    inParallel({
        [] {
            Bench b;
            b.fw.change([](State& s) { s.versionState = 2; });
            int state = -1;
            EXPECT_TRUE(b.engine.getVersionState(b.port, state));
            EXPECT_EQ(state, 2);
            EXPECT_TRUE(b.engine.isVersionState(b.port, 2));
            EXPECT_FALSE(b.engine.isVersionState(b.port, 1));
            EXPECT_TRUE(b.engine.versionStateKnown(b.port));
            // An echo puts the command in front of the value: the state reads as 0.
            b.fw.change([](State& s) { s.echo = true; });
            EXPECT_TRUE(b.engine.getVersionState(b.port, state));
            EXPECT_EQ(state, 0);
            EXPECT_TRUE(b.engine.setEcho(b.port, false, 0));
            EXPECT_FALSE(b.state().echo);
            EXPECT_TRUE(b.engine.getVersionState(b.port, state));
            EXPECT_EQ(state, 2);
            // Text that is no number before the comma gives 0; text without a comma fails.
            b.fw.inject(Fault::replace("abc,OK\r\n"));
            EXPECT_TRUE(b.engine.getVersionState(b.port, state));
            EXPECT_EQ(state, 0);
            b.fw.inject(Fault::replace("ready OK\r\n"));
            EXPECT_FALSE(b.engine.getVersionState(b.port, state));
            EXPECT_EQ(b.log.texts(), QStringList({"GET_CUR_STATE: rsp can not slice to 2 items!"}));
            EXPECT_EQ(b.fw.lines(),
                      QStringList({"get_version_type", "get_version_type", "get_version_type",
                                   "get_version_type", "get_version_type", "echoclose 0",
                                   "get_version_type", "get_version_type", "get_version_type"}));
        },
        [] { // a silent board: nothing answers, nothing is logged
            Bench b(false);
            const auto t = Clock::now();
            EXPECT_FALSE(b.engine.versionStateKnown(b.port));
            EXPECT_FULL_WAIT(t, 500);
            EXPECT_FALSE(b.engine.isVersionState(b.port, 0));
            EXPECT_TRUE(b.log.texts().isEmpty());
        },
        [] { // setEcho with no time of its own tries once (the refusal table); with 1200 ms on a
             // board that never answers, three times
            Bench b;
            for (int i = 0; i < 4; ++i)
                b.fw.inject(Fault::withhold("echoclose"));
            const auto t = Clock::now();
            EXPECT_FALSE(b.engine.setEcho(b.port, false, 1200));
            EXPECT_FULL_WAIT(t, 1500);
            EXPECT_EQ(b.fw.lines(), times(3, "echoclose 0"));
        },
        [] { // a refusal, then the answer
            Bench b;
            b.fw.inject(Fault::refuse("echoclose"));
            EXPECT_TRUE(b.engine.setEcho(b.port, true, 2000));
            EXPECT_TRUE(b.state().echo);
            EXPECT_EQ(b.wire(), QByteArray("echoclose 1\rechoclose 1\r"));
        },
        [] { // opening by number: a board in its ROM does not close echo, and the port is closed
             // again; a running firmware has its echo closed
            Bench b(false);
            b.port.close();
            const int number = PortTable::numberOf(QString::fromStdString(b.board.devicePath()));
            EXPECT_FALSE(b.engine.openComPort(b.port, number, 115200, true));
            EXPECT_FALSE(b.port.isOpen());
            EXPECT_EQ(b.log.texts(), QStringList({"OPEN_COM_PORT: close echo failed!"}));
            b.log.clear();
            b.board.startFirmware(); // echo on, as a fresh firmware has it
            EXPECT_TRUE(b.engine.openComPort(b.port, number, 115200, true));
            EXPECT_TRUE(b.port.isOpen());
            EXPECT_FALSE(b.state().echo);
            EXPECT_EQ(b.wire(), QByteArray("echoclose 0\r"));
            b.port.close();
            EXPECT_TRUE(b.engine.openComPort(b.port, number, 115200, false));
            EXPECT_TRUE(b.log.texts().isEmpty());
            // A port that is not there.
            const int missing = PortTable::numberOf("/dev/bramble-no-such-port");
            ComPort other;
            EXPECT_FALSE(b.engine.openComPort(other, missing, 115200, true));
            EXPECT_EQ(
                b.log.texts(),
                QStringList({QStringLiteral("OPEN_COM_PORT: open port failed: %1").arg(missing)}));
        },
    });
}

TEST(FirmwareCommands, StateSwitchesAndRestarts) {
    inParallel({
        [] { // the reset pulse cannot cross a pty: the board is reset here, as it would be
            Bench b;
            b.board.reset();
            const auto t = Clock::now();
            EXPECT_TRUE(b.engine.switchVersion(b.port, 2));
            EXPECT_GE(msSince(t), 255); // 60 ms before the command, 200 ms after the answer
            EXPECT_EQ(b.fw.lines(), QStringList({"amt_start 2"}));
            EXPECT_EQ(b.state().versionState, 2);
            // The banner went with the drain; the fresh firmware echoes until told not to.
            int state = -1;
            EXPECT_TRUE(b.engine.getVersionState(b.port, state));
            EXPECT_EQ(state, 0);
            EXPECT_TRUE(b.engine.setEcho(b.port, false, 0));
            EXPECT_TRUE(b.engine.getVersionState(b.port, state));
            EXPECT_EQ(state, 2);
            EXPECT_TRUE(b.log.texts().isEmpty());
        },
        [] { // a running firmware restarts in the state asked for
            Bench b;
            EXPECT_TRUE(b.engine.switchToState(b.port, 3));
            EXPECT_EQ(b.state().versionState, 3);
            EXPECT_EQ(b.fw.starts(), 2);
            EXPECT_EQ(b.wire(), QByteArray("amt_start 3\r")); // the pulse writes nothing
            // A state the firmware does not have.
            EXPECT_FALSE(b.engine.switchToState(b.port, 7));
            EXPECT_EQ(b.log.texts(),
                      QStringList({"MAKE_SURE_STATE: can not switch to soft state: 7"}));
        },
        [] {
            Bench b;
            b.board.reset();
            const int number = PortTable::numberOf(QString::fromStdString(b.board.devicePath()));
            b.port.close();
            EXPECT_TRUE(b.engine.openComPortInState(b.port, number, 115200, 1));
            EXPECT_TRUE(b.port.isOpen());
            EXPECT_EQ(b.state().versionState, 1);
            b.port.close();
            EXPECT_FALSE(b.engine.openComPortInState(b.port, number, 115200, 9));
            EXPECT_FALSE(b.port.isOpen());
            EXPECT_EQ(b.log.texts(),
                      QStringList({"MAKE_SURE_STATE: can not switch to soft state: 9",
                                   "OPEN_COM_PORT: make sure state failed!"}));
        },
        [] { // the right state: one line only
            Bench b;
            EXPECT_TRUE(b.engine.makeSureState(b.port, 0));
            sleepFor(50);
            EXPECT_EQ(b.wire(), QByteArray("get_version_type\r"));
            // Another: asked, switched, echo closed.
            EXPECT_TRUE(b.engine.makeSureState(b.port, 1));
            EXPECT_EQ(b.fw.lines(), QStringList({"get_version_type", "get_version_type",
                                                 "amt_start 1", "echoclose 0"}));
            const State s = b.state();
            EXPECT_EQ(s.versionState, 1);
            EXPECT_FALSE(s.echo);
            EXPECT_TRUE(b.log.texts().isEmpty());
        },
        [] { // the switch refused, then the echo after it
            Bench b;
            b.fw.inject(Fault::refuse("amt_start"));
            EXPECT_FALSE(b.engine.makeSureState(b.port, 3));
            EXPECT_EQ(b.state().versionState, 0);
            b.fw.inject(Fault::refuse("echoclose"));
            EXPECT_FALSE(b.engine.makeSureState(b.port, 3));
            EXPECT_EQ(b.state().versionState, 3);
            EXPECT_EQ(b.log.texts(),
                      QStringList({"MAKE_SURE_STATE: can not switch to soft state: 3",
                                   "MAKE_SURE_STATE: close echo failed!"}));
        },
        [] { // the hardware restart writes no byte and waits only for its drain
            Bench b;
            const auto t = Clock::now();
            EXPECT_TRUE(b.engine.hardwareRestart(b.port, 0));
            EXPECT_LT(msSince(t), 50);
            b.fw.sendText("boot noise\r\n", 20);
            const auto drain = Clock::now();
            EXPECT_TRUE(b.engine.hardwareRestart(b.port, 150));
            EXPECT_GE(msSince(drain), 150);
            int state = -1;
            EXPECT_TRUE(b.engine.getVersionState(b.port, state)); // the noise went with it
            EXPECT_EQ(state, 0);
            EXPECT_EQ(b.wire(), QByteArray("get_version_type\r"));
            ComPort closed; // the reset line is driven without a check
            EXPECT_TRUE(b.engine.hardwareRestart(closed, 0));
        },
        [] { // "reboot": the banner is read and dropped
            Bench b;
            EXPECT_TRUE(b.engine.softwareRestart(b.port, false));
            EXPECT_EQ(b.fw.starts(), 2);
            EXPECT_TRUE(b.engine.setEcho(b.port, false, 0)); // nothing of the banner is left
            EXPECT_EQ(b.wire(), QByteArray("reboot\rechoclose 0\r"));
            // With the ping: the firmware answers once it is up.
            EXPECT_TRUE(b.engine.softwareRestart(b.port, true));
            EXPECT_EQ(b.fw.lines().mid(2), QStringList({"reboot", "get_version_type"}));
            EXPECT_TRUE(b.engine.isLogEnabled());
            EXPECT_TRUE(b.log.texts().isEmpty());
            ComPort closed;
            EXPECT_FALSE(b.engine.softwareRestart(closed, false));
            EXPECT_EQ(b.log.texts(), QStringList({"RESTART: reboot cmd send failed!"}));
        },
        [] { // a firmware that never answers the ping: two tries, then the line
            Bench b;
            for (int i = 0; i < 3; ++i)
                b.fw.inject(Fault::withhold("get_version_type"));
            EXPECT_FALSE(b.engine.softwareRestart(b.port, true));
            EXPECT_EQ(b.fw.lines(),
                      QStringList({"reboot", "get_version_type", "get_version_type"}));
            EXPECT_EQ(b.log.texts(), QStringList({"RESTART: ping AT state failed!"}));
            EXPECT_TRUE(b.engine.isLogEnabled());
        },
        [] { // a silent board: the state cannot be made sure; the ping gives the log flag back
             // as it found it, on both ways out
            Bench b(false);
            EXPECT_FALSE(b.engine.makeSureState(b.port, 1));
            EXPECT_EQ(b.log.texts(), QStringList({"MAKE_SURE_STATE: get cur state failed!"}));
            b.log.clear();
            b.engine.setLogEnabled(false);
            const auto t = Clock::now();
            EXPECT_FALSE(b.engine.pingAtState(b.port, 100, 1000));
            EXPECT_GE(msSince(t), 1000);
            EXPECT_LT(msSince(t), 2000);
            EXPECT_FALSE(b.engine.isLogEnabled());
            b.board.startFirmware();
            b.engine.setLogEnabled(true);
            b.fw.inject(Fault::replace("no comma OK\r\n", "get_version_type"));
            EXPECT_TRUE(b.engine.pingAtState(b.port, 100, 1000)); // the second try answers
            EXPECT_TRUE(b.engine.isLogEnabled());
            EXPECT_TRUE(b.log.texts().isEmpty()); // the failed try left no line
        },
    });
}

// ---- Board parameters ----

TEST(FirmwareCommands, MacNvStoresAndRegisters) {
    inParallel({
        [] {
            Bench b;
            QString mac;
            EXPECT_FALSE(b.engine.getMac(b.port, mac)); // none written yet: no MAC in the answer
            EXPECT_TRUE(mac.isEmpty());
            EXPECT_TRUE(b.engine.setMac(b.port, 1, "A0:b1:C2:d3:E4:f5"));
            EXPECT_TRUE(b.engine.getMac(b.port, mac));
            EXPECT_EQ(mac, "A0:b1:C2:d3:E4:f5"); // case and colons as the firmware sent them
            EXPECT_TRUE(b.engine.setMac(b.port, 0, "02:00:00:00:00:01"));
            EXPECT_TRUE(b.engine.getMac(b.port, mac));
            EXPECT_EQ(mac, "02:00:00:00:00:01"); // the first of two
            EXPECT_EQ(b.state().macs,
                      (std::map<int, QString>{{0, "02:00:00:00:00:01"}, {1, "A0:b1:C2:d3:E4:f5"}}));
            EXPECT_EQ(b.wire(), QByteArray("amt_get_mac\ramt_set_mac 1 A0:b1:C2:d3:E4:f5\r"
                                           "amt_get_mac\ramt_set_mac 0 02:00:00:00:00:01\r"
                                           "amt_get_mac\r"));
            EXPECT_TRUE(b.log.texts().isEmpty());
            // Registers.
            b.fw.clearLines();
            EXPECT_TRUE(b.engine.setRegister(b.port, 0x203174, 0x12345));
            EXPECT_EQ(b.state().registers.at(0x203174), 0x12345u);
            unsigned v = 0;
            EXPECT_TRUE(b.engine.getRegister(b.port, 0x203174, v));
            EXPECT_EQ(v, 0x12345u);
            EXPECT_TRUE(b.engine.getRegister(b.port, 0x471080, v));
            EXPECT_EQ(v, 0u); // never written
            b.fw.inject(Fault::replace("0X1A,OK\r\n"));
            EXPECT_TRUE(b.engine.getRegister(b.port, 0x2030c0, v));
            EXPECT_EQ(v, 26u);
            b.fw.inject(Fault::replace("1a,\r\nOK\r\n"));
            EXPECT_TRUE(b.engine.getRegister(b.port, 0x2030c0, v));
            EXPECT_EQ(v, 26u);
            b.fw.inject(Fault::replace("OK\r\n"));
            EXPECT_FALSE(b.engine.getRegister(b.port, 0x2030c0, v));
            EXPECT_EQ(b.log.texts(), QStringList({"GET_MAC: rsp can not slice to 2 items!"}));
            // The DC calibration register: high part above bit 12.
            unsigned high = 0, low = 0;
            EXPECT_TRUE(b.engine.setDcCalRegister(b.port, 0x12, 0x345));
            EXPECT_TRUE(b.engine.getDcCalRegister(b.port, high, low));
            EXPECT_EQ(high, 0x12u);
            EXPECT_EQ(low, 0x345u);
            EXPECT_EQ(b.fw.lines(), QStringList({"amt_set 0x203174 0x12345", "amt_get 0x203174",
                                                 "amt_get 0x471080", "amt_get 0x2030c0",
                                                 "amt_get 0x2030c0", "amt_get 0x2030c0",
                                                 "amt_set 0x203174 0x12345", "amt_get 0x203174"}));
        },
        [] {
            Bench b;
            EXPECT_TRUE(b.engine.setNv(b.port, 1, "owner", "Ann"));
            EXPECT_TRUE(b.engine.setNv(b.port, 2, "dev", "x y"));
            EXPECT_TRUE(b.engine.setNv(b.port, 3, "a", "1"));
            EXPECT_TRUE(b.engine.setNv(b.port, 3, "c", "2=3"));
            const State s = b.state();
            EXPECT_EQ(s.nv[State::Amt], (std::map<QString, QString>{{"owner", "Ann"}}));
            EXPECT_EQ(s.nv[State::Develop], (std::map<QString, QString>{{"dev", "x y"}}));
            EXPECT_EQ(s.nv[State::Customer].size(), 2u);
            QString value;
            EXPECT_TRUE(b.engine.getNv(b.port, 2, "dev", value));
            EXPECT_EQ(value, "x y");
            EXPECT_TRUE(b.engine.getNv(b.port, 1, "owner", value));
            EXPECT_EQ(value, "Ann");
            // The reader drops every "OK", in a value too; and the last "value: " counts.
            EXPECT_TRUE(b.engine.setNv(b.port, 1, "book", "BOOKS"));
            EXPECT_TRUE(b.engine.getNv(b.port, 1, "book", value));
            EXPECT_EQ(value, "BOS");
            b.fw.inject(Fault::replace("value: first\r\nvalue: abc\r\nOK\r\n", "anvg"));
            EXPECT_TRUE(b.engine.getNv(b.port, 1, "owner", value));
            EXPECT_EQ(value, "abc");
            // A value with "=" drops its line; a line without "=" is dropped too.
            QList<QStringList> entries;
            EXPECT_TRUE(b.engine.readAllNv(b.port, 3, entries));
            EXPECT_EQ(entries, QList<QStringList>({{"a", "1"}}));
            b.fw.inject(Fault::replace("a=1\r\nb\r\nc=2=3\r\nOK\r\n", "dnvg"));
            entries.clear();
            EXPECT_TRUE(b.engine.readAllNv(b.port, 2, entries));
            EXPECT_EQ(entries, QList<QStringList>({{"a", "1"}}));
            EXPECT_TRUE(b.engine.removeNv(b.port, 2, "dev"));
            entries.clear();
            EXPECT_TRUE(b.engine.readAllNv(b.port, 2, entries));
            EXPECT_TRUE(entries.isEmpty());
            EXPECT_TRUE(b.state().nv[State::Develop].empty());
            EXPECT_EQ(b.fw.lines(),
                      QStringList({"anvs owner Ann", "dnvs dev x y", "cnvs a 1", "cnvs c 2=3",
                                   "dnvg dev", "anvg owner", "anvs book BOOKS", "anvg book",
                                   "anvg owner", "cnvg all", "dnvg all", "dnvd dev", "dnvg all"}));
            EXPECT_TRUE(b.log.texts().isEmpty());
        },
        [] { // unknown stores: nothing goes out
            Bench b;
            QString value = "kept";
            QList<QStringList> entries;
            EXPECT_FALSE(b.engine.setNv(b.port, 0, "n", "v"));
            EXPECT_FALSE(b.engine.setNv(b.port, 4, "n", "v"));
            EXPECT_FALSE(b.engine.getNv(b.port, 5, "n", value));
            EXPECT_FALSE(b.engine.removeNv(b.port, -1, "n"));
            EXPECT_FALSE(b.engine.readAllNv(b.port, 0, entries));
            EXPECT_EQ(value, "kept");
            EXPECT_EQ(b.log.texts(),
                      QStringList({"invalid nv type: 0", "invalid nv type: 4", "invalid nv type: 5",
                                   "invalid nv type: -1", "invalid nv type: 0"}));
            EXPECT_FALSE(b.engine.removeNv(b.port, 1, "n")); // refused: not there
            EXPECT_EQ(b.wire(), QByteArray("anvd n\r"));
        },
    });
}

TEST(FirmwareCommands, TestSignAndAmtKeys) {
    Bench b;
    QString sign;
    EXPECT_TRUE(b.engine.getTestSign(b.port, sign)); // no sign yet: ERROR
    EXPECT_EQ(sign, "0000000000");
    EXPECT_TRUE(b.engine.setTestSign(b.port, "0120000000"));
    EXPECT_TRUE(b.engine.setStationSign(b.port, 3, 1));
    EXPECT_EQ(b.state().nv[State::Amt].at("TEST_SIGN"), "0121000000");
    int st = -1;
    EXPECT_TRUE(b.engine.getStationSign(b.port, 2, st));
    EXPECT_EQ(st, 2);
    EXPECT_TRUE(b.engine.writeAmtKey(b.port, "CAL_DONE", "yes", 500, 50));
    EXPECT_EQ(b.state().nv[State::Amt].at("CAL_DONE"), "yes");
    EXPECT_EQ(b.wire(), QByteArray("nvgamt TEST_SIGN\rnvsamt TEST_SIGN 0120000000\r"
                                   "nvgamt TEST_SIGN\rnvsamt TEST_SIGN 0121000000\r"
                                   "nvgamt TEST_SIGN\rnvsamt CAL_DONE yes\r"));
    EXPECT_TRUE(b.log.texts().isEmpty());
    // The key writer of this engine waits for SUCCESS itself.
    b.fw.inject(Fault::refuse("nvsamt"));
    EXPECT_FALSE(b.engine.writeAmtKey(b.port, "K", "V", 500, 50));
    b.fw.inject(Fault::withhold("nvsamt"));
    EXPECT_FALSE(b.engine.writeAmtKey(b.port, "K", "V", 300, 50));
    ComPort closed;
    EXPECT_FALSE(b.engine.writeAmtKey(closed, "K", "V", 300, 50));
    EXPECT_EQ(b.log.texts(),
              QStringList({"WR_AMT_KEY: can not find SUCCESS sign!", "WR_AMT_KEY: recv timeout!",
                           "WR_AMT_KEY: send cmd failed!"}));
}

// ---- Efuse ----

namespace {

void setEfuseWord(SimFirmware& fw, int offset, uint32_t word) {
    fw.change([&](State& s) {
        for (int i = 0; i < 4; ++i)
            s.efuse[offset + i] = char(word >> (8 * i) & 0xFF);
    });
}

} // namespace

TEST(FirmwareCommands, EfuseWordsAndTheStateWord) {
    inParallel({
        [] {
            Bench b;
            setEfuseWord(b.fw, 0x20, 0x00000F03);
            QList<unsigned> words;
            EXPECT_TRUE(b.engine.readEfuse(b.port, 0x20, 4, words));
            // The comma behind the last word leaves an empty item, read as a second word 0.
            EXPECT_EQ(words, QList<unsigned>({0xF03, 0}));
            unsigned char v = 0;
            EXPECT_TRUE(b.engine.readStateBits(b.port, 8, 8, v));
            EXPECT_EQ(v, 0x0F);
            EXPECT_TRUE(b.engine.readStateBits(b.port, 0, 2, v));
            EXPECT_EQ(v, 3);
            unsigned word = 0;
            EXPECT_TRUE(b.engine.readEfuseState(b.port, word));
            EXPECT_EQ(word, 0xF03u);
            EXPECT_EQ(b.fw.lines(), times(4, "efuse read 0x20 4"));
            // The whole state word: JTag 1, bits 2, 3, 5, 6, count 0x3F, bits 16, 18, 19.
            setEfuseWord(b.fw, 0x20, 0x000D3F6D);
            EfuseState st;
            EXPECT_TRUE(b.engine.getEfuseState(b.port, st));
            EXPECT_EQ(st.flashEcryptCount, 0x3Fu);
            EXPECT_TRUE(st.safeBootMode);
            EXPECT_TRUE(st.flashEncryptEnabled);
            EXPECT_FALSE(st.bit4);
            EXPECT_TRUE(st.aesPrivateKeyReadable);
            EXPECT_TRUE(st.aesPrivateKeyWritable);
            EXPECT_TRUE(st.frequency);
            EXPECT_FALSE(st.bootromLogOutput);
            EXPECT_TRUE(st.bit18);
            EXPECT_TRUE(st.bootromStartupType);
        },
        [] { // read, change the field, write back: the other bits stay
            Bench b;
            setEfuseWord(b.fw, 0x20, 0x00000100);
            EXPECT_TRUE(b.engine.writeStateBits(b.port, 0, 2, 3));
            EXPECT_EQ(b.wire(), QByteArray("efuse read 0x20 4\r"
                                           "efuse write 0x20 0x00000103 0xfffffefc\r"
                                           "efuse write_confirmation\r"));
            EXPECT_EQ(b.state().efuseWord(0x20), 0x103u);
            EXPECT_TRUE(b.engine.writeStateBit(b.port, 17, true));
            EXPECT_EQ(b.state().efuseWord(0x20), 0x20103u);
            bool bit = false;
            EXPECT_TRUE(b.engine.readStateBit(b.port, 17, bit));
            EXPECT_TRUE(bit);
            EXPECT_TRUE(b.engine.readStateBit(b.port, 16, bit));
            EXPECT_FALSE(bit);
            EXPECT_TRUE(b.engine.writeEfuseState(b.port, 0x8));
            EXPECT_EQ(b.state().efuseWord(0x20), 0x2010Bu); // bits only ever get set
            EXPECT_TRUE(b.fw.lines().endsWith("efuse write_confirmation"));
            // A value wider than its field touches nothing beside it; a field outside the word
            // or wider than a byte sends nothing at all.
            EXPECT_TRUE(b.engine.writeStateBits(b.port, 2, 1, 0xFF));
            EXPECT_EQ(b.state().efuseWord(0x20), 0x2010Fu);
            const int sent = b.fw.lines().size();
            unsigned char v = 0;
            EXPECT_FALSE(b.engine.readStateBits(b.port, 28, 8, v));
            EXPECT_FALSE(b.engine.writeStateBits(b.port, 0, 9, 1));
            EXPECT_FALSE(b.engine.writeStateBits(b.port, -1, 2, 1));
            EXPECT_EQ(b.fw.lines().size(), sent);
        },
        [] { // the complement's field is 8 wide with blanks, not zeros
            Bench b;
            EXPECT_TRUE(b.engine.writeEfuseWord(b.port, 0x54, 0));
            EXPECT_TRUE(b.engine.writeEfuseWord(b.port, 0x58, 0xFFFFFFFF));
            EXPECT_TRUE(b.engine.writeEfuseWord(b.port, 0x58, 0));
            EXPECT_EQ(b.wire(), QByteArray("efuse write 0x54 0x00000000 0xffffffff\r"
                                           "efuse write_confirmation\r"
                                           "efuse write 0x58 0xffffffff 0x       0\r"
                                           "efuse write_confirmation\r"
                                           "efuse write 0x58 0x00000000 0xffffffff\r"
                                           "efuse write_confirmation\r"));
            QList<unsigned> words;
            EXPECT_TRUE(b.engine.readEfuse(b.port, 0x54, 8, words));
            EXPECT_EQ(words, QList<unsigned>({0, 0xFFFFFFFF, 0}));
        },
        [] { // a failed confirmation fails the word though its write got "OK"
            Bench b;
            b.fw.inject(Fault::refuse("efuse write_confirmation"));
            const auto t = Clock::now();
            EXPECT_FALSE(b.engine.writeEfuseWord(b.port, 0x20, 0x4));
            EXPECT_FULL_WAIT(t, 500);
            EXPECT_EQ(b.fw.lines().size(), 2);
            EXPECT_TRUE(b.log.texts().isEmpty());
            // A list stops at its first failed word; the words before stay burnt.
            b.fw.clearLines();
            b.fw.inject(Fault::refuse("efuse write 0x28"));
            EXPECT_FALSE(b.engine.writeEfuseWords(b.port, 0x24, {1, 2, 3}));
            EXPECT_EQ(b.fw.lines(), QStringList({"efuse write 0x24 0x00000001 0xfffffffe",
                                                 "efuse write_confirmation",
                                                 "efuse write 0x28 0x00000002 0xfffffffd"}));
            const State s = b.state();
            EXPECT_EQ(s.efuseWord(0x24), 1u);
            EXPECT_EQ(s.efuseWord(0x28), 0u);
            EXPECT_TRUE(s.efusePending.empty());
        },
    });
}

TEST(FirmwareCommands, EfuseRegionsKeyFilesAndText) {
    inParallel({
        [] {
            Bench b;
            EXPECT_TRUE(b.engine.writeAesKey(b.port, {1, 2, 3, 4}));
            QList<unsigned> words;
            EXPECT_TRUE(b.engine.readAesKey(b.port, words));
            EXPECT_EQ(words, QList<unsigned>({1, 2, 3, 4, 0}));
            const QList<unsigned> ecc = {11, 12, 13, 14, 15, 16, 17, 0xFFFFFFFF};
            EXPECT_TRUE(b.engine.writeEccKey(b.port, ecc));
            words.clear();
            EXPECT_TRUE(b.engine.readEccKey(b.port, words));
            EXPECT_EQ(words, ecc + QList<unsigned>({0}));
            QList<unsigned> reserved;
            for (unsigned i = 0; i < 11; ++i)
                reserved << 0x100 + i;
            EXPECT_TRUE(b.engine.writeReservedArea(b.port, reserved));
            words.clear();
            EXPECT_TRUE(b.engine.readReservedArea(b.port, words));
            EXPECT_EQ(words, reserved + QList<unsigned>({0}));
            // A write and a confirmation a word, one read a region; their lines are the table's.
            EXPECT_EQ(b.fw.lines().size(), 2 * 4 + 1 + 2 * 8 + 1 + 2 * 11 + 1);
        },
        [] {
            Bench b;
            QTemporaryDir dir;
            QByteArray key;
            for (int i = 1; i <= 40; ++i)
                key += char(i);
            auto file = [&](const QString& name, const QByteArray& bytes) {
                writeFile(dir.filePath(name), bytes);
                return dir.filePath(name);
            };
            QList<unsigned> words;
            EXPECT_TRUE(b.engine.loadEccKeyFile(file("40.key", key), words));
            ASSERT_EQ(words.size(), 8);
            EXPECT_EQ(words[0], 0x04030201u); // first byte lowest
            EXPECT_EQ(words[7], 0x201F1E1Du);
            words.clear();
            EXPECT_TRUE(b.engine.loadEccKeyFile(file("30.key", key.left(30)), words));
            ASSERT_EQ(words.size(), 8);
            EXPECT_EQ(words[7], 0x1E1Du);
            words.clear();
            EXPECT_FALSE(b.engine.loadEccKeyFile(file("empty.key", {}), words));
            EXPECT_TRUE(b.log.texts().isEmpty());
            const QString missing = dir.filePath("missing.key");
            EXPECT_FALSE(b.engine.loadEccKeyFile(missing, words));
            EXPECT_EQ(b.log.texts(), QStringList({"open file failed: " + missing}));
            EXPECT_TRUE(b.engine.writeEccKeyFile(b.port, dir.filePath("40.key")));
            EXPECT_EQ(b.state().efuse.mid(0x34, 32), key.left(32));
            EXPECT_EQ(b.fw.lines().size(), 16);
            EXPECT_FALSE(b.engine.writeEccKeyFile(b.port, missing));
            EXPECT_EQ(b.fw.lines().size(), 16);
        },
        [] { // the chip's own AES key
            Bench b;
            EXPECT_TRUE(b.engine.writeAesFromTrng(b.port));
            EXPECT_EQ(b.fw.lines(),
                      QStringList({"efuse write_AES_TRNG", "efuse write_confirmation"}));
            EXPECT_NE(b.state().efuse.mid(0x24, 16), QByteArray(16, '\0'));
            b.fw.inject(Fault::refuse("efuse write_AES_TRNG"));
            EXPECT_FALSE(b.engine.writeAesFromTrng(b.port));
            EXPECT_EQ(b.fw.lines().size(), 3); // no confirmation behind a refusal
            // Text, four characters to a word from its low byte up.
            b.fw.clearLines();
            EXPECT_TRUE(b.engine.writeEfuseText(b.port, 0x54, "hello"));
            EXPECT_EQ(b.fw.lines(),
                      QStringList(
                          {"efuse write 0x54 0x6c6c6568 0x93939a97", "efuse write_confirmation",
                           "efuse write 0x58 0x0000006f 0xffffff90", "efuse write_confirmation"}));
            EXPECT_EQ(b.state().efuse.mid(0x54, 6), QByteArray("hello\0", 6));
            QString text;
            EXPECT_TRUE(b.engine.readEfuseText(b.port, 0x54, 8, text));
            EXPECT_EQ(text, "hello");
            b.fw.inject(Fault::refuse("efuse write"));
            EXPECT_FALSE(b.engine.writeEfuseText(b.port, 0x5c, "abcdefgh"));
            EXPECT_EQ(b.fw.lines().size(), 6); // no second word behind the refusal
        },
    });
}

// ---- Wi-Fi RF ----

TEST(FirmwareCommands, WifiTransmitReceiveAndTrims) {
    inParallel({
        [] {
            Bench b;
            // Panel modes 3 to 5 have no firmware number: nothing goes out.
            EXPECT_FALSE(b.engine.startTx(b.port, 3, 0, 1, 0, 0, 90, 3));
            EXPECT_FALSE(b.engine.startTx(b.port, 8, 0, 1, 0, 0, 90, 3));
            EXPECT_EQ(b.log.texts(), QStringList({"invalid wifi mode: -1, origin mode value: 3",
                                                  "invalid wifi mode: -1, origin mode value: 8"}));
            // Mode 7 is 8 and mode 6 is 5 on the wire.
            EXPECT_TRUE(b.engine.startTx(b.port, 7, 7, 6, 0, 0, 90, 3));
            State::WifiTx tx = b.state().wifiTx;
            EXPECT_TRUE(tx.running);
            EXPECT_EQ(tx.mode, 8);
            EXPECT_TRUE(b.engine.startTx(b.port, 6, 2, 1, 0, 4, 50, 0));
            EXPECT_EQ(b.state().wifiTx.mode, 5);
            EXPECT_TRUE(b.engine.startTx(b.port, 2, 7, 3, 1, 0, 100, 1));
            tx = b.state().wifiTx;
            EXPECT_EQ(tx.mode, 2);
            EXPECT_EQ(tx.bandwidth, 1);
            EXPECT_EQ(tx.duty, 100);
            EXPECT_TRUE(b.engine.stopTx(b.port));
            EXPECT_FALSE(b.state().wifiTx.running);
            EXPECT_TRUE(b.engine.startSingleTone(b.port));
            EXPECT_TRUE(b.state().wifiTx.singleTone);
            EXPECT_EQ(b.wire(), QByteArray("amt_tx_start 8 7 6 0 0 90 3\r"
                                           "amt_tx_start 5 2 1 0 4 50 0\r"
                                           "amt_tx_start 2 7 3 1 0 100 1\r"
                                           "amt_tx_stop\ramt_tx_1M\r"));
        },
        [] { // the count comes with the stop
            Bench b;
            EXPECT_TRUE(b.engine.startRx(b.port, 6, 0));
            EXPECT_TRUE(b.state().wifiRx.running);
            sleepFor(20);
            int count = -1;
            EXPECT_TRUE(b.engine.stopRx(b.port, count));
            EXPECT_GT(count, 0);
            EXPECT_EQ(b.state().wifiRx.lastCount, count);
            b.fw.inject(Fault::replace("1234,OK\r\n"));
            EXPECT_TRUE(b.engine.stopRx(b.port, count));
            EXPECT_EQ(count, 1234);
            b.fw.inject(Fault::replace("OK\r\n"));
            EXPECT_FALSE(b.engine.stopRx(b.port, count));
            EXPECT_EQ(count, 1234);
            EXPECT_EQ(b.log.texts(), QStringList({"can not find [,] in rsp data: OK\r\n"}));
            EXPECT_EQ(b.wire(), QByteArray("amt_rx_start 6 0\ramt_rx_stop\ramt_rx_stop\r"
                                           "amt_rx_stop\r"));
        },
        [] { // DC packs the value twice: above bit 12 and below it
            Bench b;
            EXPECT_TRUE(b.engine.setDcValue(b.port, 0x123));
            EXPECT_EQ(b.state().dcI, 0x123);
            EXPECT_EQ(b.state().dcQ, 0x123);
            EXPECT_TRUE(b.engine.setDcValue(b.port, 5));
            EXPECT_TRUE(b.engine.setCfo(b.port, 3, -2));
            EXPECT_TRUE(b.engine.setPaBias(b.port, -7));
            EXPECT_TRUE(b.engine.setLoLeakage(b.port, 6, 0x123, 0x456));
            const State s = b.state();
            EXPECT_EQ(s.dcQ, 5);
            EXPECT_EQ(s.cfoFine, 3);
            EXPECT_EQ(s.cfoCoarse, -2);
            EXPECT_EQ(s.paBias, -7);
            EXPECT_EQ(s.loLeakage.at(6), 0x123456u);
            EXPECT_EQ(b.wire(), QByteArray("amt_tx_dc 0x123123\ramt_tx_dc 0x5005\r"
                                           "amt_set_cfo 3 -2\ramt_set_pa_bias -7\r"
                                           "amt_set_lo_leakage 6 0x123456\r"));
            EXPECT_TRUE(b.log.texts().isEmpty());
        },
        [] { // the power index: no answer at all, no reason either; a refusal's reason is what
             // stands in front of ERROR, after the full wait
            Bench b;
            QString reason = "kept";
            b.fw.inject(Fault::withhold("amt_set_apcindex"));
            EXPECT_FALSE(b.engine.setApcIndex(b.port, 41, reason));
            EXPECT_EQ(reason, "kept");
            const auto t = Clock::now();
            EXPECT_FALSE(b.engine.setApcIndex(b.port, 40, reason));
            EXPECT_FULL_WAIT(t, 500);
            EXPECT_EQ(reason, "tx test not running");
            EXPECT_TRUE(b.log.texts().isEmpty());
            reason = "kept";
            EXPECT_TRUE(b.engine.startTx(b.port, 0, 3, 1, 0, 0, 90, 3));
            EXPECT_TRUE(b.engine.setApcIndex(b.port, 42, reason));
            EXPECT_TRUE(b.engine.setApcIndex(b.port, 43));
            EXPECT_EQ(b.state().apcIndex, 43);
            EXPECT_EQ(reason, "kept");
            EXPECT_FALSE(b.engine.setApcIndex(b.port, 200, reason));
            EXPECT_EQ(reason, "apc index 200 out of range");
            EXPECT_EQ(b.state().apcIndex, 43);
        },
    });
}

TEST(FirmwareCommands, WifiCalibrationValuesAndFlags) {
    Bench b;
    b.fw.change([](State& s) { s.freqOffset = 0x3A5; });
    int first = -1, second = -1, third = -1;
    EXPECT_TRUE(b.engine.getFreqOffset(b.port, first, second, third));
    EXPECT_EQ(std::vector<int>({first, second, third}), std::vector<int>({3, 5, 0}));
    EXPECT_TRUE(b.engine.setFreqOffset(b.port, 4, 6, 1));
    EXPECT_EQ(b.state().freqOffset, 0x14A6u); // the bits between stay
    EXPECT_TRUE(b.engine.getFreqOffset(b.port, first, second, third));
    EXPECT_EQ(std::vector<int>({first, second, third}), std::vector<int>({4, 6, 1}));
    int gain = -1;
    EXPECT_TRUE(b.engine.getTxGain(b.port, gain)); // 4660 = 0x1234: 18 above bit 8
    EXPECT_EQ(gain, 18);
    EXPECT_TRUE(b.engine.setTxGain(b.port, 20));
    EXPECT_EQ(b.state().txGain, 0x1434u);
    EXPECT_TRUE(b.engine.getTxGain(b.port, gain));
    EXPECT_EQ(gain, 20);
    // Each flag: read as clear, set, read as set.
    using E = AppQZ4420Imple;
    const std::pair<bool (E::*)(ComPort&, bool&), bool (E::*)(ComPort&, bool)> flags[] = {
        {&E::getFreqOffsetFlag, &E::setFreqOffsetFlag},
        {&E::getTxGainFlag, &E::setTxGainFlag},
        {&E::getFinishFlag, &E::setFinishFlag}};
    for (const auto& [get, set] : flags) {
        bool flag = true;
        EXPECT_TRUE((b.engine.*get)(b.port, flag));
        EXPECT_FALSE(flag);
        EXPECT_TRUE((b.engine.*set)(b.port, true));
        EXPECT_TRUE((b.engine.*get)(b.port, flag));
        EXPECT_TRUE(flag);
    }
    EXPECT_TRUE(b.engine.setFinishFlag(b.port, false));
    const State s = b.state();
    EXPECT_TRUE(s.freqOffsetFlag && s.txGainFlag && !s.finishFlag);
    EXPECT_EQ(
        b.fw.lines(),
        QStringList({"amt_get_freqoffset", "amt_set_freqoffset 4 6 1", "amt_get_freqoffset",
                     "amt_get_txgain", "amt_set_txgain 20", "amt_get_txgain",
                     "amt_get_freqoffset_flag", "amt_set_freqoffset_flag 1",
                     "amt_get_freqoffset_flag", "amt_get_txgain_flag", "amt_set_txgain_flag 1",
                     "amt_get_txgain_flag", "amt_get_finish_flag", "amt_set_finish_flag 1",
                     "amt_get_finish_flag", "amt_set_finish_flag 0"}));
    EXPECT_TRUE(b.log.texts().isEmpty());
    // Answers of the wrong shape.
    first = second = third = gain = -1;
    bool flag = true;
    b.fw.inject(Fault::replace("0x3a5,1,OK\r\n"));
    EXPECT_FALSE(b.engine.getFreqOffset(b.port, first, second, third));
    b.fw.inject(Fault::replace("1,1,OK\r\n"));
    EXPECT_FALSE(b.engine.getFreqOffsetFlag(b.port, flag));
    b.fw.inject(Fault::replace("4660 OK\r\n"));
    EXPECT_FALSE(b.engine.getTxGain(b.port, gain));
    b.fw.inject(Fault::replace("1 OK\r\n"));
    EXPECT_FALSE(b.engine.getTxGainFlag(b.port, flag));
    b.fw.inject(Fault::replace("OK\r\n"));
    EXPECT_FALSE(b.engine.getFinishFlag(b.port, flag));
    // More than two items is fine where the rule is "at least two".
    b.fw.inject(Fault::replace("1,x,OK\r\n"));
    EXPECT_TRUE(b.engine.getTxGainFlag(b.port, flag));
    EXPECT_TRUE(flag);
    EXPECT_EQ(first, -1);
    EXPECT_EQ(gain, -1);
    EXPECT_EQ(b.log.texts(),
              QStringList({"rsp can not split to 2 items!", "rsp can not split to 2 items!",
                           "GET_POWER_CAL_VAL: rsp can not slice to 2 items!",
                           "GET_POWER_CAL_FLAG: rsp can not slice to 2 items!",
                           "GET_POWER_CAL_FLAG: rsp can not slice to 2 items!"}));
}

TEST(FirmwareCommands, WifiTestLoops) {
    inParallel({
        [] {
            Bench b;
            EXPECT_TRUE(b.engine.txTest(b.port, 0, 3, 6, 0, nullptr));
            bool asked = false;
            EXPECT_FALSE(b.engine.txTest(b.port, 1, 7, 6, 0, [&] {
                asked = true;
                EXPECT_TRUE(b.fw.state().wifiTx.running); // asked while the test runs
                return false;
            }));
            EXPECT_TRUE(asked);
            EXPECT_FALSE(b.state().wifiTx.running);
            int count = -1;
            EXPECT_TRUE(b.engine.rxTest(
                b.port, 6, 0,
                [] {
                    sleepFor(20);
                    return true;
                },
                count));
            EXPECT_GT(count, 0);
            EXPECT_EQ(b.state().wifiRx.lastCount, count);
            int gain = -1;
            EXPECT_TRUE(b.engine.txGainTest(b.port, 7, 1, 6, 0, gain));
            EXPECT_EQ(gain, 18);
            EXPECT_TRUE(b.engine.txApcTest(b.port, 6, 2, 6, 0, 30, 0, 90, 3));
            EXPECT_EQ(b.state().apcIndex, 30);
            EXPECT_EQ(b.fw.lines(),
                      QStringList({"amt_tx_start 0 3 6 0 0 90 3", "amt_tx_stop",
                                   "amt_tx_start 1 7 6 0 0 90 3", "amt_tx_stop", "amt_rx_start 6 0",
                                   "amt_rx_stop", "amt_tx_start 8 1 6 0 0 90 3", "amt_get_txgain",
                                   "amt_tx_start 5 2 6 0 0 90 3", "amt_set_apcindex 30"}));
            EXPECT_TRUE(b.log.texts().isEmpty());
        },
        [] { // each loop failing: a mode without a number, a refused start, a refused stop
            Bench b;
            EXPECT_FALSE(b.engine.txTest(b.port, 4, 0, 6, 0, nullptr));
            b.fw.inject(Fault::refuse("amt_tx_stop"));
            EXPECT_FALSE(b.engine.txTest(b.port, 0, 0, 6, 0, nullptr));
            EXPECT_TRUE(b.state().wifiTx.running); // left running on the board
            int count = -1;
            EXPECT_FALSE(b.engine.rxTest(b.port, 0, 0, nullptr, count));
            b.fw.inject(Fault::refuse("amt_rx_stop"));
            EXPECT_FALSE(b.engine.rxTest(b.port, 1, 0, nullptr, count));
            EXPECT_EQ(count, -1);
            b.fw.clearLines();
            int gain = -1;
            EXPECT_FALSE(b.engine.txGainTest(b.port, 5, 0, 6, 0, gain));
            EXPECT_FALSE(b.engine.txApcTest(b.port, 0, 0, 6, 0, 500, 0, 90, 3));
            EXPECT_EQ(gain, -1);
            EXPECT_EQ(b.fw.lines(),
                      QStringList({"amt_tx_start 0 0 6 0 0 90 3", "amt_set_apcindex 500"}));
            EXPECT_EQ(
                b.log.texts(),
                QStringList({"invalid wifi mode: -1, origin mode value: 4",
                             "TX_TEST: start tx test failed!", "TX_TEST: stop tx test failed!",
                             "RX_TEST: start rx test failed!", "STOP_RX: send stop cmd failed",
                             "RX_TEST: stop rx test failed!",
                             "invalid wifi mode: -1, origin mode value: 5"}));
        },
    });
}

// ---- BLE RF ----

TEST(FirmwareCommands, BleCommandsAndLoops) {
    inParallel({
        [] {
            Bench b;
            EXPECT_TRUE(b.engine.startBleTone(b.port, 1, 39, 2));
            EXPECT_TRUE(b.state().bleTx.singleTone);
            EXPECT_TRUE(b.engine.stopBleTx(b.port));
            EXPECT_TRUE(b.engine.startBleTx(b.port, 0, 19, 0, 37, 2));
            const State::BleTx tx = b.state().bleTx;
            EXPECT_TRUE(tx.running && !tx.singleTone);
            EXPECT_EQ(tx.pduLength, 37);
            EXPECT_TRUE(b.engine.stopBleTx(b.port));
            EXPECT_TRUE(b.engine.startBleRx(b.port, 1, 19));
            sleepFor(20);
            int count = -1;
            EXPECT_TRUE(b.engine.stopBleRx(b.port, count));
            EXPECT_GT(count, 0);
            EXPECT_EQ(b.state().bleRx.lastCount, count);
            EXPECT_TRUE(b.engine.setBleDc(b.port, 0xABC));
            EXPECT_TRUE(b.engine.setBleTxStep(b.port, -3));
            const State s = b.state();
            EXPECT_EQ(s.bleDcI, 0xABC);
            EXPECT_EQ(s.bleDcQ, 0xABC);
            EXPECT_EQ(s.bleTxStep, -3);
            EXPECT_TRUE(b.engine.resetBle(b.port));
            EXPECT_EQ(b.state().bleTxStep, 0);
            EXPECT_EQ(b.wire(), QByteArray("amtBleTxToneStart 1 39 2\ramtBleTxStop\r"
                                           "amtBleTxStart 0 19 0 37 2\ramtBleTxStop\r"
                                           "amtBleRxStart 1 19\ramtBleRxStop\r"
                                           "amtBleDumpDc 0xabcabc\rbletxstep -3\ramtBleReset\r"));
            EXPECT_TRUE(b.log.texts().isEmpty());
        },
        [] {
            Bench b;
            int count = -1;
            // An answer without its comma is the receive loop's below.
            b.fw.inject(Fault::replace("57,OK\r\n"));
            EXPECT_TRUE(b.engine.stopBleRx(b.port, count));
            EXPECT_EQ(count, 57);
        },
        [] {
            Bench b;
            EXPECT_TRUE(b.engine.bleTxTest(b.port, 0, 19, 0, 37, 2, nullptr));
            EXPECT_FALSE(b.engine.bleTxTest(b.port, 1, 20, 7, 255, 0, [] { return false; }));
            EXPECT_FALSE(b.state().bleTx.running);
            int count = -1;
            EXPECT_TRUE(b.engine.bleRxTest(
                b.port, 0, 19,
                [] {
                    sleepFor(20);
                    return true;
                },
                count));
            EXPECT_GT(count, 0);
            EXPECT_EQ(b.state().bleRx.lastCount, count);
            EXPECT_EQ(b.fw.lines(), QStringList({"amtBleTxStart 0 19 0 37 2", "amtBleTxStop",
                                                 "amtBleTxStart 1 20 7 255 0", "amtBleTxStop",
                                                 "amtBleRxStart 0 19", "amtBleRxStop"}));
            EXPECT_TRUE(b.log.texts().isEmpty());
        },
        [] { // each loop failing at its start and at its stop
            Bench b;
            EXPECT_FALSE(b.engine.bleTxTest(b.port, 0, 41, 0, 37, 2, nullptr));
            b.fw.inject(Fault::refuse("amtBleTxStop"));
            EXPECT_FALSE(b.engine.bleTxTest(b.port, 0, 19, 0, 37, 2, nullptr));
            int count = -1;
            EXPECT_FALSE(b.engine.bleRxTest(b.port, 0, 41, nullptr, count));
            b.fw.inject(Fault::replace("57 OK\r\n", "amtBleRxStop"));
            EXPECT_FALSE(b.engine.bleRxTest(b.port, 0, 19, nullptr, count));
            EXPECT_EQ(count, -1);
            EXPECT_EQ(b.log.texts(), QStringList({"TX_TEST_BLE: start tx test failed!",
                                                  "TX_TEST_BLE: stop tx test failed!",
                                                  "RX_TEST_BLE: start rx test failed!",
                                                  "STOP_RX_TEST_BLE: rsp can not slice to 2 items!",
                                                  "RX_TEST_BLE: stop rx test failed!"}));
        },
    });
}

// ---- Production commands of the QZ4410 ----

// The lines this engine sends and what each answer means are ProductionCommands' to test; here
// each command meets the firmware, which must take it as the engine means it.
TEST(FirmwareCommands, ProductionCommandsOfTheQZ4410) {
    inParallel({
        [] {
            Bench4410 b;
            b.fw.change([](State& s) { s.dutLost = 125; });
            float sigRate = -1, dutRate = -1, rssi = 0, dutRssi = 0;
            const auto t = Clock::now();
            EXPECT_TRUE(b.engine.measureSignal(b.port, 250, sigRate, dutRate, rssi, dutRssi, 30));
            EXPECT_GE(msSince(t), 30);
            EXPECT_FLOAT_EQ(sigRate, 100.0f); // 250 of 250
            EXPECT_FLOAT_EQ(dutRate, 50.0f);  // 125 of 250
            EXPECT_FLOAT_EQ(rssi, -55.0f);    // 200 - 255
            EXPECT_FLOAT_EQ(dutRssi, -65.0f); // 190 - 255
            EXPECT_TRUE(b.log.texts().isEmpty());
            b.fw.change([](State& s) {
                s.macs[0] = "02:00:00:00:00:0a";
                s.macs[1] = "A0:B1:C2:D3:E4:F5";
            });
            QString mac;
            EXPECT_TRUE(b.engine.getMacOtp(b.port, mac));
            EXPECT_EQ(mac, "A0:B1:C2:D3:E4:F5");
            EXPECT_TRUE(b.engine.getMacAmt(b.port, mac));
            EXPECT_EQ(mac, "02:00:00:00:00:0a");
            // The PHY tests.
            EXPECT_TRUE(b.engine.setRfBandwidth(b.port, 1));
            EXPECT_EQ(b.state().rfBandwidth, 1);
            EXPECT_TRUE(b.engine.startPhyTx(b.port, 0, 3, 6, 0, 7));
            EXPECT_TRUE(b.state().phyTx);
            EXPECT_EQ(b.state().phyTxArgs, std::vector<int>({6, 0, 1, 3, 7, 1}));
            EXPECT_TRUE(b.engine.startPhyTxAuto(b.port, 2, 7, 6, 1));
            EXPECT_TRUE(b.engine.startPhyTxAuto(b.port, 1, 7, 6, 0));
            EXPECT_TRUE(b.engine.startPhyTxFixed(b.port));
            EXPECT_FALSE(b.state().phyTx);
            EXPECT_TRUE(b.engine.startPhyRx(b.port, 6, 0));
            sleepFor(20);
            int count = -1;
            EXPECT_TRUE(b.engine.stopPhyRx(b.port, 6, count));
            EXPECT_GT(count, 0);
            EXPECT_EQ(b.state().phyRx.lastCount, count);
            EXPECT_TRUE(b.log.texts().isEmpty());
        },
        [] {
            Bench4410 b;
            QString value;
            EXPECT_TRUE(b.engine.calibrateFreqOffset(b.port, 2, 5, 6, 1, 2, value));
            EXPECT_EQ(value, "27\r\n"); // all between the word and "OK"
            EXPECT_TRUE(b.engine.saveFreqOffset(b.port, "27"));
            EXPECT_TRUE(b.engine.saveFreqOffsetFlag(b.port, true));
            EXPECT_TRUE(b.engine.calibrateTxPower(b.port, 1, 6, value));
            EXPECT_EQ(value, "00002a2a");
            EXPECT_TRUE(b.engine.saveTxPower(b.port, 1, 6, value));
            EXPECT_TRUE(b.engine.saveTxPowerFlag(b.port, false));
            EXPECT_TRUE(b.engine.saveCalibrationFlag(b.port, true));
            EXPECT_EQ(b.state().nv[State::Amt],
                      (std::map<QString, QString>{{"CALIBRATION", "1"},
                                                  {"FREQOFFSET", "27"},
                                                  {"FREQOFFSET_FLAG", "1"},
                                                  {"TXPOWER_FLAG", "0"},
                                                  {"TXPOWER_NONHTCH6", "00002a2a"}}));
            EXPECT_TRUE(b.log.texts().isEmpty());
            // "resystem": "success" in lower case, then the firmware starts again with its stores.
            EXPECT_TRUE(b.engine.restartSystem(b.port));
            EXPECT_EQ(b.fw.starts(), 2);
            EXPECT_EQ(b.state().nv[State::Amt].at("FREQOFFSET"), "27");
        },
    });
}

// ---- Every refusal of the firmware ----

TEST(FirmwareCommands, EveryRefusalFailsTheCall) {
    // Each call refused once: false after its full wait, its one line on the wire, only the log
    // lines the row names, and the bench's out values as they were. A row marked as-is sends a
    // line the firmware refuses by itself; the others have their answer refused. (Which values
    // the firmware refuses is the simulated firmware's own test.)
    struct Case {
        QString line;
        std::function<bool(Bench&)> call;
        QStringList log = {};
        int limitMs = 500;
        bool asIs = false;
    };
#define CALL(...) [](Bench& b) { return b.engine.__VA_ARGS__; }
    const bool asIs = true;
    const std::vector<Case> cases = {
        {"amt_start 1", CALL(switchVersion(b.port, 1)), {}, 560},
        {"get_version_type", CALL(getVersionState(b.port, b.n))},
        {"echoclose 0", CALL(setEcho(b.port, false, 0))},
        {"amt_set_mac 0 02:00:00:00:00:01", CALL(setMac(b.port, 0, "02:00:00:00:00:01"))},
        {"amt_get_mac", CALL(getMac(b.port, b.text))},
        {"cnvs k v", CALL(setNv(b.port, 3, "k", "v"))},
        {"dnvg k", CALL(getNv(b.port, 2, "k", b.text))},
        {"anvg all", CALL(readAllNv(b.port, 1, b.entries))},
        {"anvd k", CALL(removeNv(b.port, 1, "k"))},
        {"amt_set 0x10 0x1", CALL(setRegister(b.port, 0x10, 1))},
        {"amt_get 0x10", CALL(getRegister(b.port, 0x10, b.u))},
        {"amt_set 0x203174 0x5006", CALL(setDcCalRegister(b.port, 5, 6))},
        {"amt_get 0x203174", CALL(getDcCalRegister(b.port, b.u, b.u2))},
        {"efuse read 0x20 4", CALL(readEfuseState(b.port, b.u))},
        {"efuse read 0x20 4", CALL(getEfuseState(b.port, b.efuse))},
        {"efuse read 0x20 4", CALL(writeStateBit(b.port, 5, true))},
        {"efuse read 0x7c 8", CALL(readEfuse(b.port, 0x7c, 8, b.words)), {}, 500, asIs},
        {"efuse read 0x7c 8", CALL(readEfuseText(b.port, 0x7c, 8, b.text)), {}, 500, asIs},
        {"efuse write 0x20 0x00000010 0xffffffef", CALL(writeEfuseState(b.port, 0x10))},
        {"efuse write 0x30 0x00000007 0xfffffff8", CALL(writeEfuseWords(b.port, 0x30, {7, 8}))},
        {"efuse write_confirmation", CALL(confirmEfuseWrite(b.port)), {}, 500, asIs},
        {"efuse read 0x24 16", CALL(readAesKey(b.port, b.words))},
        {"efuse read 0x34 32", CALL(readEccKey(b.port, b.words))},
        {"efuse read 0x54 44", CALL(readReservedArea(b.port, b.words))},
        {"efuse write 0x24 0x00000001 0xfffffffe", CALL(writeAesKey(b.port, {1, 2}))},
        {"efuse write 0x34 0x00000001 0xfffffffe", CALL(writeEccKey(b.port, {1}))},
        {"efuse write 0x54 0x00000001 0xfffffffe", CALL(writeReservedArea(b.port, {1}))},
        {"amt_tx_start 1 0 1 0 0 90 3", CALL(startTx(b.port, 1, 0, 1, 0, 0, 90, 3))},
        {"amt_tx_stop", CALL(stopTx(b.port))},
        {"amt_rx_start 1 0", CALL(startRx(b.port, 1, 0))},
        {"amt_rx_stop", CALL(stopRx(b.port, b.n)), {"STOP_RX: send stop cmd failed"}, 500, asIs},
        {"amt_tx_1M", CALL(startSingleTone(b.port))},
        {"amt_tx_dc 0x1001", CALL(setDcValue(b.port, 1))},
        {"amt_set_cfo 1 2", CALL(setCfo(b.port, 1, 2))},
        {"amt_set_pa_bias 3", CALL(setPaBias(b.port, 3))},
        {"amt_set_lo_leakage 15 0x123456",
         CALL(setLoLeakage(b.port, 15, 0x123, 0x456)),
         {"set lo leakage failed, ch: 15, value: 123456!"},
         1000,
         asIs},
        {"amt_get_freqoffset", CALL(getFreqOffset(b.port, b.n, b.n2, b.n3))},
        {"amt_set_freqoffset 1 2 3", CALL(setFreqOffset(b.port, 1, 2, 3))},
        {"amt_get_freqoffset_flag", CALL(getFreqOffsetFlag(b.port, b.flag))},
        {"amt_set_freqoffset_flag 0", CALL(setFreqOffsetFlag(b.port, false))},
        {"amt_get_txgain", CALL(getTxGain(b.port, b.n))},
        {"amt_set_txgain 9", CALL(setTxGain(b.port, 9))},
        {"amt_get_txgain_flag", CALL(getTxGainFlag(b.port, b.flag))},
        {"amt_set_txgain_flag 0", CALL(setTxGainFlag(b.port, false))},
        {"amt_get_finish_flag", CALL(getFinishFlag(b.port, b.flag))},
        {"amt_set_finish_flag 1", CALL(setFinishFlag(b.port, true))},
        {"amt_tx_start 0 0 6 0 0 90 3", CALL(txGainTest(b.port, 0, 0, 6, 0, b.n))},
        {"amtBleTxToneStart 0 0 0", CALL(startBleTone(b.port, 0, 0, 0))},
        {"amtBleTxStart 0 0 0 0 0", CALL(startBleTx(b.port, 0, 0, 0, 0, 0))},
        {"amtBleTxStop", CALL(stopBleTx(b.port))},
        {"amtBleRxStart 0 0", CALL(startBleRx(b.port, 0, 0))},
        {"amtBleRxStop", CALL(stopBleRx(b.port, b.n))},
        {"amtBleDumpDc 0x1001", CALL(setBleDc(b.port, 1))},
        {"bletxstep 5", CALL(setBleTxStep(b.port, 5))},
        {"amtBleReset", CALL(resetBle(b.port))},
    };
#undef CALL
    std::vector<std::function<void()>> checks;
    for (const Case& c : cases) {
        checks.push_back([c] {
            SCOPED_TRACE(c.line.toStdString());
            Bench b;
            if (!c.asIs)
                b.fw.inject(Fault::refuse(c.line));
            const auto t = Clock::now();
            EXPECT_FALSE(c.call(b));
            EXPECT_FULL_WAIT(t, c.limitMs);
            EXPECT_EQ(b.fw.lines(), QStringList({c.line}));
            EXPECT_EQ(b.log.texts(), c.log);
            EXPECT_EQ(b.fw.pendingFaults(), 0);
            EXPECT_EQ(std::vector<int>({b.n, b.n2, b.n3, b.flag, int(b.u), int(b.u2)}),
                      std::vector<int>({-1, -1, -1, true, 7, 7}));
            EXPECT_EQ(b.text, "kept");
            EXPECT_TRUE(b.words.isEmpty() && b.entries.isEmpty());
        });
    }
    inParallel(checks);
}
