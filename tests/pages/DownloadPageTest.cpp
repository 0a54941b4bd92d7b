#include "engines/AppQZ4420Imple.h"
#include "kit/SysButton.h"
#include "kit/SysCheckBox.h"
#include "kit/SysComboBox.h"
#include "kit/SysFileDialog.h"
#include "kit/SysFileSelect.h"
#include "kit/SysGroupBox.h"
#include "kit/SysLineEdit.h"
#include "kit/SysSerialComboBox.h"
#include "kit/SysTab.h"
#include "kit/SysTable.h"
#include "pages/DownloadWindow.h"
#include "sim/BoardSim.h"
#include "support/MainWindowTest.h"
#include "support/QtPrinters.h"
#include "support/TestFiles.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <thread>

namespace {

// The real main window; tests drive its download page.
class DownloadPage : public PageTest<DownloadWindow> {
protected:
    void SetUp() override {
        PageTest::SetUp();
        SysFileDialog::setAnswer(nullptr);
    }
    void TearDown() override {
        SysFileDialog::setAnswer(nullptr);
        PageTest::TearDown();
    }

    // A board that restarts in its ROM at each opening of its port, as the reset line does.
    static BoardSim::Options resetting(uint8_t syncAnswer = 1, bool paced = false) {
        BoardSim::Options o;
        o.resetOnOpen = true;
        o.syncAnswer = syncAnswer;
        o.paceAtBaud = paced;
        return o;
    }
    // Publishes the board as a virtual port and picks it in the page's port box.
    void choose(BoardSim& board, const QString& name) {
        ASSERT_TRUE(board.publish(name));
        QMetaObject::invokeMethod(page->portBox, "onTimerTimeout");
        page->portBox->setCurrentText(name);
        ASSERT_EQ(page->portBox->currentText(), name);
    }

    // Clicks a start button and waits until the run has given the controls back.
    void runAndWait(QPushButton* start, int timeoutMs = 20000) {
        const int before = log->nextRow;
        QTest::mouseClick(start, Qt::LeftButton);
        sawDisabled = false;
        const bool done = QTest::qWaitFor(
            [&] {
                sawDisabled = sawDisabled || !page->settingsBox->isEnabled();
                const QStringList l = linesFrom(before);
                return !l.isEmpty() && (l.last() == words.text("download/dlTab/download/success") ||
                                        l.last() == words.text("download/dlTab/download/failed"));
            },
            timeoutMs);
        ASSERT_TRUE(done) << linesFrom(before).join('\n').toStdString();
        QTest::qWait(20); // message 1 follows the last line
        EXPECT_TRUE(page->settingsBox->isEnabled());
        EXPECT_TRUE(page->dlTabs->isEnabled());
        runLines = linesFrom(before);
    }

    // Selects row i with a file and an address, to RAM when asked.
    void putRow(int i, const QString& path, const QString& addr, bool toRam = false) {
        page->fileRows[i]->select->setChecked(true);
        page->fileRows[i]->toRam->setChecked(toRam);
        page->fileRows[i]->file->pathEdit->setText(path);
        page->fileRows[i]->addr->setText(addr);
    }

    // Makes an all-in-one image with a stub and two files and points the page at it.
    QString makeImage(const QByteArray& stub, const QByteArray& app, const QByteArray& data) {
        writeFile(dir.filePath("stub.bin"), stub);
        writeFile(dir.filePath("app.bin"), app);
        writeFile(dir.filePath("data.bin"), data);
        QVector<AioEntry> list(2);
        list[0].path = dir.filePath("app.bin");
        list[0].startAddr = 0x10000;
        list[1].path = dir.filePath("data.bin");
        list[1].startAddr = 0x200000;
        AppQZ4420Imple engine;
        const QString image = dir.filePath("demo.aio.bin");
        EXPECT_TRUE(engine.createAio(dir.filePath("stub.bin"), list, image, 0x20000000));
        page->aioSelect->pathEdit->setText(image);
        return image;
    }

    QTemporaryDir dir;
    QStringList runLines;
    bool sawDisabled = false; // the controls were seen off while the run went on
};

} // namespace

// The rates, the start address and the 30 rows the page starts with are taken as they stand by
// the runs and the setting file below.
TEST_F(DownloadPage, StartsWithItsDefaults) {
    EXPECT_EQ(page->dlTabs->currentIndex(), 1);
    EXPECT_TRUE(page->uartBootCheck->isChecked());
    EXPECT_TRUE(page->bigBlockCheck->isChecked());

    // A file whose path holds an address fills its own row; one without leaves it alone.
    DownloadWindow::FileRow* row = page->fileRows[4];
    emit row->file->selected("/images/v2/app_0x7F000.bin");
    EXPECT_EQ(row->addr->text(), "0x7F000");
    EXPECT_TRUE(row->select->isChecked());
    row->select->setChecked(false);
    emit row->file->selected("/images/0x100/app.bin"); // a folder's address counts too
    EXPECT_EQ(row->addr->text(), "0x100");
    row->addr->setText("keep");
    row->select->setChecked(false);
    emit row->file->selected("/images/app.bin");
    EXPECT_EQ(row->addr->text(), "keep");
    EXPECT_FALSE(row->select->isChecked());
}

TEST_F(DownloadPage, AllInOneDownloadWithEitherSyncAnswer) {
    const QByteArray stub = pattern(2000, 1), app = pattern(70000, 2), data = pattern(5000, 3);
    makeImage(stub, app, data);
    for (uint8_t answer : {uint8_t(1), uint8_t(51)}) {
        BoardSim board(resetting(answer));
        choose(board, QString("sim%1").arg(answer));
        page->bigBlockCheck->setChecked(answer == 1);
        runAndWait(page->aioStartButton);
        EXPECT_EQ(runLines.last(), w("download/dlTab/download/success"))
            << runLines.join('\n').toStdString();
        EXPECT_TRUE(runLines.contains(f("download/dlTab/startDownloadFileFmt", 2000)));
        EXPECT_TRUE(runLines.contains(w("download/dlTab/softverStartSuccess")));
        EXPECT_TRUE(runLines.contains("DL_TRUNK: trunk downloaded 100.00%"));
        EXPECT_EQ(board.ram(0x20000000, 2000), stub);
        EXPECT_EQ(board.flash(0x10000, 70000), app);
        EXPECT_EQ(board.flash(0x200000, 5000), data);
        EXPECT_EQ(board.baud(), 2000000u);
        EXPECT_EQ(board.stage(), BoardSim::Stage::Firmware);
        EXPECT_EQ(board.startedAt(), 0x10000u); // the single-file tab's address, not the stub's
        // Big blocks: 70000 bytes in 18 blocks of 4096; small: 69 of 1024.
        const QString blocks =
            QString("DL_TRUNK: the file will be slice to %1 blocks...").arg(answer == 1 ? 18 : 69);
        EXPECT_TRUE(runLines.contains(blocks)) << runLines.join('\n').toStdString();
    }
}

TEST_F(DownloadPage, SingleFileRunAndStubOnlyRun) {
    const QByteArray stub = pattern(3000, 4), app = pattern(9000, 5);
    writeFile(dir.filePath("stub.bin"), stub);
    writeFile(dir.filePath("app.bin"), app);
    page->stubSelect->pathEdit->setText(dir.filePath("stub.bin"));
    page->startupAddrEdit->setText("20000000");

    BoardSim board(resetting());
    choose(board, "simA");
    // No row selected: the stub goes in and that is all.
    runAndWait(page->singleStartButton);
    EXPECT_EQ(runLines.last(), w("download/dlTab/download/success"));
    EXPECT_EQ(board.ram(0x20000000, 3000), stub);
    EXPECT_EQ(board.stage(), BoardSim::Stage::Stub);
    EXPECT_EQ(board.baud(), 115200u);
    EXPECT_FALSE(runLines.contains(w("download/dlTab/startupSoftVer")));

    putRow(0, dir.filePath("app.bin"), "0x30000");
    page->dlBaudBox->setCurrentText("921600");
    runAndWait(page->singleStartButton);
    EXPECT_EQ(runLines.last(), w("download/dlTab/download/success"))
        << runLines.join('\n').toStdString();
    EXPECT_EQ(runLines.first(), w("download/dlTab/startDownloadStub"));
    EXPECT_TRUE(runLines.contains(
        f("download/dlTab/startDownloadFileExFmt", qUtf8Printable(dir.filePath("app.bin")))));
    EXPECT_EQ(board.flash(0x30000, 9000), app);
    EXPECT_EQ(board.baud(), 921600u);
    EXPECT_EQ(board.startedAt(), 0x20000000u);
}

TEST_F(DownloadPage, EveryFailureGivesItsLineThenTheFailedLine) {
    const QString failed = w("download/dlTab/download/failed");
    makeImage(pattern(100, 1), pattern(3000, 2), pattern(10, 3));

    // No port chosen.
    page->portBox->setCurrentIndex(-1);
    runAndWait(page->aioStartButton);
    EXPECT_EQ(runLines, QStringList({w("download/dlTab/pleaseSelectPort"), failed}));
    EXPECT_EQ(levelOf(failed), "ERROR");

    // A port that cannot be opened.
    page->portBox->addItem("ttyBrambleGone");
    page->portBox->setCurrentText("ttyBrambleGone");
    runAndWait(page->aioStartButton);
    ASSERT_EQ(runLines.size(), 2);
    EXPECT_EQ(runLines[0], f("download/dlTab/canOpenPortFmt", page->portNumber(), 115200));

    // A board that never answers the sync word: a second of polling, no lines from it.
    BoardSim board(resetting());
    choose(board, "simF");
    for (int i = 0; i < 2000; ++i)
        board.inject(SimFault::drop(SimFault::syncWord()));
    runAndWait(page->aioStartButton);
    EXPECT_EQ(runLines.mid(runLines.size() - 2),
              QStringList({w("download/dlTab/syncFailed"), failed}));
    board.clearFaults();

    // An image that does not parse: nothing goes to the port.
    const QString image = page->aioSelect->pathEdit->text();
    page->aioSelect->pathEdit->setText(dir.filePath("missing.bin"));
    runAndWait(page->aioStartButton);
    EXPECT_EQ(runLines, QStringList({"PARSE_AIO: can not open all-in-one file!",
                                     f("download/dlTab/parseAllInOneFileFailedFmt",
                                       qUtf8Printable(dir.filePath("missing.bin"))),
                                     failed}));
    page->aioSelect->pathEdit->setText(image);

    // The baud switch goes unanswered. (A file the board refuses is the next test's.)
    board.inject(SimFault::drop(SimFault::frame(7)));
    runAndWait(page->aioStartButton);
    EXPECT_EQ(runLines.mid(runLines.size() - 2),
              QStringList({f("download/dlTab/switchBaudrateFailedFmt", 2000000), failed}));
}

TEST_F(DownloadPage, ARefusedBlockAndARefusedStub) {
    const QString failed = w("download/dlTab/download/failed");
    makeImage(pattern(100, 1), pattern(30000, 2), pattern(10, 3));
    BoardSim::Options o = resetting(51, true); // time enough to arm the fault once the header is in
    o.followMs = 3000;
    BoardSim board(o);
    choose(board, "simB");
    page->dlBaudBox->setCurrentText("115200");
    page->bigBlockCheck->setChecked(false);
    std::atomic<bool> armed{false};
    std::thread saboteur([&] {
        // The stub's header, its block, then the first file's header: refuse every try of the
        // file's first block.
        while (board.frames().size() < 4)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        for (int i = 0; i < 3; ++i)
            board.inject(SimFault::state(1, SimFault::frame(2)));
        armed = true;
    });
    runAndWait(page->aioStartButton, 30000);
    saboteur.join();
    ASSERT_TRUE(armed);
    EXPECT_TRUE(sawDisabled); // message 0 turned the controls off for the run
    EXPECT_EQ(runLines.mid(runLines.size() - 3),
              QStringList({"DL_TRUNK: data write failed, block: 0,  pos: (0x00, 0x400)",
                           w("download/dlTab/downloadFileFailed"), failed}))
        << runLines.join('\n').toStdString();

    // The stub refused by the board answering 51: the stub line names the file.
    board.inject(SimFault::state(1, SimFault::frame(1)));
    board.inject(SimFault::state(1, SimFault::frame(1)));
    board.inject(SimFault::state(1, SimFault::frame(1)));
    writeFile(dir.filePath("stub.bin"), pattern(100, 1));
    page->stubSelect->pathEdit->setText(dir.filePath("stub.bin"));
    runAndWait(page->singleStartButton, 30000);
    EXPECT_EQ(runLines.mid(runLines.size() - 2),
              QStringList({f("download/dlTab/downloadStubFileFailedFmt",
                             qUtf8Printable(dir.filePath("stub.bin"))),
                           failed}));
}

TEST_F(DownloadPage, ListChecks) {
    writeFile(dir.filePath("stub.bin"), "stub");
    writeFile(dir.filePath("a.bin"), "a");
    writeFile(dir.filePath("b.bin"), "b");
    EXPECT_EQ(during([&] {
                  page->startupAddrEdit->clear();
                  EXPECT_FALSE(page->validateList());
                  page->startupAddrEdit->setText("0x10000");
                  EXPECT_FALSE(page->validateList()); // no stub yet
                  page->stubSelect->pathEdit->setText(dir.filePath("stub.bin"));
                  EXPECT_TRUE(page->validateList()); // nothing selected passes
              }),
              QStringList({w("download/dlTab/singleFileDL/pleaseFillStartAddr"),
                           w("download/dlTab/singleFileDL/pleaseSelectStubFile")}));

    struct Case {
        std::function<void()> arrange;
        QString line;
    };
    const Case cases[] = {
        {[&] { putRow(2, "", "0x1"); }, f("download/dlTab/singleFileDL/linePathEmptyFmt", 3)},
        {[&] { putRow(2, dir.filePath("none.bin"), "0x1"); },
         f("download/dlTab/singleFileDL/linePathExistFmt", 3)},
        {[&] { putRow(2, dir.filePath("a.bin"), ""); },
         f("download/dlTab/singleFileDL/lineAddrInvalidFmt", 3)},
        {[&] {
             putRow(2, dir.filePath("a.bin"), "10000");
             putRow(5, dir.filePath("b.bin"), "0x10000"); // the same address, written otherwise
         },
         w("download/dlTab/singleFileDL/filePathOrStartAddrRepeat")},
        {[&] {
             putRow(2, dir.filePath("a.bin"), "0x1000");
             putRow(5, dir.filePath("a.bin"), "0x2000");
         },
         w("download/dlTab/singleFileDL/filePathOrStartAddrRepeat")},
    };
    for (const Case& c : cases) {
        page->clearList();
        c.arrange();
        EXPECT_EQ(during([&] { EXPECT_FALSE(page->validateList()); }), QStringList({c.line}));
    }
    page->clearList();
    putRow(2, dir.filePath("a.bin"), "0x1000");
    putRow(3, dir.filePath("b.bin"), "2000");
    QVector<AioEntry> entries;
    ASSERT_TRUE(page->collectEntries(entries));
    ASSERT_EQ(entries.size(), 2);
    EXPECT_EQ(entries[1].startAddr, 0x2000u);
    EXPECT_TRUE(page->validateList());
}

TEST_F(DownloadPage, SettingFilesRoundTripAndRefuseWhatTheyCannotRead) {
    page->stubSelect->pathEdit->setText("/stubs/stub 1.bin");
    page->startupAddrEdit->setText("10000");
    putRow(0, "/img/a.bin", "0x0a000", true);
    page->fileRows[2]->file->pathEdit->setText("/img/c.bin");
    page->fileRows[2]->addr->setText("not hex");

    const QString path = dir.filePath("sets/list.setting");
    QDir().mkpath(dir.filePath("sets"));
    QString askedDir;
    SysFileDialog::setAnswer(
        [&](SysFileDialog::Kind, const QString&, const QString& d, const QString& filter) {
            askedDir = d;
            EXPECT_EQ(filter, "*.setting");
            return path;
        });
    page->exportSetting();
    EXPECT_EQ(DownloadWindow::settingDir(), dir.filePath("sets"));
    const QString file = QString::fromLocal8Bit(readFile(path));
    EXPECT_TRUE(
        file.startsWith("<?xml version = \"1.0\" encoding = \"GBK\"?>\n<Root>\n <Stub "
                        "strFile=\"/stubs/stub 1.bin\" startupAddr=\"10000\"/>\n <FileList>\n"
                        "  <File isSelected=\"true\" isToRam=\"true\" strFile=\"/img/a.bin\" "
                        "startAddr=\"0x0a000\"/>\n"))
        << file.toStdString();
    EXPECT_EQ(file.count("<File "), 30);
    EXPECT_EQ(file.count("isSelected=\"false\""), 29);

    page->clearList();
    page->stubSelect->pathEdit->clear();
    EXPECT_EQ(during([&] { page->importSetting(); }),
              QStringList({f("download/dlTab/singleFileDL/importSettingSuccessFmt",
                             qUtf8Printable(path))}));
    EXPECT_EQ(askedDir, dir.filePath("sets"));
    EXPECT_EQ(page->stubSelect->pathEdit->text(), "/stubs/stub 1.bin");
    EXPECT_EQ(page->startupAddrEdit->text(), "10000");
    EXPECT_TRUE(page->fileRows[0]->toRam->isChecked());
    EXPECT_EQ(page->fileRows[0]->addr->text(), "0x0a000");
    EXPECT_EQ(page->fileRows[2]->addr->text(), "not hex");
    EXPECT_FALSE(page->fileRows[2]->select->isChecked());

    // Missing flags read as true; rows after the last File keep what they held.
    page->fileRows[3]->addr->setText("stays");
    writeFile(path, "<?xml version = \"1.0\" encoding = \"GBK\"?><Root><FileList>"
                    "<File strFile=\"  /x.bin  \"/></FileList></Root>");
    page->importSetting();
    EXPECT_TRUE(page->fileRows[0]->select->isChecked());
    EXPECT_TRUE(page->fileRows[0]->toRam->isChecked());
    EXPECT_EQ(page->fileRows[0]->file->pathEdit->text(), "/x.bin");
    EXPECT_EQ(page->fileRows[0]->addr->text(), "");
    EXPECT_EQ(page->fileRows[3]->addr->text(), "stays");

    struct Case {
        QByteArray content;
        QString line;
    };
    const Case cases[] = {
        {"not xml",
         f("download/dlTab/singleFileDL/openSettingFileFailedFmt", qUtf8Printable(path))},
        {"<Top/>", w("download/dlTab/singleFileDL/rootNodeInvalid")},
        {"<Root><Other/></Root>", f("download/dlTab/singleFileDL/fileNodeInvalidFmt", "Other")},
        {"<Root><FileList><Row/></FileList></Root>",
         f("download/dlTab/singleFileDL/fileNodeInvalidFmt", "Row")},
    };
    for (const Case& c : cases) {
        writeFile(path, c.content);
        EXPECT_EQ(during([&] { page->importSetting(); }), QStringList({c.line}));
    }
    // A cancelled dialog does nothing at all.
    SysFileDialog::setAnswer([](SysFileDialog::Kind, const QString&, const QString&,
                                const QString&) { return QString(); });
    EXPECT_TRUE(during([&] {
                    page->exportSetting();
                    page->importSetting();
                }).isEmpty());
}

// The action box makes an image of the list, which a board then takes. Its plain words are
// logged through the formatter like formats: a word's "%%" shows as "%".
TEST_F(DownloadPage, AllInOneMadeFromTheListIsTakenByTheBoard) {
    struct PercentWords : HostWords {
        QString text(QString key) override {
            if (key == "download/dlTab/singleFileDL/otherFunc/createAllInOneFileSuccess")
                return "100%% made";
            if (key == "download/dlTab/singleFileDL/otherFunc/createAllInOneFileFailed")
                return "0%% made";
            return HostWords::text(key);
        }
    } percent;
    window->setTextService(&percent);
    const QByteArray stub = pattern(1500, 11), a = pattern(6000, 12), b = pattern(100, 13);
    writeFile(dir.filePath("stub.bin"), stub);
    writeFile(dir.filePath("a.bin"), a);
    writeFile(dir.filePath("b.bin"), b);
    page->stubSelect->pathEdit->setText(dir.filePath("stub.bin"));
    page->startupAddrEdit->setText("0x20000000");
    putRow(1, dir.filePath("a.bin"), "0x8000");
    putRow(7, dir.filePath("b.bin"), "0x20100000", true);
    QString out = dir.path(); // a folder cannot be written as a file
    SysFileDialog::setAnswer(
        [&](SysFileDialog::Kind kind, const QString&, const QString&, const QString& filter) {
            EXPECT_EQ(kind, SysFileDialog::SaveFile);
            EXPECT_EQ(filter, "*.bin");
            return out;
        });
    // The action box runs index 3 and keeps its caption.
    const QString caption = page->actionBox->currentText();
    QStringList levels;
    EXPECT_EQ(during([&] { emit page->actionBox->activated(3); }, &levels),
              QStringList({"CREATE_AIO: can not create all-in-one file!", "0% made"}));
    EXPECT_EQ(page->actionBox->currentText(), caption);
    out = dir.filePath("made.bin");
    EXPECT_EQ(during([&] { emit page->actionBox->activated(3); }, &levels),
              QStringList({"100% made"}));
    EXPECT_EQ(levels, QStringList({"ERROR", "ERROR", "INFO"}));
    ASSERT_EQ(readFile(out).size(), 5 + 9 + 1500 + 9 + 6000 + 9 + 100);

    BoardSim board(resetting());
    choose(board, "simM");
    page->aioSelect->pathEdit->setText(out);
    runAndWait(page->aioStartButton);
    EXPECT_EQ(runLines.last(), w("download/dlTab/download/success"));
    EXPECT_EQ(board.flash(0x8000, 6000), a);
    EXPECT_EQ(board.ram(0x20100000, 100), b);
    EXPECT_EQ(board.startedAt(), 0x20000000u);
    window->setTextService(&words);
}

TEST_F(DownloadPage, ClosingTheWindowDuringARunLeavesTheRunToFinishAlone) {
    const QByteArray app = pattern(24000, 21);
    makeImage(pattern(500, 20), app, pattern(10, 22));
    BoardSim board(resetting(51, true)); // about two seconds on the line at 115200
    choose(board, "simC");
    page->dlBaudBox->setCurrentText("115200");
    QTest::mouseClick(page->aioStartButton, Qt::LeftButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return board.frames().size() >= 2; }, 5000));
    Release(); // the window and its pages go while the run is on the line
    page = nullptr;
    // The run goes on with its own port and engine and only stops talking to the page.
    ASSERT_TRUE(QTest::qWaitFor([&] { return board.stage() == BoardSim::Stage::Firmware; }, 20000));
    EXPECT_EQ(board.flash(0x10000, uint32_t(app.size())), app);
    QTest::qWait(50);
}

// A second click that comes before message 0 has turned the controls off finds the port
// taken: it starts nothing, and the one run finishes on a port that nobody reopened.
TEST_F(DownloadPage, AStartBeforeTheControlsGoOffIsRefused) {
    const QByteArray stub = pattern(800, 30), app = pattern(6000, 31), data = pattern(40, 32);
    makeImage(stub, app, data);
    BoardSim board(resetting());
    choose(board, "simD");
    const QString success = w("download/dlTab/download/success");
    const QString failed = w("download/dlTab/download/failed");
    auto endings = [&](int from) {
        int n = 0;
        for (const QString& l : linesFrom(from))
            n += (l == success || l == failed) ? 1 : 0;
        return n;
    };
    const int before = log->nextRow;
    // Clicks are delivered at once; the queued message 0 has not run between them.
    QTest::mouseClick(page->aioStartButton, Qt::LeftButton);
    QTest::mouseClick(page->aioStartButton, Qt::LeftButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return endings(before) >= 1; }, 20000));
    // A second run would sync for up to a second and then end with its own line.
    EXPECT_FALSE(QTest::qWaitFor([&] { return endings(before) >= 2; }, 1500))
        << linesFrom(before).join('\n').toStdString();
    const QStringList lines = linesFrom(before);
    EXPECT_EQ(lines.last(), success) << lines.join('\n').toStdString();
    EXPECT_EQ(lines.count(w("download/dlTab/softverStartSuccess")), 1);
    EXPECT_EQ(board.flash(0x10000, 6000), app);
    EXPECT_TRUE(page->settingsBox->isEnabled());

    // Once the controls are back, the next click is a run of its own.
    runAndWait(page->aioStartButton);
    EXPECT_EQ(runLines.last(), success) << runLines.join('\n').toStdString();
    EXPECT_EQ(runLines.count(success), 1);
}
