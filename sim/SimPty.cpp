#include "sim/SimPty.h"

#include <asm/termbits.h>
#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>

SimPty::SimPty(uint32_t baud) {
    const int fd = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0)
        return;
    char name[128];
    if (grantpt(fd) != 0 || unlockpt(fd) != 0 || ptsname_r(fd, name, sizeof name) != 0) {
        ::close(fd);
        return;
    }
    master_ = fd;
    slavePath_ = name;
    setSlaveSettings(baud);
    int on = 1;
    ::ioctl(master_, TIOCPKT, &on);

    watch_ = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (watch_ >= 0 && inotify_add_watch(watch_, slavePath_.c_str(),
                                         IN_OPEN | IN_CLOSE_WRITE | IN_CLOSE_NOWRITE) < 0) {
        ::close(watch_);
        watch_ = -1;
    }
}

SimPty::~SimPty() {
    if (watch_ >= 0)
        ::close(watch_);
    if (master_ >= 0)
        ::close(master_);
}

void SimPty::setSlaveSettings(uint32_t baud) {
    // On a pty master the termios requests act on the slave.
    termios2 tio{};
    if (::ioctl(master_, TCGETS2, &tio) != 0)
        return;
    tio.c_iflag = 0;
    tio.c_oflag = 0;
    tio.c_lflag = EXTPROC; // each later settings change is reported to the master
    tio.c_cflag &= ~tcflag_t(CBAUD | (CBAUD << IBSHIFT) | CSIZE | PARENB | CSTOPB | CRTSCTS);
    tio.c_cflag |= BOTHER | (BOTHER << IBSHIFT) | CS8 | CREAD | CLOCAL;
    tio.c_ispeed = baud;
    tio.c_ospeed = baud;
    tio.c_cc[VMIN] = 0;
    tio.c_cc[VTIME] = 0;
    ::ioctl(master_, TCSETS2, &tio);
}

uint32_t SimPty::hostBaud() const {
    termios2 tio{};
    if (::ioctl(master_, TCGETS2, &tio) != 0)
        return 0;
    // A host that cleared EXTPROC would no longer be heard changing its rate: set it again.
    if (!(tio.c_lflag & EXTPROC)) {
        tio.c_lflag |= EXTPROC;
        ::ioctl(master_, TCSETS2, &tio);
    }
    return tio.c_ospeed;
}

SimPty::Input SimPty::readAll() {
    Input in;
    char buf[65536 + 1];
    for (;;) {
        const ssize_t n = ::read(master_, buf, sizeof buf);
        if (n <= 0)
            break; // EAGAIN: all read; EIO: nobody holds the slave
        if (buf[0] == TIOCPKT_DATA) {
            if (n > 1)
                in.data.emplace_back(buf + 1, int(n - 1));
        } else {
            in.settingsChanged = true;
        }
    }
    return in;
}

int SimPty::takeOpenEvents() {
    if (watch_ < 0)
        return 0;
    int opened = 0;
    alignas(inotify_event) char buf[4096];
    for (;;) {
        const ssize_t n = ::read(watch_, buf, sizeof buf);
        if (n <= 0)
            break;
        for (ssize_t at = 0; at < n;) {
            const auto* e = reinterpret_cast<const inotify_event*>(buf + at);
            if (e->mask & IN_OPEN) {
                everOpened_ = true;
                if (holders_++ == 0)
                    ++opened;
            }
            if (e->mask & (IN_CLOSE_WRITE | IN_CLOSE_NOWRITE))
                holders_ = holders_ > 0 ? holders_ - 1 : 0;
            at += ssize_t(sizeof(inotify_event) + e->len);
        }
    }
    // A hang-up means nobody holds the slave now, whatever the count says (equal events that
    // follow each other unread are merged into one). The opposite is no proof: a slave that is
    // held may have been closed and opened again by a host whose open event is still on its
    // way, and that open must count as one.
    if (holders_ > 0 && hungUp())
        holders_ = 0;
    return opened;
}

bool SimPty::hostHolds() const {
    // Before the first open the master shows no hang-up, though nobody holds the slave.
    return (watch_ < 0 || everOpened_) && !hungUp();
}

bool SimPty::hungUp() const {
    pollfd p{master_, POLLIN, 0};
    return ::poll(&p, 1, 0) == 1 && (p.revents & POLLHUP);
}

int SimPty::write(const char* p, int n) {
    const ssize_t w = ::write(master_, p, size_t(n));
    if (w >= 0)
        return int(w);
    return errno == EAGAIN || errno == EINTR ? 0 : -1;
}
