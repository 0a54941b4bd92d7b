// Does the terminal keep up with a board that prints without pause?
//
//   QT_QPA_PLATFORM=offscreen build/tests/bench/bench_terminal [seconds] [bytes per second]
//
// The real window shows the command page's terminal on a simulated board that paces every
// byte at 2 Mbaud (10 bits a byte) and prints numbered lines at the given rate (200000 unless
// told) for the given time (60 s unless told). Prints the longest stall of the interface
// thread (the largest gap between ticks of a 5 ms timer, less 5 ms), the mean cost of one
// append and of one KB appended over the first and the last tenth of the run, the memory the
// process gained and the bytes that never reached the screen.

#include "kit/SysComboBox.h"
#include "kit/SysSerialComboBox.h"
#include "kit/SysStateButton.h"
#include "kit/SysTab.h"
#include "kit/SysTextEdit.h"
#include "pages/CmdWindow.h"
#include "pages/SerialTool.h"
#include "shell/MainWindow.h"
#include "shell/PluginEntry.h"
#include "sim/BoardSim.h"
#include "support/HostWords.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTabWidget>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

namespace {

constexpr int kBaud = 2000000;

long residentKb() {
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').first().toLong();
    return -1;
}

struct Append {
    double atSeconds;
    double ms;
    int bytes;
};

void printCost(const char* when, const std::vector<Append>& appends, double from, double to) {
    double ms = 0;
    long bytes = 0;
    int count = 0;
    for (const Append& a : appends) {
        if (a.atSeconds < from || a.atSeconds >= to)
            continue;
        ms += a.ms;
        bytes += a.bytes;
        ++count;
    }
    if (count == 0) {
        std::printf("  append cost, %-6s no appends\n", when);
        return;
    }
    std::printf(
        "  append cost, %-6s %.3f ms per append (%d appends, %.1f KB each), %.3f ms per KB\n", when,
        ms / count, count, bytes / 1024.0 / count, ms / (bytes / 1024.0));
}

} // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    const int seconds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 60;
    const int rate = argc > 2 ? std::max(1000, std::atoi(argv[2])) : 200000;

    HostWords words;
    QFile::remove(words.configDir() + QStringLiteral("/serial.config"));
    auto* window = static_cast<MainWindow*>(Create());
    window->setTextService(&words);
    window->init();
    window->resize(1280, 900);
    window->show();
    CmdWindow* page = cmdWindowInstance;
    SerialTool* tool = page->serialTool;
    window->findChild<QTabWidget*>()->setCurrentWidget(page);
    page->tabs->setCurrentWidget(tool);

    BoardSim::Options options;
    options.initialBaud = kBaud;
    options.paceAtBaud = true;
    BoardSim board(options);
    board.startFirmware();
    if (!board.publish(QStringLiteral("benchTerm"))) {
        std::fprintf(stderr, "bench_terminal: cannot publish the simulated board\n");
        return 1;
    }
    QMetaObject::invokeMethod(page->portCombo, "onTimerTimeout");
    page->portCombo->setCurrentText(QStringLiteral("benchTerm"));
    page->baudCombo->setCurrentText(QString::number(kBaud));
    page->portButton->click();
    if (!page->comPort.isOpen()) {
        std::fprintf(stderr, "bench_terminal: the page did not open the port\n");
        return 1;
    }

    // The terminal's own receiver, timed.
    QElapsedTimer run;
    std::vector<Append> appends;
    long shownBytes = 0;
    QObject::disconnect(&tool->recvThread, &SerialRecvThread::recvMessage, tool, nullptr);
    QObject::connect(
        &tool->recvThread, &SerialRecvThread::recvMessage, tool, [&](const QString& text) {
            tool->recvThread.taken();
            QElapsedTimer cost;
            cost.start();
            tool->appendOutput(text, false, true);
            const int bytes = text.toUtf8().size();
            appends.push_back({run.elapsed() / 1000.0, cost.nsecsElapsed() / 1e6, bytes});
            shownBytes += bytes;
        });

    // The interface thread's pulse.
    QElapsedTimer sinceTick;
    qint64 longestGapMs = 0;
    QTimer pulse;
    pulse.setTimerType(Qt::PreciseTimer);
    QObject::connect(&pulse, &QTimer::timeout,
                     [&] { longestGapMs = std::max(longestGapMs, sinceTick.restart()); });

    // The board prints numbered lines of about 100 bytes, in slices every 10 ms.
    std::atomic<bool> printing{true};
    std::atomic<long> printedBytes{0};
    const long rssBefore = residentKb();
    run.start();
    sinceTick.start();
    pulse.start(5);
    std::thread printer([&] {
        const auto start = std::chrono::steady_clock::now();
        long line = 0;
        QByteArray pending;
        for (int slice = 1; printing; ++slice) {
            const long due = long(double(rate) * slice / 100.0);
            while (printedBytes + pending.size() < due)
                pending += QByteArray::number(qlonglong(line++)).rightJustified(8, '0') +
                           ": the quick brown fox jumps over the lazy dog, 0123456789 "
                           "abcdefghijklmnopqrstuvwxyz\r\n";
            board.send(pending);
            printedBytes += pending.size();
            pending.clear();
            std::this_thread::sleep_until(start + std::chrono::milliseconds(10 * slice));
            if (std::chrono::steady_clock::now() - start >= std::chrono::seconds(seconds))
                printing = false;
        }
    });
    while (printing)
        QTest::qWait(100);
    printer.join();
    // What is on its way still arrives.
    (void)QTest::qWaitFor([&] { return shownBytes >= printedBytes; }, 5000);
    pulse.stop();
    const long rssAfter = residentKb();

    std::printf("terminal at %d bytes/s for %d s, 2 Mbaud paced:\n", rate, seconds);
    std::printf("  bytes printed %ld, shown %ld, lost %ld\n", long(printedBytes), shownBytes,
                long(printedBytes) - shownBytes);
    std::printf("  longest interface stall %lld ms\n",
                qlonglong(std::max<qint64>(0, longestGapMs - 5)));
    printCost("first", appends, 0, seconds / 10.0);
    printCost("last", appends, seconds * 0.9, seconds + 10.0);
    std::printf("  memory gained %.1f MB for %.1f MB of text shown (%d paragraphs)\n",
                (rssAfter - rssBefore) / 1024.0, shownBytes / 1048576.0,
                tool->outputEdit->document()->blockCount());
    std::fflush(stdout);
    Release();
    return 0;
}
