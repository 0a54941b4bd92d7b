#include "kit/SysButton.h"
#include "kit/SysComboBox.h"
#include "kit/SysLineEdit.h"
#include "kit/SysSerialComboBox.h"
#include "kit/SysStateButton.h"
#include "kit/SysTab.h"
#include "kit/SysTable.h"
#include "pages/BasicPanel.h"
#include "pages/CmdWindow.h"
#include "shell/MainWindow.h"
#include "shell/PluginEntry.h"
#include "sim/BoardSim.h"
#include "sim/SimFirmware.h"
#include "support/HostWords.h"
#include "support/QtPrinters.h"

#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QTest>

namespace {

// The real main window; tests drive its command page.
class CmdPage : public ::testing::Test {
protected:
    void SetUp() override {
        window = static_cast<MainWindow*>(Create());
        window->setTextService(&words);
        window->init();
        page = window->findChild<CmdWindow*>();
        ASSERT_NE(page, nullptr);
        panel = page->basicPanel;
        log = window->logTable();
    }
    void TearDown() override { Release(); }

    void choose(const QString& name) {
        QMetaObject::invokeMethod(page->portCombo, "onTimerTimeout");
        page->portCombo->setCurrentText(name);
        ASSERT_EQ(page->portCombo->currentText(), name);
    }
    // Clicks and gives the lines the click wrote (every handler runs on this thread).
    QStringList click(QPushButton* button) {
        const int before = log->nextRow;
        QTest::mouseClick(button, Qt::LeftButton);
        QCoreApplication::processEvents(); // rows are written through the event loop
        QStringList out;
        for (int r = before; r < log->nextRow; ++r)
            out << log->item(r, 2)->text();
        return out;
    }
    QString w(const char* key) { return words.text(key); }
    template <typename... Args> QString f(const char* key, Args... args) {
        return QString::asprintf(w(key).toStdString().c_str(), args...);
    }

    HostWords words;
    MainWindow* window = nullptr;
    CmdWindow* page = nullptr;
    BasicPanel* panel = nullptr;
    SysTable* log = nullptr;
};

} // namespace

TEST_F(CmdPage, OpensAndClosesThePortAndTellsThePanels) {
    EXPECT_EQ(cmdWindowInstance, page);
    EXPECT_EQ(page->tabs->count(), 5);
    EXPECT_EQ(page->baudCombo->currentText(), "115200");
    EXPECT_TRUE(page->portButton->isState("OFF"));
    QSignalSpy states(page->portButton, &SysStateButton::stateChanged);
    QSignalSpy opened(page, &CmdWindow::portOpenedSig);

    // No port, then a port that does not open: a line each, the button stays.
    page->portCombo->setCurrentIndex(-1);
    EXPECT_EQ(click(page->portButton), QStringList{w("cmd/pleaseOpenPort")});
    page->portCombo->addItem("ttyBRAMBLE7");
    page->portCombo->setCurrentText("ttyBRAMBLE7");
    EXPECT_EQ(click(page->portButton).last(), w("cmd/canNotOpenPort"));
    EXPECT_TRUE(page->portButton->isState("OFF"));
    EXPECT_EQ(states.count(), 0);

    // A board that says nothing (a ROM waiting for its sync word) still counts as open. A
    // rate chosen while closed is the one the port opens at.
    BoardSim board;
    ASSERT_TRUE(board.publish("simCmdA"));
    choose("simCmdA");
    page->baudCombo->setCurrentText("230400");
    EXPECT_EQ(board.hostBaud(), 115200u);
    EXPECT_EQ(click(page->portButton), QStringList{w("cmd/openPortSuccess")});
    EXPECT_TRUE(page->comPort.isOpen());
    EXPECT_EQ(page->comPort.baudrate(), 230400);
    EXPECT_TRUE(page->portButton->isState("ON"));
    EXPECT_EQ(states.count(), 1);
    EXPECT_EQ(opened.count(), 1);
    EXPECT_TRUE(opened.last().at(0).toBool());

    // A rate chosen while open applies at once.
    page->baudCombo->setCurrentText("921600");
    EXPECT_EQ(page->comPort.baudrate(), 921600);
    EXPECT_TRUE(QTest::qWaitFor([&] { return board.hostBaud() == 921600u; }, 2000));

    EXPECT_EQ(click(page->portButton), QStringList{w("cmd/closePortSuccess")});
    EXPECT_FALSE(page->comPort.isOpen());
    EXPECT_TRUE(page->portButton->isState("OFF"));
    EXPECT_EQ(opened.count(), 2);
    EXPECT_FALSE(opened.last().at(0).toBool());
}

TEST_F(CmdPage, EveryBasicButtonWithTheRegisterButtonsFailingOnTheirOwn) {
    // The NV store decides whether write and remove are offered.
    EXPECT_EQ(panel->nvTypeBox->currentText(), "AMT");
    EXPECT_FALSE(panel->nvWriteButton->isEnabled());
    EXPECT_FALSE(panel->nvRemoveButton->isEnabled());
    panel->nvTypeBox->setCurrentText("CUSTOMER");
    EXPECT_TRUE(panel->nvWriteButton->isEnabled());
    EXPECT_TRUE(panel->nvRemoveButton->isEnabled());
    panel->nvTypeBox->setCurrentText("DEVELOP");
    EXPECT_FALSE(panel->nvWriteButton->isEnabled());
    EXPECT_TRUE(panel->nvReadButton->isEnabled());
    EXPECT_TRUE(panel->nvReadAllButton->isEnabled());
    panel->nvTypeBox->setCurrentText("CUSTOMER");

    panel->nvNameEdit->setText("ssid");
    panel->nvValueEdit->setText("bench");
    const QList<SysButton*> guarded = {
        panel->versionButton,     panel->echoButton,        panel->hardRestartButton,
        panel->softRestartButton, panel->macWriteButton,    panel->macReadButton,
        panel->nvWriteButton,     panel->nvReadButton,      panel->nvRemoveButton,
        panel->nvReadAllButton,   panel->versionStateButton};
    for (SysButton* b : guarded)
        EXPECT_EQ(click(b), QStringList{w("cmd/pleaseOpenPort")}) << b->text().toStdString();

    // Text that is no number reads as 0.
    panel->regAddrEdit->setText("0x1F0");
    panel->regValueEdit->setText("zz");
    EXPECT_EQ(click(panel->regReadButton),
              QStringList{f("cmd/oper/basic/editRegister/action/read/failedFmt", 0x1f0u)});
    EXPECT_EQ(click(panel->regWriteButton),
              QStringList{f("cmd/oper/basic/editRegister/action/write/failedFmt", 0x1f0u, 0u)});
}

TEST_F(CmdPage, BasicOperationsAgainstTheFirmware) {
    BoardSim board;
    SimFirmware firmware(board);
    board.startFirmware(); // echo on, as a fresh firmware has it
    ASSERT_TRUE(board.publish("simCmdB"));
    choose("simCmdB");
    ASSERT_EQ(click(page->portButton), QStringList{w("cmd/openPortSuccess")});
    EXPECT_FALSE(firmware.state().echo);

    panel->versionBox->setCurrentIndex(1);
    EXPECT_EQ(click(panel->versionButton), QStringList{w("cmd/oper/basic/switchVersion/success")});
    EXPECT_EQ(firmware.state().versionState, 1);
    EXPECT_FALSE(firmware.state().echo);
    EXPECT_EQ(click(panel->versionStateButton),
              QStringList{f("cmd/oper/basic/getState/curVersionFmt",
                            panel->versionBox->itemText(1).toStdString().c_str())});

    for (int item : {0, 1}) {
        panel->echoBox->setCurrentIndex(item);
        const std::string text = panel->echoBox->currentText().toStdString();
        EXPECT_EQ(click(panel->echoButton),
                  QStringList{f("cmd/oper/basic/switchEcho/execSuccessFmt", text.c_str())});
        EXPECT_EQ(firmware.state().echo, item == 0);
    }

    // A short MAC still goes out (and this firmware refuses it); a MAC is read into the line
    // only.
    panel->macLocationBox->setCurrentIndex(1);
    const std::string location = panel->macLocationBox->currentText().toStdString();
    panel->macEdit->setText(" 02:11:22:33:44 ");
    firmware.clearLines();
    EXPECT_EQ(click(panel->macWriteButton), QStringList{f("cmd/oper/basic/editMac/write/failedFmt",
                                                          location.c_str(), "02:11:22:33:44")});
    EXPECT_EQ(firmware.lines(), QStringList{"amt_set_mac 1 02:11:22:33:44"});
    panel->macEdit->setText("02:11:22:33:44:55");
    EXPECT_EQ(click(panel->macWriteButton), QStringList{f("cmd/oper/basic/editMac/write/successFmt",
                                                          location.c_str(), "02:11:22:33:44:55")});
    EXPECT_EQ(firmware.state().macs.at(1), "02:11:22:33:44:55");
    firmware.change([](SimFirmware::State& s) { s.macs = {{0, "02:aa:bb:cc:dd:ee"}}; });
    panel->macEdit->setText("kept");
    EXPECT_EQ(click(panel->macReadButton),
              QStringList{f("cmd/oper/basic/editMac/read/successFmt", "02:aa:bb:cc:dd:ee")});
    EXPECT_EQ(panel->macEdit->text(), "kept");

    // NV in the customer store: write, read, read all, remove, and read all of an empty store.
    panel->nvTypeBox->setCurrentText("CUSTOMER");
    panel->nvNameEdit->setText("ssid");
    panel->nvValueEdit->setText("  ");
    firmware.clearLines();
    EXPECT_EQ(click(panel->nvWriteButton),
              QStringList{w("cmd/oper/basic/editNV/nameAndValueCanNotBeEmpty")});
    EXPECT_TRUE(firmware.lines().isEmpty());
    panel->nvValueEdit->setText("bench");
    EXPECT_EQ(click(panel->nvWriteButton),
              QStringList{
                  f("cmd/oper/basic/editNV/action/write/successFmt", "CUSTOMER", "ssid", "bench")});
    EXPECT_EQ(click(panel->nvReadButton),
              QStringList{
                  f("cmd/oper/basic/editNV/action/read/successFmt", "CUSTOMER", "ssid", "bench")});
    EXPECT_EQ(
        click(panel->nvReadAllButton),
        QStringList({f("cmd/oper/basic/editNV/action/readAll/successFmt", "CUSTOMER"),
                     f("cmd/oper/basic/editNV/action/readAll/nameAndValueFmt", "ssid", "bench")}));
    EXPECT_EQ(click(panel->nvRemoveButton),
              QStringList{f("cmd/oper/basic/editNV/action/remove/successFmt", "CUSTOMER", "ssid")});
    EXPECT_EQ(click(panel->nvReadAllButton),
              QStringList{f("cmd/oper/basic/editNV/action/readAll/successFmt", "CUSTOMER")});

    // Registers: the read fills the value field in lower case without leading zeros.
    panel->regAddrEdit->setText("0x40001000");
    panel->regValueEdit->setText("00ABCDEF");
    EXPECT_EQ(click(panel->regWriteButton),
              QStringList{f("cmd/oper/basic/editRegister/action/write/successFmt", 0x40001000u,
                            0xabcdefu)});
    panel->regValueEdit->clear();
    EXPECT_EQ(click(panel->regReadButton),
              QStringList{
                  f("cmd/oper/basic/editRegister/action/read/successFmt", 0x40001000u, 0xabcdefu)});
    EXPECT_EQ(panel->regValueEdit->text(), "0xabcdef");
}
