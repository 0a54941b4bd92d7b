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
//
// The host's share is the host's turn less that of a bare host, which sends the same request
// frames again, byte for byte, and knows each reply's length: it sleeps until bytes come, takes
// them and sends the next frame, with no growth pause, no parsing and no frame building. The
// system's wake-ups and the board's own work are in both turns and drop out; what is left is
// what the engine and timedRead's two stages cost per exchange.

#include "base/ComPort.h"
#include "base/Deadline.h"
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

double msOf(std::chrono::nanoseconds span) {
    return std::chrono::duration<double, std::milli>(span).count();
}

// Sends each frame and waits for a reply of replyBytes, as a host that knew the reply's length
// and had nothing else to do would.
bool replay(ComPort& port, const std::vector<SimFrame>& frames, int replyBytes) {
    QByteArray reply(replyBytes, Qt::Uninitialized);
    for (const SimFrame& frame : frames) {
        if (!port.writeRaw(frame.raw.constData(), unsigned(frame.raw.size())))
            return false;
        const Deadline deadline(1000);
        for (int got = 0; got < replyBytes;) {
            if (deadline.expired())
                return false;
            port.waitForInput(deadline.remaining());
            const int count = std::min(port.available(), replyBytes - got);
            if (count > 0 && port.readRaw(reply.data() + got, unsigned(count)) != count)
                return false;
            got += std::max(count, 0);
        }
    }
    return true;
}

// Runs the engine's transfer and the bare host over that run's frames by turns, `runs` times
// each, and prints the figures of both. Taking turns puts a machine that slows down in the
// middle into both.
bool measure(const char* what, int runs, int baud, long long wireBytes, int replyBytes,
             BoardSim& board, ComPort& port, const std::function<bool()>& transfer) {
    bool ok = true;
    std::vector<double> seconds, engineTurns, shares;
    int exchanges = 0;
    for (int r = 0; r < runs; ++r) {
        board.clearRecord();
        seconds.push_back(secondsOf(transfer, &ok));
        const std::chrono::nanoseconds engineTurn = board.meanHostTurn();
        const std::vector<SimFrame> frames = board.frames();
        exchanges = int(frames.size());
        board.clearRecord();
        ok = replay(port, frames, replyBytes) && ok;
        engineTurns.push_back(msOf(engineTurn));
        shares.push_back(msOf(engineTurn - board.meanHostTurn()));
    }
    for (std::vector<double>* figures : {&seconds, &engineTurns, &shares})
        std::sort(figures->begin(), figures->end());
    const auto mid = [](const std::vector<double>& v) { return v[v.size() / 2]; };
    const double bound = double(wireBytes) * 10 / baud;
    std::printf("%-34s bound %7.1f ms  took min %7.1f  median %7.1f  max %7.1f ms  "
                "efficiency %5.1f%%  above bound %.3f ms/exchange\n"
                "%-34s host turn median %.3f ms; host's share min %.3f  median %.3f  max %.3f "
                "ms/exchange\n",
                what, bound * 1e3, seconds.front() * 1e3, mid(seconds) * 1e3, seconds.back() * 1e3,
                100 * bound / mid(seconds), (mid(seconds) - bound) * 1e3 / exchanges, "",
                mid(engineTurns), shares.front(), mid(shares), shares.back());
    return ok;
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
        const int blocks = kBytes / block;
        // Header: request 5 + 8, reply 6. Each block: request 5 + mark + data, reply 6.
        const long long wire = 19 + (long long)blocks * (12 + block);
        char what[64];
        std::snprintf(what, sizeof what, "download 1 MiB, %d-byte blocks", block);
        ok =
            measure(what, runs, baud, wire, 6, board, port,
                    [&] { return engine.downloadTrunk(port, SysByteArray(image), 0, false, 3); }) &&
            ok;
    }
    engine.setBlockSize(1024);
    // Each trunk: request 5 + 8, reply 6 + data.
    ok = measure("read back 1 MiB, 1024-byte trunks", runs, baud,
                 (long long)(kBytes / 1024) * (19 + 1024), 6 + 1024, board, port,
                 [&] {
                     SysByteArray back;
                     return engine.readFlash(port, 0, kBytes, back) && back.bytes() == image;
                 }) &&
         ok;
    if (!ok) {
        std::fprintf(stderr, "bench_transfer: a transfer failed or read back other bytes\n");
        return 1;
    }
    return 0;
}
