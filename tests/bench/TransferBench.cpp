// How close does a download or a flash read-back come to the line's bound?
//
//   build/tests/bench/bench_transfer [baud] [runs]
//
// Against the simulated board pacing every byte at the line rate (10 bits a byte), 1 MiB goes
// down in 4096-byte and in 1024-byte blocks and is read back in 1024-byte trunks. Each exchange
// waits for its reply, so the bound is every byte of every request and reply at the line rate.
// Prints, for each, the bound, the time taken (min, median, max of the runs), the efficiency
// (bound / median time), the time per exchange above the bound, and the host's turn: from the
// last byte of a reply leaving the board to the next request reaching it, as the board sees it
// (the host's own work plus the system's two wake-ups that carry bytes through the pty).

#include "base/ComPort.h"
#include "engines/AppQZ4410Imple.h"
#include "engines/AppQZ4420Imple.h"
#include "engines/SysByteArray.h"
#include "sim/BoardSim.h"

#include <QCoreApplication>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
constexpr int kBytes = 1024 * 1024;

double secondsOf(const std::function<bool()>& run, bool* ok) {
    const auto start = Clock::now();
    *ok = run() && *ok;
    return std::chrono::duration<double>(Clock::now() - start).count();
}

void report(const char* what, int exchanges, long long wireBytes, int baud,
            std::vector<double> seconds, BoardSim& board) {
    std::sort(seconds.begin(), seconds.end());
    const double bound = double(wireBytes) * 10 / baud;
    const double median = seconds[seconds.size() / 2];
    std::printf("%-34s bound %7.1f ms  took min %7.1f  median %7.1f  max %7.1f ms  "
                "efficiency %5.1f%%  above bound %.3f ms/exchange  host turn %.3f ms\n",
                what, bound * 1e3, seconds.front() * 1e3, median * 1e3, seconds.back() * 1e3,
                100 * bound / median, (median - bound) * 1e3 / exchanges,
                std::chrono::duration<double, std::milli>(board.meanHostTurn()).count());
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const int baud = argc > 1 ? std::atoi(argv[1]) : 2000000;
    const int runs = argc > 2 ? std::max(1, std::atoi(argv[2])) : 3;

    BoardSim::Options options;
    options.syncAnswer = 51; // speaks frames from the start
    options.paceAtBaud = true;
    BoardSim board(options);
    ComPort port;
    AppQZ4410Imple boot;
    AppQZ4420Imple engine;
    int mode = 0;
    if (!port.open(board.devicePath(), 115200) || !boot.syncBoard(port, &mode, 1000) ||
        !engine.changeBaud(port, baud)) {
        std::fprintf(stderr, "bench_transfer: the simulated board did not come up\n");
        return 1;
    }

    QByteArray image(kBytes, Qt::Uninitialized);
    for (int i = 0; i < kBytes; ++i)
        image[i] = char(i * 7 + i / 251);
    bool ok = true;
    for (int block : {4096, 1024}) {
        engine.setBlockSize(block);
        std::vector<double> seconds;
        board.clearRecord();
        for (int r = 0; r < runs; ++r)
            seconds.push_back(secondsOf(
                [&] { return engine.downloadTrunk(port, SysByteArray(image), 0, false, 3); }, &ok));
        const int blocks = kBytes / block;
        // Header: request 5 + 8, reply 6. Each block: request 5 + mark + data, reply 6.
        const long long wire = 19 + (long long)blocks * (12 + block);
        char what[64];
        std::snprintf(what, sizeof what, "download 1 MiB, %d-byte blocks", block);
        report(what, blocks + 1, wire, baud, seconds, board);
    }
    engine.setBlockSize(1024);
    std::vector<double> seconds;
    board.clearRecord();
    for (int r = 0; r < runs; ++r) {
        SysByteArray back;
        seconds.push_back(secondsOf([&] { return engine.readFlash(port, 0, kBytes, back); }, &ok));
        ok = ok && back.bytes() == image;
    }
    // Each trunk: request 5 + 8, reply 6 + data.
    report("read back 1 MiB, 1024-byte trunks", kBytes / 1024,
           (long long)(kBytes / 1024) * (19 + 1024), baud, seconds, board);
    if (!ok) {
        std::fprintf(stderr, "bench_transfer: a transfer failed or read back other bytes\n");
        return 1;
    }
    return 0;
}
