#include "base/ComPort.h"
#include "engines/AppQZ4420Imple.h"
#include "support/LogCatcher.h"
#include "support/PtyPeer.h"
#include "support/Wire.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace {

// Bytes as the peer writes and reads them; a bad sum is the good one plus 1.
std::string wire(QByteArray b, bool goodSum = true) {
    if (!goodSum)
        b[b.size() - 1] = char(b.back() + 1);
    return b.toStdString();
}

struct Bench {
    PtyPeer peer;
    ComPort port;
    AppQZ4420Imple engine;
    LogCatcher log{&engine};
    Bench() { EXPECT_TRUE(port.open(peer.slavePath(), 115200)); }
};

} // namespace

TEST(FrameLayer, SumWrapsAndPingGoesOutAsFiveBytes) {
    const uint8_t wrap[] = {0xFF, 0x02};
    EXPECT_EQ(AppQZ4420Imple::frameSum(wrap, 2), 0x01);
    const uint8_t header[] = {0xA5, 0, 0, 0};
    EXPECT_EQ(AppQZ4420Imple::frameSum(header, 4), 0xA5);

    Bench b;
    b.peer.write(wire(reply(0)));
    EXPECT_TRUE(b.engine.pingBoard(b.port));
    EXPECT_EQ(b.peer.read(20, 200), wire(bytes({0xA5, 0x00, 0x00, 0x00, 0xA5})));
    EXPECT_TRUE(b.log.texts().isEmpty());

    // A payload's length goes little-endian, the sum covers all bytes before it.
    EXPECT_TRUE(b.engine.sendReq(b.port, 3, QByteArray("\x10\x00\x00\x00\x00\x01\x00\x00", 8)));
    EXPECT_EQ(b.peer.read(20, 200),
              wire(bytes({0xA5, 0x03, 0x08, 0x00, 0x10, 0, 0, 0, 0x00, 0x01, 0, 0, 0xC1})));
}

TEST(FrameLayer, ReplyChecksRunInTheirOrderWithTheirLines) {
    struct Case {
        std::string reply;
        QString line;
        bool notEnough;
    };
    const Case cases[] = {
        {wire(bytes({0x41, 0x00, 0x00, 0x00})), "RECV_RSP: recv magic is error!", false},
        {wire(reply(5)), "RECV_RSP: recv frame type is wrong: 05!", false},
        // State comes before the check byte: a refused reply with a bad sum tells the state.
        {wire(reply(6, {}, 1), false), "RECV_RSP: rsp sign indicates [FAILED]!", false},
        {wire(reply(6, {}, 2), false), "RECV_RSP: FLASH is not enough!", true},
        {wire(reply(6, {}, 0x33)), "RECV_RSP: state sign value is wrong: 33", false},
        {wire(bytes({0x5A, 0x06, 0x00, 0x00, 0x00, 0x10})), "RECV_RSP: crc is wrong: 60 => 10",
         false},
    };
    for (const Case& c : cases) {
        Bench b;
        b.peer.write(c.reply);
        QByteArray out("kept");
        EXPECT_FALSE(b.engine.recvRsp(b.port, 6, &out, 500)) << c.line.toStdString();
        EXPECT_EQ(b.log.errors(), QStringList({c.line}));
        EXPECT_EQ(b.engine.takeFlashNotEnough(), c.notEnough);
        EXPECT_FALSE(b.engine.takeFlashNotEnough()); // taken once
        EXPECT_EQ(out, QByteArray("kept"));
    }
}

TEST(FrameLayer, ReplyInPiecesLandsBehindWhatOutHeld) {
    Bench b;
    const std::string frame = wire(reply(3, "flash-bytes")) + "trailing noise";
    std::thread board([&] {
        b.peer.write(frame.substr(0, 3)); // the start byte alone says nothing yet
        std::this_thread::sleep_for(std::chrono::milliseconds(40));
        b.peer.write(frame.substr(3, 7));
        std::this_thread::sleep_for(std::chrono::milliseconds(40));
        b.peer.write(frame.substr(10));
    });
    QByteArray out("head:");
    EXPECT_TRUE(b.engine.recvRsp(b.port, 3, &out, 2000));
    board.join();
    EXPECT_EQ(out, QByteArray("head:flash-bytes"));
    EXPECT_TRUE(b.log.texts().isEmpty());

    // Without an out the payload is dropped, and a state-0 reply is a success.
    b.peer.write(wire(reply(4, "ignored")));
    EXPECT_TRUE(b.engine.recvRsp(b.port, 4, 500));
}

TEST(FrameLayer, ShortReplyTimesOutAfterTheReadThatWasWaiting) {
    Bench b;
    b.peer.write(wire(bytes({0x5A, 0x00})));
    const auto start = Clock::now();
    EXPECT_FALSE(b.engine.recvRsp(b.port, 0, 500));
    const auto took =
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
    EXPECT_EQ(b.log.errors(), QStringList({"RECV_RSP: recv timeout: recv length is: 2"}));
    // The limit is only looked at between reads, and a read waits up to 3000 ms.
    EXPECT_GE(took, 2900);
    EXPECT_LT(took, 4500);
}

TEST(FrameLayer, FailedWriteIsToldAndNothingWaits) {
    AppQZ4420Imple engine;
    LogCatcher log(&engine);
    ComPort closed;
    EXPECT_FALSE(engine.exchange(closed, 0, QByteArray(), 500));
    EXPECT_EQ(log.errors(), QStringList({"SEND_REQ: write data failed!"}));
}
