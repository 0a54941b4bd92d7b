#include "support/PtyPeer.h"

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <stdexcept>

PtyPeer::PtyPeer() {
    master_ = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    // ptsname_r: tests make peers on several threads at once, and ptsname shares one buffer.
    char name[64];
    if (master_ < 0 || grantpt(master_) != 0 || unlockpt(master_) != 0 ||
        ptsname_r(master_, name, sizeof name) != 0)
        throw std::runtime_error("cannot make a pty");
    slavePath_ = name;
    // Raw from the start, so nothing written before the port side opens is echoed or changed.
    const int slave = ::open(slavePath_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (slave >= 0) {
        termios tio{};
        tcgetattr(slave, &tio);
        cfmakeraw(&tio);
        tcsetattr(slave, TCSANOW, &tio);
        ::close(slave);
    }
}

PtyPeer::~PtyPeer() {
    close();
}

void PtyPeer::write(const std::string& bytes) {
    size_t sent = 0;
    while (master_ >= 0 && sent < bytes.size()) {
        const ssize_t n = ::write(master_, bytes.data() + sent, bytes.size() - sent);
        if (n <= 0)
            break;
        sent += size_t(n);
    }
}

std::string PtyPeer::read(int quietMs, int maxMs) {
    return take(0, quietMs, maxMs);
}

std::string PtyPeer::readExactly(size_t n, int timeoutMs) {
    return take(n, timeoutMs, timeoutMs);
}

std::string PtyPeer::take(size_t want, int quietMs, int maxMs) {
    std::string out;
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(maxMs);
    while (master_ >= 0 && (want == 0 || out.size() < want)) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                              end - std::chrono::steady_clock::now())
                              .count();
        if (left <= 0)
            break;
        pollfd p{master_, POLLIN, 0};
        if (::poll(&p, 1, int(std::min<long>(left, quietMs))) <= 0 || !(p.revents & POLLIN))
            break;
        char buf[4096];
        const size_t room = want == 0 ? sizeof buf : std::min(sizeof buf, want - out.size());
        const ssize_t got = ::read(master_, buf, room);
        if (got <= 0)
            break;
        out.append(buf, size_t(got));
    }
    return out;
}

void PtyPeer::drain() {
    read(5, 200);
}

void PtyPeer::close() {
    if (master_ >= 0)
        ::close(master_);
    master_ = -1;
}
