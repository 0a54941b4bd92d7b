#include "serial/Serial.h"

#include "serial/impl/unix.h"

namespace serial {

namespace {

// Holds the port's read lock, write lock or both for one call.
class ScopedLocks {
public:
    ScopedLocks(Serial::SerialImpl* impl, bool readSide, bool writeSide)
        : impl_(impl), read_(readSide), write_(writeSide) {
        if (read_)
            impl_->readLock();
        if (write_) {
            try {
                impl_->writeLock();
            } catch (...) {
                if (read_)
                    impl_->readUnlock();
                throw;
            }
        }
    }
    ~ScopedLocks() {
        // A failed release cannot be reported from a destructor; the lock is still ours then.
        try {
            if (write_)
                impl_->writeUnlock();
            if (read_)
                impl_->readUnlock();
        } catch (...) {
        }
    }
    ScopedLocks(const ScopedLocks&) = delete;
    ScopedLocks& operator=(const ScopedLocks&) = delete;

private:
    Serial::SerialImpl* impl_;
    bool read_;
    bool write_;
};

} // namespace

Serial::Serial(const std::string& port, uint32_t baudrate, Timeout timeout, bytesize_t bytesize,
               parity_t parity, stopbits_t stopbits, flowcontrol_t flowcontrol)
    : pimpl_(new SerialImpl(port, baudrate, bytesize, parity, stopbits, flowcontrol)) {
    pimpl_->setTimeout(timeout);
    if (!port.empty()) {
        try {
            pimpl_->open();
        } catch (...) {
            delete pimpl_;
            throw;
        }
    }
}

Serial::~Serial() {
    delete pimpl_;
}

void Serial::open() {
    pimpl_->open();
}

bool Serial::isOpen() const {
    return pimpl_->isOpen();
}

void Serial::close() {
    pimpl_->close();
}

size_t Serial::available() {
    return pimpl_->available();
}

bool Serial::waitReadable(uint32_t timeoutMs) {
    return pimpl_->waitReadable(timeoutMs);
}

void Serial::waitByteTimes(size_t count) {
    pimpl_->waitByteTimes(count);
}

size_t Serial::read(uint8_t* buffer, size_t size) {
    ScopedLocks lock(pimpl_, true, false);
    return pimpl_->read(buffer, size);
}

size_t Serial::read(std::vector<uint8_t>& buffer, size_t size) {
    std::vector<uint8_t> chunk(size);
    const size_t got = read(chunk.data(), size);
    buffer.insert(buffer.end(), chunk.begin(), chunk.begin() + long(got));
    return got;
}

std::string Serial::read(size_t size) {
    std::string out(size, '\0');
    out.resize(read(reinterpret_cast<uint8_t*>(&out[0]), size));
    return out;
}

std::string Serial::readline(size_t size, const std::string& eol) {
    ScopedLocks lock(pimpl_, true, false);
    std::string line;
    uint8_t byte = 0;
    while (line.size() < size) {
        if (pimpl_->read(&byte, 1) == 0)
            break; // time-out
        line.push_back(char(byte));
        if (!eol.empty() && line.size() >= eol.size() &&
            line.compare(line.size() - eol.size(), eol.size(), eol) == 0)
            break;
    }
    return line;
}

std::vector<std::string> Serial::readlines(size_t size, const std::string& eol) {
    std::vector<std::string> lines;
    size_t total = 0;
    while (total < size) {
        std::string line = readline(size - total, eol);
        if (line.empty())
            break;
        total += line.size();
        const bool complete = line.size() >= eol.size() &&
                              line.compare(line.size() - eol.size(), eol.size(), eol) == 0;
        lines.push_back(std::move(line));
        if (!complete)
            break;
    }
    return lines;
}

size_t Serial::write(const uint8_t* data, size_t size) {
    ScopedLocks lock(pimpl_, false, true);
    return pimpl_->write(data, size);
}

size_t Serial::write(const std::string& data) {
    return write(reinterpret_cast<const uint8_t*>(data.data()), data.size());
}

void Serial::setPort(const std::string& port) {
    ScopedLocks lock(pimpl_, true, true);
    const bool wasOpen = pimpl_->isOpen();
    if (wasOpen)
        pimpl_->close();
    pimpl_->setPort(port);
    if (wasOpen)
        pimpl_->open();
}

std::string Serial::getPort() const {
    return pimpl_->getPort();
}

void Serial::setTimeout(const Timeout& timeout) {
    pimpl_->setTimeout(timeout);
}

Timeout Serial::getTimeout() const {
    return pimpl_->getTimeout();
}

void Serial::setBaudrate(uint32_t baudrate) {
    pimpl_->setBaudrate(baudrate);
}

uint32_t Serial::getBaudrate() const {
    return pimpl_->getBaudrate();
}

void Serial::setBytesize(bytesize_t bytesize) {
    pimpl_->setBytesize(bytesize);
}

bytesize_t Serial::getBytesize() const {
    return pimpl_->getBytesize();
}

void Serial::setParity(parity_t parity) {
    pimpl_->setParity(parity);
}

parity_t Serial::getParity() const {
    return pimpl_->getParity();
}

void Serial::setStopbits(stopbits_t stopbits) {
    pimpl_->setStopbits(stopbits);
}

stopbits_t Serial::getStopbits() const {
    return pimpl_->getStopbits();
}

void Serial::setFlowcontrol(flowcontrol_t flowcontrol) {
    pimpl_->setFlowcontrol(flowcontrol);
}

flowcontrol_t Serial::getFlowcontrol() const {
    return pimpl_->getFlowcontrol();
}

void Serial::flush() {
    ScopedLocks lock(pimpl_, true, true);
    pimpl_->flush();
}

void Serial::flushInput() {
    ScopedLocks lock(pimpl_, true, false);
    pimpl_->flushInput();
}

void Serial::flushOutput() {
    ScopedLocks lock(pimpl_, false, true);
    pimpl_->flushOutput();
}

void Serial::sendBreak(int durationMs) {
    pimpl_->sendBreak(durationMs);
}

void Serial::setBreak(bool level) {
    pimpl_->setBreak(level);
}

void Serial::setRTS(bool level) {
    pimpl_->setRTS(level);
}

void Serial::setDTR(bool level) {
    pimpl_->setDTR(level);
}

bool Serial::waitForChange() {
    return pimpl_->waitForChange();
}

bool Serial::getCTS() {
    return pimpl_->getCTS();
}

bool Serial::getDSR() {
    return pimpl_->getDSR();
}

bool Serial::getRI() {
    return pimpl_->getRI();
}

bool Serial::getCD() {
    return pimpl_->getCD();
}

} // namespace serial
