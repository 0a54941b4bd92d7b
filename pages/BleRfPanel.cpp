#include "pages/BleRfPanel.h"

#include "kit/SysButton.h"
#include "kit/SysComboBox.h"
#include "kit/SysGridLayout.h"
#include "kit/SysGroupBox.h"
#include "kit/SysHLayout.h"
#include "kit/SysNumberEdit.h"
#include "kit/SysStateButton.h"
#include "kit/SysVLayout.h"
#include "pages/CmdWindow.h"
#include "pages/WifiRfPanel.h"

namespace {} // namespace

BleRfPanel::BleRfPanel(CmdWindow* page, QWidget* parent)
    : RfPanel(page, parent, "rfTest/wifi/ble/execTxStartFirst") {
    auto* column = new SysVLayout(this);
    column->addWidget(buildParamGroup());
    auto* middle = new SysHLayout(nullptr);
    middle->addWidget(buildTxGroup());
    middle->addWidget(rxGroup("rfTest/ble/rxTest"));
    auto* bottom = new SysHLayout(nullptr);
    bottom->addWidget(buildToneGroup());
    bottom->addWidget(dcGroup("rfTest/ble/dcTest"));
    column->addLayout(middle);
    column->addLayout(bottom);
    column->addStretch(1);
}

QWidget* BleRfPanel::buildParamGroup() {
    auto* group = new SysGroupBox(this, TabWinBase::word("rfTest/ble/commParam"));
    auto* row = new SysHLayout(group);
    const QList<QWidget*> phy = sysMakeComboRow(TabWinBase::word("rfTest/ble/commParam/mcs"),
                                                {QStringLiteral("1M"), QStringLiteral("2M"),
                                                 QStringLiteral("500K"), QStringLiteral("125K")},
                                                group);
    const QList<QWidget*> channel =
        sysMakeNumberRow(TabWinBase::word("rfTest/ble/commParam/channel"), 0, 39, group);
    phyBox = qobject_cast<SysComboBox*>(phy.at(1));
    // The coded PHYs are not offered by this radio.
    phyBox->hideItem(2);
    phyBox->hideItem(3);
    channelEdit = qobject_cast<SysNumberEdit*>(channel.at(1));
    resetButton =
        TabWinBase::button(group, "rfTest/ble/commParam/reset", this, &BleRfPanel::resetBle);
    row->addWidget(phy.at(0));
    row->addWidget(channel.at(0));
    row->addWidget(resetButton);
    return group;
}

QWidget* BleRfPanel::buildTxGroup() {
    auto* group = new SysGroupBox(this, TabWinBase::word("rfTest/ble/txTest"));
    auto* grid = new SysGridLayout(group);
    const QList<QWidget*> power =
        sysMakeComboRow(TabWinBase::word("rfTest/ble/txTest/powerLevel"),
                        TabWinBase::wordList("rfTest/ble/txTest/powerLevel/optionList"), group);
    const QList<QWidget*> payload = sysMakeComboRow(
        TabWinBase::word("rfTest/ble/txTest/pkgType"),
        {QStringLiteral("PRBS9"), QStringLiteral("11110000"), QStringLiteral("10101010"),
         QStringLiteral("PRBS15"), QStringLiteral("11111111"), QStringLiteral("00000000"),
         QStringLiteral("00001111"), QStringLiteral("01010101")},
        group);
    const QList<QWidget*> pdu =
        sysMakeNumberRow(TabWinBase::word("rfTest/ble/txTest/pduLength"), 0, 255, group);
    const QList<QWidget*> fcc =
        sysMakeComboRow(TabWinBase::word("rfTest/ble/txTest/fcc"),
                        TabWinBase::wordList("rfTest/ble/txTest/fcc/optionList"), group);
    const QList<QWidget*> gain =
        sysMakeNumberRow(TabWinBase::word("rfTest/ble/txTest/txGain"), -30, 30, group);
    powerLevelBox = qobject_cast<SysComboBox*>(power.at(1));
    pkgTypeBox = qobject_cast<SysComboBox*>(payload.at(1));
    pduLengthEdit = qobject_cast<SysNumberEdit*>(pdu.at(1));
    pduLengthEdit->setValue(37);
    fccBox = qobject_cast<SysComboBox*>(fcc.at(1));
    txGainEdit = qobject_cast<SysNumberEdit*>(gain.at(1));
    txButton = runButton(group, "rfTest/ble/txTest/start", "rfTest/ble/txTest/stop");
    adjustButton =
        TabWinBase::button(group, "rfTest/ble/txTest/adjust", this, &BleRfPanel::adjustPower);
    grid->addRows(
        {power.at(0), payload.at(0), pdu.at(0), fcc.at(0), txButton, gain.at(0), adjustButton}, 2);
    connect(txButton, &QPushButton::clicked, this, &BleRfPanel::txClicked);
    watchFccBox();
    return group;
}

QWidget* BleRfPanel::buildToneGroup() {
    auto* group = new SysGroupBox(this, TabWinBase::word("rfTest/ble/singleToneTest"));
    auto* row = new SysHLayout(group);
    const QList<QWidget*> power = sysMakeComboRow(
        TabWinBase::word("rfTest/ble/singleToneTest/powerLevel"),
        TabWinBase::wordList("rfTest/ble/singleToneTest/powerLevel/optionList"), group);
    tonePowerLevelBox = qobject_cast<SysComboBox*>(power.at(1));
    toneButton =
        runButton(group, "rfTest/ble/singleToneTest/start", "rfTest/ble/singleToneTest/stop");
    row->addWidget(power.at(0));
    row->addWidget(toneButton);
    connect(toneButton, &QPushButton::clicked, this, &BleRfPanel::toneClicked);
    return group;
}

void BleRfPanel::txClicked() {
    ComPort& port = page_->comPort;
    toggleRun(
        txButton,
        [&] {
            return page_->checkRfReady() &&
                   txStarted(
                       page_->engine.startBleTx(port, phyBox->currentIndex(), channelEdit->value(),
                                                pkgTypeBox->currentIndex(), pduLengthEdit->value(),
                                                powerLevelBox->currentIndex()),
                       "rfTest/ble/txTest/startFailed", "rfTest/ble/txTest/startSuccess");
        },
        [&] {
            return report(page_->engine.stopBleTx(port), "rfTest/ble/txTest/stopFailed",
                          "rfTest/ble/txTest/stopSuccess");
        });
}

void BleRfPanel::rxClicked() {
    ComPort& port = page_->comPort;
    toggleRun(
        rxButton,
        [&] {
            return page_->checkRfReady() &&
                   report(
                       page_->engine.startBleRx(port, phyBox->currentIndex(), channelEdit->value()),
                       "rfTest/ble/rxTest/startFailed", "rfTest/ble/rxTest/startSuccess");
        },
        [&] {
            int count = 0;
            const bool stopped = page_->engine.stopBleRx(port, count);
            return rxStopped(stopped, count, "rfTest/ble/rxTest/stopFailed",
                             "rfTest/ble/rxTest/stopSuccess", "rfTest/ble/rxTest/recvPkgCountFmt");
        });
}

void BleRfPanel::toneClicked() {
    ComPort& port = page_->comPort;
    toggleRun(
        toneButton,
        [&] {
            return page_->checkRfReady() &&
                   report(page_->engine.startBleTone(port, phyBox->currentIndex(),
                                                     channelEdit->value(),
                                                     tonePowerLevelBox->currentIndex()),
                          "rfTest/ble/singleToneTest/startFailed",
                          "rfTest/ble/singleToneTest/startSuccess");
        },
        [&] {
            return report(page_->engine.stopBleTx(port), "rfTest/ble/singleToneTest/stopFailed",
                          "rfTest/ble/singleToneTest/stopSuccess");
        });
}

void BleRfPanel::setDc() {
    setDcWith(&AppQZ4420Imple::setBleDc, "rfTest/ble/dcTest/pleaseOpenPort",
              "rfTest/ble/dcTest/setValueFailedFmt", "rfTest/ble/dcTest/setValueSuccessFmt");
}

void BleRfPanel::adjustPower() {
    const int gain = txGainEdit->value();
    if (page_->engine.setBleTxStep(page_->comPort, gain)) {
        page_->infoLine("rfTest/ble/txTest/powerAdjustSuccessFmt", gain, gain * 0.1);
        return;
    }
    // The line names the Wi-Fi settings beside the step, as the Wi-Fi tab's line does.
    const WifiRfPanel* wifi = page_->wifiPanel;
    page_->errorLine("rfTest/ble/txTest/powerAdjustFailedFmt", gain, gain * 0.1,
                     wifi->modeBox->currentText(), wifi->rateBox->currentText(),
                     wifi->channelEdit->text(), "");
}

void BleRfPanel::resetBle() {
    report(page_->engine.resetBle(page_->comPort), "rfTest/ble/commParam/resetBleFailed",
           "rfTest/ble/commParam/resetBleSuccess");
}

bool BleRfPanel::setBleFcc(bool enable) {
    if (!page_->wifiPanel->writeRegister(WifiRfPanel::kPowerLimit,
                                         enable ? WifiRfPanel::kPowerLimitFcc
                                                : WifiRfPanel::kPowerLimitPlain))
        return false;
    page_->infoLine(enable ? "rfTest/wifi/txTest/fcc/enabledSuccess"
                           : "rfTest/wifi/txTest/fcc/disabledSuccess");
    return true;
}
