#include "kit/SysSerialComboBox.h"

#include "base/PortTable.h"
#include "kit/SysLabel.h"
#include "kit/SysWidget.h"

#include <QFile>

#include <sys/stat.h>
#include <time.h>

#include <algorithm>
#include <array>

namespace {

// The folders whose entries come and go with the ports: device nodes (a USB adapter plugged in
// or out), ptys (the target of a virtual port going away) and the virtual ports themselves.
// Adding or removing an entry changes a folder's modification time.
constexpr std::array<const char*, 2> kDeviceFolders = {"/dev", "/dev/pts"};

qint64 nanoseconds(const timespec& t) {
    return qint64(t.tv_sec) * 1000000000 + t.tv_nsec;
}

// The state of the folders as bytes, and the newest change among them.
QByteArray folderStamp(qint64* newestNs) {
    QByteArray stamp;
    *newestNs = 0;
    auto add = [&](const QByteArray& path) {
        struct stat st {};
        if (::stat(path.constData(), &st) != 0) {
            stamp += '-';
            return;
        }
        const qint64 fields[] = {qint64(st.st_ino), nanoseconds(st.st_mtim)};
        stamp.append(reinterpret_cast<const char*>(fields), sizeof fields);
        *newestNs = std::max(*newestNs, fields[1]);
    };
    for (const char* folder : kDeviceFolders)
        add(folder);
    add(QFile::encodeName(PortTable::virtualPortDir()));
    return stamp;
}

qint64 wallClockNs() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return nanoseconds(now);
}

} // namespace

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
    if (listingMayHaveChanged())
        relist(cur);
    report(cur, curIndex);
}

bool SysSerialComboBox::listingMayHaveChanged() {
    qint64 newestNs = 0;
    const QByteArray stamp = folderStamp(&newestNs);
    // A folder's time moves in steps of a clock tick, so a change in the tick of the last
    // listing may not show in it: such a listing is taken again.
    constexpr qint64 kClockTickNs = 100 * 1000000;
    const bool same = stamp == listedStamp && newestNs + kClockTickNs < listedAtNs;
    if (same)
        return false;
    listedStamp = stamp;
    listedAtNs = wallClockNs();
    return true;
}

void SysSerialComboBox::relist(const QString& cur) {
    const QStringList names = PortTable::allPorts();
    const int found = names.indexOf(cur);

    // Rebuilt whole, so that a port that came back shows up again; the choice follows its
    // name, not its row.
    ports = names;
    clear();
    addItems(names);
    setCurrentIndex(found);
}

void SysSerialComboBox::report(const QString& cur, int curIndex) {
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
