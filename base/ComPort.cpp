#include "base/ComPort.h"

#include "base/BaseUtils.h"
#include "base/Deadline.h"
#include "base/PortTable.h"
#include "serial/Serial.h"

#include <sys/prctl.h>

#include <algorithm>
#include <chrono>
#include <thread>

namespace {

// A thread that talks to a board sleeps for a few byte times between looks at a reply that is
// still coming in. The system's default timer slack (50 microseconds) would stretch each such
// sleep several times over, so such a thread asks for the finest slack, once.
void useFineTimerSlack() {
    thread_local bool fine = false;
    if (!fine) {
        prctl(PR_SET_TIMERSLACK, 1UL, 0UL, 0UL, 0UL);
        fine = true;
    }
}

// How long the first stage looks away before it asks again whether a reply is still growing:
// three bytes at the line rate (10 bits a byte), so a reply that has stopped is noticed at once
// and one that is still coming in shows a larger count.
std::chrono::nanoseconds growthPause(int baud) {
    constexpr int64_t kBitsLookedAway = 3 * 10;
    return std::chrono::nanoseconds(kBitsLookedAway * 1000000000 / std::max(baud, 1));
}

// Sleeps until at least `until`, and not much longer. A timed sleep ends later than asked by
// a roughly steady amount on a given machine (on a virtual machine, where an idle processor is
// slow to wake, more than the few byte times of a growth pause), so the thread learns that
// lateness and asks for that much less, sleeping again should it wake too soon. Every turn
// sleeps; none spins.
void sleepAtLeastUntil(std::chrono::steady_clock::time_point until) {
    using namespace std::chrono;
    constexpr nanoseconds kMostLate = milliseconds(1);
    thread_local nanoseconds late{0};
    for (auto now = steady_clock::now(); now < until;) {
        const nanoseconds left = until - now;
        const nanoseconds asked = std::max(left - late, left / 4);
        std::this_thread::sleep_for(asked);
        const auto woke = steady_clock::now();
        late += (std::clamp<nanoseconds>(woke - now - asked, nanoseconds(0), kMostLate) - late) / 8;
        now = woke;
    }
}

} // namespace

ComPort::ComPort() : serial_(new serial::Serial(std::string(), 9600, serial::Timeout())) {}

ComPort::~ComPort() {
    close();
    delete serial_;
}

bool ComPort::open(int port, int baud) {
    port_ = port;
    const QString name = PortTable::nameOf(port);
    return openDevice(PortTable::deviceOf(name).toStdString(), baud);
}

bool ComPort::open(const std::string& device, int baud) {
    port_ = PortTable::numberOf(QString::fromStdString(device));
    return openDevice(device, baud);
}

bool ComPort::openDevice(const std::string& device, int baud) {
    close();
    try {
        serial_->setPort(device);
        serial_->setBaudrate(uint32_t(baud));
        serial_->setBytesize(serial::eightbits);
        serial_->setStopbits(serial::stopbits_one);
        serial_->setParity(serial::parity_none);
        serial_->open();
    } catch (...) {
        return false;
    }
    return isOpen();
}

bool ComPort::close() {
    try {
        if (serial_->isOpen())
            serial_->close();
    } catch (...) {
        return false;
    }
    return true;
}

bool ComPort::isOpen() const {
    return serial_->isOpen();
}

bool ComPort::setBaudrate(int baud) {
    if (!isOpen())
        return false;
    try {
        serial_->setBaudrate(uint32_t(baud));
    } catch (...) {
        return false;
    }
    return true;
}

int ComPort::baudrate() const {
    return isOpen() ? int(serial_->getBaudrate()) : -1;
}

void ComPort::setDtr(bool high) {
    if (!isOpen())
        return;
    try {
        serial_->setDTR(high);
    } catch (...) {
    }
}

void ComPort::setRts(bool high) {
    if (!isOpen())
        return;
    try {
        serial_->setRTS(high);
    } catch (...) {
    }
}

bool ComPort::writeByte(unsigned char v) {
    return writeRaw(&v, 1);
}

bool ComPort::write(const ByteBuffer& data) {
    return writeRaw(data.data(), unsigned(data.size()));
}

bool ComPort::write(const std::string& data) {
    return writeRaw(data.data(), unsigned(data.size()));
}

bool ComPort::writeLine(const std::string& text, bool withLf) {
    return write(text + (withLf ? "\r\n" : "\r"));
}

bool ComPort::writeRaw(const void* p, unsigned n) {
    if (!isOpen())
        return false;
    try {
        if (serial_->write(static_cast<const uint8_t*>(p), n) != n)
            return false;
        serial_->flush();
    } catch (...) {
        return false;
    }
    return true;
}

int ComPort::readRaw(void* p, unsigned n) {
    if (!isOpen())
        return -1;
    try {
        return int(serial_->read(static_cast<uint8_t*>(p), n));
    } catch (...) {
        return -1;
    }
}

int ComPort::available() {
    if (!isOpen())
        return -1;
    try {
        return int(serial_->available());
    } catch (...) {
        return -1;
    }
}

bool ComPort::flushInput() {
    if (!isOpen())
        return false;
    try {
        serial_->flushInput();
    } catch (...) {
        return false;
    }
    return true;
}

bool ComPort::flushOutput() {
    if (!isOpen())
        return false;
    try {
        serial_->flushOutput();
    } catch (...) {
        return false;
    }
    return true;
}

void ComPort::waitForInput(int64_t ms) {
    if (ms <= 0)
        return;
    try {
        if (isOpen()) {
            serial_->waitReadable(uint32_t(ms));
            return;
        }
    } catch (...) {
    }
    sleepMs(int(ms));
}

bool ComPort::timedRead(ByteBuffer& out, int waitMs, int settleMs) {
    useFineTimerSlack();
    // Stage 1: wait for the first bytes; the stage ends once the count stops growing.
    {
        const auto pause = growthPause(baudrate());
        const Deadline deadline(uint32_t(std::max(waitMs, 0)));
        int last = 0;
        for (;;) {
            const int count = available();
            const auto seenAt = std::chrono::steady_clock::now();
            if (count > 0 && count <= last)
                break;
            if (count > last)
                last = count;
            else if (count < 0)
                last = -1;
            if (deadline.expired())
                break;
            if (last > 0)
                sleepAtLeastUntil(seenAt + pause); // still growing?
            else
                waitForInput(deadline.remaining());
        }
        if (last < 1)
            return false;
    }

    // Stage 2: go on collecting for a fixed time, then take everything at once.
    const Deadline deadline(uint32_t(std::max(settleMs, 0)));
    int high = 0;
    for (;;) {
        const int count = available();
        if (count < 0)
            return false;
        high = std::max(high, count);
        if (deadline.expired()) {
            if (high == 0)
                break;
            out.resize(high);
            const int got = readRaw(out.data(), unsigned(high));
            if (got != high) {
                out.resize(std::max(got, 0));
                return false;
            }
            break;
        }
        sleepMs(int(deadline.remaining()));
    }
    return !out.empty();
}

bool ComPort::sendAndWait(const std::string& cmd, const std::string& expect, ByteBuffer& out,
                          int timeoutMs, bool withLf) {
    if (!writeLine(cmd, withLf))
        return false;
    const Deadline deadline(uint32_t(std::max(timeoutMs, 0)));
    for (;;) {
        const int count = available();
        if (count < 0)
            return false;
        if (count > 0) {
            const int old = out.size();
            out.resize(old + count);
            const int got = readRaw(out.at(old), unsigned(count));
            if (got != count) {
                out.resize(old + std::max(got, 0));
                return false;
            }
            if (out.find(expect, 0, false) >= 0)
                return true;
        }
        waitForInput(std::max<int64_t>(1, deadline.remaining()));
        if (deadline.expired())
            return false;
    }
}

bool ComPort::drainFor(int ms) {
    ByteBuffer scratch;
    const Deadline deadline(uint32_t(std::max(ms, 0)));
    while (!deadline.expired() && timedRead(scratch, int(deadline.remaining()), 0)) {
    }
    return true;
}
