#include "pages/DownloadSettings.h"

#include "shell/MainWindow.h"

#include <QFileInfo>
#include <QSet>

namespace {

// A word of the host filled like every logged line: conversions take args, "%%" gives "%".
template <typename... Args> QString line(const char* key, Args... args) {
    return MainWindow::formatText(key, args...);
}

} // namespace

qint64 DownloadSettings::rowAddress(const QString& text) {
    if (text.isEmpty())
        return -1;
    return qint64(text.toUInt(nullptr, 16));
}

uint32_t DownloadSettings::startupAddress() const {
    return startupAddr.toUInt(nullptr, 16);
}

bool DownloadSettings::collectEntries(QVector<AioEntry>& out, const Log& log) const {
    for (int i = 0; i < rows.size(); ++i) {
        const DownloadRow& row = rows[i];
        if (!row.selected)
            continue;
        const qint64 address = rowAddress(row.addr);
        if (row.path.isEmpty()) {
            log(SYS_LOG_ERROR,
                [&] { return line("download/dlTab/singleFileDL/linePathEmptyFmt", i + 1); });
            return false;
        }
        if (!QFileInfo::exists(row.path)) {
            log(SYS_LOG_ERROR,
                [&] { return line("download/dlTab/singleFileDL/linePathExistFmt", i + 1); });
            return false;
        }
        if (address < 0) {
            log(SYS_LOG_ERROR,
                [&] { return line("download/dlTab/singleFileDL/lineAddrInvalidFmt", i + 1); });
            return false;
        }
        AioEntry entry;
        entry.toRam = row.toRam;
        entry.path = row.path;
        entry.startAddr = uint32_t(address);
        out.append(entry);
    }
    return true;
}

bool DownloadSettings::validateList(const Log& log) const {
    if (startupAddr.isEmpty()) {
        log(SYS_LOG_ERROR, [&] { return line("download/dlTab/singleFileDL/pleaseFillStartAddr"); });
        return false;
    }
    if (!QFileInfo::exists(stubPath) || !QFileInfo(stubPath).isFile()) {
        log(SYS_LOG_ERROR,
            [&] { return line("download/dlTab/singleFileDL/pleaseSelectStubFile"); });
        return false;
    }
    QVector<AioEntry> entries;
    if (!collectEntries(entries, log))
        return false;
    QSet<uint32_t> addresses;
    QSet<QString> paths;
    for (const AioEntry& entry : entries) {
        if (!QFileInfo::exists(entry.path)) {
            log(SYS_LOG_ERROR, [&] {
                return line("download/dlTab/singleFileDL/filePathExistFmt",
                            entry.path.toStdString().c_str());
            });
            return false;
        }
        if (addresses.contains(entry.startAddr) || paths.contains(entry.path)) {
            log(SYS_LOG_ERROR,
                [&] { return line("download/dlTab/singleFileDL/filePathOrStartAddrRepeat"); });
            return false;
        }
        addresses.insert(entry.startAddr);
        paths.insert(entry.path);
    }
    return true;
}
