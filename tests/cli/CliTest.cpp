#include "cli/CliApp.h"
#include "cli/CliOutput.h"
#include "engines/AppImpleUtils.h"
#include "sim/BoardSim.h"
#include "sim/SimFault.h"
#include "sim/SimFirmware.h"
#include "support/QtPrinters.h"
#include "support/TestFiles.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <memory>
#include <vector>

namespace {

// One call of the command line, in this process, with what it printed.
struct Call {
    int status = -1;
    QString out;
    QString err;
    // Each line of standard output as a JSON object; a line that is none fails the test.
    QList<QJsonObject> objects() const {
        QList<QJsonObject> list;
        for (const QString& line : out.split('\n', Qt::SkipEmptyParts)) {
            QJsonParseError error;
            const QJsonDocument doc = QJsonDocument::fromJson(line.toUtf8(), &error);
            EXPECT_TRUE(doc.isObject()) << line.toStdString();
            list << doc.object();
        }
        return list;
    }
};

Call cli(const QStringList& args) {
    Call call;
    QTextStream out(&call.out);
    QTextStream err(&call.err);
    CliApp app(out, err);
    call.status = app.run(args);
    return call;
}

// An all-in-one image made by the command line of a stub for 0x20000000 and an application
// for 0x10000, with one more file when asked; `aio create` itself is the first test's.
QString makeImage(const QTemporaryDir& dir, int stubSize, const QByteArray& app,
                  const QByteArray& data = {}) {
    writeFile(dir.filePath("stub.bin"), QByteArray(stubSize, '\x5c'));
    QStringList args = {"aio",         "create",     "--stub", dir.filePath("stub.bin"),
                        "--stub-addr", "0x20000000", "--out",  dir.filePath("aio.bin")};
    for (const auto& [addr, name, bytes] : {std::make_tuple("0x10000", "app.bin", app),
                                            std::make_tuple("0x200000", "data.bin", data)}) {
        if (bytes.isEmpty())
            continue;
        writeFile(dir.filePath(name), bytes);
        args << "--file" << addr + (":" + dir.filePath(name));
    }
    EXPECT_EQ(cli(args).status, 0);
    return dir.filePath("aio.bin");
}

} // namespace

TEST(Cli, AllInOneImagesAreMadeAndShown) {
    QTemporaryDir dir;
    writeFile(dir.filePath("stub.bin"), QByteArray(300, '\x11'));
    writeFile(dir.filePath("app.bin"), QByteArray(5000, '\x22'));
    writeFile(dir.filePath("boot:v2.bin"), QByteArray(64, '\x33'));
    const QString image = dir.filePath("aio.bin");
    const Call made = cli({"aio", "create", "--stub", dir.filePath("stub.bin"), "--stub-addr",
                           "0x20000", "--file", "0x10000:" + dir.filePath("app.bin"), "--file",
                           "20100:" + dir.filePath("boot:v2.bin") + ":ram", "--out", image});
    ASSERT_EQ(made.status, 0) << made.err.toStdString();

    const Call shown = cli({"aio", "show", image, "--json"});
    EXPECT_EQ(shown.status, 0);
    // The engine's lines come first, as log objects, then the image.
    QList<QJsonObject> objects = shown.objects();
    ASSERT_FALSE(objects.isEmpty());
    for (int i = 0; i + 1 < objects.size(); ++i)
        EXPECT_EQ(objects[i]["type"].toString(), "log");
    objects = {objects.last()};
    EXPECT_EQ(objects[0]["type"].toString(), "aio");
    EXPECT_EQ(objects[0]["stub"].toObject()["addr"].toString(), "0x00020000");
    EXPECT_EQ(objects[0]["stub"].toObject()["size"].toInt(), 300);
    const QJsonArray entries = objects[0]["entries"].toArray();
    ASSERT_EQ(entries.size(), 2);
    EXPECT_EQ(entries[0].toObject()["addr"].toString(), "0x00010000");
    EXPECT_EQ(entries[0].toObject()["size"].toInt(), 5000);
    EXPECT_FALSE(entries[0].toObject()["ram"].toBool());
    EXPECT_EQ(entries[1].toObject()["addr"].toString(), "0x00020100");
    EXPECT_TRUE(entries[1].toObject()["ram"].toBool());
    // The QZ4410's kind: "beno", a count, then type, address and length before each record.
    QByteArray beno("beno\x02\0\0\0", 8);
    beno += QByteArray("\x03\0\0\0\0\0\x02\0\x04\0\0\0", 12) + "abcd";
    beno += QByteArray("\x01\0\0\0\0\x10\0\0\x02\0\0\0", 12) + "ef";
    writeFile(dir.filePath("beno.bin"), beno);
    const QJsonObject shownBeno =
        cli({"aio", "show", dir.filePath("beno.bin"), "--json"}).objects().last();
    EXPECT_EQ(shownBeno["format"].toString(), "beno");
    const QJsonArray records = shownBeno["entries"].toArray();
    ASSERT_EQ(records.size(), 2);
    EXPECT_EQ(records[0].toObject()["type"].toInt(), 3);
    EXPECT_EQ(records[0].toObject()["addr"].toString(), "0x00020000");
    EXPECT_EQ(records[1].toObject()["addr"].toString(), "0x00001000");
    EXPECT_EQ(records[1].toObject()["size"].toInt(), 2);

    const Call plain = cli({"aio", "show", image});
    EXPECT_EQ(plain.out.split('\n', Qt::SkipEmptyParts).size(), 3) << plain.out.toStdString();
}

TEST(Cli, NvImagesToAndFromConfFiles) {
    QTemporaryDir dir;
    AppImpleUtils utils;
    const QString conf = dir.filePath("in.conf");
    ASSERT_TRUE(utils.saveConfFile(
        {{"ssid", "Bench", "the network"}, {"UBOOT", "ABC", ""}, {"partition", "t1", ""}}, conf));
    const QString image = dir.filePath("p.bin");
    EXPECT_EQ(
        cli({"nv", "from-conf", conf, "--type", "partition", "--size", "8", "--out", image}).status,
        0);
    EXPECT_EQ(QFile(image).size(), 8192);
    const Call shown = cli({"nv", "show", image, "--json"});
    const QJsonObject nv = shown.objects().value(0);
    EXPECT_EQ(nv["imageType"].toString(), "partition");
    const QJsonArray items = nv["items"].toArray();
    ASSERT_EQ(items.size(), 3);
    EXPECT_EQ(items[0].toObject()["name"].toString(), "uboot");
    EXPECT_EQ(items[0].toObject()["value"].toString(), "abc");
    EXPECT_EQ(items[2].toObject()["value"].toString(), "Bench");

    const QString back = dir.filePath("back.conf");
    EXPECT_EQ(cli({"nv", "to-conf", image, "--out", back}).status, 0);
    QList<NvItem> read;
    ASSERT_TRUE(utils.loadConfFile(back, read));
    EXPECT_EQ(read.size(), 3);

    // Without both key items a partition image is refused and nothing is written.
    ASSERT_TRUE(utils.saveConfFile({{"ssid", "x", ""}}, conf));
    const Call refused = cli({"nv", "from-conf", conf, "--type", "partition", "--size", "4",
                              "--out", dir.filePath("none.bin"), "--json"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.objects().last()["level"].toString(), "error");
    EXPECT_FALSE(QFile::exists(dir.filePath("none.bin")));
}

TEST(Cli, BadInputIsOneLineAndAStatus) {
    QTemporaryDir dir;
    writeFile(dir.filePath("junk.bin"), QByteArray(4096, '\x5a'));
    struct Case {
        QStringList args;
        int status;
        const char* says;
    };
    const Case cases[] = {
        {{"frob"}, 2, "unknown command: frob"},
        {{"aio", "create", "--stub", "s", "--stub-addr", "zz", "--out", "o"}, 2, "hex number"},
        {{"aio", "create", "--stub", "s", "--stub-addr", "0", "--file", "0xq:a.bin", "--out", "o"},
         2,
         "--file 0xq:a.bin"},
        {{"aio", "show", dir.filePath("junk.bin")}, 1, "is no all-in-one image"},
        {{"nv", "show", dir.filePath("junk.bin")}, 1, "is no NV image"},
        {{"nv", "from-conf", "c", "--type", "big", "--size", "4", "--out", "o"}, 2, "--type"},
        {{"nv", "show", "--bogus", "x"}, 2, "bogus"},
    };
    for (const Case& c : cases) {
        const Call call = cli(c.args);
        EXPECT_EQ(call.status, c.status) << c.args.join(' ').toStdString();
        EXPECT_TRUE(call.err.contains(c.says)) << call.err.toStdString();
        EXPECT_TRUE(call.out.isEmpty());
    }
}

TEST(Cli, PortsListsTheVirtualPortsToo) {
    BoardSim board;
    ASSERT_TRUE(board.publish("cliBoardA"));
    const Call call = cli({"ports", "--json"});
    EXPECT_EQ(call.status, 0);
    EXPECT_TRUE(call.objects().value(0)["ports"].toArray().contains("cliBoardA"));
}

TEST(Cli, DownloadsToManyBoardsAtOnceAndFailsOnlyTheBoardsThatFail) {
    QTemporaryDir dir;
    const QByteArray app = pattern(20 * 1024, 1), data = pattern(4 * 1024, 2);
    const QString image = makeImage(dir, 2048, app, data);

    std::vector<std::unique_ptr<BoardSim>> boards;
    QStringList args{"download", "--image", image, "--json"};
    for (int i = 0; i < 4; ++i) {
        boards.push_back(std::make_unique<BoardSim>());
        ASSERT_TRUE(boards.back()->publish(QString("cliDl%1").arg(i)));
        args << "--port" << QString("cliDl%1").arg(i);
    }
    boards[2]->inject(SimFault::state(1)); // the first frame after the stub is refused
    for (int i = 0; i < 2000; ++i)         // board 3 answers no sync word at all
        boards[3]->inject(SimFault::drop(SimFault::syncWord()));

    const Call call = cli(args);
    EXPECT_EQ(call.status, 1);
    const QList<QJsonObject> objects = call.objects();
    ASSERT_FALSE(objects.isEmpty());
    const QJsonObject summary = objects.last();
    EXPECT_EQ(summary["type"].toString(), "summary");
    EXPECT_FALSE(summary["ok"].toBool());
    const QJsonArray results = summary["boards"].toArray();
    ASSERT_EQ(results.size(), 4);
    for (int i = 0; i < 4; ++i) {
        const QJsonObject board = results[i].toObject();
        EXPECT_EQ(board["board"].toString(), QString("cliDl%1").arg(i));
        EXPECT_EQ(board["bytes"].toInt(), QFileInfo(image).size());
        EXPECT_EQ(board["ok"].toBool(), i < 2) << i;
        if (i >= 2) {
            EXPECT_FALSE(board["failingLine"].toString().isEmpty());
            if (i == 3) {
                EXPECT_EQ(board["failingLine"].toString(), "No sync answer from the board.");
            }
            continue;
        }
        EXPECT_EQ(boards[size_t(i)]->flash(0x10000, uint32_t(app.size())), app) << i;
        EXPECT_EQ(boards[size_t(i)]->flash(0x200000, uint32_t(data.size())), data) << i;
    }
    int board2Lines = 0;
    for (const QJsonObject& object : objects)
        board2Lines += object["board"].toString() == "cliDl2";
    EXPECT_GT(board2Lines, 0);

    // Run again, the fault spent and the boards back in their ROMs: every board takes it.
    for (auto& board : boards) {
        board->clearFaults();
        board->reset();
    }
    const Call again = cli(args);
    EXPECT_EQ(again.status, 0) << again.out.right(600).toStdString();
    EXPECT_EQ(boards[2]->flash(0x10000, uint32_t(app.size())), app);

    // A port that is not there is one line before anything starts.
    const Call missing = cli({"download", "--port", "cliNowhere", "--image", image});
    EXPECT_EQ(missing.status, 1);
    EXPECT_TRUE(missing.err.contains("no port cliNowhere")) << missing.err.toStdString();
}

TEST(Cli, VerifyReadsTheFlashBackAndTheFlashAndFirmwareCommandsRun) {
    QTemporaryDir dir;
    const QByteArray app = pattern(6000, 3);
    const QString image = makeImage(dir, 1024, app);

    // A board that stores one byte wrong fails at that byte's address.
    BoardSim board;
    ASSERT_TRUE(board.publish("cliVerify"));
    board.flipNextStore(0x10000 + 5000);
    const Call bad =
        cli({"download", "--port", "cliVerify", "--image", image, "--verify", "--json"});
    EXPECT_EQ(bad.status, 1);
    const QJsonObject failed = bad.objects().last()["boards"].toArray()[0].toObject();
    EXPECT_FALSE(failed["ok"].toBool());
    EXPECT_TRUE(failed["failingLine"].toString().contains("0x11388"))
        << failed["failingLine"].toString().toStdString();
    board.reset();
    const Call good = cli({"download", "--port", "cliVerify", "--image", image, "--verify"});
    EXPECT_EQ(good.status, 0) << good.err.toStdString();
    EXPECT_TRUE(good.err.contains("[cliVerify] The flash holds the image."));

    // The flash page's actions on a board whose software speaks frames.
    BoardSim::Options frames;
    frames.framesFromStart = true;
    BoardSim flashBoard(frames);
    ASSERT_TRUE(flashBoard.publish("cliFlash"));
    flashBoard.setFlash(0x30000, app.left(0x200));
    const QString out = dir.filePath("read.bin");
    EXPECT_EQ(cli({"read-flash", "--port", "cliFlash", "--addr", "0x30000", "--len", "200", "--out",
                   out, "--baud", "921600"})
                  .status,
              0);
    QFile read(out);
    ASSERT_TRUE(read.open(QIODevice::ReadOnly));
    EXPECT_EQ(read.readAll(), app.left(0x200));
    EXPECT_EQ(cli({"erase", "--port", "cliFlash", "--addr", "30000", "--len", "1000"}).status, 0);
    EXPECT_EQ(flashBoard.flash(0x30000, 0x200), QByteArray(0x200, '\xff'));
    EXPECT_EQ(cli({"erase", "--port", "cliFlash", "--addr", "0x3q", "--len", "1"}).status, 2);

    // One firmware command and its reply.
    BoardSim running;
    SimFirmware firmware(running);
    running.startFirmware();
    ASSERT_TRUE(running.publish("cliFirmware"));
    const Call reply = cli({"cmd", "--port", "cliFirmware", "get_version_type", "--json"});
    EXPECT_EQ(reply.status, 0) << reply.err.toStdString();
    const QJsonObject answer = reply.objects().last();
    EXPECT_EQ(answer["type"].toString(), "reply");
    EXPECT_TRUE(answer["reply"].toString().startsWith("0,"))
        << answer["reply"].toString().toStdString();
}

TEST(Cli, ATerminalShowsOneLiveLinePerBoard) {
    QString out;
    QString err;
    QTextStream outStream(&out);
    QTextStream errStream(&err);
    CliOutput live(outStream, errStream, false, true);
    live.beginBoards({"a", "b"});
    live.log(SYS_LOG_INFO, "10%", "b");
    live.log(SYS_LOG_ERROR, "refused", "a");
    live.endBoards();
    live.log(SYS_LOG_INFO, "after", "a");
    EXPECT_TRUE(err.endsWith("\x1b[2A\x1b[2K[a] \n\x1b[2K[b] 10%\n"
                             "\x1b[2A\x1b[2K[a] refused\n\x1b[2K[b] 10%\n"
                             "[a] after\n"))
        << err.toStdString();
    EXPECT_TRUE(out.isEmpty());
}

TEST(Cli, APortAnotherProgramHoldsIsNamedWithTheProgram) {
    BoardSim board;
    ASSERT_TRUE(board.publish("cliHeld"));
    QProcess holder;
    holder.start(
        "sh", {"-c", "exec 3<>\"$0\"; exec sleep 5", QString::fromStdString(board.devicePath())});
    ASSERT_TRUE(holder.waitForStarted(2000));
    // The shell opens the port, then becomes sleep with the port still open.
    Call call;
    for (int i = 0; i < 50 && !call.err.contains("sleep"); ++i) {
        QThread::msleep(20);
        call = cli({"download", "--port", "cliHeld", "--image", "none.bin"});
    }
    EXPECT_EQ(call.status, 1);
    EXPECT_TRUE(call.err.contains("cliHeld is in use by sleep (pid ")) << call.err.toStdString();
    holder.kill();
    holder.waitForFinished(2000);
}
