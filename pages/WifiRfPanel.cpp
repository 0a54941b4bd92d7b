#include "pages/WifiRfPanel.h"

#include "kit/SysButton.h"
#include "kit/SysComboBox.h"
#include "kit/SysGridLayout.h"
#include "kit/SysGroupBox.h"
#include "kit/SysHLayout.h"
#include "kit/SysNumberEdit.h"
#include "kit/SysStateButton.h"
#include "kit/SysStyle.h"
#include "kit/SysVLayout.h"
#include "pages/CmdWindow.h"

#include <cmath>

namespace {

enum Mode { M11B = 0, M11G = 1, M11N = 2, M11AX = 6, M11AX_TB = 7 };

// Registers that the FCC patch changes and restores, in the order they are backed up and
// written back.
constexpr unsigned kBackedUp[] = {0x203028, 0x203060, 0x203068, 0x203070,
                                  0x203074, 0x203160, 0x2031B0};
constexpr unsigned kPatchSwitch = 0x471080;
constexpr unsigned kTxControl = 0x203028;
constexpr unsigned kGain = 0x2031B0;

struct RegisterValue {
    unsigned address;
    unsigned value;
};
// The filter patch of the low rates, by bandwidth index.
constexpr RegisterValue kFilter20[] = {{0x203068, 0x543C543C},
                                       {0x203160, 0x6777},
                                       {0x203060, 0x3554},
                                       {0x203070, 0x6DB22BC4},
                                       {0x203074, 0x122BC4}};
constexpr RegisterValue kFilter40[] = {{0x203068, 0x46344634},
                                       {0x203160, 0x2777},
                                       {0x203060, 0x3554},
                                       {0x203070, 0x6DB22BC6},
                                       {0x203074, 0x122BC6}};

QStringList numbers(int from, int to) {
    return sysRangeStrings(from, to, [](int n) { return QString::number(n); });
}

} // namespace

WifiRfPanel::WifiRfPanel(CmdWindow* page, QWidget* parent)
    : RfPanel(page, parent, "rfTest/wifi/txTest/execTxStartFirst") {
    auto* column = new SysVLayout(this);
    column->addWidget(buildParamGroup());
    auto* middle = new SysHLayout(nullptr);
    middle->addWidget(buildTxGroup());
    middle->addWidget(rxGroup("rfTest/wifi/rxTest"));
    auto* bottom = new SysHLayout(nullptr);
    for (QWidget* group : {buildSingleToneGroup(), dcGroup("rfTest/wifi/dcTest"), buildCfoGroup(),
                           buildPaBiasGroup()})
        bottom->addWidget(group);
    column->addLayout(middle);
    column->addLayout(bottom);
    column->addStretch(1);
    modeChanged(modeBox->currentIndex());
}

QWidget* WifiRfPanel::buildParamGroup() {
    auto* group = new SysGroupBox(this, TabWinBase::word("rfTest/wifi/commParam"));
    auto* row = new SysHLayout(group);
    const QList<QWidget*> mode =
        sysMakeComboRow(TabWinBase::word("rfTest/wifi/commParam/mode"),
                        sysRangeStrings(0, 7, &AppQZ4420Imple::rfModeName), group);
    const QList<QWidget*> rate =
        sysMakeComboRow(TabWinBase::word("rfTest/wifi/commParam/mcs"), {}, group);
    const QList<QWidget*> bandwidth =
        sysMakeComboRow(TabWinBase::word("rfTest/wifi/commParam/bw"), {}, group);
    const QList<QWidget*> channel =
        sysMakeNumberRow(TabWinBase::word("rfTest/wifi/commParam/channel"), 1, 14, group);
    modeBox = qobject_cast<SysComboBox*>(mode.at(1));
    rateBox = qobject_cast<SysComboBox*>(rate.at(1));
    bandwidthBox = qobject_cast<SysComboBox*>(bandwidth.at(1));
    channelEdit = qobject_cast<SysNumberEdit*>(channel.at(1));
    // The 5 GHz modes are not offered by this radio.
    for (int hidden : {3, 4, 5})
        modeBox->hideItem(hidden);
    for (QWidget* w : {mode.at(0), rate.at(0), bandwidth.at(0), channel.at(0)})
        row->addWidget(w);
    connect(bandwidthBox, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &WifiRfPanel::bandwidthChanged);
    connect(modeBox, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &WifiRfPanel::modeChanged);
    return group;
}

QWidget* WifiRfPanel::buildTxGroup() {
    auto* group = new SysGroupBox(this, TabWinBase::word("rfTest/wifi/txTest"));
    auto* grid = new SysGridLayout(group);
    const QList<QWidget*> ru =
        sysMakeNumberRow(TabWinBase::word("rfTest/wifi/txTest/ruLocation"), 0, 16, group);
    const QList<QWidget*> duty =
        sysMakeNumberRow(TabWinBase::word("rfTest/wifi/txTest/duty"), 0, 100, group);
    const QList<QWidget*> fcc =
        sysMakeComboRow(TabWinBase::word("rfTest/wifi/txTest/fcc"),
                        TabWinBase::wordList("rfTest/wifi/txTest/fcc/optionList"), group);
    const QList<QWidget*> type =
        sysMakeComboRow(TabWinBase::word("rfTest/wifi/txTest/continuesType"),
                        TabWinBase::wordList("rfTest/wifi/txTest/continuesType/optionList"), group);
    const QList<QWidget*> gain =
        sysMakeNumberRow(TabWinBase::word("rfTest/wifi/txTest/txGain"), -65535, 65535, group);
    ruLocationEdit = qobject_cast<SysNumberEdit*>(ru.at(1));
    ruLocationEdit->setSingleStep(2);
    dutyEdit = qobject_cast<SysNumberEdit*>(duty.at(1));
    dutyEdit->setValue(90);
    fccBox = qobject_cast<SysComboBox*>(fcc.at(1));
    continuesTypeBox = qobject_cast<SysComboBox*>(type.at(1));
    continuesTypeBox->setCurrentIndex(3);
    txGainEdit = qobject_cast<SysNumberEdit*>(gain.at(1));
    txButton = runButton(group, "rfTest/wifi/txTest/start", "rfTest/wifi/txTest/stop");
    adjustButton =
        TabWinBase::button(group, "rfTest/wifi/txTest/adjust", this, &WifiRfPanel::adjustPower);
    grid->addRows({ru.at(0), duty.at(0), fcc.at(0), txButton, type.at(0), gain.at(0), adjustButton},
                  2);
    connect(txButton, &QPushButton::clicked, this, &WifiRfPanel::txClicked);
    watchFccBox();
    return group;
}

QWidget* WifiRfPanel::buildSingleToneGroup() {
    auto* group = new SysGroupBox(this, TabWinBase::word("rfTest/wifi/singleToneTest"));
    auto* column = new SysVLayout(group);
    singleToneButton = TabWinBase::button(group, "rfTest/wifi/singleToneTest/start", this,
                                          &WifiRfPanel::startSingleTone);
    column->addWidget(singleToneButton);
    return group;
}

QWidget* WifiRfPanel::buildCfoGroup() {
    auto* group = new SysGroupBox(this, TabWinBase::word("rfTest/wifi/cfoCal"));
    auto* row = new SysHLayout(group);
    const QList<QWidget*> fine = sysMakeComboRow(QStringLiteral("FINE TUNE"), numbers(0, 7), group);
    const QList<QWidget*> coarse =
        sysMakeComboRow(QStringLiteral("COARST TUNE"), numbers(0, 15), group);
    cfoFineBox = qobject_cast<SysComboBox*>(fine.at(1));
    cfoCoarseBox = qobject_cast<SysComboBox*>(coarse.at(1));
    cfoButton = TabWinBase::button(group, "rfTest/wifi/cfoCal/exec", this, &WifiRfPanel::setCfo);
    row->addWidget(fine.at(0));
    row->addWidget(coarse.at(0));
    row->addWidget(cfoButton);
    return group;
}

QWidget* WifiRfPanel::buildPaBiasGroup() {
    auto* group = new SysGroupBox(this, TabWinBase::word("rfTest/wifi/PABias"));
    auto* row = new SysHLayout(group);
    const QList<QWidget*> value =
        sysMakeNumberRow(TabWinBase::word("rfTest/wifi/PABias/PABias"), -64, 64, group);
    paBiasEdit = qobject_cast<SysNumberEdit*>(value.at(1));
    paBiasButton =
        TabWinBase::button(group, "rfTest/wifi/PABias/exec", this, &WifiRfPanel::setPaBias);
    row->addWidget(value.at(0));
    row->addWidget(paBiasButton);
    return group;
}

void WifiRfPanel::modeChanged(int mode) {
    QStringList rates;
    int bandwidths = 1;
    switch (mode) {
    case M11B:
        rates = QStringList{"1M", "2M", "5.5M", "11M"};
        break;
    case M11G:
        rates = QStringList{"6M", "9M", "12M", "18M", "24M", "36M", "48M", "54M"};
        break;
    case M11N:
        bandwidths = 2;
        [[fallthrough]];
    case M11AX:
    case M11AX_TB:
        rates = sysRangeStrings(0, 7, [](int n) { return QStringLiteral("MCS%1").arg(n); });
        break;
    default:
        return; // a mode this radio does not offer leaves the lists alone
    }
    rateBox->setItems(rates);
    rateBox->setCurrentIndex(rates.size() - 1); // the highest rate
    bandwidthBox->setItems(sysRangeStrings(
        0, bandwidths - 1, [](int i) { return QStringLiteral("%1M").arg(10 << (i + 1)); }));
    if (mode != M11N)
        channelEdit->setRange(1, 14);
    ruLocationEdit->setEnabled(mode == M11AX_TB);
}

void WifiRfPanel::bandwidthChanged(int bandwidth) {
    // At 40 MHz the upper and lower neighbours must fit in the band.
    if (bandwidth < 0 || modeBox->currentIndex() != M11N)
        return;
    if (bandwidth == 0)
        channelEdit->setRange(1, 14);
    else if (bandwidth == 1)
        channelEdit->setRange(3, 11);
}

void WifiRfPanel::txClicked() {
    ComPort& port = page_->comPort;
    toggleRun(
        txButton,
        [&] {
            return page_->checkRfReady() &&
                   txStarted(page_->engine.startTx(port, modeBox->currentIndex(),
                                                   rateBox->currentIndex(), channelEdit->value(),
                                                   bandwidthBox->currentIndex(),
                                                   ruLocationEdit->value(), dutyEdit->value(),
                                                   continuesTypeBox->currentIndex()),
                             "rfTest/wifi/txTest/startTxTestFailed",
                             "rfTest/wifi/txTest/startTxTestSuccess");
        },
        [&] {
            return report(page_->engine.stopTx(port), "rfTest/wifi/txTest/stopTxTestFailed",
                          "rfTest/wifi/txTest/stopTxTestSuccess");
        });
}

void WifiRfPanel::rxClicked() {
    ComPort& port = page_->comPort;
    toggleRun(
        rxButton,
        [&] {
            return page_->checkRfReady() &&
                   report(page_->engine.startRx(port, channelEdit->value(),
                                                bandwidthBox->currentIndex()),
                          "rfTest/wifi/rxTest/startFailed", "rfTest/wifi/rxTest/startSuccess");
        },
        [&] {
            int count = 0;
            const bool stopped = page_->engine.stopRx(port, count);
            return rxStopped(stopped, count, "rfTest/wifi/rxTest/stopFailed",
                             "rfTest/wifi/rxTest/stopSuccess",
                             "rfTest/wifi/rxTest/recvPkgCountFmt");
        });
}

void WifiRfPanel::startSingleTone() {
    if (page_->checkRfReady())
        report(page_->engine.startSingleTone(page_->comPort),
               "rfTest/wifi/singleToneTest/startFailed", "rfTest/wifi/singleToneTest/startSuccess");
}

void WifiRfPanel::setDc() {
    setDcWith(&AppQZ4420Imple::setDcValue, "rfTest/wifi/dcTest/pleaseOpenPort",
              "rfTest/wifi/dcTest/setValueFailedFmt", "rfTest/wifi/dcTest/setValueSuccessFmt");
}

void WifiRfPanel::setCfo() {
    if (!page_->comPort.isOpen()) {
        page_->errorLine("rfTest/wifi/cfoCal/pleaseOpenPort");
        return;
    }
    const int fine = cfoFineBox->currentIndex();
    const int coarse = cfoCoarseBox->currentIndex();
    if (page_->engine.setCfo(page_->comPort, fine, coarse))
        page_->infoLine("rfTest/wifi/cfoCal/setValueSuccessFmt", fine, coarse);
    else
        page_->errorLine("rfTest/wifi/cfoCal/setValueFailedFmt", fine, coarse);
}

void WifiRfPanel::setPaBias() {
    const int value = paBiasEdit->value();
    if (page_->engine.setPaBias(page_->comPort, value))
        page_->infoLine("rfTest/wifi/PABias/config/successFmt", value);
    else
        page_->errorLine("rfTest/wifi/PABias/config/failedFmt", value);
}

void WifiRfPanel::adjustPower() {
    const int gain = txGainEdit->value();
    QString reason;
    if (page_->engine.setApcIndex(page_->comPort, gain, reason)) {
        page_->infoLine("rfTest/wifi/txTest/powerAdjustSuccessFmt", gain, gain * 0.1);
        return;
    }
    page_->errorLine("rfTest/wifi/txTest/powerAdjustFailedFmt", gain, gain * 0.1,
                     modeBox->currentText(), rateBox->currentText(), channelEdit->text(), reason);
}

uint64_t WifiRfPanel::fccKey(unsigned address) const {
    const auto byte = [](int v) { return uint64_t(unsigned(v) & 0xFFu); };
    return byte(modeBox->currentIndex()) << 56 | byte(rateBox->currentIndex()) << 48 |
           byte(channelEdit->value()) << 40 | byte(bandwidthBox->currentIndex()) << 32 | address;
}

bool WifiRfPanel::writeRegister(unsigned address, unsigned value) {
    if (page_->engine.setRegister(page_->comPort, address, value))
        return true;
    page_->errorLine("rfTest/wifi/txTest/writeRegisterFailedFmt", address, value);
    return false;
}

bool WifiRfPanel::readRegister(unsigned address, unsigned& value) {
    if (page_->engine.getRegister(page_->comPort, address, value))
        return true;
    page_->errorLine("rfTest/wifi/txTest/readRegisterFailedFmt", address);
    return false;
}

bool WifiRfPanel::scaleGain(double factor, double second) {
    unsigned x = 0;
    if (!readRegister(kGain, x))
        return false;
    const double t = (x >> 8) & 0xFFu;
    const auto y = static_cast<unsigned>(std::lround(t * factor * second));
    return writeRegister(kGain, y << 8 | 0xFFu);
}

bool WifiRfPanel::setWifiFcc(bool enable) {
    // Each register is backed up once for each set of settings, before anything is written.
    for (unsigned address : kBackedUp) {
        const uint64_t key = fccKey(address);
        if (page_->rfTestStates.count(key) != 0)
            continue;
        unsigned value = 0;
        if (!readRegister(address, value))
            return false;
        page_->rfTestStates[key] = value;
    }
    const int mode = modeBox->currentIndex();
    const int rate = rateBox->currentIndex();
    if (!enable) {
        if (!writeRegister(kPatchSwitch, 0))
            return false;
        for (unsigned address : kBackedUp)
            if (!writeRegister(address, page_->rfTestStates[fccKey(address)]))
                return false;
        if (!writeRegister(kPowerLimit, kPowerLimitPlain))
            return false;
        page_->infoLine("rfTest/wifi/txTest/fcc/disabledSuccess");
        return true;
    }
    if (!writeRegister(kPatchSwitch, 1) || !writeRegister(kTxControl, 0x04DEF7FF) ||
        (mode == M11B ? !scaleGain(0.79) : !scaleGain(0.63, 0.79)))
        return false;
    if (mode != M11B && rate < 3) {
        const int bandwidth = bandwidthBox->currentIndex();
        if (bandwidth == 0 || bandwidth == 1)
            for (const RegisterValue& r : bandwidth == 0 ? kFilter20 : kFilter40)
                if (!writeRegister(r.address, r.value))
                    return false;
        if (rate >= 1 && !scaleGain(1.18))
            return false;
    }
    if (mode != M11B && !writeRegister(kPowerLimit, kPowerLimitFcc))
        return false;
    page_->infoLine("rfTest/wifi/txTest/fcc/enabledSuccess");
    return true;
}
