// bramble-sim: a simulated QZ4410/QZ4420 board on a virtual serial port.
//
//   bramble-sim [--name sim0] [--sync 1|51] [--frames | --firmware] [--flash-size BYTES]
//               [--flash-file FILE]
//               [--baud RATE] [--pace] [--no-reset-on-open] [--quiet]
//
// Publishes the port under its name in the virtual port folder, where Bramble's port boxes
// list it, and runs until SIGINT or SIGTERM. The board's firmware answers the text commands
// once the stub has started it, or after a reset when "amt_start N" comes. Lines on standard
// input: "reset" pulses the board's reset line, "status" tells its stage and rate, "quit" ends.
// The flash starts erased with an NV sector at 0 that names an OTA status range, or holds the
// bytes of --flash-file from its first address on.

#include "engines/AppQZ4420Imple.h"
#include "sim/BoardSim.h"
#include "sim/SimFirmware.h"
#include "sim/SimNvSector.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cstdio>
#include <string>

namespace {

void say(const QString& line) {
    std::printf("%s\n", line.toLocal8Bit().constData());
    std::fflush(stdout);
}

QString stageName(BoardSim::Stage stage) {
    switch (stage) {
    case BoardSim::Stage::Rom:
        return QStringLiteral("ROM");
    case BoardSim::Stage::Stub:
        return QStringLiteral("stub");
    case BoardSim::Stage::Firmware:
        return QStringLiteral("firmware");
    }
    return QString();
}

// Reads what standard input has and hands over each whole line.
template <typename Fn> bool readLines(std::string& pending, Fn onLine) {
    char buf[512];
    const ssize_t n = ::read(STDIN_FILENO, buf, sizeof buf);
    if (n <= 0)
        return false;
    pending.append(buf, size_t(n));
    for (size_t end; (end = pending.find('\n')) != std::string::npos;) {
        onLine(QString::fromLocal8Bit(pending.data(), int(end)).trimmed());
        pending.erase(0, end + 1);
    }
    return true;
}

} // namespace

// Bytes that look like a program but are only a fixed pattern.
QByteArray demoBytes(int n, uint32_t seed) {
    QByteArray b(n, '\0');
    for (int i = 0; i < n; ++i) {
        seed = seed * 1103515245u + 12345u;
        b[i] = char(seed >> 24);
    }
    return b;
}

// Writes an all-in-one image that this board takes: a stub for RAM at 0x20000000, a program
// for flash at 0x10000 (where the download page starts the software by default) and a data
// file for flash at 0x200000.
int makeDemoImage(const QString& path) {
    QTemporaryDir dir;
    struct Part {
        const char* name;
        int size;
        uint32_t address;
    };
    const Part parts[] = {{"stub.bin", 6 * 1024, 0x20000000},
                          {"app.bin", 160 * 1024, 0x10000},
                          {"data.bin", 8 * 1024, 0x200000}};
    for (const Part& part : parts) {
        QFile file(dir.filePath(part.name));
        if (!file.open(QIODevice::WriteOnly) ||
            file.write(demoBytes(part.size, part.address)) != part.size) {
            std::fprintf(stderr, "bramble-sim: cannot write %s\n", part.name);
            return 1;
        }
    }
    QVector<AioEntry> entries(2);
    for (int i = 0; i < 2; ++i) {
        entries[i].path = dir.filePath(parts[i + 1].name);
        entries[i].startAddr = parts[i + 1].address;
    }
    AppQZ4420Imple engine;
    QObject::connect(&engine, &AppImpleBase::sendLog, [](SYS_LOG_LEVEL, const QString& line) {
        std::fprintf(stderr, "bramble-sim: %s\n", line.toLocal8Bit().constData());
    });
    if (!engine.createAio(dir.filePath("stub.bin"), entries, path, parts[0].address))
        return 1;
    std::printf("demo image: %s\n", path.toLocal8Bit().constData());
    return 0;
}

int main(int argc, char** argv) {
    // The stop signals are taken through a descriptor; blocked here, before the board's thread
    // starts, they reach no thread otherwise.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);
    const int signalFd = signalfd(-1, &stopSignals, SFD_CLOEXEC);

    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("bramble-sim"));
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("A simulated QZ4410/QZ4420 board on a virtual serial port."));
    parser.addHelpOption();
    const QCommandLineOption nameOption(QStringLiteral("name"),
                                        QStringLiteral("Port name to publish (default sim0)."),
                                        QStringLiteral("NAME"), QStringLiteral("sim0"));
    const QCommandLineOption syncOption(
        QStringLiteral("sync"),
        QStringLiteral("Sync answer: 1 for the ROM's raw dialogue, 51 for frames (default 1)."),
        QStringLiteral("ANSWER"), QStringLiteral("1"));
    const QCommandLineOption flashOption(QStringLiteral("flash-size"),
                                         QStringLiteral("Flash size in bytes (default 4 MiB)."),
                                         QStringLiteral("BYTES"), QStringLiteral("4194304"));
    const QCommandLineOption baudOption(QStringLiteral("baud"),
                                        QStringLiteral("Rate after reset (default 115200)."),
                                        QStringLiteral("RATE"), QStringLiteral("115200"));
    const QCommandLineOption paceOption(QStringLiteral("pace"),
                                        QStringLiteral("Carry bytes at the line's rate."));
    const QCommandLineOption resetOption(
        QStringLiteral("reset-on-open"),
        QStringLiteral("Restart the board each time the port is opened (the default)."));
    const QCommandLineOption noResetOption(QStringLiteral("no-reset-on-open"),
                                           QStringLiteral("Keep the board's state across opens."));
    const QCommandLineOption framesOption(
        QStringLiteral("frames"),
        QStringLiteral("The board speaks frames from the start and after every reset, as a "
                       "running stub does (for the flash tab); implies --no-reset-on-open."));
    const QCommandLineOption firmwareOption(
        QStringLiteral("firmware"),
        QStringLiteral("The board's firmware runs from the start, answering text commands (for "
                       "the command tab); implies --no-reset-on-open."));
    const QCommandLineOption flashFileOption(
        QStringLiteral("flash-file"), QStringLiteral("Bytes the flash holds from its start."),
        QStringLiteral("FILE"));
    const QCommandLineOption quietOption(QStringLiteral("quiet"),
                                         QStringLiteral("Do not print what the board does."));
    const QCommandLineOption demoOption(
        QStringLiteral("make-demo-image"),
        QStringLiteral("Write an all-in-one image that the board takes, and quit."),
        QStringLiteral("file"));
    parser.addOptions({nameOption, syncOption, flashOption, baudOption, paceOption, resetOption,
                       noResetOption, framesOption, firmwareOption, flashFileOption, quietOption,
                       demoOption});
    parser.process(app);
    if (parser.isSet(demoOption))
        return makeDemoImage(parser.value(demoOption));

    BoardSim::Options options;
    bool ok = false;
    const uint sync = parser.value(syncOption).toUInt(&ok);
    if (!ok || (sync != 1 && sync != 51)) {
        std::fprintf(stderr, "bramble-sim: --sync takes 1 or 51\n");
        return 2;
    }
    options.syncAnswer = uint8_t(sync);
    options.flashSize = parser.value(flashOption).toUInt(&ok, 0);
    if (!ok || options.flashSize == 0 || options.flashSize > 256u * 1024 * 1024) {
        std::fprintf(stderr, "bramble-sim: --flash-size takes 1 to 268435456 bytes\n");
        return 2;
    }
    options.initialBaud = parser.value(baudOption).toUInt(&ok);
    if (!ok || options.initialBaud == 0) {
        std::fprintf(stderr, "bramble-sim: --baud takes a rate\n");
        return 2;
    }
    options.paceAtBaud = parser.isSet(paceOption);
    options.framesFromStart = parser.isSet(framesOption);
    const bool firmwareFromStart = parser.isSet(firmwareOption);
    options.resetOnOpen =
        !parser.isSet(noResetOption) && !options.framesFromStart && !firmwareFromStart;
    // The OTA status in the last 8 KB of the flash (the second sector on a small one).
    const uint32_t otaAt = options.flashSize >= 0x4000 ? options.flashSize - 0x2000 : 0x1000;
    QByteArray flash = SimNvSector::make({{"ota_status", QByteArray::number(otaAt, 16) + ",2000"}});
    if (parser.isSet(flashFileOption)) {
        QFile file(parser.value(flashFileOption));
        if (!file.open(QIODevice::ReadOnly)) {
            std::fprintf(stderr, "bramble-sim: cannot read %s\n",
                         file.fileName().toLocal8Bit().constData());
            return 2;
        }
        flash = file.read(options.flashSize);
    }

    BoardSim board(options);
    if (!board.isValid()) {
        std::fprintf(stderr, "bramble-sim: cannot make a pseudo terminal\n");
        return 1;
    }
    board.setFlash(options.flashBase, flash);
    SimFirmware firmware(board);
    if (firmwareFromStart)
        board.startFirmware();
    if (!parser.isSet(quietOption))
        board.setEventLog(say);
    const QString name = parser.value(nameOption);
    if (!board.publish(name)) {
        std::fprintf(stderr, "bramble-sim: cannot publish the port %s\n",
                     name.toLocal8Bit().constData());
        return 1;
    }
    say(QStringLiteral("device: %1").arg(QString::fromStdString(board.devicePath())));
    say(QStringLiteral("link: %1").arg(board.publishedLink()));

    std::string pending;
    bool stdinOpen = true;
    bool running = true;
    while (running) {
        pollfd fds[2] = {{signalFd, POLLIN, 0}, {stdinOpen ? STDIN_FILENO : -1, POLLIN, 0}};
        if (::poll(fds, 2, -1) < 0)
            continue;
        if (fds[0].revents & POLLIN)
            break;
        if (fds[1].revents & (POLLIN | POLLHUP)) {
            stdinOpen = readLines(pending, [&](const QString& line) {
                if (line == QLatin1String("reset")) {
                    board.reset();
                } else if (line == QLatin1String("status")) {
                    say(QStringLiteral("stage %1, rate %2, host rate %3")
                            .arg(stageName(board.stage()))
                            .arg(board.baud())
                            .arg(board.hostBaud()));
                } else if (line == QLatin1String("quit")) {
                    running = false;
                } else if (!line.isEmpty()) {
                    say(QStringLiteral("commands: reset, status, quit"));
                }
            });
        }
    }
    say(QStringLiteral("stopping"));
    return 0;
}
