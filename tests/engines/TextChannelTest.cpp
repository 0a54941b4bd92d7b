#include "base/ComPort.h"
#include "engines/AppQZ4420Imple.h"
#include "support/LogCatcher.h"
#include "support/PtyPeer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

long msSince(Clock::time_point start) {
    return long(
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count());
}

struct Bench {
    PtyPeer peer;
    ComPort port;
    AppQZ4420Imple engine;
    LogCatcher log{&engine};
    Bench() { EXPECT_TRUE(port.open(peer.slavePath(), 115200)); }
    // Answers each command line that arrives with the next reply, then stops.
    std::thread answer(std::vector<std::string> replies) {
        return std::thread([this, replies] {
            for (const std::string& r : replies) {
                std::string line;
                while (line.empty() || line.back() != '\r') {
                    const std::string got = peer.readExactly(1, 3000);
                    if (got.empty())
                        return;
                    line += got;
                }
                lines.push_back(line);
                peer.write(r);
            }
        });
    }
    std::vector<std::string> lines;
};

} // namespace

TEST(TextChannel, OkEndsTheWaitWhereverItStandsAndNothingElseDoes) {
    Bench b;
    std::thread board([&] {
        EXPECT_EQ(b.peer.readExactly(6), "probe\r");
        b.peer.write("value: 7\r\nO");
        std::this_thread::sleep_for(std::chrono::milliseconds(60));
        b.peer.write("K\r\n");
    });
    ByteBuffer rsp;
    EXPECT_TRUE(b.engine.sendCmdRsp(b.port, "probe", "OK", rsp, 500));
    board.join();
    EXPECT_EQ(std::string(rsp.data(), rsp.data() + rsp.size()), "value: 7\r\nOK\r\n");

    // "ERROR" is no answer: the wait runs to its limit.
    b.peer.write("ERROR\r\n");
    auto start = Clock::now();
    EXPECT_FALSE(b.engine.sendCmd(b.port, "bad", "OK", 500));
    EXPECT_GE(msSince(start), 490);
    EXPECT_TRUE(b.log.texts().isEmpty()); // failures are the caller's to word

    // A late "OK" left in the driver satisfies the next command at once.
    b.peer.drain();
    b.peer.write("OK");
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    start = Clock::now();
    EXPECT_TRUE(b.engine.sendCmd(b.port, "next", "OK", 500));
    EXPECT_LT(msSince(start), 100);
    EXPECT_EQ(b.peer.read(20, 200), "next\r"); // one CR, no LF
}

TEST(TextChannel, VersionStateReadsTheCommaShape) {
    Bench b;
    std::thread board = b.answer({"3,OK\r\n", "banner OK no comma", "abc,OK", "12\r\nOK"});
    int state = -1;
    EXPECT_TRUE(b.engine.getVersionState(b.port, state));
    EXPECT_EQ(state, 3);
    EXPECT_FALSE(b.engine.getVersionState(b.port, state));
    EXPECT_EQ(b.log.errors(), QStringList({"GET_CUR_STATE: rsp can not slice to 2 items!"}));
    EXPECT_TRUE(b.engine.getVersionState(b.port, state));
    EXPECT_EQ(state, 0); // no number before the comma reads as 0
    EXPECT_FALSE(b.engine.getVersionState(b.port, state));
    board.join();
    EXPECT_EQ(b.lines, std::vector<std::string>(4, "get_version_type\r"));
}

TEST(TextChannel, EchoTriesUntilItsTimeIsOver) {
    {
        Bench b;
        EXPECT_FALSE(b.engine.setEcho(b.port, false, 0));
        EXPECT_EQ(b.peer.read(20, 200), "echoclose 0\r"); // exactly one try
    }
    {
        Bench b;
        const auto start = Clock::now();
        EXPECT_FALSE(b.engine.setEcho(b.port, true, 1200));
        EXPECT_GE(msSince(start), 1450);
        EXPECT_EQ(b.peer.read(20, 200), "echoclose 1\rechoclose 1\rechoclose 1\r");
    }
    {
        Bench b;
        std::thread board = b.answer({"nope", "OK"});
        EXPECT_TRUE(b.engine.setEcho(b.port, false, 2000));
        board.join();
        EXPECT_EQ(b.lines.size(), 2u);
    }
}

TEST(TextChannel, RestartsAndStateSwitches) {
    {
        Bench b;
        const auto start = Clock::now();
        EXPECT_TRUE(b.engine.hardwareRestart(b.port, 0));
        EXPECT_LT(msSince(start), 50);
        ComPort closed;
        EXPECT_TRUE(b.engine.hardwareRestart(closed, 0)); // the line is driven without a check
    }
    {
        Bench b; // right state: one line only
        std::thread board = b.answer({"2,OK"});
        EXPECT_TRUE(b.engine.makeSureState(b.port, 2));
        board.join();
        EXPECT_EQ(b.peer.read(20, 200), "");
        EXPECT_EQ(b.lines, std::vector<std::string>({"get_version_type\r"}));
    }
    {
        Bench b; // another state: reset, amt_start, echo off
        std::thread board = b.answer({"1,OK", "OK", "OK"});
        EXPECT_TRUE(b.engine.makeSureState(b.port, 0));
        board.join();
        EXPECT_EQ(b.lines, std::vector<std::string>(
                               {"get_version_type\r", "amt_start 0\r", "echoclose 0\r"}));
    }
    {
        Bench b;
        EXPECT_FALSE(b.engine.switchToState(b.port, 4));
        EXPECT_EQ(b.log.errors(),
                  QStringList({"MAKE_SURE_STATE: can not switch to soft state: 4"}));
    }
    {
        Bench b; // ping: two tries on a silent board, and the log flag comes back as it was
        b.engine.setLogEnabled(true);
        std::thread board = b.answer({"reboot banner", "OK", "5,OK"});
        EXPECT_TRUE(b.engine.softwareRestart(b.port, true));
        board.join();
        EXPECT_TRUE(b.engine.isLogEnabled());
        const auto start = Clock::now();
        EXPECT_FALSE(b.engine.pingAtState(b.port, 100, 1000));
        EXPECT_GE(msSince(start), 1000);
        EXPECT_LT(msSince(start), 1800);
        EXPECT_TRUE(b.engine.isLogEnabled());
        b.engine.setLogEnabled(false);
        EXPECT_FALSE(b.engine.pingAtState(b.port, 100, 0));
        EXPECT_FALSE(b.engine.isLogEnabled());
        EXPECT_TRUE(b.log.errors().isEmpty());
    }
}
