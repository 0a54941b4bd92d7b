// The fuzz build's port: Serial's POSIX side replaced by the scripted board, so that the
// engines and ComPort read the board's replies from the fuzzer's input through their own code.
#include "ScriptedBoard.h"
#include "serial/impl/unix.h"

namespace serial {

Serial::SerialImpl::SerialImpl(const std::string& port, uint32_t baudrate, bytesize_t bytesize,
                               parity_t parity, stopbits_t stopbits, flowcontrol_t flowcontrol)
    : port_(port), baudrate_(baudrate), parity_(parity), bytesize_(bytesize),
      stopbits_(stopbits), flowcontrol_(flowcontrol) {}

Serial::SerialImpl::~SerialImpl() = default;

void Serial::SerialImpl::open() {
    is_open_ = true;
}

void Serial::SerialImpl::close() {
    is_open_ = false;
}

size_t Serial::SerialImpl::available() {
    return is_open_ ? ScriptedBoard::instance().available() : 0;
}

bool Serial::SerialImpl::waitReadable(uint32_t timeoutMs) {
    return ScriptedBoard::instance().waitReadable(timeoutMs);
}

void Serial::SerialImpl::waitByteTimes(size_t count) {
    ScriptedBoard::advanceNs(int64_t(count) * 10 * 1000000000 / std::max<uint32_t>(baudrate_, 1));
}

size_t Serial::SerialImpl::read(uint8_t* buf, size_t size) {
    if (!is_open_)
        throw PortNotOpenedException("Serial::read");
    return ScriptedBoard::instance().read(buf, size);
}

size_t Serial::SerialImpl::write(const uint8_t*, size_t size) {
    if (!is_open_)
        throw PortNotOpenedException("Serial::write");
    ScriptedBoard::instance().wrote();
    return size;
}

void Serial::SerialImpl::setTimeout(const Timeout& timeout) {
    timeout_ = timeout;
}
void Serial::SerialImpl::setBaudrate(uint32_t baudrate) {
    baudrate_ = baudrate;
}
void Serial::SerialImpl::setBytesize(bytesize_t bytesize) {
    bytesize_ = bytesize;
}
void Serial::SerialImpl::setParity(parity_t parity) {
    parity_ = parity;
}
void Serial::SerialImpl::setStopbits(stopbits_t stopbits) {
    stopbits_ = stopbits;
}
void Serial::SerialImpl::setFlowcontrol(flowcontrol_t flowcontrol) {
    flowcontrol_ = flowcontrol;
}

void Serial::SerialImpl::flush() {}
void Serial::SerialImpl::flushInput() {
    ScriptedBoard::instance().dropPending();
}
void Serial::SerialImpl::flushOutput() {}
void Serial::SerialImpl::sendBreak(int) {}
void Serial::SerialImpl::setBreak(bool) {}
void Serial::SerialImpl::setRTS(bool) {}
void Serial::SerialImpl::setDTR(bool) {}
bool Serial::SerialImpl::waitForChange() {
    return false;
}
bool Serial::SerialImpl::getCTS() {
    return false;
}
bool Serial::SerialImpl::getDSR() {
    return false;
}
bool Serial::SerialImpl::getRI() {
    return false;
}
bool Serial::SerialImpl::getCD() {
    return false;
}
void Serial::SerialImpl::readLock() {}
void Serial::SerialImpl::readUnlock() {}
void Serial::SerialImpl::writeLock() {}
void Serial::SerialImpl::writeUnlock() {}

} // namespace serial
