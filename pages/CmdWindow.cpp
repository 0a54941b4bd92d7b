#include "pages/CmdWindow.h"

#include "base/PortTable.h"
#include "kit/SysComboBox.h"
#include "kit/SysGroupBox.h"
#include "kit/SysHLayout.h"
#include "kit/SysSerialComboBox.h"
#include "kit/SysStateButton.h"
#include "kit/SysTab.h"
#include "pages/BasicPanel.h"
#include "pages/BleRfPanel.h"
#include "pages/EfusePanel.h"
#include "pages/SerialTool.h"
#include "pages/WifiRfPanel.h"
#include "shell/MainWindow.h"

CmdWindow* cmdWindowInstance = nullptr;

CmdWindow::CmdWindow(QWidget* parent) : TabWinBase(parent) {
    cmdWindowInstance = this;
    hookEngineLog(&engine);
    // Turned before anything is in it: turning a full splitter lays out and styles it anew.
    setHorizontal(false);
    buildSettings();
    buildTabs();
    setStretchFactor(1, 1);
}

CmdWindow::~CmdWindow() {
    // The terminal's reader uses the port, which goes before the panels do.
    serialTool->recvThread.stop();
    // A page that is gone is reached through the pointer no more.
    if (cmdWindowInstance == this)
        cmdWindowInstance = nullptr;
}

void CmdWindow::buildSettings() {
    auto* group = new SysGroupBox(this, word("cmd/setting"));
    addWidget(group);
    auto* row = new SysHLayout(group);
    const QList<QWidget*> portRow = sysMakeSerialRow(word("cmd/setting/port"), true, group);
    portCombo = qobject_cast<SysSerialComboBox*>(portRow.at(1));
    portCombo->setObjectName(QStringLiteral("cmdPort"));
    const QList<QWidget*> baudRow =
        sysMakeComboRow(word("cmd/setting/baud"), sysBaudRates(), group);
    baudCombo = qobject_cast<SysComboBox*>(baudRow.at(1));
    baudCombo->setCurrentText(QStringLiteral("115200"));
    portButton = new SysStateButton(group);
    portButton->addState(QStringLiteral("OFF"), {word("cmd/setting/open"), "#409eff", true}, true);
    portButton->addState(QStringLiteral("ON"), {word("cmd/setting/close"), "#FF0000", true});
    row->addWidget(portRow.at(0));
    row->addWidget(baudRow.at(0));
    row->addWidget(portButton);
    connect(portButton, &QPushButton::clicked, this, &CmdWindow::portButtonClicked);
    connect(baudCombo, &QComboBox::currentTextChanged, this, &CmdWindow::baudChanged);
}

void CmdWindow::buildTabs() {
    tabs = new SysTab(this);
    addWidget(tabs);
    basicPanel = new BasicPanel(this, tabs);
    tabs->addTab(basicPanel, word("cmd/oper/basic"));
    efusePanel = new EfusePanel(this, tabs);
    tabs->addTab(efusePanel, word("cmd/oper/efuse"));
    wifiPanel = new WifiRfPanel(this, tabs);
    tabs->addTab(wifiPanel, word("rfTest/wifi"));
    blePanel = new BleRfPanel(this, tabs);
    tabs->addTab(blePanel, word("rfTest/ble"));
    serialTool = new SerialTool(tabs);
    tabs->addTab(serialTool, word("cmd/oper/serial"));
}

void CmdWindow::portButtonClicked() {
    if (portButton->isState(QStringLiteral("OFF"))) {
        const bool was = portButton->blockSignals(true);
        const bool opened = openPort(&comPort);
        portButton->blockSignals(was);
        if (opened)
            portButton->setState(QStringLiteral("ON"));
    } else if (closePort(&comPort)) {
        portButton->setState(QStringLiteral("OFF"));
    }
}

bool CmdWindow::openPort(ComPort* port) {
    // The port's name goes through the process's port table, so that "COM7", "ttyUSB0" and a
    // virtual port such as "sim0" all open.
    const QString name = portCombo->currentText().trimmed();
    if (name.isEmpty()) {
        errorLine("cmd/pleaseOpenPort");
        return false;
    }
    const int baud = baudCombo->currentText().trimmed().toInt();
    if (!engine.openComPort(*port, PortTable::numberOf(name), baud, false)) {
        errorLine("cmd/canNotOpenPort");
        return false;
    }
    rfTestStates.clear();
    engine.setEcho(*port, false, 0); // a silent board still counts as open
    infoLine("cmd/openPortSuccess");
    emit portOpenedSig(true);
    return true;
}

bool CmdWindow::closePort(ComPort* port) {
    // The terminal's reader lets go of the port before it closes.
    if (port == &comPort)
        serialTool->recvThread.stop();
    if (!port->close()) {
        errorLine("cmd/closePortFailed");
        return false;
    }
    infoLine("cmd/closePortSuccess");
    emit portOpenedSig(false);
    return true;
}

void CmdWindow::baudChanged(const QString& rate) {
    if (comPort.isOpen())
        comPort.setBaudrate(rate.trimmed().toInt());
}

bool CmdWindow::checkRfReady() {
    if (!comPort.isOpen()) {
        errorLine("rfTest/pleaseOpenPort");
        return false;
    }
    const int mode = wifiPanel->modeBox->currentIndex();
    if (mode >= 3 && mode <= 5) {
        errorLine("rfTest/wifi/invalidModeFmt", wifiPanel->modeBox->currentText());
        return false;
    }
    return true;
}
