#pragma once

#include "kit/SysComboBox.h"

#include <QList>
#include <QStringList>
#include <QTimer>

// Port chooser: lists the machine's serial ports, then the virtual ports published for this
// user, and refreshes the list once a second while polling. A refresh lists the ports again only
// when the device folders or the virtual-port folder changed since it last did, so an idle box
// costs next to nothing. The user's choice is kept by name
// across refreshes; a chosen port that disappears leaves the box empty, and is reported once
// as a change to an empty name.
class SysSerialComboBox : public SysComboBox {
    Q_OBJECT

public:
    explicit SysSerialComboBox(QWidget* parent = nullptr);

    void startPolling();
    void stopPolling();
    bool isPolling() const;
    // Period of the refresh; takes effect at the next startPolling().
    void setPollInterval(int ms);
    // Names found at the last refresh, in the order shown.
    QStringList foundPorts() const;

signals:
    // The chosen port as of a refresh, and the one reported before it. A lost port comes as
    // an empty `port`.
    void currentPortChanged(const QString& port, const QString& previousPort);

private slots:
    void onTimerTimeout();

private:
    // Whether the folders the list is made from may have changed since the last listing.
    bool listingMayHaveChanged();
    // Lists the ports again and keeps the choice `cur` by name.
    void relist(const QString& cur);
    // Tells a new choice or a lost port (cur and curIndex as they were before the tick).
    void report(const QString& cur, int curIndex);

    QTimer pollTimer;
    int intervalMs = 1000;
    QStringList ports;
    QString lastPort;
    bool lostReported = false;
    // The folders' state at the last listing, and when that listing was made.
    QByteArray listedStamp;
    qint64 listedAtNs = -1;
};

// A form row "<label>:" with a port chooser, polling from the start when `startPolling`.
// Gives back the row widget, then the port chooser.
QList<QWidget*> sysMakeSerialRow(QString label, bool startPolling, QWidget* parent);

// The baud rates offered by the port settings of the pages, slowest first.
QStringList sysBaudRates();
