// Does the command line flash several boards as fast as one?
//
//   build/tests/bench/bench_cli [boards] [runs]
//
// Simulated boards pace every byte at the line rate (10 bits a byte): the ROM at 115200 baud,
// then 2,000,000 after the stub. The image holds a 1 KiB stub and 1 MiB for the flash. One call
// of bramble-cli downloads it to one board, then one call to `boards` boards (4 unless told).
// Prints the bound of one board (every byte of the stub at 115200 and of the 4096-byte frames
// and their replies at 2,000,000), each call's time (min, median, max of the runs), one board's
// efficiency against the bound, and the many-board call's time over the one-board call's.

#include "cli/CliApp.h"
#include "engines/AppQZ4420Imple.h"
#include "sim/BoardSim.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

namespace {

constexpr int kStubBytes = 1024;
constexpr int kFlashBytes = 1024 * 1024;
constexpr int kBlock = 4096;

// Seconds of each run of one call to `boards` fresh boards; empty when a call failed.
std::vector<double> timeCalls(int boards, int runs, const QString& image) {
    std::vector<double> seconds;
    for (int r = 0; r < runs; ++r) {
        std::vector<std::unique_ptr<BoardSim>> sims;
        QStringList args{"download", "--image", image, "--baud", "2000000"};
        BoardSim::Options options;
        options.paceAtBaud = true;
        for (int i = 0; i < boards; ++i) {
            sims.push_back(std::make_unique<BoardSim>(options));
            const QString name = QStringLiteral("benchCli%1").arg(i);
            if (!sims.back()->publish(name))
                return {};
            args << "--port" << name;
        }
        QString out;
        QString err;
        QTextStream outStream(&out);
        QTextStream errStream(&err);
        CliApp cli(outStream, errStream);
        QElapsedTimer timer;
        timer.start();
        const int status = cli.run(args);
        seconds.push_back(timer.nsecsElapsed() / 1e9);
        if (status != 0) {
            std::fprintf(stderr, "bench_cli: the call failed:\n%s\n", qPrintable(out));
            return {};
        }
    }
    std::sort(seconds.begin(), seconds.end());
    return seconds;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    const int boards = argc > 1 ? std::max(2, std::atoi(argv[1])) : 4;
    const int runs = argc > 2 ? std::max(1, std::atoi(argv[2])) : 3;

    QTemporaryDir dir;
    QByteArray flash(kFlashBytes, Qt::Uninitialized);
    for (int i = 0; i < kFlashBytes; ++i)
        flash[i] = char(i * 7 + i / 251);
    QFile stub(dir.filePath("stub.bin"));
    QFile app(dir.filePath("app.bin"));
    if (!stub.open(QIODevice::WriteOnly) || !app.open(QIODevice::WriteOnly))
        return 1;
    stub.write(QByteArray(kStubBytes, '\x5c'));
    app.write(flash);
    stub.close();
    app.close();
    AppQZ4420Imple engine;
    QVector<AioEntry> entries(1);
    entries[0].path = app.fileName();
    entries[0].startAddr = 0x10000;
    const QString image = dir.filePath("aio.bin");
    if (!engine.createAio(stub.fileName(), entries, image, 0x20000000))
        return 1;

    // The stub goes in raw at the ROM's rate: a 12-byte header and the data, one byte back for
    // each; then the rate change, a header frame and the blocks, each frame with its reply.
    const double stubBound = double(12 + 1 + kStubBytes + 1) * 10 / 115200;
    const long long frames = 19 + (long long)(kFlashBytes / kBlock) * (12 + kBlock);
    const double bound = stubBound + double(frames) * 10 / 2000000;
    const std::vector<double> one = timeCalls(1, runs, image);
    const std::vector<double> many = timeCalls(boards, runs, image);
    if (one.empty() || many.empty())
        return 1;
    const double oneMedian = one[one.size() / 2];
    const double manyMedian = many[many.size() / 2];
    std::printf(
        "one board:  bound %.3f s, took min %.3f median %.3f max %.3f s, efficiency %.1f%%\n",
        bound, one.front(), oneMedian, one.back(), 100 * bound / oneMedian);
    std::printf("%d boards: took min %.3f median %.3f max %.3f s, %.2fx one board\n", boards,
                many.front(), manyMedian, many.back(), manyMedian / oneMedian);
    return 0;
}
