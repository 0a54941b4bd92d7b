#pragma once

#include "engines/AioEntry.h"
#include "shell/SysLogLevel.h"

#include <QString>
#include <QVector>

#include <functional>

// One line of the download page's file list, as its widgets hold it.
struct DownloadRow {
    bool selected = false;
    bool toRam = false;
    QString path;
    QString addr;
};

// The download page's values at one moment, taken on the interface thread, so that a run on
// its own thread never reads a widget. It also holds the list's checks.
class DownloadSettings {
public:
    // A line is made only when it is logged: a run whose page has gone makes none, and so
    // asks nothing of a window that is no longer there.
    using Line = std::function<QString()>;
    using Log = std::function<void(SYS_LOG_LEVEL, const Line&)>;

    int runMode = 0; // 0 stub and file list, 1 all-in-one image
    int portNumber = -1;
    bool uartBoot = true;
    bool bigBlock = true;
    QString bootBaud;
    QString dlBaud;
    QString startupAddr;
    QString stubPath;
    QString aioPath;
    QVector<DownloadRow> rows;
    // Read every flash entry back before the software starts, and fail at the first byte that
    // differs. The page leaves it off; the command line's --verify turns it on.
    bool verify = false;

    // The selected rows as entries, in list order; false after one logged line.
    bool collectEntries(QVector<AioEntry>& out, const Log& log) const;
    // Start address, stub, every selected row, and no address or path twice.
    bool validateList(const Log& log) const;

    // An address field as the list reads it: base 16, "0x" allowed, -1 when empty.
    static qint64 rowAddress(const QString& text);
    // startupAddr as an unsigned base-16 number.
    uint32_t startupAddress() const;
};
