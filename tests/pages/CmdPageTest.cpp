#include "kit/SysButton.h"
#include "kit/SysComboBox.h"
#include "kit/SysFileDialog.h"
#include "kit/SysLineEdit.h"
#include "kit/SysNumberEdit.h"
#include "kit/SysSerialComboBox.h"
#include "kit/SysStateButton.h"
#include "kit/SysTab.h"
#include "kit/SysTable.h"
#include "pages/BasicPanel.h"
#include "pages/BleRfPanel.h"
#include "pages/CmdPageFixture.h"
#include "pages/CmdWindow.h"
#include "pages/EfusePanel.h"
#include "pages/WifiRfPanel.h"
#include "shell/MainWindow.h"
#include "shell/PluginEntry.h"
#include "sim/BoardSim.h"
#include "sim/SimFirmware.h"
#include "support/HostWords.h"
#include "support/QtPrinters.h"

#include <gtest/gtest.h>

#include <QLabel>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

TEST_F(CmdPage, OpensAndClosesThePortAndTellsThePanels) {
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

TEST_F(CmdPage, EfuseRowsBurnOnlyWhatTheirFieldsHoldAndShowWhatTheyRead) {
    EfusePanel* efuse = page->efusePanel;
    ASSERT_EQ(efuse->rows.size(), 12);
    ASSERT_EQ(efuse->table->rowCount(), 12);
    const EfusePanel::Row& jtag = efuse->rows[0];
    const EfusePanel::Row& counter = efuse->rows[8];
    const EfusePanel::Row& aes = efuse->rows[9];
    const EfusePanel::Row& ecc = efuse->rows[10];
    const EfusePanel::Row& reserved = efuse->rows[11];
    EXPECT_EQ(counter.kind, EfusePanel::LabelRow);
    EXPECT_EQ(aes.actionBox->items(), (QStringList{"Read", "Burn", "Random Key", "Action"}));
    EXPECT_EQ(aes.actionBox->currentText(), w("cmd/oper/efuse/table/procOption"));
    ASSERT_NE(reserved.readButton, nullptr);
    auto* aesEdit = static_cast<SysLineEdit*>(aes.value);
    auto* eccEdit = static_cast<SysLineEdit*>(ecc.value);
    auto* reservedEdit = static_cast<SysLineEdit*>(reserved.value);
    auto* counterLabel = static_cast<QLabel*>(counter.value);
    const std::string aesTitle = aes.title.toStdString();
    const std::string counterTitle = counter.title.toStdString();

    BoardSim board;
    SimFirmware firmware(board);
    open(board, firmware, "simCmdE");

    // Too many words burn nothing; one word burns one word; an empty field is the word 0.
    aesEdit->setText("1,2,3,4,5");
    EXPECT_EQ(during([&] { emit aes.actionBox->activated(1); }),
              QStringList{f("cmd/oper/efuse/table/inputItemsMaxFmt", aesTitle.c_str(), 4)});
    EXPECT_TRUE(firmware.lines().isEmpty());
    reservedEdit->setText(" 0x12345678 ");
    click(reserved.writeButton);
    eccEdit->clear();
    emit ecc.actionBox->activated(1);
    EXPECT_EQ(firmware.lines(),
              QStringList({"efuse write 0x54 0x12345678 0xedcba987", "efuse write_confirmation",
                           "efuse write 0x34 0x00000000 0xffffffff", "efuse write_confirmation"}));
    EXPECT_EQ(firmware.state().efuse.mid(0x50, 12).toHex(), "000000007856341200000000");

    // Reads: eight lower-case digits for each word the firmware sent; a key file's words in
    // upper case, and nothing burnt.
    firmware.change([](SimFirmware::State& s) { s.efuse[0x25] = char(0xab); });
    emit aes.actionBox->activated(0);
    EXPECT_EQ(aesEdit->text(), "0x0000ab00,0x00000000,0x00000000,0x00000000,0x00000000");
    QTemporaryDir dir;
    QFile key(dir.filePath("pub.key"));
    ASSERT_TRUE(key.open(QIODevice::WriteOnly));
    key.write(QByteArray::fromHex("0a0b0c0d") + QByteArray(28, '\x01'));
    key.close();
    QString answer = key.fileName();
    SysFileDialog::setAnswer(
        [&](SysFileDialog::Kind, const QString&, const QString&, const QString& filter) {
            EXPECT_EQ(filter, "*.key");
            return answer;
        });
    firmware.clearLines();
    emit ecc.actionBox->activated(2);
    EXPECT_TRUE(eccEdit->text().startsWith("0x0D0C0B0A,0x01010101,"))
        << eccEdit->text().toStdString();
    answer.clear();
    EXPECT_EQ(during([&] { emit ecc.actionBox->activated(2); }),
              QStringList{f("cmd/oper/efuse/table/eccPublicKey/userCancelledFmt",
                            ecc.title.toStdString().c_str())});
    EXPECT_TRUE(eccEdit->text().startsWith("0x0D0C0B0A"));
    SysFileDialog::setAnswer({});
    emit aes.actionBox->activated(2);
    EXPECT_TRUE(
        QRegularExpression("^0x[0-9A-F]{8}(,0x[0-9A-F]{8}){3}$").match(aesEdit->text()).hasMatch())
        << aesEdit->text().toStdString();
    EXPECT_TRUE(firmware.lines().isEmpty());

    // JTAG: only both bits show as burnt.
    auto* jtagBox = static_cast<SysComboBox*>(jtag.value);
    for (char bits : {1, 2, 3}) {
        firmware.change([bits](SimFirmware::State& s) { s.efuse[0x20] = bits; });
        click(jtag.readButton);
        EXPECT_EQ(jtagBox->currentIndex(), bits == 3 ? 1 : 0);
    }

    // The counter: a code that is no count leaves the label; a write goes one bit up, and a
    // full counter is written as it stands.
    firmware.change([](SimFirmware::State& s) { s.efuse[0x21] = 0x05; });
    counterLabel->setText("kept");
    QStringList levels;
    EXPECT_EQ(during([&] { QTest::mouseClick(counter.readButton, Qt::LeftButton); }, &levels),
              QStringList({f("cmd/oper/efuse/table/flashEcryptCount/readInvalidValueFmt", 5u),
                           f("cmd/oper/efuse/table/readKeyFailedFmt", counterTitle.c_str())}));
    EXPECT_EQ(levels, QStringList({"ERROR", "ERROR"}));
    EXPECT_EQ(counterLabel->text(), "kept");
    firmware.change([](SimFirmware::State& s) { s.efuse[0x21] = 0x03; });
    EXPECT_EQ(click(counter.writeButton),
              QStringList{f("cmd/oper/efuse/table/writeKeySuccessFmt", counterTitle.c_str(), "3")});
    EXPECT_EQ(counterLabel->text(), "3");
    EXPECT_EQ(uint8_t(firmware.state().efuse[0x21]), 0x07);
    firmware.change([](SimFirmware::State& s) { s.efuse[0x21] = char(0xff); });
    click(counter.writeButton);
    EXPECT_EQ(counterLabel->text(), "8");
    EXPECT_EQ(uint8_t(firmware.state().efuse[0x21]), 0xff);
}

TEST_F(CmdPage, EfuseWriteAllBurnsEveryRowAsItStandsAndTheCounterOneStep) {
    EfusePanel* efuse = page->efusePanel;
    BoardSim board;
    SimFirmware firmware(board);
    open(board, firmware, "simCmdF");
    static_cast<SysComboBox*>(efuse->rows[0].value)->setCurrentIndex(1); // JTAG: bits 0 and 1
    static_cast<SysComboBox*>(efuse->rows[5].value)->setCurrentIndex(1); // frequency: bit 16
    static_cast<SysLineEdit*>(efuse->rows[9].value)->setText("0x1");
    static_cast<SysLineEdit*>(efuse->rows[11].value)->setText("a,b");

    QStringList levels;
    EXPECT_EQ(
        during([&] { QTest::mouseClick(efuse->writeAllButton, Qt::LeftButton); }, &levels).size(),
        12);
    EXPECT_EQ(levels, QStringList(QVector<QString>(12, "INFO").toList()));
    const SimFirmware::State burnt = firmware.state();
    EXPECT_EQ(burnt.efuseWord(0x20), 0x00010103u);
    EXPECT_EQ(burnt.efuseWord(0x24), 1u);
    EXPECT_EQ(burnt.efuseWord(0x54), 0xau);
    EXPECT_EQ(burnt.efuseWord(0x58), 0xbu);
    EXPECT_EQ(burnt.efuse.count('\0'), SimFirmware::State::kEfuseBytes - 6);

    // Read all fills every field; a closed port fails every row on its own.
    click(efuse->readAllButton);
    EXPECT_EQ(static_cast<SysComboBox*>(efuse->rows[5].value)->currentIndex(), 1);
    EXPECT_EQ(static_cast<QLabel*>(efuse->rows[8].value)->text(), "1");
    click(page->portButton);
    levels.clear();
    EXPECT_EQ(
        during([&] { QTest::mouseClick(efuse->readAllButton, Qt::LeftButton); }, &levels).size(),
        12);
    EXPECT_EQ(levels, QStringList(QVector<QString>(12, "ERROR").toList()));
}

TEST_F(CmdPage, WifiListsFollowTheModeAndBandwidthAndStartsCheckFirst) {
    WifiRfPanel* wifi = page->wifiPanel;
    BleRfPanel* ble = page->blePanel;
    EXPECT_EQ(wifi->rateBox->items(), (QStringList{"1M", "2M", "5.5M", "11M"}));
    EXPECT_EQ(wifi->rateBox->currentText(), "11M");
    EXPECT_EQ(wifi->bandwidthBox->items(), QStringList{"20M"});
    EXPECT_FALSE(wifi->ruLocationEdit->isEnabled());

    wifi->modeBox->setCurrentText("11N");
    EXPECT_EQ(wifi->rateBox->currentText(), "MCS7");
    EXPECT_EQ(wifi->bandwidthBox->items(), (QStringList{"20M", "40M"}));
    wifi->channelEdit->setValue(1);
    wifi->bandwidthBox->setCurrentIndex(1);
    EXPECT_EQ(wifi->channelEdit->value(), 3);
    EXPECT_EQ(wifi->channelEdit->maximum(), 11);
    wifi->modeBox->setCurrentText("11G");
    EXPECT_EQ(wifi->rateBox->count(), 8);
    EXPECT_EQ(wifi->bandwidthBox->count(), 1);
    EXPECT_EQ(wifi->channelEdit->minimum(), 1);
    EXPECT_EQ(wifi->channelEdit->maximum(), 14);
    wifi->modeBox->setCurrentText("11AX_TB");
    EXPECT_TRUE(wifi->ruLocationEdit->isEnabled());

    // A closed port stops every start before anything is sent, BLE ones too.
    EXPECT_EQ(click(ble->txButton), QStringList{w("rfTest/pleaseOpenPort")});
    EXPECT_EQ(click(wifi->rxButton), QStringList{w("rfTest/pleaseOpenPort")});
    EXPECT_EQ(click(wifi->dcButton), QStringList{w("rfTest/wifi/dcTest/pleaseOpenPort")});

    BoardSim board;
    SimFirmware firmware(board);
    open(board, firmware, "simCmdW");
    // A mode the radio does not offer leaves the lists and stops the starts.
    wifi->modeBox->setCurrentIndex(4);
    EXPECT_EQ(wifi->rateBox->currentText(), "MCS7");
    EXPECT_EQ(click(wifi->txButton), QStringList{f("rfTest/wifi/invalidModeFmt", "11N5G")});
    // The FCC box takes effect only over a running TX test.
    wifi->fccBox->setCurrentIndex(1);
    ble->fccBox->setCurrentIndex(1);
    EXPECT_TRUE(firmware.lines().isEmpty());
    EXPECT_EQ(wifi->fccBox->currentIndex(), 1);
}

TEST_F(CmdPage, WifiFccPatchBacksUpOnceAndRestoresWhatItRead) {
    WifiRfPanel* wifi = page->wifiPanel;
    BoardSim board;
    SimFirmware firmware(board);
    open(board, firmware, "simCmdX");
    const std::map<uint32_t, uint32_t> before = {
        {0x203028, 0x11111111}, {0x203060, 0x2222}, {0x2031B0, 0xC8FF}};
    firmware.change([&](SimFirmware::State& s) { s.registers = before; });
    page->rfTestStates[7] = 1; // opening the port empties the backups
    click(page->portButton);
    click(page->portButton);
    EXPECT_TRUE(page->rfTestStates.empty());
    firmware.clearLines();

    // 11B: the start's "OK" first, then the backup of seven registers and the patch.
    wifi->fccBox->setCurrentIndex(1);
    wifi->channelEdit->setValue(6);
    EXPECT_EQ(click(wifi->txButton), QStringList({w("rfTest/wifi/txTest/fcc/enabledSuccess"),
                                                  w("rfTest/wifi/txTest/startTxTestSuccess")}));
    EXPECT_TRUE(wifi->txButton->isState("ON"));
    const QStringList sent = firmware.lines();
    ASSERT_EQ(sent.size(), 1 + 7 + 4);
    EXPECT_TRUE(sent[0].startsWith("amt_tx_start "));
    EXPECT_EQ(sent.mid(8), QStringList({"amt_set 0x471080 0x1", "amt_set 0x203028 0x4def7ff",
                                        "amt_get 0x2031b0", "amt_set 0x2031b0 0x9eff"}));
    EXPECT_EQ(page->rfTestStates.size(), 7u);
    EXPECT_EQ(page->rfTestStates.at(uint64_t(3) << 48 | uint64_t(6) << 40 | 0x2031B0), 0xC8FFu);

    // A second enable reads no backup again and scales the gain again.
    firmware.clearLines();
    EXPECT_TRUE(wifi->setWifiFcc(true));
    EXPECT_EQ(firmware.lines().filter("amt_get").size(), 1);
    EXPECT_EQ(firmware.state().registers.at(0x2031B0), 0x7DFFu);

    // Off writes back what was read.
    wifi->fccBox->setCurrentIndex(0);
    const SimFirmware::State restored = firmware.state();
    for (const auto& [address, value] : before)
        EXPECT_EQ(restored.registers.at(address), value) << std::hex << address;
    EXPECT_EQ(restored.registers.at(0x203068), 0u);
    EXPECT_EQ(restored.registers.at(0x471080), 0u);
    EXPECT_EQ(restored.registers.at(0x2030C0), 0x3F263F26u);

    // 11N at 40 MHz and a low rate: the filter patch, and the gain scaled down then up.
    wifi->modeBox->setCurrentText("11N");
    wifi->rateBox->setCurrentIndex(1);
    wifi->bandwidthBox->setCurrentIndex(1);
    EXPECT_TRUE(wifi->setWifiFcc(true));
    const SimFirmware::State patched = firmware.state();
    EXPECT_EQ(patched.registers.at(0x203068), 0x46344634u);
    EXPECT_EQ(patched.registers.at(0x203074), 0x122BC6u);
    EXPECT_EQ(patched.registers.at(0x2031B0), 0x76FFu); // 200 * 0.63 * 0.79 -> 100, * 1.18
    EXPECT_EQ(patched.registers.at(0x2030C0), 0x3F2D3F2Du);

    // A failed stop keeps the test running.
    click(page->portButton);
    EXPECT_EQ(click(wifi->txButton), QStringList{w("rfTest/wifi/txTest/stopTxTestFailed")});
    EXPECT_TRUE(wifi->txButton->isState("ON"));
}

TEST_F(CmdPage, BleTestsAndTheOneShotButtonsSayWhatHappened) {
    WifiRfPanel* wifi = page->wifiPanel;
    BleRfPanel* ble = page->blePanel;
    BoardSim board;
    SimFirmware firmware(board);
    open(board, firmware, "simCmdB2");

    ble->fccBox->setCurrentIndex(1);
    EXPECT_EQ(click(ble->txButton), QStringList({w("rfTest/wifi/txTest/fcc/enabledSuccess"),
                                                 w("rfTest/ble/txTest/startSuccess")}));
    EXPECT_EQ(firmware.state().registers.at(0x2030C0), 0x3F2D3F2Du);
    EXPECT_TRUE(firmware.state().bleTx.running);
    ble->fccBox->setCurrentIndex(0);
    EXPECT_EQ(firmware.state().registers.at(0x2030C0), 0x3F263F26u);
    EXPECT_EQ(click(ble->txButton), QStringList{w("rfTest/ble/txTest/stopSuccess")});
    EXPECT_EQ(click(ble->toneButton), QStringList{w("rfTest/ble/singleToneTest/startSuccess")});
    EXPECT_TRUE(ble->toneButton->isState("ON"));
    click(ble->toneButton);
    click(ble->rxButton);
    const QStringList stop = click(ble->rxButton);
    ASSERT_EQ(stop.size(), 2);
    EXPECT_EQ(stop[0], w("rfTest/ble/rxTest/stopSuccess"));
    EXPECT_TRUE(stop[1].startsWith(f("rfTest/ble/rxTest/recvPkgCountFmt", 0).chopped(1)));

    wifi->cfoFineBox->setCurrentIndex(5);
    wifi->cfoCoarseBox->setCurrentIndex(12);
    EXPECT_EQ(click(wifi->cfoButton),
              QStringList{f("rfTest/wifi/cfoCal/setValueSuccessFmt", 5, 12)});
    EXPECT_EQ(firmware.state().cfoCoarse, 12);
    wifi->paBiasEdit->setValue(-7);
    EXPECT_EQ(click(wifi->paBiasButton),
              QStringList{f("rfTest/wifi/PABias/config/successFmt", -7)});
    // A refused step names the Wi-Fi settings beside it, and the firmware's reason.
    wifi->txGainEdit->setValue(25);
    EXPECT_EQ(click(wifi->adjustButton),
              QStringList{f("rfTest/wifi/txTest/powerAdjustFailedFmt", 25, 2.5, "11B", "11M", "1",
                            "tx test not running")});
    ble->txGainEdit->setValue(-3);
    click(page->portButton);
    EXPECT_EQ(click(ble->adjustButton), QStringList{f("rfTest/ble/txTest/powerAdjustFailedFmt", -3,
                                                      -0.3, "11B", "11M", "1", "")});
}
