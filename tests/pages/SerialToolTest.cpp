#include "pages/SerialTool.h"
#include "kit/SysButton.h"
#include "kit/SysCheckBox.h"
#include "kit/SysNumberEdit.h"
#include "kit/SysStateButton.h"
#include "kit/SysTab.h"
#include "kit/SysTextEdit.h"
#include "pages/CmdPageFixture.h"
#include "support/QtPrinters.h"
#include "support/TestFiles.h"

#include <QFile>
#include <QTextBlock>

namespace {

// The terminal of the real command page, on a board whose firmware only listens.
class Terminal : public CmdPage {
protected:
    void SetUp() override {
        QFile::remove(words.configDir() + "/serial.config"); // each test starts from defaults
        CmdPage::SetUp();
        tool = page->serialTool;
    }
    // Shows the terminal's tab and opens a published board on the page's port.
    void openBoard(const QString& name) {
        page->tabs->setCurrentIndex(4);
        board.startFirmware();
        ASSERT_TRUE(board.publish(name));
        choose(name);
        ASSERT_EQ(click(page->portButton), QStringList{w("cmd/openPortSuccess")});
        board.clearRecord();
    }
    // What the board got once `count` bytes came, or all it got after two seconds.
    QByteArray boardGot(int count) {
        (void)QTest::qWaitFor([&] { return board.firmwareInput().size() >= count; }, 2000);
        const QByteArray got = board.firmwareInput();
        board.clearRecord();
        return got;
    }
    QString shown() { return tool->outputEdit->toPlainText(); }
    // Rebuilds the window, which reads serial.config afresh.
    void reopenWindow() {
        TearDown();
        CmdPage::SetUp();
        tool = page->serialTool;
    }

    BoardSim board;
    SerialTool* tool = nullptr;
};

} // namespace

TEST_F(Terminal, SendsWhatWasTypedWithTheChosenLineEnds) {
    tool->inputEdit->setPlainText("AT");
    EXPECT_EQ(click(tool->sendButton), QStringList{w("cmd/pleaseOpenPort")});
    openBoard("simTermA");

    tool->hexSendBox->setChecked(true);
    tool->inputEdit->setPlainText(" 41 42 ");
    EXPECT_EQ(click(tool->sendButton),
              QStringList{f("cmd/oper/serial/cmdSend/successFmt", " 41 42 ")});
    EXPECT_EQ(boardGot(4), QByteArray("\x41\x42\r\n"));
    tool->inputEdit->setPlainText("41  zz");
    click(tool->sendButton);
    EXPECT_EQ(boardGot(5), QByteArray("\x41\x00\x00\r\n", 5));

    tool->hexSendBox->setChecked(false);
    tool->backspaceBox->setChecked(false);
    tool->returnBox->setChecked(false);
    tool->inputEdit->setPlainText("  reboot now \n");
    click(tool->sendButton);
    EXPECT_EQ(boardGot(10), QByteArray("reboot now"));
    tool->inputEdit->clear();
    EXPECT_EQ(click(tool->sendButton), QStringList{w("cmd/oper/serial/cmdCanNotEmpty")});

    // A saved command goes out by its row's button, as text or as hex by its box.
    tool->returnBox->setChecked(true);
    tool->cmdTable->setCellText(7, 0, "0d 0a");
    tool->rowHexBox(7)->setChecked(true);
    click(tool->rowSendButton(7));
    EXPECT_EQ(boardGot(3), QByteArray("\r\n\n"));
    EXPECT_TRUE(tool->rowSendButton(7)->isEnabled());
    EXPECT_EQ(tool->config.cmdList[7].cmd, "0d 0a");
    EXPECT_TRUE(tool->config.cmdList[7].isHex);
}

TEST_F(Terminal, ShowsSentAndReceivedTextUnderStampedHeads) {
    openBoard("simTermB");
    tool->hexRecvBox->setChecked(true);
    tool->inputEdit->setPlainText("hi there");
    click(tool->sendButton);
    board.send("AB");
    ASSERT_TRUE(QTest::qWaitFor([&] { return shown().contains("4142"); }, 2000));
    const QTextDocument* doc = tool->outputEdit->document();
    ASSERT_EQ(doc->blockCount(), 2);
    const QTextBlock sent = doc->firstBlock();
    EXPECT_TRUE(
        QRegularExpression(QString::fromUtf8("^\\[\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\]:"
                                             "\u2028hi there$"))
            .match(sent.text())
            .hasMatch())
        << sent.text().toStdString();
    EXPECT_EQ(sent.begin().fragment().charFormat().foreground().color(), QColor("green"));
    EXPECT_EQ(sent.next().begin().fragment().charFormat().foreground().color(), QColor("red"));

    // Line ends become line breaks, blanks stay, a break that ends a piece makes no line, and
    // what follows a zero byte in one read is not shown.
    tool->hexRecvBox->setChecked(false);
    board.send(QByteArray("a  b\r\nc\rd\n\0hidden", 17));
    ASSERT_TRUE(QTest::qWaitFor([&] { return doc->blockCount() == 3; }, 2000));
    QTest::qWait(80);
    EXPECT_TRUE(doc->lastBlock().text().endsWith(QString::fromUtf8("]:\u2028a  b\u2028c\u2028d")))
        << shown().toStdString();
    EXPECT_FALSE(shown().contains("hidden"));
}

TEST_F(Terminal, CycleSendStopsWithThePortAndTheTab) {
    EXPECT_EQ(click(tool->cycleButton), QStringList{w("cmd/pleaseOpenPort")});
    openBoard("simTermC");
    EXPECT_EQ(click(tool->cycleButton), QStringList{w("cmd/oper/serial/cmdCanNotEmpty")});
    EXPECT_TRUE(tool->cycleButton->isState("ON"));

    tool->cycleEdit->setValue(20);
    tool->inputEdit->setPlainText("ping");
    click(tool->cycleButton);
    EXPECT_TRUE(tool->cycleButton->isState("OFF"));
    EXPECT_FALSE(tool->cycleEdit->isEnabled());
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return board.firmwareInput().count("ping\r\n") >= 3; }, 2000));
    click(page->portButton);
    EXPECT_TRUE(tool->cycleButton->isState("ON"));
    EXPECT_FALSE(tool->cycleTimer.isActive());
    EXPECT_TRUE(tool->cycleEdit->isEnabled());

    click(page->portButton);
    click(tool->cycleButton);
    ASSERT_TRUE(tool->cycleTimer.isActive());
    page->tabs->setCurrentIndex(0);
    EXPECT_FALSE(tool->cycleTimer.isActive());
    page->tabs->setCurrentIndex(4);
    EXPECT_FALSE(tool->cycleTimer.isActive());
    EXPECT_TRUE(tool->cycleButton->isState("ON"));
}

TEST_F(Terminal, SerialConfigKeepsEveryChangeAndReadsWhatItCan) {
    // Every change is in the file at once; the line boxes only with the port open.
    tool->cycleEdit->setValue(250);
    tool->hexRecvBox->setChecked(true);
    tool->cmdTable->setCellText(0, 0, QString::fromUtf8("版本"));
    tool->rowHexBox(99)->setChecked(true);
    EXPECT_EQ(during([&] { tool->rtsBox->setChecked(true); }),
              QStringList{w("cmd/pleaseOpenPort")});
    EXPECT_FALSE(tool->rtsBox->isChecked());
    const QByteArray saved = readFile(SerialTool::configPath());
    EXPECT_TRUE(
        saved.startsWith("<?xml version = \"1.0\" encoding = \"GBK\"?>\n<Root>\n <setting "
                         "cycleValue=\"250\" isHexSend=\"0\" isHexRecv=\"1\" "
                         "isBackspace=\"1\" isReturn=\"1\" isDTR=\"0\" isRTS=\"0\" "
                         "isTimestamp=\"1\"/>\n <cmdList>\n  <item cmd=\"\xb0\xe6\xb1\xbe\" "
                         "isHex=\"0\"/>\n"))
        << saved.left(300).toStdString();
    EXPECT_TRUE(saved.endsWith("  <item cmd=\"\" isHex=\"1\"/>\n </cmdList>\n</Root>\n"));

    // Read back and written again, the file stays byte for byte.
    reopenWindow();
    EXPECT_EQ(tool->config.cycleValue, 250);
    EXPECT_EQ(tool->cmdTable->item(0, 0)->text(), QString::fromUtf8("版本"));
    EXPECT_TRUE(tool->rowHexBox(99)->isChecked());
    tool->saveConfig();
    EXPECT_EQ(readFile(SerialTool::configPath()), saved);

    // Without its last setting the settings are read but not the table; without its first,
    // nothing; a table longer than the page's fills its rows.
    QByteArray noStamp = saved;
    noStamp.replace(" isTimestamp=\"1\"", "");
    writeFile(SerialTool::configPath(), noStamp);
    reopenWindow();
    EXPECT_EQ(tool->config.cycleValue, 250);
    EXPECT_TRUE(tool->hexRecvBox->isChecked());
    EXPECT_EQ(tool->config.cmdList[0].cmd, "");
    QByteArray noCycle = saved;
    noCycle.replace("cycleValue=\"250\" ", "");
    writeFile(SerialTool::configPath(), noCycle);
    reopenWindow();
    EXPECT_EQ(tool->config.cycleValue, 1000);
    EXPECT_FALSE(tool->hexRecvBox->isChecked());
    QByteArray longList = "<?xml version = \"1.0\" encoding = \"GBK\"?>\n<Root><cmdList>";
    for (int i = 0; i < 150; ++i)
        longList += QString("<item cmd=\"c%1\" isHex=\"0\"/>").arg(i).toLatin1();
    writeFile(SerialTool::configPath(), longList + "</cmdList></Root>\n");
    reopenWindow();
    EXPECT_EQ(tool->config.cmdList.size(), 100);
    EXPECT_EQ(tool->config.cmdList[99].cmd, "c99");
}
