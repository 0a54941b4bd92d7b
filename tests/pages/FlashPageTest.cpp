#include "kit/SysButton.h"
#include "kit/SysComboBox.h"
#include "kit/SysFileSelect.h"
#include "kit/SysGroupBox.h"
#include "kit/SysLineEdit.h"
#include "kit/SysSerialComboBox.h"
#include "kit/SysTable.h"
#include "pages/CRUDWindow.h"
#include "sim/BoardSim.h"
#include "sim/SimFault.h"
#include "sim/SimNvSector.h"
#include "support/MainWindowTest.h"
#include "support/QtPrinters.h"
#include "support/TestFiles.h"

#include <gtest/gtest.h>

#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

namespace {

// Frame type of a flash read: the only frames an OTA flow sends before its erase.
constexpr uint8_t kReadFrame = 3;

// The real main window; tests drive its flash page against a board whose software speaks
// frames.
class FlashPage : public PageTest<CRUDWindow> {
protected:
    static BoardSim::Options frames(uint32_t baud = 115200) {
        BoardSim::Options o;
        o.framesFromStart = true;
        o.initialBaud = baud;
        o.flashSize = 1024 * 1024;
        return o;
    }
    void choose(BoardSim& board, const QString& name) {
        ASSERT_TRUE(board.publish(name));
        QMetaObject::invokeMethod(page->portBox, "onTimerTimeout");
        page->portBox->setCurrentText(name);
        ASSERT_EQ(page->portBox->currentText(), name);
    }

    // Clicks and waits for the action's end line and the page back on; gives the action's
    // lines. The page was turned off and on again by the action's message: 0 for the upload,
    // 1 for the erases.
    QStringList click(SysButton* button, const char* successKey, const char* failedKey) {
        const int before = log->nextRow;
        QList<QPair<int, bool>> messages;
        const auto seen =
            QObject::connect(page, &TabWinBase::msgSig, page, [&](int id, QVariant on) {
                messages.append({id, on.toBool()});
            });
        QTest::mouseClick(button, Qt::LeftButton);
        const bool ended = QTest::qWaitFor(
            [&] {
                const QStringList l = linesFrom(before);
                return messages.size() == 2 && !l.isEmpty() &&
                       (l.last() == w(successKey) || l.last() == w(failedKey));
            },
            15000);
        QObject::disconnect(seen);
        const QStringList lines = linesFrom(before);
        EXPECT_TRUE(ended) << lines.join('\n').toStdString();
        const int id = button == page->uploadButton ? 0 : 1;
        EXPECT_EQ(messages, (QList<QPair<int, bool>>{{id, true}, {id, false}}));
        EXPECT_TRUE(page->isEnabled());
        return lines;
    }
    QStringList upload() {
        return click(page->uploadButton, "crud/flashOper/uploadFlash/readFlashSuccess",
                     "crud/flashOper/uploadFlash/readFlashFailed");
    }
    QStringList eraseOta() {
        return click(page->eraseOtaButton, "crud/flashOper/eraseFlash/eraseOtaStatusSuccess",
                     "crud/flashOper/eraseFlash/eraseOtaStatusFailed");
    }

    QTemporaryDir dir;
};

} // namespace

TEST_F(FlashPage, UploadReadsTheRangeAtTheUploadRateAndLeavesTheBoardAt115200) {
    EXPECT_EQ(page->uploadBaudBox->currentText(), "2000000");

    BoardSim board(frames(230400));
    const QByteArray flash = pattern(1024 * 1024, 7);
    board.setFlash(0, flash);
    choose(board, "simFlashA");
    page->workBaudBox->setCurrentText("230400");
    // Not a whole number of trunks, into a folder that is not there yet.
    page->uploadAddrEdit->setText("0x10000");
    page->uploadLenEdit->setText("1801");
    const QString path = dir.filePath("new/dumps/a.bin");
    page->savePathSelect->pathEdit->setText("  " + path + " ");
    QStringList lines = upload();
    EXPECT_EQ(lines.last(), w("crud/flashOper/uploadFlash/readFlashSuccess"));
    EXPECT_EQ(readFile(path), flash.mid(0x10000, 0x1801));
    EXPECT_TRUE(lines.contains("UP_FLASH: data uploaded 100.00%"))
        << lines.join('\n').toStdString();
    // Back at 115200, not at the work rate the port was opened with.
    EXPECT_EQ(board.baud(), 115200u);

    // An address beyond 0x7FFFFFFF reads as 0.
    page->workBaudBox->setCurrentText("115200");
    page->uploadAddrEdit->setText("80000000");
    page->uploadLenEdit->setText("400");
    upload();
    EXPECT_EQ(readFile(path), flash.left(0x400));

    // A length that is no number is 0: nothing to read, and the board still comes back.
    page->uploadLenEdit->setText("zz");
    lines = upload();
    EXPECT_TRUE(lines.contains("UP_FLASH: no trunk can be upload!"));
    EXPECT_EQ(lines.last(), w("crud/flashOper/uploadFlash/readFlashFailed"));
    EXPECT_EQ(board.baud(), 115200u);
}

TEST_F(FlashPage, EraseRangeAndEraseAll) {
    BoardSim board(frames());
    const QByteArray flash = pattern(1024 * 1024, 8);
    board.setFlash(0, flash);
    choose(board, "simFlashB");
    page->eraseAddrEdit->setText("1000");
    page->eraseLenEdit->setText("0x2000");
    QStringList lines = click(page->eraseButton, "crud/flashOper/eraseFlash/eraseFlashSuccess",
                              "crud/flashOper/eraseFlash/eraseFlashFailed");
    EXPECT_EQ(lines.last(), w("crud/flashOper/eraseFlash/eraseFlashSuccess"));
    EXPECT_EQ(board.flash(0x1000, 0x2000), QByteArray(0x2000, char(0xFF)));
    EXPECT_EQ(board.flash(0, 0x1000), flash.left(0x1000));
    EXPECT_EQ(board.flash(0x3000, 0x1000), flash.mid(0x3000, 0x1000));

    // A refused erase-all is told twice: by the operation and at the worker's end.
    board.inject(SimFault::state(1));
    lines = click(page->eraseAllButton, "crud/flashOper/eraseFlash/eraseAllSuccess",
                  "crud/flashOper/eraseFlash/eraseAllFailed");
    EXPECT_EQ(lines.mid(lines.size() - 2),
              QStringList({w("crud/flashOper/eraseFlash/eraseAllFailed"),
                           w("crud/flashOper/eraseFlash/eraseAllFailed")}));
    lines = click(page->eraseAllButton, "crud/flashOper/eraseFlash/eraseAllSuccess",
                  "crud/flashOper/eraseFlash/eraseAllFailed");
    EXPECT_EQ(lines.last(), w("crud/flashOper/eraseFlash/eraseAllSuccess"));
    EXPECT_EQ(board.flash(0, 1024 * 1024), QByteArray(1024 * 1024, char(0xFF)));
}

TEST_F(FlashPage, OtaStatusIsLookedUpInTheNvSectorAndErased) {
    struct Case {
        QByteArray sector;
        const char* reason; // nullptr: the erase goes through
    };
    const Case cases[] = {
        {SimNvSector::make({{"wifi_ssid", "bench"}, {"ota_status", "1000,2000"}}), nullptr},
        {SimNvSector::make({{"ota_status", "0x1000,0x2000"}}, "EF40"), nullptr},
        {SimNvSector::make({{"OTA_STATUS", "1000,2000"}}),
         "crud/flashOper/eraseFlash/canNotFindOtaStatus"},
        {pattern(4096, 9), "crud/flashOper/eraseFlash/parseNvDataFailed"},
        {SimNvSector::make({{"ota_status", "1000"}}), "crud/flashOper/eraseFlash/eraseFlashFailed"},
    };
    BoardSim board(frames());
    choose(board, "simFlashC");
    for (const Case& c : cases) {
        const QByteArray flash = c.sector + pattern(0x4000, 10);
        board.setFlash(0, flash);
        board.clearRecord();
        const QStringList lines = eraseOta();
        if (!c.reason) {
            EXPECT_EQ(lines.last(), w("crud/flashOper/eraseFlash/eraseOtaStatusSuccess"));
            EXPECT_EQ(board.flash(0, 0x1000), c.sector);
            EXPECT_EQ(board.flash(0x1000, 0x2000), QByteArray(0x2000, char(0xFF)));
            EXPECT_EQ(board.flash(0x3000, 0x2000), flash.mid(0x3000, 0x2000));
            continue;
        }
        // The reason, then the end line; the flash as it was, and nothing but reads sent.
        EXPECT_EQ(lines.mid(lines.size() - 2),
                  QStringList({w(c.reason), w("crud/flashOper/eraseFlash/eraseOtaStatusFailed")}))
            << c.reason;
        EXPECT_EQ(board.flash(0, flash.size()), flash) << c.reason;
        for (const SimFrame& f : board.frames())
            EXPECT_EQ(f.type, kReadFrame) << c.reason;
    }
}

TEST_F(FlashPage, MissingFieldsNoPortAndAPortThatWillNotOpen) {
    // Empty fields stop at the click, naming the group.
    const int before = log->nextRow;
    page->uploadAddrEdit->setText("0");
    page->uploadLenEdit->setText("400");
    QTest::mouseClick(page->uploadButton, Qt::LeftButton);
    page->eraseLenEdit->setText("400");
    QTest::mouseClick(page->eraseButton, Qt::LeftButton);
    EXPECT_EQ(linesFrom(before),
              QStringList({f("crud/flashOper/uploadFlash/anyItemCanNotBeEmptyFmt",
                             qUtf8Printable(page->uploadGroup->title())),
                           f("crud/flashOper/eraseFlash/anyItemCanNotBeEmptyFmt",
                             qUtf8Printable(page->eraseGroup->title()))}));

    page->savePathSelect->pathEdit->setText(dir.filePath("x.bin"));
    page->eraseAddrEdit->setText("0");
    struct Action {
        SysButton* button;
        const char* success;
        const char* failed;
    };
    const Action actions[] = {
        {page->uploadButton, "crud/flashOper/uploadFlash/readFlashSuccess",
         "crud/flashOper/uploadFlash/readFlashFailed"},
        {page->eraseButton, "crud/flashOper/eraseFlash/eraseFlashSuccess",
         "crud/flashOper/eraseFlash/eraseFlashFailed"},
        {page->eraseAllButton, "crud/flashOper/eraseFlash/eraseAllSuccess",
         "crud/flashOper/eraseFlash/eraseAllFailed"},
        {page->eraseOtaButton, "crud/flashOper/eraseFlash/eraseOtaStatusSuccess",
         "crud/flashOper/eraseFlash/eraseOtaStatusFailed"},
    };
    for (const Action& a : actions) {
        page->portBox->setCurrentIndex(-1);
        EXPECT_EQ(click(a.button, a.success, a.failed),
                  QStringList({w("crud/pleaseSelectPort"), w(a.failed)}));
        page->portBox->addItem("ttyBRAMBLE9");
        page->portBox->setCurrentText("ttyBRAMBLE9");
        EXPECT_EQ(click(a.button, a.success, a.failed),
                  QStringList({f("crud/openPortFailedFmt", "ttyBRAMBLE9"), w(a.failed)}));
    }
    EXPECT_FALSE(QFileInfo::exists(dir.filePath("x.bin")));
}

TEST_F(FlashPage, ClosingTheWindowWhileAWorkerRunsLeavesTheWorkerNothingToTouch) {
    BoardSim board(frames());
    choose(board, "simFlashD");
    board.inject(SimFault::delay(300));
    QTest::mouseClick(page->eraseAllButton, Qt::LeftButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !board.frames().empty(); }, 5000));
    Release(); // the page goes while the reply is held back
    // The worker gets its reply, logs and sends its message into the void, and ends; the
    // sanitizer build catches any touch of the dead page.
    QTest::qWait(600);
}
