#pragma once

#include <QByteArray>
#include <QCoreApplication>
#include <QFile>
#include <QString>

#include <unistd.h>

// What the fuzz targets share: a Qt core application for the readers' Qt classes, and a file
// that holds the input, for readers that take a path. The file lives in memory (/dev/shm) and
// is named after the process, so that parallel fuzzing jobs do not share it.
namespace fuzz {

// Qt's warnings about what it reads (an unknown codec, a bad XML declaration) are the inputs'
// business, not findings; they only slow the run down.
inline void quiet(QtMsgType, const QMessageLogContext&, const QString&) {}

inline void startQt() {
    static const bool silenced = (qInstallMessageHandler(quiet), true);
    (void)silenced;
    static int argc = 1;
    static char name[] = "fuzz";
    static char* argv[] = {name, nullptr};
    static QCoreApplication app(argc, argv);
}

inline QString inputFile(const uint8_t* data, size_t size) {
    static const QString path = QStringLiteral("/dev/shm/bramble-fuzz-%1").arg(getpid());
    QFile file(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        file.write(reinterpret_cast<const char*>(data), qint64(size));
    return path;
}

} // namespace fuzz
