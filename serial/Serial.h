#pragma once

#include "serial/IOException.h"
#include "serial/PortNotOpenedException.h"
#include "serial/SerialException.h"
#include "serial/Timeout.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace serial {

// A serial port. Failures are thrown as SerialException, PortNotOpenedException,
// IOException or std::invalid_argument. Reads and writes each hold a lock of their own, so one
// thread may read while another writes.
class Serial {
public:
    explicit Serial(const std::string& port = std::string(), uint32_t baudrate = 9600,
                    Timeout timeout = Timeout(), bytesize_t bytesize = eightbits,
                    parity_t parity = parity_none, stopbits_t stopbits = stopbits_one,
                    flowcontrol_t flowcontrol = flowcontrol_none);
    virtual ~Serial();
    Serial(const Serial&) = delete;
    Serial& operator=(const Serial&) = delete;

    void open();
    bool isOpen() const;
    void close();

    // Bytes waiting in the driver's input queue; 0 when closed.
    size_t available();

    // Sleeps until input is waiting or timeoutMs has passed; true when input is waiting.
    // A port whose far end hung up sleeps the whole time and answers false.
    bool waitReadable(uint32_t timeoutMs);

    // Sleeps for the time that count characters take on the line at the present settings.
    void waitByteTimes(size_t count);

    size_t read(uint8_t* buffer, size_t size);
    size_t read(std::vector<uint8_t>& buffer, size_t size);
    std::string read(size_t size);
    std::string readline(size_t size = 65536, const std::string& eol = "\n");
    std::vector<std::string> readlines(size_t size = 65536, const std::string& eol = "\n");

    size_t write(const uint8_t* data, size_t size);
    size_t write(const std::string& data);

    void setPort(const std::string& port);
    std::string getPort() const;
    void setTimeout(const Timeout& timeout);
    Timeout getTimeout() const;
    void setBaudrate(uint32_t baudrate);
    uint32_t getBaudrate() const;
    void setBytesize(bytesize_t bytesize);
    bytesize_t getBytesize() const;
    void setParity(parity_t parity);
    parity_t getParity() const;
    void setStopbits(stopbits_t stopbits);
    stopbits_t getStopbits() const;
    void setFlowcontrol(flowcontrol_t flowcontrol);
    flowcontrol_t getFlowcontrol() const;

    // Waits until the driver has sent everything it holds.
    void flush();
    void flushInput();
    void flushOutput();

    void sendBreak(int durationMs);
    void setBreak(bool level = true);
    void setRTS(bool level = true);
    void setDTR(bool level = true);
    // Blocks until CTS, DSR, RI or CD changes.
    bool waitForChange();
    bool getCTS();
    bool getDSR();
    bool getRI();
    bool getCD();

    class SerialImpl;

private:
    SerialImpl* pimpl_;
};

} // namespace serial
