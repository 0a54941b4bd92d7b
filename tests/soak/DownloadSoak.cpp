// The download page's main road, over and over against a fresh simulated board, with one fault
// drawn at random for each run. Every run must end by itself within its limit with one of two
// outcomes: the success line, the board's flash and RAM equal to the files and the software
// started; or a step's failure line right before the failed line. Either way the controls
// must be enabled again. Anything else stops the soak with the run's lines.
//
//   soak_download [runs] [seed] [-v]
//
// Prints a tally by fault and outcome; exits 1 at the first run that ends otherwise.
#include "kit/SysCheckBox.h"
#include "kit/SysFileSelect.h"
#include "kit/SysGroupBox.h"
#include "kit/SysLineEdit.h"
#include "kit/SysSerialComboBox.h"
#include "kit/SysTab.h"
#include "kit/SysTable.h"
#include "pages/DownloadWindow.h"
#include "shell/MainWindow.h"
#include "shell/PluginEntry.h"
#include "sim/BoardSim.h"
#include "support/HostWords.h"
#include "support/TestFiles.h"

#include "engines/AppQZ4420Imple.h"

#include <QApplication>
#include <QDateTime>
#include <QElapsedTimer>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <cstdio>
#include <map>
#include <random>
#include <thread>

namespace {

constexpr int kRunLimitMs = 120000;
// More faults of one kind than a run has replies to spoil.
constexpr int kNever = 20000;
constexpr uint32_t kStubAddr = 0x20000000;
constexpr uint32_t kAppAddr = 0x10000;
constexpr uint32_t kDataAddr = 0x200000;

enum class FaultKind {
    None,
    Drop,
    Delay,
    Split,
    CorruptCheck,
    WrongStart,
    WrongType,
    State1,
    State2,
    OutOfStep,
    SyncAnswer,
    LostSync, // sync words go unanswered
    Restart,  // the board restarts in its ROM at a moment in the run
    Silent,   // from some point on the board answers nothing
    Count
};

const char* kindName(FaultKind k) {
    static const char* const names[] = {"none",        "drop",        "delay",       "split",
                                        "corrupt-sum", "wrong-start", "wrong-type",  "state-1",
                                        "state-2",     "out-of-step", "sync-answer", "lost-sync",
                                        "restart",     "silent"};
    return names[int(k)];
}

// One run's draw: the board, the page's settings and the fault with the board event it waits
// for.
struct Draw {
    uint8_t syncAnswer = 1;
    bool allInOne = true;
    bool bigBlock = true;
    FaultKind kind = FaultKind::None;
    int atEvent = 0;
    int restartMs = 0;
    SimFault fault;
    int repeat = 1;
    QString text;
    std::tuple<uint8_t, bool, bool> config;
};

class Soak {
public:
    Soak(quint32 seed, bool verbose) : rng_(seed), verbose_(verbose) {}

    bool setUp() {
        window_ = static_cast<MainWindow*>(Create());
        window_->setTextService(&words_);
        window_->init();
        page_ = window_->findChild<DownloadWindow*>();
        log_ = window_->logTable();
        if (!page_ || !log_ || !dir_.isValid())
            return false;
        stub_ = pattern(2000, 1);
        app_ = pattern(22000, 2);
        data_ = pattern(5000, 3);
        writeFile(dir_.filePath("stub.bin"), stub_);
        writeFile(dir_.filePath("app.bin"), app_);
        writeFile(dir_.filePath("data.bin"), data_);
        QVector<AioEntry> list(2);
        list[0].path = dir_.filePath("app.bin");
        list[0].startAddr = kAppAddr;
        list[1].path = dir_.filePath("data.bin");
        list[1].startAddr = kDataAddr;
        AppQZ4420Imple engine;
        aioPath_ = dir_.filePath("soak.aio.bin");
        if (!engine.createAio(dir_.filePath("stub.bin"), list, aioPath_, kStubAddr))
            return false;
        page_->aioSelect->pathEdit->setText(aioPath_);
        page_->stubSelect->pathEdit->setText(dir_.filePath("stub.bin"));
        page_->startupAddrEdit->setText(QString::number(kStubAddr, 16));
        const QString rows[][2] = {{dir_.filePath("app.bin"), QString::number(kAppAddr, 16)},
                                   {dir_.filePath("data.bin"), QString::number(kDataAddr, 16)}};
        for (int i = 0; i < 2; ++i) {
            DownloadWindow::FileRow* row = page_->fileRows[i];
            row->select->setChecked(true);
            row->toRam->setChecked(false);
            row->file->pathEdit->setText(rows[i][0]);
            row->addr->setText(rows[i][1]);
        }
        portName_ = QStringLiteral("soak%1").arg(QCoreApplication::applicationPid());
        return true;
    }

    void tearDown() { Release(); }

    // Runs one download; false when it ended in neither allowed outcome.
    bool runOnce(int index) {
        Draw d = draw();
        BoardSim::Options o;
        o.resetOnOpen = true;
        o.syncAnswer = d.syncAnswer;
        BoardSim board(o);
        if (!board.publish(portName_)) {
            std::printf("run %d: the board could not be published\n", index);
            return false;
        }
        QMetaObject::invokeMethod(page_->portBox, "onTimerTimeout");
        page_->portBox->setCurrentText(portName_);
        page_->bigBlockCheck->setChecked(d.bigBlock);
        log_->clearRows();

        // The fault goes in when the board has done atEvent things.
        std::atomic<int> events{0};
        board.setEventLog([&](const QString&) {
            if (events.fetch_add(1) != d.atEvent || d.kind == FaultKind::None ||
                d.kind == FaultKind::Restart)
                return;
            for (int i = 0; i < d.repeat; ++i)
                board.inject(d.fault);
        });
        // A restart comes at a moment, not at an event: from a thread of its own.
        // A board whose software runs already has given its last reply: a restart then
        // comes too late to touch the run.
        std::atomic<bool> restarted{false};
        std::atomic<bool> restartedInRun{false};
        std::thread restarter;
        if (d.kind == FaultKind::Restart)
            restarter = std::thread([&] {
                std::this_thread::sleep_for(std::chrono::milliseconds(d.restartMs));
                restartedInRun = board.stage() != BoardSim::Stage::Firmware;
                board.reset();
                restarted = true;
            });

        QElapsedTimer took;
        took.start();
        QTest::mouseClick(d.allInOne ? page_->aioStartButton : page_->singleStartButton,
                          Qt::LeftButton);
        const QString success = words_.text("download/dlTab/download/success");
        const QString failed = words_.text("download/dlTab/download/failed");
        const bool ended = QTest::qWaitFor(
            [&] {
                const QString last = lastLine();
                return last == success || last == failed;
            },
            kRunLimitMs);
        // Message 1 gives the controls back right behind the last line.
        const bool enabled = QTest::qWaitFor(
            [&] { return page_->settingsBox->isEnabled() && page_->dlTabs->isEnabled(); }, 2000);
        const int ms = int(took.elapsed());
        if (restarter.joinable())
            restarter.join();
        // Reached: the fault went in and acted at least once before the run was over.
        const bool reached =
            d.kind == FaultKind::None ||
            (d.kind == FaultKind::Restart ? restartedInRun.load()
                                          : events > d.atEvent && board.pendingFaults() < d.repeat);
        board.setEventLog(nullptr);

        if (d.kind == FaultKind::None && ended) {
            events_[d.config] = std::max(events_[d.config], events.load());
            runMs_[d.config] = std::max(runMs_[d.config], ms);
        }
        const QStringList lines = runLines();
        QString outcome;
        QString trouble;
        if (!ended)
            trouble = QStringLiteral("no end within %1 s").arg(kRunLimitMs / 1000);
        else if (!enabled)
            trouble = QStringLiteral("controls still off");
        else if (lines.last() == success) {
            trouble = checkBoard(board, restarted);
            outcome = QStringLiteral("success");
        } else {
            outcome = failedStep(lines);
            if (outcome.isEmpty())
                trouble = QStringLiteral("the failed line without a step's line before it");
        }
        const QString kind = QString::fromLatin1(kindName(d.kind)) +
                             (reached ? QString() : QStringLiteral(" (not reached)"));
        if (verbose_ || !trouble.isEmpty())
            std::printf("run %d: %s%s -> %s (%d ms)%s%s\n", index, qPrintable(d.text),
                        reached ? "" : " (not reached)", qPrintable(outcome), ms,
                        trouble.isEmpty() ? "" : "\n  TROUBLE: ", qPrintable(trouble));
        if (!trouble.isEmpty()) {
            std::printf("  %s\n", qPrintable(lines.join(QStringLiteral("\n  "))));
            return false;
        }
        ++tally_[kind][outcome];
        totalMs_[kind] += ms;
        return true;
    }

    void printTally(int runs, qint64 ms) const {
        std::printf("%d runs in %.1f s, every one in an allowed outcome\n", runs, ms / 1000.0);
        for (const auto& [kind, outcomes] : tally_) {
            int n = 0;
            QStringList parts;
            for (const auto& [outcome, count] : outcomes) {
                n += count;
                parts << QStringLiteral("%1 %2").arg(outcome).arg(count);
            }
            std::printf("  %-26s %4d runs, mean %6.2f s: %s\n", qPrintable(kind), n,
                        totalMs_.at(kind) / 1000.0 / n,
                        qPrintable(parts.join(QStringLiteral(", "))));
        }
    }

private:
    Draw draw() {
        Draw d;
        d.syncAnswer = pick(2) ? 1 : 51;
        d.allInOne = pick(2);
        d.bigBlock = pick(2);
        d.config = std::make_tuple(d.syncAnswer, d.allInOne, d.bigBlock);
        // The first run of each set-up is clean and counts the board's events, so that later
        // faults land anywhere in a run.
        auto seen = events_.find(d.config);
        d.kind = seen == events_.end() ? FaultKind::None : FaultKind(pick(int(FaultKind::Count)));
        const int span = seen == events_.end() ? 1 : seen->second;
        d.atEvent = pick(span);
        static const int frameTypes[] = {-1, 1, 2, 6, 7};
        const int type = frameTypes[pick(5)];
        // Raw answers come only from a board whose ROM takes the stub in the raw dialogue.
        const SimFault::Match anyMatch[] = {SimFault::anyReply(), SimFault::frame(type),
                                            SimFault::rawHeader(), SimFault::rawBlock()};
        const SimFault::Match match = anyMatch[pick(d.syncAnswer == 1 ? 4 : 2)];
        switch (d.kind) {
        case FaultKind::None:
        case FaultKind::Count:
            break;
        case FaultKind::Drop:
            d.fault = SimFault::drop(match);
            break;
        case FaultKind::Delay:
            d.fault = SimFault::delay(20 + pick(1500), match);
            break;
        case FaultKind::Split: {
            std::vector<int> cuts;
            for (int at = 1 + pick(4); at < 12 && cuts.size() < 3; at += 1 + pick(5))
                cuts.push_back(at);
            d.fault = SimFault::split(cuts, pick(300), SimFault::frame(type));
            break;
        }
        case FaultKind::CorruptCheck:
            d.fault = SimFault::corruptCheck(SimFault::frame(type));
            break;
        case FaultKind::WrongStart:
            d.fault = SimFault::wrongStart(match, uint8_t(pick(256)));
            break;
        case FaultKind::WrongType:
            d.fault = SimFault::wrongType(SimFault::frame(type));
            break;
        case FaultKind::State1:
        case FaultKind::State2:
            d.fault = SimFault::state(d.kind == FaultKind::State1 ? 1 : 2, SimFault::frame(type));
            break;
        case FaultKind::OutOfStep:
            d.fault = SimFault::outOfStep(pick(24));
            d.atEvent = 0;
            break;
        case FaultKind::SyncAnswer:
            d.fault = SimFault::syncAnswer(uint8_t(pick(256)));
            d.repeat = pick(2) ? 1 + pick(5) : kNever; // a few wrong answers, or no right one
            d.atEvent = 0;
            break;
        case FaultKind::LostSync:
            d.fault = SimFault::drop(SimFault::syncWord());
            d.repeat = pick(2) ? 1 + pick(5) : kNever; // a few lost, or all of them
            d.atEvent = 0;
            break;
        case FaultKind::Restart:
            d.restartMs = pick(seen == events_.end() ? 1 : runMs_[d.config] + 1);
            break;
        case FaultKind::Silent:
            d.fault = SimFault::drop(SimFault::anyReply());
            d.repeat = kNever;
            break;
        }
        d.text = QStringLiteral("%1 answer %2, %3 blocks, %4 at event %5")
                     .arg(d.allInOne ? "all-in-one" : "file list")
                     .arg(d.syncAnswer)
                     .arg(d.bigBlock ? "4096-byte" : "1024-byte")
                     .arg(describe(d))
                     .arg(d.atEvent);
        return d;
    }

    static QString describe(const Draw& d) {
        QString s = QString::fromLatin1(kindName(d.kind));
        const SimFault& f = d.fault;
        if (d.kind == FaultKind::Restart)
            return s + QStringLiteral("(after %1 ms)").arg(d.restartMs);
        if (d.kind == FaultKind::None || d.kind == FaultKind::Silent)
            return s;
        static const char* const targets[] = {"any", "frame", "raw header", "raw block", "sync"};
        s += QStringLiteral("(%1").arg(targets[int(f.match.target)]);
        if (f.match.target == SimFault::Target::Frame)
            s += QStringLiteral(" %1").arg(f.match.frameType);
        if (f.ms)
            s += QStringLiteral(", %1 ms").arg(f.ms);
        if (f.value)
            s += QStringLiteral(", value %1").arg(f.value);
        if (d.repeat > 1)
            s += QStringLiteral(", x%1").arg(d.repeat);
        return s + ')';
    }

    int pick(int n) { return std::uniform_int_distribution<int>(0, n - 1)(rng_); }

    QString lastLine() const {
        const int row = log_->nextRow - 1;
        return row >= 0 && log_->item(row, 2) ? log_->item(row, 2)->text() : QString();
    }

    QStringList runLines() const {
        QStringList out;
        for (int r = 0; r < log_->nextRow; ++r)
            out << (log_->item(r, 2) ? log_->item(r, 2)->text() : QString());
        return out;
    }

    // The step whose line stands right before the failed line, or nothing.
    QString failedStep(const QStringList& lines) {
        if (lines.size() < 2 || lines.last() != words_.text("download/dlTab/download/failed"))
            return QString();
        const QString before = lines[lines.size() - 2];
        const auto fmt = [this](const char* key, const QString& arg) {
            return QString::asprintf(words_.text(key).toStdString().c_str(),
                                     arg.toStdString().c_str());
        };
        const std::map<QString, QString> steps = {
            {words_.text("download/dlTab/syncFailed"), "sync"},
            {fmt("download/dlTab/downloadStubFileFailedFmt", dir_.filePath("stub.bin")), "stub"},
            {fmt("download/dlTab/downloadFileFailedFmt", aioPath_), "stub"},
            {fmt("download/dlTab/downloadFileFailedFmt", dir_.filePath("app.bin")), "file"},
            {fmt("download/dlTab/downloadFileFailedFmt", dir_.filePath("data.bin")), "file"},
            {words_.text("download/dlTab/downloadFileFailed"), "file"},
            {QString::asprintf(
                 words_.text("download/dlTab/switchBaudrateFailedFmt").toStdString().c_str(),
                 page_->dlBaudBox->currentText().toInt()),
             "baud"},
            {words_.text("download/dlTab/softverStartCmdSendFailed"), "start"},
        };
        const auto step = steps.find(before);
        return step == steps.end() ? QString() : QStringLiteral("failed at ") + step->second;
    }

    // After a success: every file where it belongs and the software started; else what is not.
    // A board that restarted clears its RAM; it can only have done so after its last reply,
    // or the run would have failed, so its stub is not looked for then.
    QString checkBoard(BoardSim& board, bool restarted) {
        if (!restarted && board.ram(kStubAddr, uint32_t(stub_.size())) != stub_)
            return QStringLiteral("the stub in RAM differs");
        if (board.flash(kAppAddr, uint32_t(app_.size())) != app_)
            return QStringLiteral("the app in flash differs");
        if (board.flash(kDataAddr, uint32_t(data_.size())) != data_)
            return QStringLiteral("the data in flash differs");
        // Both tabs start the software at the start address of the file-list tab.
        if (board.startedAt() != kStubAddr)
            return QStringLiteral("the software was not started at 0x%1").arg(kStubAddr, 0, 16);
        return QString();
    }

    std::mt19937 rng_;
    bool verbose_;
    HostWords words_;
    MainWindow* window_ = nullptr;
    DownloadWindow* page_ = nullptr;
    SysTable* log_ = nullptr;
    QTemporaryDir dir_;
    QByteArray stub_, app_, data_;
    QString aioPath_;
    QString portName_;
    // Per set-up, from its clean runs: the board's events and the run's milliseconds.
    std::map<std::tuple<uint8_t, bool, bool>, int> events_;
    std::map<std::tuple<uint8_t, bool, bool>, int> runMs_;
    std::map<QString, std::map<QString, int>> tally_;
    std::map<QString, qint64> totalMs_;
};

} // namespace

int main(int argc, char** argv) {
    // A private runtime folder for the board's port link and for the page's settings, as the
    // test suite has, so that a soak neither sees nor disturbs a running Bramble.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QTemporaryDir runtime;
    qputenv("XDG_RUNTIME_DIR", runtime.path().toLocal8Bit());
    qputenv("XDG_CONFIG_HOME", (runtime.path() + "/config").toLocal8Bit());
    QApplication app(argc, argv);
    const QStringList args = app.arguments();
    const bool verbose = args.contains(QStringLiteral("-v"));
    QStringList numbers = args.mid(1);
    numbers.removeAll(QStringLiteral("-v"));
    const int runs = numbers.value(0, QStringLiteral("50")).toInt();
    const quint32 seed =
        numbers.size() > 1 ? numbers[1].toUInt() : quint32(QDateTime::currentMSecsSinceEpoch());
    std::printf("soak_download: %d runs, seed %u\n", runs, seed);
    std::fflush(stdout);
    Soak soak(seed, verbose);
    if (!soak.setUp()) {
        std::printf("set-up failed\n");
        return 1;
    }
    QElapsedTimer all;
    all.start();
    for (int i = 0; i < runs; ++i) {
        if (!soak.runOnce(i)) {
            soak.tearDown();
            return 1;
        }
        std::fflush(stdout);
    }
    soak.printTally(runs, all.elapsed());
    soak.tearDown();
    return 0;
}
