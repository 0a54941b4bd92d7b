#include "pages/BasicPanel.h"

#include "kit/SysButton.h"
#include "kit/SysComboBox.h"
#include "kit/SysGroupBox.h"
#include "kit/SysHLayout.h"
#include "kit/SysLineEdit.h"
#include "kit/SysVLayout.h"
#include "pages/CmdWindow.h"
#include "pages/PingServer.h"
#include "shell/MainWindow.h"

#include <QTimer>

namespace {

// A field as the register handlers read it: hexadecimal, "0x" allowed, anything else 0.
unsigned hexValue(const SysLineEdit* edit) {
    return edit->text().toUInt(nullptr, 16);
}

// Waits after a restart before echo is turned off again.
constexpr int kHardRestartEchoMs = 500;
constexpr int kSoftRestartEchoMs = 100;

} // namespace

BasicPanel::BasicPanel(CmdWindow* page, QWidget* parent) : SysWidget(parent), page_(page) {
    auto* column = new SysVLayout(this);
    auto* top = new SysHLayout(nullptr);
    for (QWidget* group :
         {buildSwitchGroup("cmd/oper/basic/switchVersion",
                           "cmd/oper/basic/switchVersion/versionList",
                           "cmd/oper/basic/switchVersion/exec", &BasicPanel::switchVersion,
                           &versionBox, &versionButton),
          buildSwitchGroup("cmd/oper/basic/switchEcho", "cmd/oper/basic/switchEcho/stateList",
                           "cmd/oper/basic/switchEcho/exec", &BasicPanel::switchEcho, &echoBox,
                           &echoButton),
          buildRestartGroup(), buildRegisterGroup()})
        top->addWidget(group);
    auto* bottom = new SysHLayout(nullptr);
    pingServer = new PingServer(this);
    for (QWidget* group : {buildMacGroup(), buildNvGroup(), static_cast<QWidget*>(pingServer)})
        bottom->addWidget(group);
    column->addLayout(top);
    column->addLayout(bottom);
    column->addStretch(1);

    versionStateButton = TabWinBase::button(this, "cmd/oper/basic/getState/getCurVersion", this,
                                            &BasicPanel::readVersionState);
    versionStateButton->hide();
}

QWidget* BasicPanel::buildSwitchGroup(const char* titleKey, const char* listKey,
                                      const char* execKey, void (BasicPanel::*handler)(),
                                      SysComboBox** box, SysButton** exec) {
    auto* group = new SysGroupBox(this, TabWinBase::word(titleKey));
    auto* row = new SysHLayout(group);
    *box = new SysComboBox(group, TabWinBase::wordList(listKey));
    // Items 2 and 3 name states that are not switched to from here.
    (*box)->hideItem(2);
    (*box)->hideItem(3);
    *exec = TabWinBase::button(group, execKey, this, handler);
    row->addWidget(*box);
    row->addWidget(*exec);
    return group;
}

QWidget* BasicPanel::buildRestartGroup() {
    auto* group = new SysGroupBox(this, TabWinBase::word("cmd/oper/basic/restart"));
    auto* row = new SysHLayout(group);
    hardRestartButton = TabWinBase::button(group, "cmd/oper/basic/restart/hardwareRestart", this,
                                           &BasicPanel::hardwareRestart);
    softRestartButton = TabWinBase::button(group, "cmd/oper/basic/restart/softwareRestart", this,
                                           &BasicPanel::softwareRestart);
    row->addWidget(hardRestartButton);
    row->addWidget(softRestartButton);
    return group;
}

QWidget* BasicPanel::buildRegisterGroup() {
    auto* group = new SysGroupBox(this, TabWinBase::word("cmd/oper/basic/editRegister"));
    auto* row = new SysHLayout(group);
    const QList<QWidget*> addr =
        sysMakeLineRow(TabWinBase::word("cmd/oper/basic/editRegister/address"), 1, 10, group);
    const QList<QWidget*> value =
        sysMakeLineRow(TabWinBase::word("cmd/oper/basic/editRegister/value"), 1, 32, group);
    regAddrEdit = qobject_cast<SysLineEdit*>(addr.at(1));
    regValueEdit = qobject_cast<SysLineEdit*>(value.at(1));
    regReadButton = TabWinBase::button(group, "cmd/oper/basic/editRegister/action/read", this,
                                       &BasicPanel::readRegister);
    regWriteButton = TabWinBase::button(group, "cmd/oper/basic/editRegister/action/write", this,
                                        &BasicPanel::writeRegister);
    for (QWidget* w : {addr.at(0), value.at(0), static_cast<QWidget*>(regReadButton),
                       static_cast<QWidget*>(regWriteButton)})
        row->addWidget(w);
    return group;
}

QWidget* BasicPanel::buildMacGroup() {
    auto* group = new SysGroupBox(this, TabWinBase::word("cmd/oper/basic/editMac"));
    auto* column = new SysVLayout(group);
    const QList<QWidget*> addr =
        sysMakeLineRow(TabWinBase::word("cmd/oper/basic/editMac/addr"), 17, 17, group);
    const QList<QWidget*> location =
        sysMakeComboRow(TabWinBase::word("cmd/oper/basic/editMac/location"),
                        TabWinBase::wordList("cmd/oper/basic/editMac/location/optionList"), group);
    macEdit = qobject_cast<SysLineEdit*>(addr.at(1));
    macLocationBox = qobject_cast<SysComboBox*>(location.at(1));
    macWriteButton =
        TabWinBase::button(group, "cmd/oper/basic/editMac/write", this, &BasicPanel::writeMac);
    macReadButton =
        TabWinBase::button(group, "cmd/oper/basic/editMac/read", this, &BasicPanel::readMac);
    for (QWidget* w : {addr.at(0), location.at(0), static_cast<QWidget*>(macWriteButton),
                       static_cast<QWidget*>(macReadButton)})
        column->addWidget(w);
    return group;
}

QWidget* BasicPanel::buildNvGroup() {
    auto* group = new SysGroupBox(this, TabWinBase::word("cmd/oper/basic/editNV"));
    auto* column = new SysVLayout(group);
    const QList<QWidget*> name =
        sysMakeLineRow(TabWinBase::word("cmd/oper/basic/editNV/name"), 1, 32, group);
    const QList<QWidget*> value =
        sysMakeLineRow(TabWinBase::word("cmd/oper/basic/editNV/value"), 1, 32, group);
    const QList<QWidget*> type = sysMakeComboRow(
        TabWinBase::word("cmd/oper/basic/editNV/type"),
        {QStringLiteral("AMT"), QStringLiteral("DEVELOP"), QStringLiteral("CUSTOMER")}, group);
    nvNameEdit = qobject_cast<SysLineEdit*>(name.at(1));
    nvValueEdit = qobject_cast<SysLineEdit*>(value.at(1));
    nvTypeBox = qobject_cast<SysComboBox*>(type.at(1));
    nvWriteButton =
        TabWinBase::button(group, "cmd/oper/basic/editNV/action/write", this, &BasicPanel::writeNv);
    nvReadButton =
        TabWinBase::button(group, "cmd/oper/basic/editNV/action/read", this, &BasicPanel::readNv);
    nvRemoveButton = TabWinBase::button(group, "cmd/oper/basic/editNV/action/remove", this,
                                        &BasicPanel::removeNv);
    nvReadAllButton = TabWinBase::button(group, "cmd/oper/basic/editNV/action/readAll", this,
                                         &BasicPanel::readAllNv);
    for (QWidget* w : {name.at(0), value.at(0), type.at(0)})
        column->addWidget(w);
    for (SysButton* b : {nvWriteButton, nvReadButton, nvRemoveButton, nvReadAllButton})
        column->addWidget(b);
    // Only the customer store is written and cleared from here.
    const auto customerOnly = [this](int index) {
        const bool customer = index == 2;
        nvWriteButton->setEnabled(customer);
        nvRemoveButton->setEnabled(customer);
    };
    connect(nvTypeBox, QOverload<int>::of(&QComboBox::currentIndexChanged), this, customerOnly);
    nvTypeBox->setCurrentIndex(0);
    customerOnly(nvTypeBox->currentIndex());
    return group;
}

bool BasicPanel::portOpen() {
    if (page_->comPort.isOpen())
        return true;
    page_->errorLine("cmd/pleaseOpenPort");
    return false;
}

void BasicPanel::echoOffAfter(int ms) {
    // The port may be closed by then: the command fails without a line.
    QTimer::singleShot(ms, this, [this] { page_->engine.setEcho(page_->comPort, false, 0); });
}

void BasicPanel::switchVersion() {
    if (!portOpen())
        return;
    const QString item = versionBox->currentText();
    if (!page_->engine.switchVersion(page_->comPort, versionBox->currentIndex())) {
        page_->errorLine("cmd/oper/basic/switchVersion/failed", item);
        return;
    }
    page_->engine.setEcho(page_->comPort, false, 0);
    page_->infoLine("cmd/oper/basic/switchVersion/success", item);
}

void BasicPanel::switchEcho() {
    if (!portOpen())
        return;
    const QString item = echoBox->currentText();
    if (page_->engine.setEcho(page_->comPort, echoBox->currentIndex() == 0, 0))
        page_->infoLine("cmd/oper/basic/switchEcho/execSuccessFmt", item);
    else
        page_->errorLine("cmd/oper/basic/switchEcho/execFailedFmt", item);
}

void BasicPanel::hardwareRestart() {
    if (!portOpen())
        return;
    if (page_->engine.hardwareRestart(page_->comPort, 0))
        page_->infoLine("cmd/oper/basic/restart/hardwareRestart/restartSuccess");
    else
        page_->errorLine("cmd/oper/basic/restart/hardwareRestart/restartFailed");
    echoOffAfter(kHardRestartEchoMs);
}

void BasicPanel::softwareRestart() {
    if (!portOpen())
        return;
    if (page_->engine.softwareRestart(page_->comPort, false))
        page_->infoLine("cmd/oper/basic/restart/softwareRestart/restartSuccess");
    else
        page_->errorLine("cmd/oper/basic/restart/softwareRestart/restartFailed");
    echoOffAfter(kSoftRestartEchoMs);
}

void BasicPanel::readRegister() {
    const unsigned address = hexValue(regAddrEdit);
    unsigned value = 0;
    if (!page_->engine.getRegister(page_->comPort, address, value)) {
        page_->errorLine("cmd/oper/basic/editRegister/action/read/failedFmt", address);
        return;
    }
    regValueEdit->setText(QString::asprintf("0x%x", value));
    page_->infoLine("cmd/oper/basic/editRegister/action/read/successFmt", address, value);
}

void BasicPanel::writeRegister() {
    const unsigned address = hexValue(regAddrEdit);
    const unsigned value = hexValue(regValueEdit);
    if (page_->engine.setRegister(page_->comPort, address, value))
        page_->infoLine("cmd/oper/basic/editRegister/action/write/successFmt", address, value);
    else
        page_->errorLine("cmd/oper/basic/editRegister/action/write/failedFmt", address, value);
}

void BasicPanel::writeMac() {
    if (!portOpen())
        return;
    const QString mac = macEdit->text().trimmed();
    const QString location = macLocationBox->currentText();
    if (page_->engine.setMac(page_->comPort, macLocationBox->currentIndex(), mac))
        page_->infoLine("cmd/oper/basic/editMac/write/successFmt", location, mac);
    else
        page_->errorLine("cmd/oper/basic/editMac/write/failedFmt", location, mac);
}

void BasicPanel::readMac() {
    if (!portOpen())
        return;
    QString mac;
    if (page_->engine.getMac(page_->comPort, mac))
        page_->infoLine("cmd/oper/basic/editMac/read/successFmt", mac);
    else
        page_->errorLine("cmd/oper/basic/editMac/read/failed");
}

void BasicPanel::writeNv() {
    if (!portOpen())
        return;
    const QString name = nvNameEdit->text().trimmed();
    const QString value = nvValueEdit->text().trimmed();
    if (name.isEmpty() || value.isEmpty()) {
        page_->errorLine("cmd/oper/basic/editNV/nameAndValueCanNotBeEmpty");
        return;
    }
    const QString type = nvTypeBox->currentText();
    if (page_->engine.setNv(page_->comPort, nvTypeBox->currentIndex() + 1, name, value))
        page_->infoLine("cmd/oper/basic/editNV/action/write/successFmt", type, name, value);
    else
        page_->errorLine("cmd/oper/basic/editNV/action/write/failedFmt", type, name, value);
}

void BasicPanel::readNv() {
    if (!portOpen())
        return;
    const QString name = nvNameEdit->text().trimmed();
    if (name.isEmpty()) {
        page_->errorLine("cmd/oper/basic/editNV/nameCanNotBeEmpty");
        return;
    }
    const QString type = nvTypeBox->currentText();
    QString value;
    if (page_->engine.getNv(page_->comPort, nvTypeBox->currentIndex() + 1, name, value))
        page_->infoLine("cmd/oper/basic/editNV/action/read/successFmt", type, name, value);
    else
        page_->errorLine("cmd/oper/basic/editNV/action/read/failedFmt", type, name);
}

void BasicPanel::removeNv() {
    if (!portOpen())
        return;
    const QString name = nvNameEdit->text().trimmed();
    if (name.isEmpty()) {
        page_->errorLine("cmd/oper/basic/editNV/nameCanNotBeEmpty");
        return;
    }
    const QString type = nvTypeBox->currentText();
    if (page_->engine.removeNv(page_->comPort, nvTypeBox->currentIndex() + 1, name))
        page_->infoLine("cmd/oper/basic/editNV/action/remove/successFmt", type, name);
    else
        page_->errorLine("cmd/oper/basic/editNV/action/remove/failedFmt", type, name);
}

void BasicPanel::readAllNv() {
    if (!portOpen())
        return;
    const QString type = nvTypeBox->currentText();
    QList<QStringList> entries;
    if (!page_->engine.readAllNv(page_->comPort, nvTypeBox->currentIndex() + 1, entries)) {
        page_->errorLine("cmd/oper/basic/editNV/action/readAll/failedFmt", type);
        return;
    }
    page_->infoLine("cmd/oper/basic/editNV/action/readAll/successFmt", type);
    for (const QStringList& entry : entries)
        page_->infoLine("cmd/oper/basic/editNV/action/readAll/nameAndValueFmt", entry.value(0),
                        entry.value(1));
}

void BasicPanel::readVersionState() {
    if (!portOpen())
        return;
    int state = -1;
    if (!page_->engine.getVersionState(page_->comPort, state)) {
        page_->errorLine("cmd/oper/basic/getState/getCurVersionFailed");
        return;
    }
    const QStringList names = TabWinBase::wordList("cmd/oper/basic/switchVersion/versionList");
    const QString name = state >= 0 && state < names.size()
                             ? names[state]
                             : TabWinBase::word("cmd/oper/basic/switchVersion/invalidVersionState");
    page_->infoLine("cmd/oper/basic/getState/curVersionFmt", name);
}
