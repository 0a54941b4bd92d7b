// The simulated board, driven over its pty through the real ComPort with the bytes a host
// sends. Frames are built here by hand from their wire layout.

#include "sim/BoardSim.h"
#include "base/ComPort.h"
#include "base/Deadline.h"
#include "base/PortTable.h"
#include "support/TestFiles.h"
#include "support/Wire.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <sys/resource.h>

#include <chrono>
#include <memory>
#include <mutex>
#include <thread>

namespace {

QByteArray rawHeaderBytes(uint32_t type, uint32_t addr, uint32_t len) {
    return le32(type) + le32(addr) + le32(len);
}

// Reads until n bytes have come or ms have passed; gives back all that came.
QByteArray readN(ComPort& port, int n, int ms = 1000) {
    QByteArray got;
    const Deadline deadline{uint32_t(ms)};
    while (got.size() < n && !deadline.expired()) {
        ByteBuffer b;
        if (port.timedRead(b, int(deadline.remaining()), 0))
            got.append(reinterpret_cast<const char*>(b.data()), b.size());
    }
    return got;
}

bool silentFor(ComPort& port, int ms) {
    ByteBuffer b;
    return !port.timedRead(b, ms, 0);
}

void put(ComPort& port, const QByteArray& b) {
    ASSERT_TRUE(port.writeRaw(b.constData(), unsigned(b.size())));
}

QByteArray exchange(ComPort& port, const QByteArray& out, int replySize, int ms = 1000) {
    put(port, out);
    return readN(port, replySize, ms);
}

BoardSim::Options frameBoard() {
    BoardSim::Options o;
    o.syncAnswer = 51;
    return o;
}

// A board and a host port open on it at 115200, the board synced into frames.
struct Bench {
    explicit Bench(BoardSim::Options o = frameBoard()) : board(o) {
        EXPECT_TRUE(board.isValid());
        EXPECT_TRUE(port.open(board.devicePath(), 115200));
        if (o.syncAnswer == 51) {
            EXPECT_EQ(exchange(port, "cnys", 1), bytes({51}));
            EXPECT_EQ(board.stage(), BoardSim::Stage::Stub);
        }
    }
    BoardSim board;
    ComPort port;
};

double cpuSeconds() {
    rusage u{};
    getrusage(RUSAGE_SELF, &u);
    return double(u.ru_utime.tv_sec + u.ru_stime.tv_sec) +
           double(u.ru_utime.tv_usec + u.ru_stime.tv_usec) / 1e6;
}

} // namespace

TEST(BoardSim, SyncWordIsAnsweredWithTheBoardsByte) {
    Bench romBench{BoardSim::Options()};
    auto& [rom, port] = romBench;
    EXPECT_EQ(rom.stage(), BoardSim::Stage::Rom);
    // Another word gets nothing; noise before the word and a word in two pieces are fine.
    EXPECT_EQ(exchange(port, "sync", 1, 60), QByteArray());
    put(port, "xxcn");
    EXPECT_TRUE(silentFor(port, 30));
    EXPECT_EQ(exchange(port, "ys", 1), bytes({1}));
    // The host polls: every word gets its answer, and the ROM stays in its raw dialogue.
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(exchange(port, "cnys", 1), bytes({1})) << i;
    EXPECT_EQ(rom.stage(), BoardSim::Stage::Rom);
    EXPECT_EQ(rom.rawWrites(), std::vector<QByteArray>(4, "cnys"));
    port.close();

    // A board that answers 51 speaks frames from then on, and keeps answering the word
    // between frames.
    Bench bench;
    EXPECT_EQ(exchange(bench.port, request(0), 6), reply(0));
    EXPECT_EQ(exchange(bench.port, "cnys", 1), bytes({51}));
    EXPECT_EQ(bench.board.stage(), BoardSim::Stage::Stub);
    EXPECT_EQ(exchange(bench.port, request(0), 6), reply(0));
    EXPECT_EQ(bench.board.strayBytes(), 4);
    EXPECT_TRUE(bench.board.rawWrites() == std::vector<QByteArray>{"cnys"});
}

TEST(BoardSim, RawStubDownloadLandsInRamAndStartsTheStub) {
    Bench bench{BoardSim::Options()};
    auto& [board, port] = bench;
    const uint32_t addr = 0x20000000;
    const QByteArray stub = pattern(2500, 0);

    // The host may still be polling when the first answer reaches it.
    EXPECT_EQ(exchange(port, "cnys", 1), bytes({1}));
    EXPECT_EQ(exchange(port, "cnys", 1), bytes({1}));
    // The header in two writes, then blocks of 1024, 1024 and 452 bytes, each answered 0.
    const QByteArray header = rawHeaderBytes(1, addr, 2500);
    put(port, header.left(5));
    EXPECT_TRUE(silentFor(port, 30));
    EXPECT_EQ(exchange(port, header.mid(5), 1), bytes({0}));
    EXPECT_EQ(exchange(port, stub.mid(0, 1024), 1), bytes({0}));
    EXPECT_EQ(exchange(port, stub.mid(1024, 1024), 1), bytes({0}));
    EXPECT_EQ(board.stage(), BoardSim::Stage::Rom);
    put(port, stub.mid(2048, 400));
    EXPECT_TRUE(silentFor(port, 30)); // a block is answered when it is whole
    EXPECT_EQ(exchange(port, stub.mid(2448), 1), bytes({0}));
    EXPECT_EQ(board.stage(), BoardSim::Stage::Stub);

    EXPECT_EQ(board.ram(addr, 2500), stub);
    EXPECT_EQ(board.ram(addr - 4, 4), QByteArray(4, '\0'));
    EXPECT_EQ(board.ram(addr + 2500, 4), QByteArray(4, '\0'));
    EXPECT_EQ(board.blockWrites(), 3);
    const std::vector<QByteArray> units{
        "cnys", "cnys", header, stub.mid(0, 1024), stub.mid(1024, 1024), stub.mid(2048)};
    EXPECT_EQ(board.rawWrites(), units);

    // The stub speaks frames.
    EXPECT_EQ(exchange(port, request(0), 6), bytes({0x5A, 0, 0, 0, 0, 0x5A}));
    EXPECT_EQ(board.frames().size(), 1u);
}

TEST(BoardSim, RawHeadersOfOtherKinds) {
    BoardSim::Options o;
    o.rawBlockSize = 4096;
    Bench bench(o);
    auto& [board, port] = bench;
    EXPECT_EQ(exchange(port, "cnys", 1), bytes({1}));
    // An item of another download type stays with the ROM, which waits for the next header;
    // blocks follow the board's block size.
    const QByteArray item = pattern(5000, 3);
    EXPECT_EQ(exchange(port, rawHeaderBytes(5, 0x1000, 5000), 1), bytes({0}));
    EXPECT_EQ(exchange(port, item.left(4096), 1), bytes({0}));
    EXPECT_EQ(exchange(port, item.mid(4096), 1), bytes({0}));
    EXPECT_EQ(board.ram(0x1000, 5000), item);
    EXPECT_EQ(board.stage(), BoardSim::Stage::Rom);
    // Twelve zero bytes end a whole raw download and get no answer.
    put(port, QByteArray(12, '\0'));
    EXPECT_TRUE(silentFor(port, 50));
}

TEST(BoardSim, RawHeaderOutOfStepIsResynchronisedWithZeroBytes) {
    Bench bench{BoardSim::Options()};
    auto& [board, port] = bench;
    EXPECT_EQ(exchange(port, "cnys", 1), bytes({1}));
    const QByteArray header = rawHeaderBytes(1, 0x20000000, 16);
    const QByteArray stub = pattern(16, 0);

    // 0xFF to the header; silence to the first two zeros; 0xFF to the third.
    board.inject(SimFault::outOfStep(3));
    EXPECT_EQ(exchange(port, header, 1), bytes({0xFF}));
    for (int i = 0; i < 2; ++i) {
        put(port, QByteArray(1, '\0'));
        EXPECT_TRUE(silentFor(port, 60)) << "zero byte " << i + 1;
    }
    EXPECT_EQ(exchange(port, QByteArray(1, '\0'), 1), bytes({0xFF}));
    // Then the header again is taken.
    EXPECT_EQ(exchange(port, header, 1), bytes({0}));
    EXPECT_EQ(exchange(port, stub, 1), bytes({0}));
    EXPECT_EQ(board.stage(), BoardSim::Stage::Stub);
    const QByteArray zero(1, '\0');
    const std::vector<QByteArray> units{"cnys", header, zero, zero, zero, header, stub};
    EXPECT_EQ(board.rawWrites(), units);
    EXPECT_EQ(board.ram(0x20000000, 16), stub);

    // A board that stays silent through all twelve zeros takes the header after them.
    board.reset();
    board.clearRecord();
    EXPECT_EQ(exchange(port, "cnys", 1), bytes({1}));
    board.inject(SimFault::outOfStep(-1));
    EXPECT_EQ(exchange(port, header, 1), bytes({0xFF}));
    for (int i = 0; i < 12; ++i) {
        put(port, zero);
        EXPECT_TRUE(silentFor(port, 40)) << "zero byte " << i + 1;
    }
    EXPECT_EQ(exchange(port, header, 1), bytes({0}));
    EXPECT_EQ(exchange(port, stub, 1), bytes({0}));
    EXPECT_EQ(board.stage(), BoardSim::Stage::Stub);
    EXPECT_EQ(board.rawWrites().size(), 2u + 12u + 2u);
}

TEST(BoardSim, UnfinishedFramesAndWrongCheckBytes) {
    Bench bench;
    // An unfinished frame is given up: it promises 16 bytes and sends 3.
    put(bench.port, bytes({0xA5, 1, 0x10, 0}) + "abc");
    EXPECT_TRUE(silentFor(bench.port, 300));
    EXPECT_EQ(exchange(bench.port, request(0), 6), reply(0));
    EXPECT_EQ(bench.board.strayBytes(), 7);
    EXPECT_EQ(bench.board.frames().size(), 1u);

    // A wrong check byte is refused, and the request is not carried out.
    bench.board.setFlash(0x100, "abcd");
    QByteArray bad = request(4, le32(0x100) + le32(4));
    bad[bad.size() - 1] = char(bad[bad.size() - 1] + 1);
    EXPECT_EQ(exchange(bench.port, bad, 6), bytes({0x5A, 4, 0, 0, 1, 0x5F}));
    EXPECT_EQ(bench.board.flash(0x100, 4), QByteArray("abcd"));
    ASSERT_EQ(bench.board.frames().size(), 2u);
    EXPECT_FALSE(bench.board.frames()[1].checkOk);
    EXPECT_EQ(bench.board.frames()[1].raw, bad);

    // A block with a wrong check is not written; sent again with the mark it is.
    EXPECT_EQ(exchange(bench.port, request(2, le32(0x100) + le32(4)), 6), reply(2));
    QByteArray badBlock = request(2, QByteArray(1, '\0') + "wxyz");
    badBlock[5] = 'W';
    EXPECT_EQ(exchange(bench.port, badBlock, 6), reply(2, {}, 1));
    EXPECT_EQ(bench.board.blockWrites(), 0);
    EXPECT_EQ(exchange(bench.port, request(2, QByteArray(1, '\1') + "wxyz"), 6), reply(2));
    EXPECT_EQ(bench.board.flash(0x100, 4), QByteArray("wxyz"));
    EXPECT_EQ(bench.board.blockWrites(), 1);
    EXPECT_EQ(bench.board.repeatedBlocks(), 0);
}

TEST(BoardSim, RepeatedHeadersAndBlocksAreRecognised) {
    Bench bench;
    auto& [board, port] = bench;
    const QByteArray pad(1024, char(0xFF));
    const QByteArray data = pattern(1024, 9) + pad + pad + pad + "tail!!!";
    const QByteArray header = request(2, le32(0x4000) + le32(uint32_t(data.size())));
    auto block = [&](int i, int mark) {
        return request(2, QByteArray(1, char(mark)) + data.mid(i * 1024, 1024));
    };

    // The header's reply is lost; the same header again is a header, not a block.
    board.inject(SimFault::drop(SimFault::frame(2)));
    put(port, header);
    EXPECT_TRUE(silentFor(port, 100));
    EXPECT_EQ(exchange(port, header, 6), reply(2));

    // Block 0's reply is lost; sent again with mark 1 it is acknowledged, not written again.
    board.inject(SimFault::drop(SimFault::frame(2)));
    put(port, block(0, 0));
    EXPECT_TRUE(silentFor(port, 100));
    EXPECT_EQ(exchange(port, block(0, 1), 6), reply(2));
    EXPECT_EQ(board.blockWrites(), 1);
    EXPECT_EQ(board.repeatedBlocks(), 1);

    // Two blocks of the same bytes in a row are two blocks.
    EXPECT_EQ(exchange(port, block(1, 0), 6), reply(2));
    EXPECT_EQ(exchange(port, block(2, 0), 6), reply(2));
    EXPECT_EQ(board.blockWrites(), 3);

    // A block refused with state 1 is written when it comes again with the mark, though its
    // bytes are those of the block before.
    board.inject(SimFault::state(1, SimFault::frame(2)));
    EXPECT_EQ(exchange(port, block(3, 0), 6), reply(2, {}, 1));
    EXPECT_EQ(board.blockWrites(), 3);
    EXPECT_EQ(exchange(port, block(3, 1), 6), reply(2));
    EXPECT_EQ(board.blockWrites(), 4);

    // The last block of 7 bytes (an 8-byte payload, like a header) is a block; its repeat
    // after the download is whole is a repeat.
    board.inject(SimFault::drop(SimFault::frame(2)));
    put(port, block(4, 0));
    EXPECT_TRUE(silentFor(port, 100));
    EXPECT_EQ(exchange(port, block(4, 1), 6), reply(2));
    EXPECT_EQ(board.blockWrites(), 5);
    EXPECT_EQ(board.repeatedBlocks(), 2);
    EXPECT_EQ(board.flash(0x4000, uint32_t(data.size())), data);

    // A block with the mark whose bytes differ from the last one came from a lost request:
    // it is written.
    EXPECT_EQ(exchange(port, request(1, le32(0x100) + le32(8)), 6), reply(1));
    EXPECT_EQ(exchange(port, request(1, QByteArray(1, '\1') + "abcd"), 6), reply(1));
    EXPECT_EQ(exchange(port, request(1, QByteArray(1, '\1') + "efgh"), 6), reply(1));
    EXPECT_EQ(board.ram(0x100, 8), QByteArray("abcdefgh"));
    // More than the header promised, and blocks with no download, are refused.
    EXPECT_EQ(exchange(port, request(1, QByteArray(1, '\0') + "more"), 6), reply(1, {}, 1));
    EXPECT_EQ(exchange(port, request(1, QByteArray(1, '\0') + "x"), 6), reply(1, {}, 1));
    EXPECT_EQ(board.blockWrites(), 7);
}

TEST(BoardSim, FlashDownloadOutsideTheFlashIsFlashNotEnough) {
    BoardSim::Options o = frameBoard();
    o.flashBase = 0x08000000;
    o.flashSize = 0x10000;
    Bench bench(o);
    ComPort& port = bench.port;
    EXPECT_EQ(exchange(port, request(2, le32(0x08000000) + le32(0x10001)), 6),
              bytes({0x5A, 2, 0, 0, 2, 0x5E}));
    EXPECT_EQ(exchange(port, request(2, le32(0x07FFFFF0) + le32(16)), 6), reply(2, {}, 2));
    // No download is under way after a refusal.
    EXPECT_EQ(exchange(port, request(2, QByteArray(1, '\0') + pattern(20, 0)), 6), reply(2, {}, 1));
    // A range that just fits, and the same range in RAM.
    EXPECT_EQ(exchange(port, request(2, le32(0x0800F000) + le32(0x1000)), 6), reply(2));
    EXPECT_EQ(exchange(port, request(1, le32(0x08000000) + le32(0x20000)), 6), reply(1));

    // Reads and erases outside the flash fail with state 1.
    EXPECT_EQ(exchange(port, request(3, le32(0x0800FFFF) + le32(2)), 6), reply(3, {}, 1));
    EXPECT_EQ(exchange(port, request(3, le32(0) + le32(2)), 6), reply(3, {}, 1));
    EXPECT_EQ(exchange(port, request(4, le32(0x0800FFF0) + le32(0x11)), 6), reply(4, {}, 1));
    EXPECT_EQ(exchange(port, request(3, le32(0x0800FFFE) + le32(2)), 8),
              reply(3, QByteArray(2, char(0xFF))));
}

TEST(BoardSim, ChangeBaudWithTheHostFollowing) {
    Bench bench;
    auto& [board, port] = bench;

    // The reply comes at the new rate once the host has taken it.
    put(port, request(7, le32(921600)));
    std::this_thread::sleep_for(std::chrono::milliseconds(3));
    ASSERT_TRUE(port.setBaudrate(921600));
    EXPECT_EQ(readN(port, 6), bytes({0x5A, 7, 0, 0, 0, 0x61}));
    EXPECT_EQ(board.baud(), 921600u);
    EXPECT_EQ(board.hostBaud(), 921600u);
    EXPECT_EQ(exchange(port, request(0), 6), reply(0));

    // The reply waits while the host is slow to follow.
    put(port, request(7, le32(2000000)));
    EXPECT_TRUE(silentFor(port, 100));
    ASSERT_TRUE(port.setBaudrate(2000000));
    EXPECT_EQ(readN(port, 6), reply(7));
    EXPECT_EQ(exchange(port, request(0), 6), reply(0));

    // Bytes sent at another rate than the board's are lost on the line.
    ASSERT_TRUE(port.setBaudrate(115200));
    ASSERT_TRUE(board.waitForHostBaud(115200, 1000));
    put(port, request(0));
    EXPECT_TRUE(silentFor(port, 100));
    EXPECT_EQ(board.garbledBytes(), 5);
    ASSERT_TRUE(port.setBaudrate(2000000));
    ASSERT_TRUE(board.waitForHostBaud(2000000, 1000));
    EXPECT_EQ(exchange(port, request(0), 6), reply(0));
    EXPECT_EQ(board.lostReplies(), 0);

    // A rate of 0 is refused and changes nothing.
    EXPECT_EQ(exchange(port, request(7, le32(0)), 6), reply(7, {}, 1));
    EXPECT_EQ(board.baud(), 2000000u);
}

TEST(BoardSim, ChangeBaudWithTheHostNotFollowing) {
    BoardSim::Options o = frameBoard();
    o.followMs = 150;
    Bench bench(o);
    put(bench.port, request(7, le32(460800)));
    EXPECT_TRUE(silentFor(bench.port, 300));
    EXPECT_EQ(bench.board.baud(), 460800u);
    EXPECT_EQ(bench.board.lostReplies(), 1);
    // The reply is gone for good: following late brings nothing.
    ASSERT_TRUE(bench.port.setBaudrate(460800));
    EXPECT_TRUE(silentFor(bench.port, 100));
    EXPECT_EQ(exchange(bench.port, request(0), 6), reply(0));
}

TEST(BoardSim, ReplyFaults) {
    Bench bench;
    auto& [board, port] = bench;

    // Drop: the next matching reply only; each reply takes one fault of a kind.
    board.inject(SimFault::drop(SimFault::frame(0)));
    board.inject(SimFault::drop(SimFault::frame(0)));
    put(port, request(0));
    EXPECT_TRUE(silentFor(port, 80));
    put(port, request(0));
    EXPECT_TRUE(silentFor(port, 80));
    EXPECT_EQ(exchange(port, request(0), 6), reply(0));

    // A fault waits for the frame type it names.
    board.inject(SimFault::corruptCheck(SimFault::frame(3)));
    EXPECT_EQ(exchange(port, request(0), 6), reply(0));
    EXPECT_EQ(board.pendingFaults(), 1);
    QByteArray spoilt = reply(3, QByteArray(2, char(0xFF)));
    spoilt[spoilt.size() - 1] = char(spoilt[spoilt.size() - 1] + 1);
    EXPECT_EQ(exchange(port, request(3, le32(0) + le32(2)), 8), spoilt);
    EXPECT_EQ(board.pendingFaults(), 0);

    // States, start byte, type byte: each the only thing wrong with the reply.
    board.inject(SimFault::state(1));
    EXPECT_EQ(exchange(port, request(0), 6), bytes({0x5A, 0, 0, 0, 1, 0x5B}));
    board.inject(SimFault::state(7));
    EXPECT_EQ(exchange(port, request(0), 6), bytes({0x5A, 0, 0, 0, 7, 0x61}));
    board.inject(SimFault::wrongStart());
    EXPECT_EQ(exchange(port, request(0), 6), bytes({0x55, 0, 0, 0, 0, 0x55}));
    board.inject(SimFault::wrongType());
    EXPECT_EQ(exchange(port, request(0), 6), bytes({0x5A, 1, 0, 0, 0, 0x5B}));
    // A refused request is not carried out.
    board.setFlash(0, "keep");
    board.inject(SimFault::state(1, SimFault::frame(4)));
    EXPECT_EQ(exchange(port, request(4, le32(0) + le32(4)), 6), reply(4, {}, 1));
    EXPECT_EQ(board.flash(0, 4), QByteArray("keep"));

    // Delay: the reply comes late, the next one on time.
    board.inject(SimFault::delay(150));
    auto start = Clock::now();
    EXPECT_EQ(exchange(port, request(0), 6), reply(0));
    EXPECT_GE(msSince(start), 140);
    start = Clock::now();
    EXPECT_EQ(exchange(port, request(0), 6), reply(0));
    EXPECT_LT(msSince(start), 100);

    // Split: pieces of 2, 2 and 2 bytes with pauses between them.
    board.inject(SimFault::split({2, 4}, 60));
    put(port, request(0));
    ByteBuffer piece;
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(port.timedRead(piece, 500, 0)) << i;
        EXPECT_EQ(QByteArray(reinterpret_cast<const char*>(piece.data()), piece.size()),
                  reply(0).mid(2 * i, 2))
            << i;
    }
    EXPECT_EQ(board.pendingFaults(), 0);
}

TEST(BoardSim, RawAndSyncFaults) {
    Bench bench{BoardSim::Options()};
    auto& [board, port] = bench;

    board.inject(SimFault::syncAnswer(7));
    EXPECT_EQ(exchange(port, "cnys", 1), bytes({7}));
    board.inject(SimFault::drop(SimFault::syncWord()));
    put(port, "cnys");
    EXPECT_TRUE(silentFor(port, 80));
    EXPECT_EQ(exchange(port, "cnys", 1), bytes({1}));

    // Frame faults do not touch raw answers; raw ones wait for their own kind of answer.
    board.inject(SimFault::corruptCheck());
    board.inject(SimFault::wrongStart(SimFault::rawBlock(), 0x42));
    board.inject(SimFault::delay(120, SimFault::rawHeader()));
    const auto start = Clock::now();
    EXPECT_EQ(exchange(port, rawHeaderBytes(1, 0x3000, 8), 1), bytes({0}));
    EXPECT_GE(msSince(start), 110);
    EXPECT_EQ(exchange(port, "abcd", 1, 60), QByteArray());
    EXPECT_EQ(exchange(port, "efgh", 1), bytes({0x42}));
    EXPECT_EQ(board.ram(0x3000, 8), QByteArray("abcdefgh"));
    EXPECT_EQ(board.stage(), BoardSim::Stage::Stub);
    EXPECT_EQ(board.pendingFaults(), 1);
    QByteArray spoilt = reply(0);
    spoilt[5] = char(spoilt[5] + 1);
    EXPECT_EQ(exchange(port, request(0), 6), spoilt);
}

TEST(BoardSim, ResetGoesBackToTheRom) {
    Bench bench;
    auto& [board, port] = bench;
    board.setFlash(0x10, "flash");
    EXPECT_EQ(exchange(port, request(1, le32(0x500) + le32(3)), 6), reply(1));
    EXPECT_EQ(exchange(port, request(1, QByteArray(1, '\0') + "ram"), 6), reply(1));
    put(port, request(7, le32(921600)));
    ASSERT_TRUE(port.setBaudrate(921600));
    EXPECT_EQ(readN(port, 6), reply(7));

    board.reset();
    EXPECT_EQ(board.stage(), BoardSim::Stage::Rom);
    EXPECT_EQ(board.baud(), 115200u);
    EXPECT_EQ(board.ram(0x500, 3), QByteArray(3, '\0'));
    EXPECT_EQ(board.flash(0x10, 5), QByteArray("flash"));
    // The host is still at the old rate: the ROM hears nothing until it comes down.
    put(port, "cnys");
    EXPECT_TRUE(silentFor(port, 80));
    ASSERT_TRUE(port.setBaudrate(115200));
    EXPECT_EQ(exchange(port, "cnys", 1), bytes({51}));
    EXPECT_EQ(exchange(port, request(0), 6), reply(0));
}

TEST(BoardSim, ResetOnOpenAndLostReplies) {
    BoardSim::Options o;
    o.resetOnOpen = true;
    BoardSim board(o);
    ComPort port;
    auto loadStub = [&] {
        EXPECT_EQ(exchange(port, "cnys", 1), bytes({1}));
        EXPECT_EQ(exchange(port, rawHeaderBytes(1, 0x100, 4), 1), bytes({0}));
        EXPECT_EQ(exchange(port, "stub", 1), bytes({0}));
        EXPECT_EQ(board.stage(), BoardSim::Stage::Stub);
    };
    ASSERT_TRUE(port.open(board.devicePath(), 115200));
    loadStub();
    EXPECT_EQ(board.hostOpens(), 1);

    // A second opener is refused, and the board goes on.
    ComPort second;
    EXPECT_FALSE(second.open(board.devicePath(), 115200));
    EXPECT_EQ(exchange(port, request(0), 6), reply(0));
    EXPECT_EQ(board.stage(), BoardSim::Stage::Stub);
    EXPECT_EQ(board.hostOpens(), 1);

    // Each opening restarts the board in the ROM, which answers the sync word again.
    port.close();
    ASSERT_TRUE(port.open(board.devicePath(), 115200));
    loadStub();
    EXPECT_EQ(board.hostOpens(), 2);
    EXPECT_EQ(board.ram(0x100, 4), QByteArray("stub"));

    // A reply that comes after the host has closed is lost, not left for the next opener.
    // (Its first piece shows that the request got in: closing drops what is not yet read.)
    board.inject(SimFault::split({2}, 80));
    put(port, request(0));
    EXPECT_EQ(readN(port, 2), reply(0).left(2));
    port.close();
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
    EXPECT_EQ(board.lostReplies(), 1);
    ASSERT_TRUE(port.open(board.devicePath(), 115200));
    EXPECT_TRUE(silentFor(port, 50));

    // Without the option the board keeps its stage across opens.
    BoardSim keep;
    ComPort other;
    ASSERT_TRUE(other.open(keep.devicePath(), 115200));
    EXPECT_EQ(exchange(other, "cnys", 1), bytes({1}));
    EXPECT_EQ(exchange(other, rawHeaderBytes(1, 0x100, 0), 1), bytes({0}));
    other.close();
    ASSERT_TRUE(other.open(keep.devicePath(), 115200));
    EXPECT_EQ(exchange(other, request(0), 6), reply(0));
    EXPECT_EQ(keep.stage(), BoardSim::Stage::Stub);
    EXPECT_EQ(keep.hostOpens(), 2);
}

TEST(BoardSim, PublishesItsPortAsAVirtualPort) {
    const QString dir = PortTable::virtualPortDir();
    const QString link = dir + "/simtest";
    {
        BoardSim board;
        ASSERT_TRUE(board.publish("simtest"));
        EXPECT_EQ(board.publishedLink(), link);
        EXPECT_TRUE(QFileInfo(link).isSymLink());
        EXPECT_EQ(QFileInfo(link).symLinkTarget(), QString::fromStdString(board.devicePath()));
        EXPECT_TRUE(PortTable::virtualPorts().contains("simtest"));

        board.unpublish();
        EXPECT_FALSE(QFileInfo(link).isSymLink());
        EXPECT_FALSE(PortTable::virtualPorts().contains("simtest"));
        ASSERT_TRUE(board.publish("simtest"));
    }
    EXPECT_FALSE(QFileInfo(link).isSymLink()); // the destructor took it away

    // A stale link of the name is replaced; a file that is no link is not.
    ASSERT_TRUE(QFile::link("/dev/bramble-gone", dir + "/stale"));
    QFile plain(dir + "/plain");
    ASSERT_TRUE(plain.open(QIODevice::WriteOnly));
    plain.close();
    BoardSim board;
    EXPECT_TRUE(board.publish("stale"));
    EXPECT_EQ(QFileInfo(dir + "/stale").symLinkTarget(),
              QString::fromStdString(board.devicePath()));
    EXPECT_FALSE(board.publish("plain"));
    EXPECT_FALSE(board.publish(""));
    QFile::remove(dir + "/plain");
}

TEST(BoardSim, IdleBoardsUseNoProcessorTime) {
    // A board nobody opened, one whose host has gone (its master reports a hang-up), and one
    // whose reply waits for the host to take a new rate.
    BoardSim fresh;
    BoardSim left;
    {
        ComPort port;
        ASSERT_TRUE(port.open(left.devicePath(), 115200));
        EXPECT_EQ(exchange(port, "cnys", 1), bytes({1}));
    }
    Bench waiting;
    put(waiting.port, request(7, le32(921600)));
    ASSERT_TRUE(silentFor(waiting.port, 20));

    const double cpu0 = cpuSeconds();
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    const double cpu = cpuSeconds() - cpu0;
    EXPECT_LT(cpu, 0.03) << "processor seconds in 300 ms of idling";
    EXPECT_TRUE(fresh.isValid() && left.isValid());
}

TEST(BoardSim, PacedBoardTakesTheLinesTime) {
    BoardSim::Options o = frameBoard();
    o.paceAtBaud = true;
    Bench bench(o);
    // 2006 bytes at 10 bits each and 115200 bit/s take 174 ms.
    const QByteArray data = pattern(2000, 5);
    bench.board.setFlash(0, data);
    auto start = Clock::now();
    EXPECT_EQ(exchange(bench.port, request(3, le32(0) + le32(2000)), 2006), reply(3, data));
    EXPECT_GE(msSince(start), 165);
    EXPECT_LT(msSince(start), 1500);

    // A block frame of 1030 bytes takes 89 ms to come in before the board acts on it.
    EXPECT_EQ(exchange(bench.port, request(1, le32(0x100) + le32(1024)), 6), reply(1));
    start = Clock::now();
    EXPECT_EQ(exchange(bench.port, request(1, QByteArray(1, '\0') + data.left(1024)), 6), reply(1));
    EXPECT_GE(msSince(start), 85);
    EXPECT_EQ(bench.board.ram(0x100, 1024), data.left(1024));
}

TEST(BoardSim, RomLinesAndFirmwareStarts) {
    BoardSim board;
    std::mutex m;
    std::vector<QByteArray> lines;
    int starts = 0;
    board.setFirmwareStartHandler([&](BoardSim&) {
        std::lock_guard<std::mutex> lock(m);
        ++starts;
    });
    board.setRomLineHandler([&](BoardSim& b, const QByteArray& line) {
        {
            std::lock_guard<std::mutex> lock(m);
            lines.push_back(line);
        }
        if (line == "go")
            b.startFirmware();
    });
    board.setFirmwareHandler([](BoardSim& b, const QByteArray& in) { b.send("got " + in); });
    auto seen = [&] {
        std::lock_guard<std::mutex> lock(m);
        return std::make_pair(lines, starts);
    };
    ComPort port;
    ASSERT_TRUE(port.open(board.devicePath(), 115200));

    // CR or LF ends a line; empty lines and lines longer than any command are dropped.
    put(port, "hello\r\n\rworld\n" + QByteArray(300, 'x') + "\r");
    EXPECT_TRUE(silentFor(port, 60));
    EXPECT_EQ(seen().first, std::vector<QByteArray>({"hello", "world"}));
    EXPECT_EQ(board.stage(), BoardSim::Stage::Rom);

    // The handler starts the firmware; the bytes behind the line reach it.
    EXPECT_EQ(exchange(port, "go\rping\r", 9), QByteArray("got ping\r"));
    EXPECT_EQ(board.stage(), BoardSim::Stage::Firmware);
    EXPECT_EQ(seen(), std::make_pair(std::vector<QByteArray>({"hello", "world", "go"}), 1));
    EXPECT_EQ(board.firmwareInput(), QByteArray("ping\r"));

    // The raw dialogue is no text: a header with CR bytes in it is no line.
    board.reset();
    EXPECT_EQ(exchange(port, "cnys", 1), bytes({1}));
    EXPECT_EQ(exchange(port, rawHeaderBytes(5, 0x0D0A0D0A, 0), 1), bytes({0}));
    EXPECT_EQ(seen().first.size(), 3u);
}
