// Start-up time and idle cost of the host with every tab in, as a user's machine sees them.
//
//   build/tests/bench/bench_host startup [runs]       whole process, spawn to window shown
//   build/tests/bench/bench_host idle [seconds] [runs] share of one core of an idle window
//
// Runs build/host/bramble-host (next to this program's build tree) under the offscreen
// platform and prints min, median and max of the runs.

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QThread>

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

QString hostPath() {
    return QDir(QCoreApplication::applicationDirPath()).filePath("../../host/bramble-host");
}

QProcess* startHost(const QStringList& args) {
    auto* host = new QProcess;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("QT_QPA_PLATFORM", "offscreen");
    host->setProcessEnvironment(env);
    host->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    host->start(hostPath(), args);
    return host;
}

// Processor time of a process so far, in seconds (user and system).
double cpuSeconds(qint64 pid) {
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray line = stat.readAll();
    // Fields after the command name, which is in parentheses and may hold spaces.
    const QList<QByteArray> f = line.mid(line.lastIndexOf(')') + 2).split(' ');
    return (f.value(11).toDouble() + f.value(12).toDouble()) / double(sysconf(_SC_CLK_TCK));
}

void print(const char* what, std::vector<double> v, const char* unit) {
    std::sort(v.begin(), v.end());
    std::printf("%s: min %.3f  median %.3f  max %.3f %s (%zu runs)\n", what, v.front(),
                v[v.size() / 2], v.back(), unit, v.size());
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const QByteArray mode = argc > 1 ? argv[1] : "startup";
    if (mode == "startup") {
        const int runs = argc > 2 ? std::max(1, atoi(argv[2])) : 5;
        std::vector<double> whole;
        for (int r = 0; r < runs; ++r) {
            QElapsedTimer clock;
            clock.start();
            QProcess* host = startHost({"--startup-report"});
            QByteArray out;
            while (!out.contains('\n') && host->waitForReadyRead(10000))
                out += host->readAllStandardOutput();
            whole.push_back(double(clock.nsecsElapsed()) / 1e9);
            std::printf("  %s", out.constData());
            host->waitForFinished(10000);
            delete host;
        }
        print("start to window shown, whole process", whole, "s");
        return 0;
    }
    const int seconds = argc > 2 ? std::max(1, atoi(argv[2])) : 20;
    const int runs = argc > 3 ? std::max(1, atoi(argv[3])) : 3;
    std::vector<double> share;
    for (int r = 0; r < runs; ++r) {
        QProcess* host = startHost({});
        host->waitForStarted();
        QThread::sleep(3); // start-up settles
        const double before = cpuSeconds(host->processId());
        QThread::sleep(ulong(seconds));
        const double after = cpuSeconds(host->processId());
        share.push_back(100 * (after - before) / seconds);
        host->kill();
        host->waitForFinished();
        delete host;
    }
    print("idle window, share of one core", share, "%");
    return 0;
}
