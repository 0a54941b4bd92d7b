#include "ScriptedBoard.h"

#include <algorithm>
#include <ctime>

namespace {

thread_local bool virtualTime = false;
thread_local int64_t clockNs = 0;

} // namespace

// The linker sends every call to steady_clock::now() and nanosleep() of the fuzz build here
// (--wrap); outside a script they go on to the real ones.
extern "C" {
int64_t __real__ZNSt6chrono3_V212steady_clock3nowEv();
int __real_nanosleep(const timespec* req, timespec* rem);

int64_t __wrap__ZNSt6chrono3_V212steady_clock3nowEv() {
    return virtualTime ? clockNs : __real__ZNSt6chrono3_V212steady_clock3nowEv();
}

int __wrap_nanosleep(const timespec* req, timespec* rem) {
    if (!virtualTime)
        return __real_nanosleep(req, rem);
    ScriptedBoard::advanceNs(int64_t(req->tv_sec) * 1000000000 + req->tv_nsec);
    if (rem)
        *rem = timespec{0, 0};
    return 0;
}
}

ScriptedBoard& ScriptedBoard::instance() {
    static ScriptedBoard board;
    return board;
}

void ScriptedBoard::advanceNs(int64_t ns) {
    clockNs += std::max<int64_t>(ns, 0);
}

void ScriptedBoard::load(const uint8_t* data, size_t size) {
    pieces_.clear();
    pending_.clear();
    armed_ = false;
    size_t at = 0;
    while (at + 3 <= size) {
        const size_t length = size_t(data[at + 1]) | size_t(data[at + 2]) << 8;
        if (at + 3 + length > size)
            break;
        pieces_.push_back({int64_t(data[at]) * 8000000,
                           std::vector<uint8_t>(data + at + 3, data + at + 3 + length)});
        at += 3 + length;
    }
    clockNs = int64_t(1) << 40; // far from zero, as a steady clock is
    virtualTime = true;
}

void ScriptedBoard::finish() {
    virtualTime = false;
}

void ScriptedBoard::wrote() {
    if (armed_ || pieces_.empty())
        return;
    armed_ = true;
    dueNs_ = clockNs + pieces_.front().delayNs;
}

void ScriptedBoard::release() {
    if (!armed_ || clockNs < dueNs_)
        return;
    const Piece& piece = pieces_.front();
    pending_.insert(pending_.end(), piece.bytes.begin(), piece.bytes.end());
    pieces_.pop_front();
    armed_ = false;
}

size_t ScriptedBoard::available() {
    release();
    return pending_.size();
}

bool ScriptedBoard::waitReadable(uint32_t ms) {
    if (available() > 0)
        return true;
    const int64_t limit = clockNs + int64_t(ms) * 1000000;
    if (armed_ && dueNs_ <= limit) {
        clockNs = std::max(clockNs, dueNs_);
        return available() > 0;
    }
    clockNs = limit;
    return false;
}

size_t ScriptedBoard::read(uint8_t* to, size_t size) {
    release();
    const size_t n = std::min(size, pending_.size());
    std::copy_n(pending_.begin(), n, to);
    pending_.erase(pending_.begin(), pending_.begin() + long(n));
    return n;
}
