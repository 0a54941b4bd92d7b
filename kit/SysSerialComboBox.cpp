#include "kit/SysSerialComboBox.h"

#include "base/PortTable.h"
#include "kit/SysLabel.h"
#include "kit/SysWidget.h"

#include <QSerialPortInfo>

SysSerialComboBox::SysSerialComboBox(QWidget* parent) : SysComboBox(parent) {
    connect(&pollTimer, &QTimer::timeout, this, &SysSerialComboBox::onTimerTimeout);
}

void SysSerialComboBox::startPolling() {
    pollTimer.start(intervalMs);
}

void SysSerialComboBox::stopPolling() {
    pollTimer.stop();
}

bool SysSerialComboBox::isPolling() const {
    return pollTimer.isActive();
}

void SysSerialComboBox::setPollInterval(int ms) {
    intervalMs = ms;
}

QStringList SysSerialComboBox::foundPorts() const {
    return ports;
}

void SysSerialComboBox::onTimerTimeout() {
    QString cur = currentText();
    const int curIndex = currentIndex();

    QStringList names;
    const QList<QSerialPortInfo> infos = QSerialPortInfo::availablePorts();
    for (const QSerialPortInfo& info : infos)
        names << info.portName();
    names << PortTable::virtualPorts();
    const int found = names.indexOf(cur);

    // Rebuilt on every tick, so that a port that came back shows up again; the choice follows
    // its name, not its row.
    ports = names;
    clear();
    addItems(names);
    setCurrentIndex(found);

    if (curIndex >= 0) {
        lostReported = false;
        if (lastPort.isEmpty() || lastPort != cur) {
            emit currentPortChanged(cur, lastPort);
            lastPort = cur;
        }
    } else if (!lastPort.isEmpty() && !lostReported) {
        emit currentPortChanged(cur, lastPort);
        lostReported = true;
    }
}

QList<QWidget*> sysMakeSerialRow(QString label, bool startPolling, QWidget* parent) {
    auto* box = new SysSerialComboBox(parent);
    if (startPolling)
        box->startPolling();
    SysWidget* row = sysMakeWidgetRow(label, box, parent, Qt::AlignVCenter);
    return {row, box};
}

QStringList sysBaudRates() {
    // 177230 is not a rate of the usual series; it is offered on purpose.
    return {"9600",   "38400",  "57600",  "76800",  "115200", "177230", "230400",
            "460800", "576000", "691200", "806400", "921600", "2000000"};
}
