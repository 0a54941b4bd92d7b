// The simulated firmware, driven over the board's pty through the real ComPort with the
// command lines a host sends and read back byte for byte.

#include "sim/SimFirmware.h"
#include "base/ComPort.h"
#include "support/QtPrinters.h"
#include "support/Wire.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace {

using State = SimFirmwareState;

// Writes the bytes and gives back what comes: the first bytes within waitMs, and all that
// follows them within settleMs.
QByteArray talk(ComPort& port, const QByteArray& bytes, int waitMs = 500, int settleMs = 40) {
    EXPECT_TRUE(port.write(bytes.toStdString()));
    ByteBuffer b;
    port.timedRead(b, waitMs, settleMs);
    return bytesOf(b);
}

QByteArray readSome(ComPort& port, int waitMs, int settleMs = 0) {
    ByteBuffer b;
    port.timedRead(b, waitMs, settleMs);
    return bytesOf(b);
}

// A board whose firmware runs with echo off, and a host port open on it.
struct Bench {
    BoardSim board;
    SimFirmware fw{board};
    ComPort port;
    explicit Bench(bool echo = false) {
        EXPECT_TRUE(port.open(board.devicePath(), 115200));
        board.startFirmware();
        fw.change([echo](State& s) { s.echo = echo; });
    }
};

const QByteArray kBanner = SimFirmware::Options().banner;

} // namespace

TEST(SimFirmware, StartsAfterTheStubAndAfterAResetIntoAState) {
    BoardSim::Options o;
    o.syncAnswer = 51;
    BoardSim board(o);
    SimFirmware fw(board);
    ComPort port;
    ASSERT_TRUE(port.open(board.devicePath(), 115200));
    EXPECT_EQ(talk(port, "cnys"), QByteArray(1, char(51)));
    // The stub knows no text: the line is noise between frames.
    EXPECT_EQ(talk(port, "get_version_type\r", 80), QByteArray());
    EXPECT_EQ(fw.starts(), 0);

    QByteArray start = request(6, le32(0x8000));
    EXPECT_EQ(talk(port, start).size(), 6); // the stub's reply frame
    EXPECT_EQ(board.stage(), BoardSim::Stage::Firmware);
    EXPECT_EQ(fw.starts(), 1);
    // A fresh firmware echoes, runs in the start state and answers value first, then a comma.
    EXPECT_EQ(talk(port, "get_version_type\r"), QByteArray("get_version_type\r\n0,\r\nOK\r\n"));
    EXPECT_EQ(talk(port, "echoclose 0\n"), QByteArray("echoclose 0\r\nOK\r\n"));
    // LF, CR and CR LF all end a line; CR LF is one line, not two.
    EXPECT_EQ(talk(port, "get_version_type\r\n"), QByteArray("0,\r\nOK\r\n"));
    EXPECT_EQ(talk(port, "frobnicate 1\r"), QByteArray("ERROR\r\n"));
    EXPECT_EQ(talk(port, "get_version_type 1\r"), QByteArray("ERROR\r\n"));
    // A line longer than any command is noise, dropped whole.
    EXPECT_EQ(talk(port, QByteArray(1100, ' ') + "get_version_type\r", 80), QByteArray());
    EXPECT_EQ(fw.lines(), QStringList({"get_version_type", "echoclose 0", "get_version_type",
                                       "frobnicate 1", "get_version_type 1"}));

    // After a reset the ROM hears lines but answers none, until the firmware takes its word.
    board.reset();
    fw.clearLines();
    EXPECT_EQ(talk(port, "get_version_type\r", 80), QByteArray());
    EXPECT_EQ(talk(port, "amt_start 4\r", 80), QByteArray()); // states run from 0 to 3
    EXPECT_EQ(talk(port, "amt_start\r", 80), QByteArray());
    EXPECT_EQ(board.stage(), BoardSim::Stage::Rom);
    const auto t0 = Clock::now();
    EXPECT_EQ(talk(port, "amt_start 2\r", 500, 0), QByteArray("OK\r\n"));
    EXPECT_EQ(readSome(port, 500), kBanner); // once the firmware is up
    EXPECT_GE(msSince(t0), 25);
    EXPECT_EQ(board.stage(), BoardSim::Stage::Firmware);
    EXPECT_EQ(fw.starts(), 2);
    EXPECT_EQ(fw.state().versionState, 2);
    EXPECT_EQ(talk(port, "get_version_type\r"), QByteArray("get_version_type\r\n2,\r\nOK\r\n"));
    EXPECT_EQ(fw.lines(), QStringList({"amt_start 2", "get_version_type"}));

    // A running firmware takes the line as a restart into that state, and refuses a bad one.
    EXPECT_EQ(talk(port, "amt_start 3\r", 500, 60), "amt_start 3\r\nOK\r\n" + kBanner);
    EXPECT_EQ(fw.state().versionState, 3);
    EXPECT_EQ(fw.starts(), 3);
    EXPECT_EQ(talk(port, "amt_start -1\r"), QByteArray("amt_start -1\r\nERROR\r\n"));
}

TEST(SimFirmware, RebootKeepsTheStoresAndStartsTheRadioAfresh) {
    Bench b(true);
    EXPECT_EQ(talk(b.port, "anvs color deep blue\r"), QByteArray("anvs color deep blue\r\nOK\r\n"));
    EXPECT_EQ(talk(b.port, "echoclose 0\r"), QByteArray("echoclose 0\r\nOK\r\n"));
    EXPECT_EQ(talk(b.port, "amt_start 1\r", 500, 60), "OK\r\n" + kBanner);
    EXPECT_EQ(talk(b.port, "echoclose 0\r"), QByteArray("echoclose 0\r\nOK\r\n"));
    EXPECT_EQ(talk(b.port, "amt_set_mac 0 02:00:00:aa:bb:cc\r"), QByteArray("OK\r\n"));
    EXPECT_EQ(talk(b.port, "amt_set 0x203174 0x5005\r"), QByteArray("OK\r\n"));
    EXPECT_EQ(talk(b.port, "amt_rx_start 6 0\r"), QByteArray("OK\r\n"));
    EXPECT_EQ(talk(b.port, "amtBleTxStart 0 19 0 37 2\r"), QByteArray("OK\r\n"));
    const int starts = b.fw.starts();

    // The line behind "reboot" reaches a firmware that is not up yet, and is lost.
    const auto t0 = Clock::now();
    EXPECT_EQ(talk(b.port, "reboot\rget_version_type\r", 500, 0), kBanner);
    EXPECT_GE(msSince(t0), 90);
    EXPECT_EQ(b.fw.starts(), starts + 1);
    const State s = b.fw.state();
    EXPECT_EQ(s.versionState, 1);
    EXPECT_TRUE(s.echo);
    EXPECT_EQ(s.nv[State::Amt].at("color"), "deep blue");
    EXPECT_EQ(s.macs.at(0), "02:00:00:aa:bb:cc");
    EXPECT_TRUE(s.registers.empty());
    EXPECT_FALSE(s.wifiRx.running);
    EXPECT_FALSE(s.bleTx.running);
    EXPECT_EQ(talk(b.port, "amt_get 0x203174\r"), QByteArray("amt_get 0x203174\r\n0x0,\r\nOK\r\n"));
    EXPECT_EQ(b.fw.lines().mid(b.fw.lines().size() - 2),
              QStringList({"reboot", "amt_get 0x203174"}));
}

TEST(SimFirmware, AnswerFaultsAndTheRecordOfLines) {
    Bench b;
    // Split: the pieces come with the pause between them.
    b.fw.inject(SimLineFault::split({1}, 80, "get_version_type"));
    EXPECT_EQ(b.fw.pendingFaults(), 1);
    EXPECT_EQ(talk(b.port, "anvs a 1\r"), QByteArray("OK\r\n")); // not the line it waits for
    EXPECT_EQ(b.fw.pendingFaults(), 1);
    auto t0 = Clock::now();
    EXPECT_EQ(talk(b.port, "get_version_type\r", 500, 0), QByteArray("0"));
    EXPECT_EQ(readSome(b.port, 500), QByteArray(",\r\nOK\r\n"));
    EXPECT_GE(msSince(t0), 70);
    EXPECT_EQ(b.fw.pendingFaults(), 0);

    // Delay.
    b.fw.inject(SimLineFault::delay(120));
    t0 = Clock::now();
    EXPECT_EQ(talk(b.port, "anvg a\r"), QByteArray("value: 1\r\nOK\r\n"));
    EXPECT_GE(msSince(t0), 110);

    // Withhold and replace: the command is carried out all the same.
    b.fw.inject(SimLineFault::withhold("anvs"));
    EXPECT_EQ(talk(b.port, "anvs a 2\r", 150), QByteArray());
    b.fw.inject(SimLineFault::replace("0X1A,OK", "anvg"));
    EXPECT_EQ(talk(b.port, "anvg a\r"), QByteArray("0X1A,OK"));
    EXPECT_EQ(b.fw.state().nv[State::Amt].at("a"), "2");

    // Refuse: not carried out, a reason in front of ERROR.
    b.fw.inject(SimLineFault::refuse("anvs", "store busy"));
    EXPECT_EQ(talk(b.port, "anvs a 3\r"), QByteArray("store busy ERROR\r\n"));
    b.fw.inject(SimLineFault::refuse());
    EXPECT_EQ(talk(b.port, "anvd a\r"), QByteArray("ERROR\r\n"));
    EXPECT_EQ(b.fw.state().nv[State::Amt].at("a"), "2");

    // A fault for "efuse write" waits for a write, not for its confirmation.
    b.fw.inject(SimLineFault::refuse("efuse write"));
    EXPECT_EQ(talk(b.port, "efuse write_confirmation\r"), QByteArray("ERROR\r\n"));
    EXPECT_EQ(b.fw.pendingFaults(), 1);
    b.fw.clearFaults();
    EXPECT_EQ(b.fw.pendingFaults(), 0);

    // Text the board sends unasked, and the record of lines.
    b.fw.sendText("late OK\r\n", 30);
    EXPECT_EQ(readSome(b.port, 500), QByteArray("late OK\r\n"));
    b.fw.clearLines();
    std::thread host([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        EXPECT_TRUE(b.port.write(std::string("amt_tx_stop\ramtBleTxStop\r")));
    });
    EXPECT_TRUE(b.fw.waitForLines(2, 1000));
    host.join();
    EXPECT_EQ(b.fw.lines(), QStringList({"amt_tx_stop", "amtBleTxStop"}));
    EXPECT_FALSE(b.fw.waitForLines(3, 50));
    EXPECT_EQ(b.board.firmwareInput().right(25), QByteArray("amt_tx_stop\ramtBleTxStop\r"));
}

TEST(SimFirmware, EfuseBitsCanOnlyBeSetAndOnlyWhenConfirmed) {
    Bench b;
    EXPECT_EQ(talk(b.port, "efuse read 0x20 4\r"), QByteArray("0x00000000,\r\nOK\r\n"));
    // The complement must match; blank padding of it is fine.
    EXPECT_EQ(talk(b.port, "efuse write 0x54 0xffffffff 0x       1\r"), QByteArray("ERROR\r\n"));
    EXPECT_EQ(talk(b.port, "efuse write 0x54 0xffffffff 0x       0\r"), QByteArray("OK\r\n"));
    EXPECT_EQ(talk(b.port, "efuse read 0x54 4\r"), QByteArray("0x00000000,\r\nOK\r\n"));
    EXPECT_EQ(talk(b.port, "efuse write_confirmation\r"), QByteArray("OK\r\n"));
    EXPECT_EQ(talk(b.port, "efuse read 0x54 4\r"), QByteArray("0xffffffff,\r\nOK\r\n"));
    EXPECT_EQ(talk(b.port, "efuse write_confirmation\r"), QByteArray("ERROR\r\n"));

    // A write ORs: a bit once set stays set.
    EXPECT_EQ(talk(b.port, "efuse write 0x20 0x00000100 0xfffffeff\r"), QByteArray("OK\r\n"));
    EXPECT_EQ(talk(b.port, "efuse write_confirmation\r"), QByteArray("OK\r\n"));
    EXPECT_EQ(talk(b.port, "efuse write 0x20 0x00000003 0xfffffffc\r"), QByteArray("OK\r\n"));
    EXPECT_EQ(talk(b.port, "efuse write_confirmation\r"), QByteArray("OK\r\n"));
    EXPECT_EQ(b.fw.state().efuseWord(0x20), 0x103u);
    EXPECT_EQ(b.fw.state().efuse.mid(0x20, 4), QByteArray("\x03\x01\x00\x00", 4));

    // Whole words, four to a line, each followed by a comma.
    b.fw.change([](State& s) { s.efuse[0x24] = char(0x5A); });
    EXPECT_EQ(talk(b.port, "efuse read 0x20 18\r"),
              QByteArray("0x00000103, 0x0000005a, 0x00000000, 0x00000000,\r\n"
                         "0x00000000,\r\nOK\r\n"));
    for (const char* bad :
         {"efuse read 0x7c 8\r", "efuse read 0x22 4\r", "efuse read 0x20 0\r",
          "efuse write 0x80 0x1 0xfffffffe\r", "efuse write 0x20 0x1\r", "efuse burn\r"})
        EXPECT_EQ(talk(b.port, bad), QByteArray("ERROR\r\n")) << bad;

    // The chip makes its own AES key; it is burnt by the confirmation too.
    EXPECT_EQ(talk(b.port, "efuse write_AES_TRNG\r"), QByteArray("OK\r\n"));
    EXPECT_EQ(b.fw.state().efusePending.size(), 4u);
    EXPECT_EQ(talk(b.port, "efuse write_confirmation\r"), QByteArray("OK\r\n"));
    const State s = b.fw.state();
    EXPECT_NE(s.efuse.mid(0x24, 16), QByteArray(16, '\0'));
    EXPECT_EQ(s.efuse.mid(0x34, 0x20), QByteArray(0x20, '\0'));
}

TEST(SimFirmware, ValuesOutsideTheirRangeAreRefused) {
    Bench b;
    for (const char* bad :
         {"amt_set_mac 0 02:00:00:00:00\r", "anvg missing\r", "amt_set 0x203175 0x1\r",
          "amt_tx_start 2 0 12 1 0 90 3\r" /* 40M outside channels 3 to 11 */,
          "amt_rx_start 15 0\r", "amt_tx_dc 0x1001000\r" /* past 12 bits */,
          "amt_set_freqoffset 16 0 0\r", "amt_set_txgain -1\r", "amtBleTxToneStart 0 40 0\r",
          "amtBleTxStart 0 19 0 300 2\r", "amtBleRxStart 4 0\r", "amtBleDumpDc 0x1001000\r"})
        EXPECT_EQ(talk(b.port, bad), QByteArray("ERROR\r\n")) << bad;
    const State s = b.fw.state();
    EXPECT_TRUE(s.macs.empty() && s.registers.empty());
    EXPECT_FALSE(s.wifiTx.running || s.wifiRx.running || s.bleTx.running || s.bleRx.running);
}

TEST(SimFirmware, ReceiveTestsCountWhileTheyRun) {
    Bench b;
    for (const char* stop : {"amt_rx_stop\r", "amtBleRxStop\r", "amt_phy_rx_test 6 0\r"})
        EXPECT_EQ(talk(b.port, stop), QByteArray("ERROR\r\n")) << stop;
    EXPECT_EQ(talk(b.port, "amt_rx_start 6 0\r"), QByteArray("OK\r\n"));
    EXPECT_EQ(talk(b.port, "amtBleRxStart 0 19\r"), QByteArray("OK\r\n"));
    EXPECT_EQ(talk(b.port, "amt_phy_rx_test 6 1\r"), QByteArray("reccount 0 end\r\nOK\r\n"));
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
    // 1000 packets a second: the counts are the time since each start, in ms.
    auto count = [&](const char* stop, const QByteArray& head, const QByteArray& tail) {
        const QByteArray r = talk(b.port, stop);
        EXPECT_TRUE(r.startsWith(head) && r.endsWith(tail)) << r.toStdString();
        return r.mid(head.size(), r.size() - head.size() - tail.size()).toInt();
    };
    const int wifi = count("amt_rx_stop\r", "", ",\r\nOK\r\n");
    const int ble = count("amtBleRxStop\r", "", ",\r\nOK\r\n");
    const int phy = count("amt_phy_rx_test 6 0\r", "reccount ", " end\r\nOK\r\n");
    for (const int n : {wifi, ble, phy}) {
        EXPECT_GE(n, 140);
        EXPECT_LT(n, 1500);
    }
    const State s = b.fw.state();
    EXPECT_EQ(s.wifiRx.lastCount, wifi);
    EXPECT_EQ(s.bleRx.lastCount, ble);
    EXPECT_FALSE(s.wifiRx.running || s.bleRx.running || s.phyRx.running);
    EXPECT_EQ(talk(b.port, "amt_rx_stop\r"), QByteArray("ERROR\r\n")); // reported once
}

TEST(SimFirmware, UnhooksItselfWhenGone) {
    BoardSim board;
    ComPort port;
    ASSERT_TRUE(port.open(board.devicePath(), 115200));
    {
        SimFirmware fw(board);
        board.startFirmware();
        EXPECT_EQ(talk(port, "get_version_type\r"), QByteArray("get_version_type\r\n0,\r\nOK\r\n"));
    }
    EXPECT_EQ(talk(port, "get_version_type\r", 80), QByteArray());
    EXPECT_EQ(board.firmwareInput(), QByteArray("get_version_type\rget_version_type\r"));
    board.reset();
    EXPECT_EQ(talk(port, "amt_start 1\r", 80), QByteArray());
    EXPECT_EQ(board.stage(), BoardSim::Stage::Rom);
}
