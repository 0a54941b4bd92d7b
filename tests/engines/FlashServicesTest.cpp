#include "base/ComPort.h"
#include "engines/AppQZ4410Imple.h"
#include "engines/AppQZ4420Imple.h"
#include "sim/BoardSim.h"
#include "support/LogCatcher.h"

#include "support/TestFiles.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include <chrono>
#include <thread>

namespace {

BoardSim::Options options(uint8_t syncAnswer, uint32_t flashSize = 4 * 1024 * 1024) {
    BoardSim::Options o;
    o.syncAnswer = syncAnswer;
    o.flashSize = flashSize;
    return o;
}

// A board, the host's port on it, and the two engines of a download run.
struct Bench {
    explicit Bench(BoardSim::Options o = options(51)) : board(o) {
        EXPECT_TRUE(port.open(board.devicePath(), 115200));
    }
    // Syncs and leaves the board speaking frames (a board answering 51 already does).
    void toStub() {
        int mode = 0;
        ASSERT_TRUE(boot.syncBoard(port, &mode, 500));
        ASSERT_EQ(mode, 51);
        ASSERT_EQ(board.stage(), BoardSim::Stage::Stub);
    }
    BoardSim board;
    ComPort port;
    AppQZ4410Imple boot;
    AppQZ4420Imple engine;
    LogCatcher log{&engine};
};

} // namespace

// The ROM's raw dialogue is BootDialogue's to test byte by byte; here the stub goes in by frames.
TEST(FlashServices, StubGoesInByFrames) {
    const QByteArray stub = pattern(3000, 1);
    Bench b(options(51));
    b.toStub();
    SysByteArray data(stub);
    ASSERT_TRUE(b.engine.downloadData(b.port, data, 0x20001000));
    EXPECT_EQ(b.board.ram(0x20001000, 3000), stub);
    // Header of type 1, then blocks of 1024, 1024 and 952 bytes, each behind a mark byte.
    const std::vector<SimFrame> frames = b.board.frames();
    ASSERT_EQ(frames.size(), 4u);
    EXPECT_EQ(frames[0].raw.toHex(), QByteArray("a501080000100020b80b0000a1"));
    EXPECT_EQ(frames[1].raw.size(), 1030);
    EXPECT_EQ(frames[3].raw.size(), 958);
    for (const SimFrame& f : frames) {
        EXPECT_EQ(f.type, 1);
        EXPECT_TRUE(f.checkOk);
    }
    EXPECT_EQ(frames[1].payload.at(0), '\0');
    EXPECT_TRUE(b.engine.startSoftware(b.port, 0x20001000));
    EXPECT_EQ(b.board.stage(), BoardSim::Stage::Firmware);
    EXPECT_EQ(b.board.startedAt(), 0x20001000u);
}

TEST(FlashServices, BlockSizesAndProgressLinesAtTheDownloadRate) {
    Bench b;
    b.toStub();
    b.engine.setLogProgress(true);
    // Empty data: the header alone, no block, no percent line.
    ASSERT_TRUE(b.engine.downloadTrunk(b.port, SysByteArray(), 0x1000, false, 3));
    EXPECT_EQ(b.board.frames().size(), 1u);
    EXPECT_EQ(b.log.texts(), QStringList({"DL_TRUNK: the file will be slice to 0 blocks..."}));
    // Exactly one block, then one block and one byte.
    for (int size : {1024, 1025}) {
        b.board.clearRecord();
        ASSERT_TRUE(b.engine.downloadTrunk(b.port, SysByteArray(pattern(size, size)), 0, false, 3));
        const std::vector<SimFrame> frames = b.board.frames();
        ASSERT_EQ(frames.size(), size == 1024 ? 2u : 3u);
        EXPECT_EQ(frames[1].payload.size(), 1025);
        if (size == 1025) {
            EXPECT_EQ(frames[2].payload.size(), 2);
        }
        EXPECT_EQ(b.board.flash(0, uint32_t(size)), pattern(size, size));
    }
    // A block size below 1 is refused, not divided by.
    b.engine.setBlockSize(0);
    b.engine.setBlockSize(-4096);
    EXPECT_EQ(b.engine.getBlockSize(), 1024);
    // Three blocks: a line for each.
    b.log.clear();
    ASSERT_TRUE(b.engine.downloadTrunk(b.port, SysByteArray(pattern(3000, 3)), 0, true, 3));
    EXPECT_EQ(b.log.starting("DL_TRUNK: trunk downloaded"),
              QStringList({"DL_TRUNK: trunk downloaded 33.33%", "DL_TRUNK: trunk downloaded 66.67%",
                           "DL_TRUNK: trunk downloaded 100.00%"}));

    ASSERT_TRUE(b.engine.changeBaud(b.port, 921600)) << b.log.texts().join('\n').toStdString();
    EXPECT_EQ(b.port.baudrate(), 921600);
    EXPECT_EQ(b.board.baud(), 921600u);
    // 123 blocks of either size: a progress line only at each tenth and at the end.
    for (int blockSize : {1024, 4096}) {
        const QByteArray file = pattern(123 * blockSize, blockSize);
        b.engine.setBlockSize(blockSize);
        b.board.clearRecord();
        b.log.clear();
        ASSERT_TRUE(b.engine.downloadTrunk(b.port, SysByteArray(file), 0x10000, false, 3))
            << b.log.texts().join('\n').toStdString();
        EXPECT_EQ(b.board.flash(0x10000, uint32_t(file.size())), file) << blockSize;
        EXPECT_EQ(b.board.blockWrites(), 123);
        EXPECT_EQ(b.board.repeatedBlocks(), 0);
        const QStringList percent = b.log.starting("DL_TRUNK: trunk downloaded");
        ASSERT_EQ(percent.size(), 10) << percent.join('\n').toStdString();
        EXPECT_EQ(percent.first(), "DL_TRUNK: trunk downloaded 10.57%");
        EXPECT_EQ(percent.last(), "DL_TRUNK: trunk downloaded 100.00%");
        EXPECT_EQ(b.log.infos().first(), "DL_TRUNK: the file will be slice to 123 blocks...");
        EXPECT_TRUE(b.log.errors().isEmpty());
    }
}

TEST(FlashServices, RefusedBlockIsSentAgainWithTheMarkAndWrittenOnce) {
    BoardSim::Options o = options(51);
    o.paceAtBaud = true; // a block takes about 90 ms on the line: time to arm the fault
    Bench b(o);
    b.toStub();
    const QByteArray file = pattern(1500, 7);
    std::thread saboteur([&] {
        while (b.board.frames().empty()) // the header is in; its blocks are still coming
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        b.board.inject(SimFault::state(1, SimFault::frame(2)));
    });
    ASSERT_TRUE(b.engine.downloadTrunk(b.port, SysByteArray(file), 0x2000, false, 3))
        << b.log.texts().join('\n').toStdString();
    saboteur.join();
    EXPECT_EQ(b.board.flash(0x2000, 1500), file);
    const std::vector<SimFrame> frames = b.board.frames();
    ASSERT_EQ(frames.size(), 4u); // header, block 0 refused, block 0 again, block 1
    EXPECT_EQ(frames[1].payload.mid(1), frames[2].payload.mid(1));
    EXPECT_EQ(frames[1].payload.at(0), '\0');
    EXPECT_EQ(frames[2].payload.at(0), '\1'); // only the mark changes, and the sum with it
    EXPECT_EQ(uint8_t(frames[2].raw.back()), uint8_t(frames[1].raw.back() + 1));
    EXPECT_EQ(frames[3].payload.at(0), '\0'); // the next block starts its tries afresh
    EXPECT_EQ(b.board.blockWrites(), 2);
    EXPECT_EQ(b.log.starting("DL_TRUNK: try data write"),
              QStringList({"DL_TRUNK: try data write, block: 0,  pos: (0x00, 0x400)"}));
    EXPECT_EQ(b.log.errors(), QStringList({"RECV_RSP: rsp sign indicates [FAILED]!"}));

    // A header refused on every try: a try line each, then the failure.
    b.log.clear();
    for (int i = 0; i < 3; ++i)
        b.board.inject(SimFault::state(1, SimFault::frame(1)));
    EXPECT_FALSE(b.engine.downloadTrunk(b.port, SysByteArray(file), 0x2000, true, 3));
    EXPECT_EQ(b.log.starting("DL_TRUNK:"),
              QStringList({"DL_TRUNK: try file header send, addr: 0x2000, len: 0x5dc",
                           "DL_TRUNK: try file header send, addr: 0x2000, len: 0x5dc",
                           "DL_TRUNK: try file header send, addr: 0x2000, len: 0x5dc",
                           "DL_TRUNK: file header info send failed, addr: 0x2000, len: 0x5dc"}));
}

TEST(FlashServices, FlashNotEnoughStopsAtOnce) {
    Bench b(options(51, 64 * 1024));
    b.toStub();
    EXPECT_FALSE(b.engine.downloadTrunk(b.port, SysByteArray(pattern(100 * 1024, 1)), 0, false, 3));
    EXPECT_EQ(b.log.texts(), QStringList({"RECV_RSP: FLASH is not enough!"}));
    EXPECT_EQ(b.board.frames().size(), 1u);      // no further try
    EXPECT_FALSE(b.engine.takeFlashNotEnough()); // taken by the download itself
}

TEST(FlashServices, ReadEraseAndFiles) {
    Bench b;
    b.toStub();
    const QByteArray content = pattern(1500, 9);
    b.board.setFlash(0x3000, content);
    SysByteArray out;
    ASSERT_TRUE(b.engine.readFlash(b.port, 0x3000, 1500, out));
    EXPECT_EQ(out.bytes(), content);
    const std::vector<SimFrame> frames = b.board.frames();
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_EQ(frames[0].payload.toHex(), QByteArray("0030000000040000"));
    EXPECT_EQ(frames[1].payload.toHex(), QByteArray("00340000dc010000"));
    EXPECT_EQ(b.log.infos(),
              QStringList({"UP_FLASH: the upload block will slice to 2 trunks",
                           "UP_FLASH: data uploaded 50.00%", "UP_FLASH: data uploaded 100.00%"}));

    QTemporaryDir dir;
    const QString path = dir.filePath("dumps/board.bin");
    ASSERT_TRUE(b.engine.readFlashToFile(b.port, 0x3000, 1500, path));
    QFile dump(path);
    ASSERT_TRUE(dump.open(QIODevice::ReadOnly));
    EXPECT_EQ(dump.readAll(), content);
    dump.close();

    // A read past the flash fails on its trunk; the file stays as it was.
    b.log.clear();
    EXPECT_FALSE(b.engine.readFlashToFile(b.port, 4 * 1024 * 1024 - 1024, 2048, path));
    EXPECT_EQ(
        b.log.errors(),
        QStringList({"RECV_RSP: rsp sign indicates [FAILED]!",
                     "UP_FLASH: meet error when request the trunk 1,  pos: (0x400000, 0x400)"}));
    ASSERT_TRUE(dump.open(QIODevice::ReadOnly));
    EXPECT_EQ(dump.readAll(), content);
    b.log.clear();
    EXPECT_FALSE(b.engine.readFlash(b.port, 0, 0, out));
    EXPECT_EQ(b.log.texts(), QStringList({"UP_FLASH: the upload block will slice to 0 trunks",
                                          "UP_FLASH: no trunk can be upload!"}));

    ASSERT_TRUE(b.engine.eraseFlash(b.port, 0x3000, 0x100));
    EXPECT_EQ(b.board.flash(0x3000, 0x100), QByteArray(0x100, '\xFF'));
    EXPECT_EQ(b.board.flash(0x3100, 100), content.mid(0x100, 100));
    ASSERT_TRUE(b.engine.eraseAll(b.port));
    EXPECT_EQ(b.board.flash(0x3000, 1500), QByteArray(1500, '\xFF'));
}

TEST(FlashServices, FailedBaudChangePutsTheOldRateBack) {
    Bench b;
    b.toStub();
    b.board.inject(SimFault::drop(SimFault::frame(7)));
    EXPECT_FALSE(b.engine.changeBaud(b.port, 2000000));
    EXPECT_EQ(b.port.baudrate(), 115200);
    EXPECT_EQ(b.log.errors(), QStringList({"RECV_RSP: recv timeout: recv length is: 0",
                                           "CHG_BAUD: recv rsp failed!"}));
}
