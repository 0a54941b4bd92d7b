#include "base/ComPort.h"
#include "engines/AppQZ4410Imple.h"
#include "support/LogCatcher.h"
#include "support/PtyPeer.h"
#include "support/Wire.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <chrono>
#include <thread>

namespace {

ByteBuffer pattern(int n) {
    ByteBuffer b;
    for (int i = 0; i < n; ++i)
        b.appendByte(static_cast<unsigned char>(i * 7 + 3));
    return b;
}

QByteArray text(const ByteBuffer& b, int from, int n) {
    return bytesOf(b).mid(from, n);
}

struct Bench {
    PtyPeer peer;
    ComPort port;
    AppQZ4410Imple engine;
    LogCatcher log{&engine};
    Bench() { EXPECT_TRUE(port.open(peer.slavePath(), 115200)); }
};

// One step of a played board: the bytes it reads and checks, then the byte it answers.
struct Step {
    QByteArray want;
    int answer;
};

std::thread playBoard(PtyPeer& peer, std::vector<Step> steps) {
    return std::thread([&peer, steps] {
        for (const Step& s : steps) {
            EXPECT_EQ(QByteArray::fromStdString(peer.readExactly(size_t(s.want.size()))), s.want);
            peer.write(std::string(1, char(s.answer)));
        }
    });
}

} // namespace

TEST(BootDialogue, SyncHandsOverTheFirstByte) {
    Bench b;
    b.peer.write(bytes({0x33, 0x01, 0x02}).toStdString());
    int mode = -1;
    EXPECT_TRUE(b.engine.syncBoard(b.port, &mode, 50));
    EXPECT_EQ(mode, 51);
    EXPECT_EQ(b.peer.read(20, 200), "cnys");

    const auto start = Clock::now();
    EXPECT_FALSE(b.engine.syncBoard(b.port, &mode, 2));
    EXPECT_LT(msSince(start), 200);
    EXPECT_EQ(b.log.errors(), QStringList({"SYNC: recv rsp timeout！"}));
    EXPECT_EQ(AppQZ4410Imple::modeText(1), "UART MODE");
    EXPECT_EQ(AppQZ4410Imple::modeText(2), "FLASH MODE");
    EXPECT_EQ(AppQZ4410Imple::modeText(51), "INVALID MODE");
}

TEST(BootDialogue, ChangeBaudSendsTheCodeThenChecksAckAndSync) {
    EXPECT_EQ(AppQZ4410Imple::baudCode(115200), 1);
    EXPECT_EQ(AppQZ4410Imple::baudCode(380400), 4);
    EXPECT_EQ(AppQZ4410Imple::baudCode(1561600), 10);
    EXPECT_EQ(AppQZ4410Imple::baudCode(1400000), 11);
    EXPECT_EQ(AppQZ4410Imple::baudCode(2000000), 15);
    EXPECT_EQ(AppQZ4410Imple::baudCode(0), 0); // the hole matches nothing

    {
        Bench b;
        std::thread board = playBoard(b.peer, {{bytes({0x0F}), 0x03}, {"cnys", 0x02}});
        EXPECT_TRUE(b.engine.changeBaud(b.port, 2000000, 500));
        board.join();
        EXPECT_EQ(b.port.baudrate(), 2000000);
        EXPECT_TRUE(b.log.texts().isEmpty());
    }
    for (uint32_t unknown : {384000u, 230400u}) {
        Bench b;
        EXPECT_FALSE(b.engine.changeBaud(b.port, unknown, 500));
        EXPECT_EQ(b.log.errors(),
                  QStringList({QString("CHG_BAUD: not supported baudrate: %1").arg(unknown)}));
        EXPECT_EQ(b.peer.read(20, 100), ""); // nothing went out
    }
    // A wrong acknowledgement, the ROM still in UART mode after the change, and silence: the
    // old rate comes back.
    struct Failure {
        uint32_t baud;
        std::vector<Step> board;
        int limitMs;
        QString line;
    };
    const Failure failures[] = {
        {921600, {{bytes({0x09}), 0x05}}, 500, "CHG_BAUD: recv wrong data: 0x03 => 0x05"},
        {115200,
         {{bytes({0x01}), 0x03}, {"cnys", 0x01}},
         500,
         "CHG_BAUD: invalid sync ack: 0x02 => 0x01"},
        {460800, {}, 50, "CHG_BAUD: recv rsp timeout!"},
    };
    for (const Failure& f : failures) {
        Bench b;
        std::thread board = playBoard(b.peer, f.board);
        EXPECT_FALSE(b.engine.changeBaud(b.port, f.baud, f.limitMs));
        board.join();
        EXPECT_EQ(b.port.baudrate(), 115200) << f.line.toStdString();
        EXPECT_EQ(b.log.errors(), QStringList({f.line}));
    }
}

TEST(BootDialogue, ResyncWritesZerosUntilTheBoardIsBackInStep) {
    Bench b;
    b.engine.setLogProgress(true);
    const ByteBuffer data = pattern(3000);
    const QByteArray header = le32(1) + le32(0x20000) + le32(3000);
    // Out of step at the header; back in step on the third zero.
    std::thread board = playBoard(b.peer, {{header, 0xFF},
                                           {QByteArray(3, '\0'), 0xFF},
                                           {header, 0},
                                           {text(data, 0, 1024), 0},
                                           {text(data, 1024, 1024), 0},
                                           {text(data, 2048, 952), 0}});
    EXPECT_TRUE(b.engine.downloadTrunk(b.port, 1, 0x20000, data));
    board.join();
    EXPECT_EQ(b.peer.read(20, 100), ""); // nothing more than that
    EXPECT_EQ(b.log.infos(),
              QStringList({"DL_TRUNK: the file will be slice to 3 blocks...",
                           "DL_TRUNK: trunk downloaded 33.33%", "DL_TRUNK: trunk downloaded 66.67%",
                           "DL_TRUNK: trunk downloaded 100.00%"}));
    EXPECT_TRUE(b.log.errors().isEmpty());
}

TEST(BootDialogue, SilentResyncSendsTwelveZerosThenTheHeaderAgain) {
    Bench b;
    const ByteBuffer data = pattern(10);
    const QByteArray header = le32(3) + le32(0x100) + le32(10);
    long tookMs = 0;
    std::thread board([&] {
        EXPECT_EQ(b.peer.readExactly(12), header.toStdString());
        b.peer.write(bytes({0xFF}).toStdString());
        const auto start = Clock::now();
        EXPECT_EQ(b.peer.readExactly(24, 5000), std::string(12, '\0') + header.toStdString());
        tookMs = msSince(start);
        b.peer.write(bytes({0x07}).toStdString()); // the second header is refused
    });
    EXPECT_FALSE(b.engine.downloadTrunk(b.port, 3, 0x100, data));
    board.join();
    EXPECT_GE(tookMs, 12 * 200 - 250);
    EXPECT_LT(tookMs, 12 * 200 + 1500);
    EXPECT_EQ(b.log.errors(),
              QStringList({"DL_TRUNK: the resp notice: board has crashed, sign: 0x7"}));
}

TEST(BootDialogue, EveryRefusalEndsTheTransferWithItsLine) {
    const ByteBuffer data = pattern(1500);
    const QByteArray header = le32(1) + le32(0) + le32(1500);
    struct Case {
        std::vector<Step> board;
        QString line;
    };
    const Case cases[] = {
        {{{header, 0x09}}, "DL_TRUNK: the resp notice: invalid response!"},
        {{{header, 0}, {text(data, 0, 1024), 0}, {text(data, 1024, 476), 1}},
         "DL_TRUNK: resp notice: board has crashed, cur block: 1!"},
        {{{header, 0}}, "DL_TRUNK: recv resp of file block 0 timeout!"},
        {{}, "DL_TRUNK: recv file header cmd's resp timeout!"},
    };
    for (const Case& c : cases) {
        Bench b;
        std::thread board = playBoard(b.peer, c.board);
        EXPECT_FALSE(b.engine.downloadTrunk(b.port, 1, 0, data));
        board.join();
        EXPECT_EQ(b.log.errors(), QStringList({c.line}));
    }
    {
        AppQZ4410Imple engine;
        LogCatcher log(&engine);
        ComPort closed;
        EXPECT_FALSE(engine.downloadTrunk(closed, 1, 0, data));
        EXPECT_FALSE(engine.sendFinish(closed));
        int mode = 0;
        EXPECT_FALSE(engine.syncBoard(closed, &mode, 0));
        EXPECT_EQ(log.errors(),
                  QStringList({"DL_TRUNK: write file header data failed!",
                               "SEND_FINISH: write cmd failed!", "SYNC: write sync cmd failed!"}));
    }
}

TEST(BootDialogue, StubDownloadAndFinish) {
    QTemporaryDir dir;
    {
        Bench b;
        // The sync after the stub is answered by the ROM still: the stub did not come up.
        std::thread board = playBoard(
            b.peer, {{le32(1) + le32(0x80000) + le32(5), 0}, {"stub!", 0}, {"cnys", 0x01}});
        ByteBuffer stub(std::string("stub!"));
        EXPECT_FALSE(b.engine.downloadUbootData(b.port, stub, 0x80000, true));
        board.join();
        EXPECT_EQ(b.log.errors(), QStringList({"DL_UBOOT: UBOOT has not startup ok!"}));

        EXPECT_TRUE(b.engine.sendFinish(b.port));
        EXPECT_EQ(b.peer.read(20, 200), std::string(12, '\0'));
    }
    {
        Bench b;
        const QString missing = dir.filePath("no-stub.bin");
        EXPECT_FALSE(b.engine.downloadUboot(b.port, missing, 0, false));
        EXPECT_EQ(b.log.errors(), QStringList({"RD_FILE: can not open file: " + missing,
                                               "DL_UBOOT: read all file data failed!"}));
        EXPECT_EQ(b.peer.read(20, 100), "");
    }
}
