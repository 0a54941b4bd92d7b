#include "base/ComPort.h"
#include "engines/AppQZ4410Imple.h"
#include "support/LogCatcher.h"
#include "support/PtyPeer.h"
#include "support/Wire.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <thread>
#include <vector>

namespace {

using Lines = std::vector<std::string>;

long msBetween(Clock::time_point from, Clock::time_point to) {
    return long(std::chrono::duration_cast<std::chrono::milliseconds>(to - from).count());
}

QString sndFailed(const QString& cmd, const QString& word) {
    return QString("SND_AT_CFM: send cmd and wait rsp failed: cmd: %1, rspMatch: %2")
        .arg(cmd, word);
}

// An engine on a real pty, with a board thread on the far end that reads each command line up
// to its CR and answers it.
struct Bench {
    PtyPeer peer;
    ComPort port;
    AppQZ4410Imple engine;
    LogCatcher log{&engine};
    std::thread board;
    Lines lines;                            // each command line as it came, CR included
    std::vector<Clock::time_point> arrived; // when each line was complete
    std::vector<Clock::time_point> answered;

    Bench() { EXPECT_TRUE(port.open(peer.slavePath(), 115200)); }
    ~Bench() {
        if (board.joinable())
            board.join();
    }

    std::string readLine() {
        std::string line;
        while (line.empty() || line.back() != '\r') {
            const std::string got = peer.readExactly(1, 3000);
            if (got.empty())
                break;
            line += got;
        }
        return line;
    }

    // Answers the next lines with these replies in turn; an empty reply leaves its line
    // unanswered.
    void answer(Lines replies) {
        if (board.joinable())
            board.join();
        arrived.clear();
        answered.clear();
        play([this, replies] {
            for (const std::string& reply : replies) {
                const std::string line = readLine();
                if (line.empty())
                    return;
                lines.push_back(line);
                arrived.push_back(Clock::now());
                peer.write(reply);
                answered.push_back(Clock::now());
            }
        });
    }

    void play(std::function<void()> script) {
        if (board.joinable())
            board.join();
        board = std::thread(std::move(script));
    }

    // Waits for the board to finish and gives the lines it took. Nothing may follow the CR of
    // the last one (no LF).
    Lines heard() {
        if (board.joinable())
            board.join();
        EXPECT_EQ(peer.read(20, 100), "");
        Lines out;
        out.swap(lines);
        return out;
    }
};

} // namespace

TEST(ProductionCommands, ConfirmedExchangeLogsItsMissAndTheDrainTakesWhatWaits) {
    Bench b;
    b.answer({"ready OK\r\n", "ERROR\r\n"});
    EXPECT_TRUE(b.engine.sendConfirmed(b.port, "rf bw_set 1", "OK", 500));
    auto start = Clock::now();
    EXPECT_FALSE(b.engine.sendConfirmed(b.port, "probe x", "OK", 150));
    EXPECT_GE(msSince(start), 140); // "ERROR" ends no wait
    EXPECT_EQ(b.heard(), Lines({"rf bw_set 1\r", "probe x\r"}));
    EXPECT_EQ(b.log.errors(), QStringList({sndFailed("probe x", "OK")}));

    // The drain collects for its settle time after the first bytes, so a second piece that
    // comes within it is taken as well.
    b.peer.write("banner 1 ");
    std::thread late([&] {
        sleepFor(30);
        b.peer.write("banner 2");
    });
    EXPECT_TRUE(b.engine.drainTimed(b.port, 300, 150));
    late.join();
    EXPECT_EQ(b.port.available(), 0);
    start = Clock::now();
    EXPECT_FALSE(b.engine.drainTimed(b.port, 60, 0));
    EXPECT_GE(msSince(start), 55);
    EXPECT_EQ(b.log.errors().size(), 1); // a drain logs nothing
    EXPECT_TRUE(b.port.isOpen());
}

TEST(ProductionCommands, SignalMeasurementScalesRatesAndStrengths) {
    Bench b;
    b.answer({"sigd\r\nDUTR:125,SIGR:250,RSSI:200,DUT_RSSI:190,",
              "DUTR:1,SIGR:2,RSSI:3,DUT_RSSI:4,\r\n", "SIGR:5,RSSI:6,",
              "DUTR:1,SIGR:x,RSSI:3,DUT_RSSI:4,"});
    float sig = -1, dut = -1, rssi = 0, dutRssi = 0;
    EXPECT_TRUE(b.engine.measureSignal(b.port, 20, sig, dut, rssi, dutRssi, 0));
    EXPECT_FLOAT_EQ(dut, 50);
    EXPECT_FLOAT_EQ(sig, 100);
    EXPECT_FLOAT_EQ(rssi, -55);
    EXPECT_FLOAT_EQ(dutRssi, -65);
    EXPECT_FALSE(b.engine.measureSignal(b.port, 21, sig, dut, rssi, dutRssi, 0));
    EXPECT_FALSE(b.engine.measureSignal(b.port, 22, sig, dut, rssi, dutRssi, 0));
    EXPECT_FALSE(b.engine.measureSignal(b.port, 23, sig, dut, rssi, dutRssi, 0));
    EXPECT_EQ(b.heard(),
              Lines({"sigdsend 20\r", "sigdsend 21\r", "sigdsend 22\r", "sigdsend 23\r"}));
    EXPECT_EQ(b.log.errors(),
              QStringList({"SIG_MEAS: recv data error: DUTR:1,SIGR:2,RSSI:3,DUT_RSSI:4,\r\n!",
                           "SIG_MEAS: can not find DUTR word!",
                           "SIG_MEAS: recv data error: DUTR:1,SIGR:x,RSSI:3,DUT_RSSI:4,!"}));

    // The read starts only after the wait, so a report that comes in two pieces within it is
    // read whole even though the read itself does not settle.
    b.play([&] {
        b.lines.push_back(b.readLine());
        b.peer.write("DUTR:200,SIGR:0,");
        sleepFor(40);
        b.peer.write("RSSI:255,DUT_RSSI:0,");
    });
    const auto start = Clock::now();
    EXPECT_TRUE(b.engine.measureSignal(b.port, 5, sig, dut, rssi, dutRssi, 150));
    EXPECT_GE(msSince(start), 150);
    EXPECT_EQ(b.heard(), Lines({"sigdsend 5\r"}));
    EXPECT_FLOAT_EQ(dut, 80);
    EXPECT_FLOAT_EQ(sig, 0);
    EXPECT_FLOAT_EQ(rssi, 0);
    EXPECT_FLOAT_EQ(dutRssi, -255);
    EXPECT_EQ(b.log.errors().size(), 3);
}

TEST(ProductionCommands, MacReadBackUnderTwoTags) {
    Bench b;
    b.answer({"get_mac\r\nOTP MAC:a0:B1:c2:d3:e4:f5\r\nOK\r\n", "OTP MAC:00:11:22:33:44:55\r",
              "AMT MAC:00:11:22:33:44:55\r\nOK", "OTP MAC:00:11:22:33:44:55",
              "OTP MAC:00:11:22:33:44:5"});
    QString mac;
    EXPECT_TRUE(b.engine.getMacOtp(b.port, mac));
    EXPECT_EQ(mac, "a0:B1:c2:d3:e4:f5");
    EXPECT_TRUE(b.engine.getMacAmt(b.port, mac)); // one byte behind the address is enough
    EXPECT_EQ(mac, "00:11:22:33:44:55");
    mac = "kept";
    EXPECT_FALSE(b.engine.getMacAmt(b.port, mac));
    EXPECT_FALSE(b.engine.getMacOtp(b.port, mac)); // nothing behind the address
    EXPECT_FALSE(b.engine.getMacAmt(b.port, mac));
    EXPECT_EQ(mac, "kept");
    EXPECT_EQ(b.heard(),
              Lines({"get_mac 1\r", "get_mac 0\r", "get_mac 0\r", "get_mac 1\r", "get_mac 0\r"}));
    EXPECT_EQ(b.log.errors(), QStringList({"GET_MAC_AMT: match mac failed！!",
                                           "GET_MAC_OTP: rsp length is small than wanna!",
                                           "GET_MAC_AMT: rsp length is small than wanna!"}));

    // The read settles for 100 ms, so an address that follows its word a little later counts.
    b.play([&] {
        b.lines.push_back(b.readLine());
        b.peer.write("OTP MAC:");
        sleepFor(40);
        b.peer.write("0a:0b:0c:0d:0e:0f\r\nOK");
    });
    EXPECT_TRUE(b.engine.getMacOtp(b.port, mac));
    EXPECT_EQ(b.heard(), Lines({"get_mac 1\r"}));
    EXPECT_EQ(mac, "0a:0b:0c:0d:0e:0f");
}

TEST(ProductionCommands, TestSignAndStationMarks) {
    Bench b;
    b.answer({"nvgamt\r\nvalue:[ 0120x00000 ]\r\nOK\r\n", "ERROR\r\n", "value:[0120",
              "0120]value:[", "SUCCESS\r\n", "FAIL\r\n"});
    QString sign;
    EXPECT_TRUE(b.engine.getTestSign(b.port, sign));
    EXPECT_EQ(sign, "0120x00000");
    EXPECT_TRUE(b.engine.getTestSign(b.port, sign)); // a board never signed
    EXPECT_EQ(sign, "0000000000");
    sign = "kept";
    EXPECT_FALSE(b.engine.getTestSign(b.port, sign));
    EXPECT_FALSE(b.engine.getTestSign(b.port, sign)); // the "]" must stand behind the word
    EXPECT_EQ(sign, "kept");
    EXPECT_TRUE(b.engine.setTestSign(b.port, "0120000000"));
    EXPECT_FALSE(b.engine.setTestSign(b.port, "1")); // no "SUCCESS": false, no line
    EXPECT_EQ(b.heard(), Lines({"nvgamt TEST_SIGN\r", "nvgamt TEST_SIGN\r", "nvgamt TEST_SIGN\r",
                                "nvgamt TEST_SIGN\r", "nvsamt TEST_SIGN 0120000000\r",
                                "nvsamt TEST_SIGN 1\r"}));
    EXPECT_EQ(b.log.errors(), QStringList({"GET_TEST_SIGN: match value failed!",
                                           "GET_TEST_SIGN: match value failed!"}));
    b.log.clear();

    const std::string signed_ = "value:[0120x00000]\r\nOK";
    b.answer({signed_, signed_, signed_, signed_, signed_});
    int state = -1;
    for (int index : {0, 1, 2, 4}) {
        EXPECT_TRUE(b.engine.getStationSign(b.port, index, state));
        EXPECT_EQ(state, index == 4 ? 3 : index); // "x" is a mark outside the three
    }
    EXPECT_FALSE(b.engine.getStationSign(b.port, 10, state));
    EXPECT_EQ(b.heard(), Lines(5, "nvgamt TEST_SIGN\r"));
    EXPECT_EQ(b.log.errors(), QStringList({"GET_ST_SIGN: invalid station index: 10"}));
    b.log.clear();

    b.answer({"value:[0120000000]", "SUCCESS", "ERROR", "SUCCESS", "value:[0120000000]",
              "value:[0120000000]", "value:[01", "value:[01"});
    EXPECT_TRUE(b.engine.setStationSign(b.port, 3, 2));
    EXPECT_TRUE(b.engine.setStationSign(b.port, 0, 1)); // starts from the default sign
    EXPECT_FALSE(b.engine.setStationSign(b.port, 1, 3));
    EXPECT_FALSE(b.engine.setStationSign(b.port, 10, 1));
    EXPECT_FALSE(b.engine.getStationSign(b.port, 0, state));
    EXPECT_FALSE(b.engine.setStationSign(b.port, 0, 0));
    // A bad mark or index changes nothing on the board: only the read went out.
    EXPECT_EQ(b.heard(),
              Lines({"nvgamt TEST_SIGN\r", "nvsamt TEST_SIGN 0122000000\r", "nvgamt TEST_SIGN\r",
                     "nvsamt TEST_SIGN 1000000000\r", "nvgamt TEST_SIGN\r", "nvgamt TEST_SIGN\r",
                     "nvgamt TEST_SIGN\r", "nvgamt TEST_SIGN\r"}));
    EXPECT_EQ(
        b.log.errors(),
        QStringList({QString("SET_ST_SIGN: invalid test sign: ") + QChar(3),
                     "SET_ST_SIGN: invalid station index: 10", "GET_TEST_SIGN: match value failed!",
                     "GET_ST_SIGN:  get test sign failed", "GET_TEST_SIGN: match value failed!",
                     "SET_ST_SIGN:  get test sign failed"}));

    // The read settles for 100 ms: a sign in two pieces is read whole.
    b.play([&] {
        b.lines.push_back(b.readLine());
        b.peer.write("value:[01");
        sleepFor(40);
        b.peer.write("20]\r\nOK");
    });
    EXPECT_TRUE(b.engine.getTestSign(b.port, sign));
    EXPECT_EQ(b.heard(), Lines({"nvgamt TEST_SIGN\r"}));
    EXPECT_EQ(sign, "0120");
}

TEST(ProductionCommands, NvKeysAndCalibrationFlags) {
    Bench b;
    b.answer({"\r\nOK\r\n", "SUCCESS\r\n", "OK", "OK", "OK", "OK", "SUCCESS", "SUCCESS", "SUCCESS",
              "OK", "SUCCESS", "resystem success\r\n"});
    EXPECT_TRUE(b.engine.saveFreqOffset(b.port, "-12"));
    EXPECT_TRUE(b.engine.saveFreqOffsetFlag(b.port, true));
    EXPECT_TRUE(b.engine.saveTxPower(b.port, 1, 6, "0x1f2a3b"));
    EXPECT_TRUE(b.engine.saveTxPower(b.port, 0, 1, "7"));
    EXPECT_TRUE(b.engine.saveTxPower(b.port, 2, 13, "9"));
    EXPECT_TRUE(b.engine.saveTxPower(b.port, 7, 3, "9")); // no key text for an unknown mode
    EXPECT_TRUE(b.engine.saveTxPowerFlag(b.port, false));
    EXPECT_TRUE(b.engine.saveCalibrationFlag(b.port, true));
    EXPECT_TRUE(b.engine.saveCalibrationFlag(b.port, false));
    EXPECT_TRUE(b.engine.writeAmtKey(b.port, "MY_KEY", "a b"));
    EXPECT_TRUE(b.engine.writeAmtNvKey(b.port, "MY_NV", "5"));
    EXPECT_TRUE(b.engine.restartSystem(b.port));
    EXPECT_EQ(b.heard(), Lines({"nvsamt FREQOFFSET -12\r", "amt_nv_set FREQOFFSET_FLAG 1\r",
                                "nvsamt TXPOWER_NONHTCH6 0x1f2a3b\r", "nvsamt TXPOWER_11BCH1 7\r",
                                "nvsamt TXPOWER_HTCH13 9\r", "nvsamt TXPOWER_CH3 9\r",
                                "amt_nv_set TXPOWER_FLAG 0\r", "amt_nv_set CALIBRATION 1\r",
                                "amt_nv_set CALIBRATION 0\r", "nvsamt MY_KEY a b\r",
                                "amt_nv_set MY_NV 5\r", "resystem\r"}));
    EXPECT_TRUE(b.log.texts().isEmpty());
}

TEST(ProductionCommands, CalibrationCutsItsValueOutOfTheReply) {
    Bench b;
    b.answer(
        {"freqoffset:-12OK\r\n", "OK\r\nfreqoffset:8OK", "freqoffset:-3\r\n", "freqoffset: 4 OK"});
    QString value;
    EXPECT_TRUE(b.engine.calibrateFreqOffset(b.port, 2, 4, 7, 1, 9, value));
    EXPECT_EQ(value, "-12");
    EXPECT_TRUE(b.engine.calibrateFreqOffset(b.port, 0, 2, 3, 0, 5, value));
    EXPECT_EQ(value, "8"); // the "OK" that counts is the one behind the word
    value = "kept";
    EXPECT_FALSE(b.engine.calibrateFreqOffset(b.port, 1, 2, 3, 1, 5, value));
    EXPECT_EQ(value, "kept");
    EXPECT_TRUE(b.engine.calibrateFreqOffset(b.port, 5, 0, 1, 0, 0, value));
    EXPECT_EQ(value, " 4 "); // taken as it stands
    EXPECT_EQ(b.heard(), Lines({"amt_phy_tx_freqoffset_test 7 1 3 4 15 1 9\r",
                                "amt_phy_tx_freqoffset_test 3 0 1 2 7 1 5\r",
                                "amt_phy_tx_freqoffset_test 3 1 0 2 7 1 5\r",
                                "amt_phy_tx_freqoffset_test 1 0 -1 0 -1 1 0\r"}));
    EXPECT_EQ(b.log.errors(), QStringList({"SET_FREQ_CALV: can not find OK sign!"}));
    b.log.clear();

    b.answer({"txpower:0x1f2a3b\r\nOK\r\n", "OK txpower:  12    \r\n", "txpower:        OK",
              "txpower:0x1f\r\n", "OKtxpower:5", "OKtxpower:1a2b3c4d"});
    EXPECT_TRUE(b.engine.calibrateTxPower(b.port, 0, 3, value));
    EXPECT_EQ(value, "0x1f2a3b");
    EXPECT_TRUE(b.engine.calibrateTxPower(b.port, 1, 4, value));
    EXPECT_EQ(value, "12");
    value = "kept";
    EXPECT_FALSE(b.engine.calibrateTxPower(b.port, 2, 4, value));
    EXPECT_FALSE(b.engine.calibrateTxPower(b.port, 9, 4, value));
    EXPECT_EQ(value, "kept");
    // Fewer than eight bytes behind the word hold no field: nothing is cut, the value is empty.
    EXPECT_FALSE(b.engine.calibrateTxPower(b.port, 0, 5, value));
    EXPECT_EQ(value, "kept");
    EXPECT_TRUE(b.engine.calibrateTxPower(b.port, 0, 6, value)); // exactly eight bytes
    EXPECT_EQ(value, "1a2b3c4d");
    EXPECT_EQ(b.heard(),
              Lines({"amt_txpower_cal 3 1\r", "amt_txpower_cal 4 0\r", "amt_txpower_cal 4 3\r",
                     "amt_txpower_cal 4 -1\r", "amt_txpower_cal 5 1\r", "amt_txpower_cal 6 1\r"}));
    EXPECT_EQ(b.log.errors(),
              QStringList({"获取到寄存器的值为空!", "SET_POWER_CALV: can not find OK sign!",
                           "获取到寄存器的值为空!"}));
}

TEST(ProductionCommands, PhyTestsCarryModeNumbersAndLetTheRadioSettle) {
    Bench b;
    b.answer({"OK", "OK", "OK", "OK", "OK", "OK", "OK", "OK", "OK", "OK"});
    EXPECT_TRUE(b.engine.startPhyTx(b.port, 5, 4, 1, 0, 6));
    EXPECT_TRUE(b.engine.startPhyTxAuto(b.port, 2, 3, 11, 1));
    EXPECT_TRUE(b.engine.startPhyTxAuto(b.port, 2, 3, 11, 0));
    EXPECT_TRUE(b.engine.startPhyTxAuto(b.port, 0, 0, 2, 1));
    EXPECT_TRUE(b.engine.startPhyTxAuto(b.port, 2, 0, 2, 2));
    const Lines heard = b.heard();
    EXPECT_EQ(heard, Lines({"rf bw_set 0\r", "amt_phy_tx_test 1 0 -1 4 6 1\r", "rf bw_set 1\r",
                            "amt_phy_tx_test 11 1 3 3 15 1\r", "rf bw_set 0\r",
                            "amt_phy_tx_test 11 0 3 3 7 1\r", "rf bw_set 1\r",
                            "amt_phy_tx_test 2 1 1 0 7 1\r", "rf bw_set 2\r",
                            "amt_phy_tx_test 2 2 3 0 -1 1\r"}));
    // Each test command comes at least 50 ms after the bandwidth was taken.
    for (size_t i = 0; i + 1 < b.answered.size() && i + 1 < b.arrived.size(); i += 2)
        EXPECT_GE(msBetween(b.answered[i], b.arrived[i + 1]), 45) << "pair " << i / 2;
    EXPECT_TRUE(b.log.texts().isEmpty());

    b.answer({"OK", "OK", "reccount start\r\n", "reccount 1500 end\r\nOK", "reccount 1500\r\n",
              "end reccount 7"});
    auto start = Clock::now();
    EXPECT_TRUE(b.engine.startPhyTxFixed(b.port));
    EXPECT_GE(msSince(start), 50);
    EXPECT_TRUE(b.engine.startPhyRx(b.port, 6, 1));
    int count = -1;
    EXPECT_TRUE(b.engine.stopPhyRx(b.port, 6, count));
    EXPECT_EQ(count, 1500);
    count = -1;
    EXPECT_FALSE(b.engine.stopPhyRx(b.port, 6, count));
    EXPECT_FALSE(b.engine.stopPhyRx(b.port, 2, count)); // "end" must follow the word
    EXPECT_EQ(count, -1);
    EXPECT_EQ(b.heard(),
              Lines({"amt_phy_tx_test 1 0 1 1 1 0\r", "rf bw_set 1\r", "amt_phy_rx_test 6 1\r",
                     "amt_phy_rx_test 6 0\r", "amt_phy_rx_test 6 0\r", "amt_phy_rx_test 2 0\r"}));
    EXPECT_GE(msBetween(b.answered[1], b.arrived[2]), 45);
    EXPECT_EQ(b.log.errors(), QStringList({"STOP_RX: can not find reccount or end sign!",
                                           "STOP_RX: can not find reccount or end sign!"}));
}

// Every exchange that runs into its limit, all at once on their own ports, so that the suite
// pays for the longest limit only once.
TEST(ProductionCommands, EachExchangeWaitsItsOwnLimit) {
    struct Out {
        QString text;
        int number = 0;
        float f = 0;
    };
    using Run = std::function<bool(AppQZ4410Imple&, ComPort&, Out&)>;
    struct Case {
        Lines replies; // an empty reply leaves its line unanswered
        Run run;
        long limitMs;
        QString error;
        Lines lines;
    };
    std::vector<Case> cases;
    auto add = [&cases](Lines replies, Run run, long limitMs, QString error, Lines lines) {
        cases.push_back({replies, run, limitMs, error, lines});
    };
#define RUN(...)                                                                                   \
    [](AppQZ4410Imple& e, ComPort& p, [[maybe_unused]] Out& o) { return e.__VA_ARGS__; }
    // lower case wanted
    add({"SUCCESS\r\n"}, RUN(restartSystem(p)), 3000, sndFailed("resystem", "success"),
        {"resystem\r"});
    add({"SUCCESS\r\n"}, RUN(writeAmtKey(p, "K", "1")), 3000, "WR_AMT_KEY: send cmd failed!",
        {"nvsamt K 1\r"});
    add({"OK\r\n"}, RUN(saveCalibrationFlag(p, true)), 3000, "WR_AMT_NV_KEY: send cmd failed!",
        {"amt_nv_set CALIBRATION 1\r"});
    add({"OK\r\n"}, RUN(calibrateTxPower(p, 0, 1, o.text)), 2000,
        "SET_POWER_CALV: send cmd failed!", {"amt_txpower_cal 1 1\r"});
    add({"end OK\r\n"}, RUN(stopPhyRx(p, 6, o.number)), 2000, "STOP_RX: can not find [reccount]!",
        {"amt_phy_rx_test 6 0\r"});
    add({"OK\r\n"}, RUN(calibrateFreqOffset(p, 0, 0, 1, 0, 0, o.text)), 500,
        "SET_FREQ_CALV: send cmd failed!", {"amt_phy_tx_freqoffset_test 1 0 1 0 7 1 0\r"});
    // the bandwidth's settle time, then the limit
    add({"OK", "OK\r\n"}, RUN(startPhyRx(p, 6, 0)), 550,
        sndFailed("amt_phy_rx_test 6 1", "reccount"), {"rf bw_set 0\r", "amt_phy_rx_test 6 1\r"});
    // a refused bandwidth ends the start
    add({"ERROR\r\n"}, RUN(startPhyTx(p, 0, 0, 1, 0, 7)), 500, sndFailed("rf bw_set 0", "OK"),
        {"rf bw_set 0\r"});
    add({"ERROR\r\n"}, RUN(startPhyTxFixed(p)), 500, sndFailed("amt_phy_tx_test 1 0 1 1 1 0", "OK"),
        {"amt_phy_tx_test 1 0 1 1 1 0\r"});
    // the wait before the read, then the read
    add({""}, RUN(measureSignal(p, 3, o.f, o.f, o.f, o.f, 100)), 600, "SIG_MEAS: recv rsp timeout!",
        {"sigdsend 3\r"});
    add({""}, RUN(getMacAmt(p, o.text)), 500, "GET_MAC_AMT: recv rsp timeout!", {"get_mac 0\r"});
    add({""}, RUN(getTestSign(p, o.text)), 500, "GET_TEST_SIGN: recv rsp timeout!",
        {"nvgamt TEST_SIGN\r"});
    add({""}, RUN(setTestSign(p, "0000000001")), 500, "SET_TEST_SIGN: recv rsp timeout!",
        {"nvsamt TEST_SIGN 0000000001\r"});
#undef RUN

    std::vector<std::thread> runs;
    for (const Case& c : cases) {
        runs.emplace_back([&c] {
            SCOPED_TRACE(c.lines.back());
            Bench b;
            b.answer(c.replies);
            Out out;
            const auto start = Clock::now();
            EXPECT_FALSE(c.run(b.engine, b.port, out));
            const long took = msSince(start);
            EXPECT_GE(took, c.limitMs - 10);
            EXPECT_LT(took, c.limitMs + 800);
            EXPECT_EQ(b.heard(), c.lines);
            EXPECT_EQ(b.log.errors(), QStringList({c.error}));
            EXPECT_TRUE(b.port.isOpen());
        });
    }
    for (std::thread& t : runs)
        t.join();
}

TEST(ProductionCommands, AClosedPortFailsAtOnceWithEachLine) {
    ComPort closed;
    AppQZ4410Imple engine;
    LogCatcher log(&engine);
    QString text = "kept";
    float f = 0;
    int n = -7;
    const auto start = Clock::now();
    EXPECT_FALSE(engine.sendConfirmed(closed, "x", "OK", 500));
    EXPECT_FALSE(engine.measureSignal(closed, 1, f, f, f, f, 0));
    EXPECT_FALSE(engine.getMacOtp(closed, text));
    EXPECT_FALSE(engine.getMacAmt(closed, text));
    EXPECT_FALSE(engine.getTestSign(closed, text));
    EXPECT_FALSE(engine.setTestSign(closed, "1"));
    EXPECT_FALSE(engine.getStationSign(closed, 0, n));
    EXPECT_FALSE(engine.setStationSign(closed, 0, 1));
    EXPECT_FALSE(engine.saveFreqOffset(closed, "1"));
    EXPECT_FALSE(engine.saveTxPower(closed, 0, 1, "1"));
    EXPECT_FALSE(engine.saveFreqOffsetFlag(closed, true));
    EXPECT_FALSE(engine.saveTxPowerFlag(closed, true));
    EXPECT_FALSE(engine.restartSystem(closed));
    EXPECT_FALSE(engine.calibrateFreqOffset(closed, 0, 0, 0, 0, 0, text));
    EXPECT_FALSE(engine.calibrateTxPower(closed, 0, 0, text));
    EXPECT_FALSE(engine.setRfBandwidth(closed, 2));
    EXPECT_FALSE(engine.startPhyTxAuto(closed, 0, 0, 0, 1));
    EXPECT_FALSE(engine.startPhyTxFixed(closed));
    EXPECT_FALSE(engine.stopPhyRx(closed, 3, n));
    EXPECT_LT(msSince(start), 400); // no exchange waited
    EXPECT_EQ(text, "kept");
    EXPECT_EQ(n, -7);
    EXPECT_EQ(log.errors(), QStringList({sndFailed("x", "OK"),
                                         "SIG_MEAS: send req failed!",
                                         "GET_MAC_OTP:  write at cmd failed!",
                                         "GET_MAC_AMT:  write at cmd failed!",
                                         "GET_TEST_SIGN:  write at cmd failed!",
                                         "SET_TEST_SIGN:  write at cmd failed!",
                                         "GET_TEST_SIGN:  write at cmd failed!",
                                         "GET_ST_SIGN:  get test sign failed",
                                         "GET_TEST_SIGN:  write at cmd failed!",
                                         "SET_ST_SIGN:  get test sign failed",
                                         "WR_AMT_KEY: send cmd failed!",
                                         "WR_AMT_KEY: send cmd failed!",
                                         "WR_AMT_NV_KEY: send cmd failed!",
                                         "WR_AMT_NV_KEY: send cmd failed!",
                                         sndFailed("resystem", "success"),
                                         "SET_FREQ_CALV: send cmd failed!",
                                         "SET_POWER_CALV: send cmd failed!",
                                         sndFailed("rf bw_set 2", "OK"),
                                         sndFailed("rf bw_set 1", "OK"),
                                         sndFailed("amt_phy_tx_test 1 0 1 1 1 0", "OK"),
                                         "STOP_RX: can not find [reccount]!"}));

    log.clear();
    engine.setLogEnabled(false);
    EXPECT_FALSE(engine.startPhyRx(closed, 1, 0));
    EXPECT_FALSE(engine.getStationSign(closed, 0, n));
    EXPECT_TRUE(log.texts().isEmpty());
}
