// How much processor time does ComPort::timedRead use while it waits on a silent port?
//
//   build/tests/bench/bench_timedread_idle [wait-ms]
//
// Prints wall time, the CPU time of the process and the share of one core.

#include "base/ComPort.h"
#include "support/PtyPeer.h"

#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace {
double cpuSeconds() {
    rusage u{};
    getrusage(RUSAGE_SELF, &u);
    return double(u.ru_utime.tv_sec + u.ru_stime.tv_sec) +
           double(u.ru_utime.tv_usec + u.ru_stime.tv_usec) / 1e6;
}
} // namespace

int main(int argc, char** argv) {
    const int waitMs = argc > 1 ? std::atoi(argv[1]) : 3000;
    PtyPeer peer;
    ComPort port;
    if (!port.open(peer.slavePath(), 115200)) {
        std::fprintf(stderr, "cannot open %s\n", peer.slavePath().c_str());
        return 1;
    }
    ByteBuffer out;
    const double cpu0 = cpuSeconds();
    const auto t0 = std::chrono::steady_clock::now();
    const bool got = port.timedRead(out, waitMs, 0);
    const double wall =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    const double cpu = cpuSeconds() - cpu0;
    std::printf("timedRead(%d ms) on a silent port: result %s, wall %.3f s, cpu %.4f s, %.3f%% of "
                "a core\n",
                waitMs, got ? "true" : "false", wall, cpu, 100.0 * cpu / wall);
    return 0;
}
