#include "base/ComPort.h"
#include "base/PortTable.h"
#include "support/PtyPeer.h"
#include "support/Wire.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace {

std::string text(const ByteBuffer& b) {
    return std::string(b.data(), b.data() + b.size());
}

// Writes `bytes` into the peer after `delayMs`, from another thread.
std::thread later(PtyPeer& peer, int delayMs, std::string bytes) {
    return std::thread([&peer, delayMs, bytes] {
        std::this_thread::sleep_for(std::chrono::milliseconds(delayMs));
        peer.write(bytes);
    });
}

} // namespace

TEST(ComPort, OpensClosesAndReopens) {
    PtyPeer peer;
    ComPort port;
    EXPECT_FALSE(port.isOpen());
    EXPECT_FALSE(port.open(-1, 115200));
    EXPECT_FALSE(port.open("/dev/bramble-no-such-port", 115200));
    EXPECT_FALSE(port.isOpen());

    ASSERT_TRUE(port.open(peer.slavePath(), 115200)); // usable after the failures
    EXPECT_EQ(port.baudrate(), 115200);
    ASSERT_TRUE(port.open(peer.slavePath(), 921600)); // a second open closes first
    EXPECT_EQ(port.baudrate(), 921600);

    // Rates off the usual list go to the driver as they are.
    for (int rate : {1561600, 177230, 380400, 2000000}) {
        EXPECT_TRUE(port.setBaudrate(rate)) << rate;
        EXPECT_EQ(port.baudrate(), rate);
    }
    EXPECT_TRUE(port.close());
    EXPECT_FALSE(port.isOpen());
    EXPECT_TRUE(port.close()); // nothing to close is no failure
    ASSERT_TRUE(port.open(peer.slavePath(), 1561600));
    EXPECT_EQ(port.baudrate(), 1561600);

    // A port that one ComPort holds cannot be opened by another.
    ComPort second;
    EXPECT_FALSE(second.open(peer.slavePath(), 115200));
    port.close();
    EXPECT_TRUE(second.open(peer.slavePath(), 115200));
}

TEST(ComPort, OpensByNumberThroughThePortTable) {
    PtyPeer peer;
    const int number = PortTable::numberOf(QString::fromStdString(peer.slavePath()));
    ComPort port;
    ASSERT_TRUE(port.open(number, 115200));
    EXPECT_EQ(port.portNumber(), number);
    port.write(std::string("hi"));
    EXPECT_EQ(peer.readExactly(2), "hi");
}

TEST(ComPort, EveryOperationOnAClosedPortFailsQuietly) {
    ComPort port;
    ByteBuffer out;
    char buf[4];
    EXPECT_FALSE(port.setBaudrate(115200));
    EXPECT_EQ(port.baudrate(), -1);
    port.setDtr(true);
    port.setRts(false);
    EXPECT_FALSE(port.writeByte(1));
    EXPECT_FALSE(port.write(ByteBuffer(std::string("x"))));
    EXPECT_FALSE(port.write(std::string("x")));
    EXPECT_FALSE(port.writeLine("x", true));
    EXPECT_FALSE(port.writeRaw("x", 1));
    EXPECT_EQ(port.readRaw(buf, 1), -1);
    EXPECT_EQ(port.available(), -1);
    EXPECT_FALSE(port.flushInput());
    EXPECT_FALSE(port.flushOutput());
    EXPECT_FALSE(port.timedRead(out, 0, 0));
    EXPECT_FALSE(port.sendAndWait("x", "OK", out, 0, false));
    EXPECT_TRUE(port.drainFor(0));
    EXPECT_TRUE(out.empty());
}

TEST(ComPort, WritesExactBytesOnTheWire) {
    PtyPeer peer;
    ComPort port;
    ASSERT_TRUE(port.open(peer.slavePath(), 115200));
    EXPECT_TRUE(port.writeByte(0xA5));
    ByteBuffer frame;
    frame.appendU32(0x00000000);
    EXPECT_TRUE(port.write(frame));
    EXPECT_TRUE(port.writeLine("get_version", false));
    EXPECT_TRUE(port.writeLine("reboot", true));
    EXPECT_TRUE(port.writeRaw("\r\n\0\xff", 4));
    EXPECT_EQ(peer.readExactly(28),
              std::string("\xA5\0\0\0\0get_version\rreboot\r\n\r\n\0\xff", 28));
}

TEST(ComPort, TimedReadWaitsTheWholeTimeForSilence) {
    PtyPeer peer;
    ComPort port;
    ASSERT_TRUE(port.open(peer.slavePath(), 115200));
    ByteBuffer out;
    const auto start = Clock::now();
    EXPECT_FALSE(port.timedRead(out, 150, 400));
    const long took = msSince(start);
    EXPECT_GE(took, 145);
    EXPECT_LT(took, 400); // the settle stage never ran
    EXPECT_TRUE(out.empty());
}

TEST(ComPort, TimedReadWithoutSettleTakesWhatIsWaiting) {
    PtyPeer peer;
    ComPort port;
    ASSERT_TRUE(port.open(peer.slavePath(), 115200));
    peer.write("sync-answer");
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    ByteBuffer out(std::string("old contents that are replaced"));
    const auto start = Clock::now();
    EXPECT_TRUE(port.timedRead(out, 2000, 0));
    EXPECT_LT(msSince(start), 100);
    EXPECT_EQ(text(out), "sync-answer");
    EXPECT_EQ(port.available(), 0);
}

TEST(ComPort, TimedReadSettlesForAFixedTime) {
    PtyPeer peer;
    ComPort port;
    ASSERT_TRUE(port.open(peer.slavePath(), 115200));

    // Bytes that come within the settle time are collected; the wait goes on to its end.
    std::thread first = later(peer, 30, "AB");
    std::thread second = later(peer, 110, "CD");
    ByteBuffer out;
    auto start = Clock::now();
    EXPECT_TRUE(port.timedRead(out, 1000, 250));
    long took = msSince(start);
    first.join();
    second.join();
    EXPECT_EQ(text(out), "ABCD");
    EXPECT_GE(took, 30 + 250 - 10);
    EXPECT_LT(took, 30 + 250 + 300);

    // With no settle time the second part stays in the driver for the next read.
    std::thread third = later(peer, 20, "EF");
    std::thread fourth = later(peer, 150, "GH");
    start = Clock::now();
    EXPECT_TRUE(port.timedRead(out, 1000, 0));
    EXPECT_LT(msSince(start), 140);
    EXPECT_EQ(text(out), "EF");
    third.join();
    fourth.join();
    EXPECT_TRUE(port.timedRead(out, 1000, 0));
    EXPECT_EQ(text(out), "GH");
}

TEST(ComPort, TimedReadFollowsAReplyWhileItGrows) {
    // At 600 baud the first stage looks away for three byte times, 50 ms, between looks. A
    // reply that grows every 5 ms is taken whole, and the read ends soon after it stops.
    PtyPeer peer;
    ComPort port;
    ASSERT_TRUE(port.open(peer.slavePath(), 600));
    std::thread trickle([&peer] {
        for (char c : std::string("0123456789")) {
            peer.write(std::string(1, c));
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    });
    ByteBuffer out;
    const auto start = Clock::now();
    EXPECT_TRUE(port.timedRead(out, 1000, 0));
    const long took = msSince(start);
    trickle.join();
    EXPECT_EQ(text(out), "0123456789");
    EXPECT_GE(took, 45 + 50 - 5);
    EXPECT_LT(took, 45 + 50 + 250);
}

TEST(ComPort, SendAndWaitMatchesAcrossReadsAndKeepsEverything) {
    PtyPeer peer;
    ComPort port;
    ASSERT_TRUE(port.open(peer.slavePath(), 115200));

    // "OK" split over two reads; what came before stays in out.
    ByteBuffer out(std::string("earlier|"));
    std::thread a = later(peer, 20, "value,1\r\nO");
    std::thread b = later(peer, 80, "K\r\n");
    auto start = Clock::now();
    EXPECT_TRUE(port.sendAndWait("get_version_type", "OK", out, 1000, false));
    const long took = msSince(start);
    a.join();
    b.join();
    EXPECT_EQ(text(out), "earlier|value,1\r\nOK\r\n");
    EXPECT_LT(took, 500); // the match ends the wait, not the limit
    EXPECT_EQ(peer.read(20, 200), "get_version_type\r");

    // A match at once does not wait for more bytes.
    peer.write("OK");
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    out.clear();
    start = Clock::now();
    EXPECT_TRUE(port.sendAndWait("ping", "OK", out, 3000, true));
    EXPECT_LT(msSince(start), 100);
    EXPECT_EQ(peer.read(20, 200), "ping\r\n");

    // "O" alone runs to the limit.
    out.clear();
    peer.write("O");
    start = Clock::now();
    EXPECT_FALSE(port.sendAndWait("x", "OK", out, 200, false));
    const long limit = msSince(start);
    EXPECT_GE(limit, 195);
    EXPECT_LT(limit, 500);
    EXPECT_EQ(text(out), "O");
}

TEST(ComPort, DrainForDropsEverythingForItsTime) {
    PtyPeer peer;
    ComPort port;
    ASSERT_TRUE(port.open(peer.slavePath(), 115200));
    peer.write("boot noise 1");
    std::thread late = later(peer, 60, "boot noise 2");
    const auto start = Clock::now();
    EXPECT_TRUE(port.drainFor(150));
    const long took = msSince(start);
    late.join();
    EXPECT_GE(took, 140);
    EXPECT_LT(took, 450);
    EXPECT_EQ(port.available(), 0);
}

TEST(ComPort, AVanishedPortFailsWithoutThrowing) {
    auto peer = std::make_unique<PtyPeer>();
    ComPort port;
    ASSERT_TRUE(port.open(peer->slavePath(), 115200));
    peer->close();
    ByteBuffer out;
    EXPECT_EQ(port.available(), -1);
    const auto start = Clock::now();
    EXPECT_FALSE(port.timedRead(out, 100, 0));
    const long took = msSince(start);
    EXPECT_GE(took, 95); // the whole wait, asleep, not a spin that returns at once
    EXPECT_FALSE(port.sendAndWait("x", "OK", out, 50, false));
    EXPECT_TRUE(port.drainFor(30));
    port.close();
    EXPECT_FALSE(port.isOpen());
}
