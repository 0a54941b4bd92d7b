// The POSIX platform layer of serial::Serial.

#include "serial/impl/unix.h"

#include <asm/termbits.h>
#include <fcntl.h>
#include <linux/serial.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <stdexcept>
#include <thread>

namespace serial {

namespace {

const char* const kSourceFile = "serial/impl/unix";

[[noreturn]] void throwIo(int line, const std::string& description) {
    throw IOException(kSourceFile, line, description);
}

#define THROW_IO(description) throwIo(__LINE__, description)

std::string errnoText() {
    return std::to_string(errno);
}

using Clock = std::chrono::steady_clock;

// Milliseconds left until `end`, or -1 (wait for ever) when there is no end.
int pollWait(bool bounded, Clock::time_point end) {
    if (!bounded)
        return -1;
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
    return left.count() > 0 ? int(left.count()) : 0;
}

} // namespace

Serial::SerialImpl::SerialImpl(const std::string& port, uint32_t baudrate, bytesize_t bytesize,
                               parity_t parity, stopbits_t stopbits, flowcontrol_t flowcontrol)
    : port_(port), baudrate_(baudrate), parity_(parity), bytesize_(bytesize), stopbits_(stopbits),
      flowcontrol_(flowcontrol) {
    pthread_mutex_init(&read_mutex_, nullptr);
    pthread_mutex_init(&write_mutex_, nullptr);
}

Serial::SerialImpl::~SerialImpl() {
    try {
        close();
    } catch (...) {
    }
    pthread_mutex_destroy(&read_mutex_);
    pthread_mutex_destroy(&write_mutex_);
}

void Serial::SerialImpl::open() {
    if (port_.empty())
        throw std::invalid_argument("Empty port is invalid.");
    if (is_open_)
        throw SerialException("Serial port already open.");

    const int fd = ::open(port_.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd == -1) {
        if (errno == ENOENT)
            THROW_IO("Specified port, " + port_ + ", does not exist.");
        THROW_IO("Unknown error opening the serial port: " + errnoText());
    }
    // Exclusive: a lock that every Bramble process honours, then the tty's own flag, which
    // keeps out other openers that are not root.
    if (::flock(fd, LOCK_EX | LOCK_NB) == -1) {
        const std::string code = errnoText();
        ::close(fd);
        THROW_IO("Unknown error opening the serial port: " + code);
    }
    ::ioctl(fd, TIOCEXCL);
    fd_ = fd;
    try {
        reconfigurePort();
    } catch (...) {
        ::ioctl(fd_, TIOCNXCL);
        ::close(fd_);
        fd_ = -1;
        throw;
    }
    is_open_ = true;
}

void Serial::SerialImpl::reconfigurePort() {
    if (fd_ == -1)
        THROW_IO("Invalid file descriptor, is the serial port open?");

    struct termios2 tio {};
    if (::ioctl(fd_, TCGETS2, &tio) == -1)
        THROW_IO("Error getting the serial port state.");

    // Raw bytes in both directions.
    tio.c_iflag &= ~tcflag_t(IGNBRK | BRKINT | PARMRK | ISTRIP | INLCR | IGNCR | ICRNL | INPCK);
    tio.c_oflag &= ~tcflag_t(OPOST);
    tio.c_lflag &= ~tcflag_t(ECHO | ECHOE | ECHOK | ECHONL | ICANON | ISIG | IEXTEN);
    tio.c_cflag |= CLOCAL | CREAD;

    // Any rate at all: BOTHER takes the number as it stands.
    tio.c_cflag &= ~tcflag_t(CBAUD | (CBAUD << IBSHIFT));
    tio.c_cflag |= BOTHER | (BOTHER << IBSHIFT);
    tio.c_ispeed = baudrate_;
    tio.c_ospeed = baudrate_;

    tio.c_cflag &= ~tcflag_t(CSIZE);
    switch (bytesize_) {
    case fivebits:
        tio.c_cflag |= CS5;
        break;
    case sixbits:
        tio.c_cflag |= CS6;
        break;
    case sevenbits:
        tio.c_cflag |= CS7;
        break;
    case eightbits:
        tio.c_cflag |= CS8;
        break;
    default:
        throw std::invalid_argument("invalid char len");
    }

    switch (stopbits_) {
    case stopbits_one:
        tio.c_cflag &= ~tcflag_t(CSTOPB);
        break;
    case stopbits_two:
    case stopbits_one_point_five:
        tio.c_cflag |= CSTOPB;
        break; // the line has no 1.5
    default:
        throw std::invalid_argument("invalid stop bit");
    }

    tio.c_cflag &= ~tcflag_t(PARENB | PARODD | CMSPAR);
    switch (parity_) {
    case parity_none:
        break;
    case parity_odd:
        tio.c_cflag |= PARENB | PARODD;
        break;
    case parity_even:
        tio.c_cflag |= PARENB;
        break;
    case parity_mark:
        tio.c_cflag |= PARENB | PARODD | CMSPAR;
        break;
    case parity_space:
        tio.c_cflag |= PARENB | CMSPAR;
        break;
    default:
        throw std::invalid_argument("invalid parity");
    }

    switch (flowcontrol_) {
    case flowcontrol_software:
        tio.c_iflag |= IXON | IXOFF;
        tio.c_iflag &= ~tcflag_t(IXANY);
        tio.c_cflag &= ~tcflag_t(CRTSCTS);
        break;
    case flowcontrol_hardware:
        tio.c_iflag &= ~tcflag_t(IXON | IXOFF | IXANY);
        tio.c_cflag |= CRTSCTS;
        break;
    default:
        tio.c_iflag &= ~tcflag_t(IXON | IXOFF | IXANY);
        tio.c_cflag &= ~tcflag_t(CRTSCTS);
        break;
    }

    // Reads never block in the driver: they sleep in poll() with the time-outs applied here.
    tio.c_cc[VMIN] = 0;
    tio.c_cc[VTIME] = 0;

    if (::ioctl(fd_, TCSETS2, &tio) == -1)
        THROW_IO("Error setting serial port settings.");

    // USB adapters hold input back for up to 16 ms unless asked for low latency; not every
    // driver knows the request, and that is fine.
    struct serial_struct ss {};
    if (::ioctl(fd_, TIOCGSERIAL, &ss) == 0 && !(ss.flags & ASYNC_LOW_LATENCY)) {
        ss.flags |= ASYNC_LOW_LATENCY;
        ::ioctl(fd_, TIOCSSERIAL, &ss);
    }
}

void Serial::SerialImpl::close() {
    if (!is_open_)
        return;
    const int fd = fd_;
    is_open_ = false;
    fd_ = -1;
    ::ioctl(fd, TCFLSH, TCIOFLUSH);
    // The exclusive flag belongs to the tty, not to this descriptor: on a pty it would outlive
    // the close and lock out the next opener.
    ::ioctl(fd, TIOCNXCL);
    if (::close(fd) == -1)
        THROW_IO("Error while closing serial port: " + errnoText());
}

size_t Serial::SerialImpl::available() {
    if (!is_open_)
        return 0;
    int count = 0;
    if (::ioctl(fd_, FIONREAD, &count) == -1)
        THROW_IO("Error while checking status of the serial port: " + errnoText());
    return size_t(count);
}

bool Serial::SerialImpl::waitReadable(uint32_t timeoutMs) {
    if (!is_open_)
        throw PortNotOpenedException("Serial::waitReadable");
    pollfd p{fd_, POLLIN, 0};
    const int r = ::poll(&p, 1, int(timeoutMs));
    if (r == -1) {
        if (errno == EINTR)
            return false;
        THROW_IO("Error while waiting for the serial port: " + errnoText());
    }
    if (r == 0)
        return false;
    if (p.revents & (POLLHUP | POLLERR | POLLNVAL)) {
        // The far end is gone: poll would answer at once for ever, so sleep out the wait.
        std::this_thread::sleep_for(std::chrono::milliseconds(timeoutMs));
        return false;
    }
    return (p.revents & POLLIN) != 0;
}

void Serial::SerialImpl::waitByteTimes(size_t count) {
    if (baudrate_ == 0)
        return;
    const unsigned bits = 1 + unsigned(bytesize_) + (parity_ == parity_none ? 0 : 1) +
                          (stopbits_ == stopbits_one ? 1 : 2);
    const auto ns = uint64_t(count) * bits * 1000000000ull / baudrate_;
    std::this_thread::sleep_for(std::chrono::nanoseconds(ns));
}

size_t Serial::SerialImpl::read(uint8_t* buf, size_t size) {
    if (!is_open_)
        throw PortNotOpenedException("Serial::read");
    const bool bounded = timeout_.read_timeout_constant || timeout_.read_timeout_multiplier;
    const auto end =
        Clock::now() + std::chrono::milliseconds(uint64_t(timeout_.read_timeout_constant) +
                                                 uint64_t(timeout_.read_timeout_multiplier) * size);
    size_t got = 0;
    while (got < size) {
        const ssize_t r = ::read(fd_, buf + got, size - got);
        if (r > 0) {
            got += size_t(r);
            continue;
        }
        if (r == -1 && errno != EAGAIN && errno != EINTR)
            THROW_IO("Error while reading from the serial port: " + errnoText());

        int wait = pollWait(bounded, end);
        if (got > 0 && timeout_.inter_byte_timeout &&
            (wait < 0 || wait > int(timeout_.inter_byte_timeout)))
            wait = int(timeout_.inter_byte_timeout);
        if (wait == 0)
            break;
        pollfd p{fd_, POLLIN, 0};
        const int pr = ::poll(&p, 1, wait);
        if (pr == 0)
            break;
        if (pr == -1 && errno != EINTR)
            THROW_IO("Error while reading from the serial port: " + errnoText());
        if (pr > 0 && (p.revents & (POLLHUP | POLLERR | POLLNVAL)) && !(p.revents & POLLIN))
            THROW_IO("Error while reading from the serial port: " + std::to_string(EIO));
        if (pr > 0 && r == 0 && (p.revents & POLLHUP))
            THROW_IO("Error while reading from the serial port: " + std::to_string(EIO));
    }
    return got;
}

size_t Serial::SerialImpl::write(const uint8_t* data, size_t size) {
    if (!is_open_)
        throw PortNotOpenedException("Serial::write");
    const bool bounded = timeout_.write_timeout_constant || timeout_.write_timeout_multiplier;
    const auto end = Clock::now() +
                     std::chrono::milliseconds(uint64_t(timeout_.write_timeout_constant) +
                                               uint64_t(timeout_.write_timeout_multiplier) * size);
    size_t sent = 0;
    while (sent < size) {
        const ssize_t r = ::write(fd_, data + sent, size - sent);
        if (r > 0) {
            sent += size_t(r);
            continue;
        }
        if (r == -1 && errno != EAGAIN && errno != EINTR)
            THROW_IO("Error while writing to the serial port: " + errnoText());
        const int wait = pollWait(bounded, end);
        if (wait == 0)
            break;
        pollfd p{fd_, POLLOUT, 0};
        const int pr = ::poll(&p, 1, wait);
        if (pr == 0)
            break;
        if (pr == -1 && errno != EINTR)
            THROW_IO("Error while writing to the serial port: " + errnoText());
        if (pr > 0 && (p.revents & (POLLHUP | POLLERR | POLLNVAL)))
            THROW_IO("Error while writing to the serial port: " + std::to_string(EIO));
    }
    return sent;
}

void Serial::SerialImpl::setTimeout(const Timeout& timeout) {
    timeout_ = timeout;
    if (is_open_)
        reconfigurePort();
}

void Serial::SerialImpl::setBaudrate(uint32_t baudrate) {
    baudrate_ = baudrate;
    if (is_open_)
        reconfigurePort();
}

void Serial::SerialImpl::setBytesize(bytesize_t bytesize) {
    bytesize_ = bytesize;
    if (is_open_)
        reconfigurePort();
}

void Serial::SerialImpl::setParity(parity_t parity) {
    parity_ = parity;
    if (is_open_)
        reconfigurePort();
}

void Serial::SerialImpl::setStopbits(stopbits_t stopbits) {
    stopbits_ = stopbits;
    if (is_open_)
        reconfigurePort();
}

void Serial::SerialImpl::setFlowcontrol(flowcontrol_t flowcontrol) {
    flowcontrol_ = flowcontrol;
    if (is_open_)
        reconfigurePort();
}

void Serial::SerialImpl::flush() {
    if (!is_open_)
        throw PortNotOpenedException("Serial::flush");
    if (::ioctl(fd_, TCSBRK, 1) == -1) // tcdrain
        THROW_IO("Error while flushing the serial port: " + errnoText());
}

void Serial::SerialImpl::flushInput() {
    if (!is_open_)
        throw PortNotOpenedException("Serial::flushInput");
    if (::ioctl(fd_, TCFLSH, TCIFLUSH) == -1)
        THROW_IO("Error while flushing the input of the serial port: " + errnoText());
}

void Serial::SerialImpl::flushOutput() {
    if (!is_open_)
        throw PortNotOpenedException("Serial::flushOutput");
    if (::ioctl(fd_, TCFLSH, TCOFLUSH) == -1)
        THROW_IO("Error while flushing the output of the serial port: " + errnoText());
}

void Serial::SerialImpl::sendBreak(int durationMs) {
    if (!is_open_)
        throw PortNotOpenedException("Serial::sendBreak");
    setBreak(true);
    std::this_thread::sleep_for(std::chrono::milliseconds(durationMs > 0 ? durationMs : 0));
    setBreak(false);
}

void Serial::SerialImpl::setBreak(bool level) {
    if (!is_open_)
        throw PortNotOpenedException("Serial::setBreak");
    if (::ioctl(fd_, level ? TIOCSBRK : TIOCCBRK) == -1)
        THROW_IO("setBreak failed on a call to ioctl: " + errnoText());
}

void Serial::SerialImpl::setModemLine(int line, bool level, const char* what) {
    if (!is_open_)
        throw PortNotOpenedException(what);
    if (::ioctl(fd_, level ? TIOCMBIS : TIOCMBIC, &line) == -1)
        THROW_IO(std::string(what) + " failed on a call to ioctl: " + errnoText());
}

void Serial::SerialImpl::setRTS(bool level) {
    setModemLine(TIOCM_RTS, level, "Serial::setRTS");
}

void Serial::SerialImpl::setDTR(bool level) {
    setModemLine(TIOCM_DTR, level, "Serial::setDTR");
}

int Serial::SerialImpl::modemLines(const char* what) {
    if (!is_open_)
        throw PortNotOpenedException(what);
    int lines = 0;
    if (::ioctl(fd_, TIOCMGET, &lines) == -1)
        THROW_IO(std::string(what) + " failed on a call to ioctl(TIOCMGET): " + errnoText());
    return lines;
}

bool Serial::SerialImpl::waitForChange() {
    if (!is_open_)
        throw PortNotOpenedException("Serial::waitForChange");
    const int mask = TIOCM_CTS | TIOCM_DSR | TIOCM_RI | TIOCM_CD;
    if (::ioctl(fd_, TIOCMIWAIT, mask) == -1)
        THROW_IO("waitForChange failed on a call to ioctl(TIOCMIWAIT): " + errnoText());
    return true;
}

bool Serial::SerialImpl::getCTS() {
    return modemLines("Serial::getCTS") & TIOCM_CTS;
}

bool Serial::SerialImpl::getDSR() {
    return modemLines("Serial::getDSR") & TIOCM_DSR;
}

bool Serial::SerialImpl::getRI() {
    return modemLines("Serial::getRI") & TIOCM_RI;
}

bool Serial::SerialImpl::getCD() {
    return modemLines("Serial::getCD") & TIOCM_CD;
}

void Serial::SerialImpl::readLock() {
    if (pthread_mutex_lock(&read_mutex_) != 0)
        THROW_IO("Error claiming read mutex.");
}

void Serial::SerialImpl::readUnlock() {
    if (pthread_mutex_unlock(&read_mutex_) != 0)
        THROW_IO("Error releasing read mutex.");
}

void Serial::SerialImpl::writeLock() {
    if (pthread_mutex_lock(&write_mutex_) != 0)
        THROW_IO("Error claiming write mutex.");
}

void Serial::SerialImpl::writeUnlock() {
    if (pthread_mutex_unlock(&write_mutex_) != 0)
        THROW_IO("Error releasing write mutex.");
}

} // namespace serial
