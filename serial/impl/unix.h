#pragma once

#include "serial/Serial.h"

#include <pthread.h>

namespace serial {

// The POSIX side of a serial port: termios2 with free baud rates, exclusive open, reads and
// writes that sleep in poll() while they wait.
class Serial::SerialImpl {
public:
    SerialImpl(const std::string& port, uint32_t baudrate, bytesize_t bytesize, parity_t parity,
               stopbits_t stopbits, flowcontrol_t flowcontrol);
    ~SerialImpl();

    void open();
    void close();
    bool isOpen() const { return is_open_; }

    size_t available();
    bool waitReadable(uint32_t timeoutMs);
    void waitByteTimes(size_t count);

    size_t read(uint8_t* buf, size_t size);
    size_t write(const uint8_t* data, size_t size);

    void setPort(const std::string& port) { port_ = port; }
    std::string getPort() const { return port_; }
    void setTimeout(const Timeout& timeout);
    Timeout getTimeout() const { return timeout_; }
    void setBaudrate(uint32_t baudrate);
    uint32_t getBaudrate() const { return baudrate_; }
    void setBytesize(bytesize_t bytesize);
    bytesize_t getBytesize() const { return bytesize_; }
    void setParity(parity_t parity);
    parity_t getParity() const { return parity_; }
    void setStopbits(stopbits_t stopbits);
    stopbits_t getStopbits() const { return stopbits_; }
    void setFlowcontrol(flowcontrol_t flowcontrol);
    flowcontrol_t getFlowcontrol() const { return flowcontrol_; }

    void flush();
    void flushInput();
    void flushOutput();

    void sendBreak(int durationMs);
    void setBreak(bool level);
    void setRTS(bool level);
    void setDTR(bool level);
    bool waitForChange();
    bool getCTS();
    bool getDSR();
    bool getRI();
    bool getCD();

    void readLock();
    void readUnlock();
    void writeLock();
    void writeUnlock();

private:
    void reconfigurePort();
    void setModemLine(int line, bool level, const char* what);
    int modemLines(const char* what);

    std::string port_;
    int fd_ = -1;
    bool is_open_ = false;
    Timeout timeout_;
    uint32_t baudrate_;
    parity_t parity_;
    bytesize_t bytesize_;
    stopbits_t stopbits_;
    flowcontrol_t flowcontrol_;
    pthread_mutex_t read_mutex_;
    pthread_mutex_t write_mutex_;
};

} // namespace serial
