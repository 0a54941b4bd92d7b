#pragma once

#include "base/ByteBuffer.h"

#include <cstdint>
#include <string>

namespace serial {
class Serial;
}

// A serial port that never throws: every failure of the port layer becomes false or -1.
// The two waits on which the board protocols rest are timedRead and sendAndWait. One thread
// drives a ComPort at a time.
class ComPort {
public:
    ComPort();
    ~ComPort();
    ComPort(const ComPort&) = delete;
    ComPort& operator=(const ComPort&) = delete;

    // Opens the port that the number stands for (see PortTable) at baud, 8N1.
    bool open(int port, int baud);
    // Opens a device by name or path at baud, 8N1.
    bool open(const std::string& device, int baud);
    bool close();
    bool isOpen() const;
    int portNumber() const { return port_; }

    bool setBaudrate(int baud);
    int baudrate() const;
    void setDtr(bool high);
    void setRts(bool high);

    bool writeByte(unsigned char v);
    bool write(const ByteBuffer& data);
    bool write(const std::string& data);
    // text, then "\r", then "\n" when withLf.
    bool writeLine(const std::string& text, bool withLf);
    // True only when all n bytes went out and the flush behind them passed.
    bool writeRaw(const void* p, unsigned n);
    int readRaw(void* p, unsigned n);
    int available();
    bool flushInput();
    bool flushOutput();

    // Waits up to waitMs for the first bytes, then collects for a fixed settleMs and reads
    // all that came into out (replacing its contents). False when nothing came.
    bool timedRead(ByteBuffer& out, int waitMs, int settleMs);

    // Writes cmd as a line and reads into out (which keeps what it held) until expect is
    // found or timeoutMs has passed.
    bool sendAndWait(const std::string& cmd, const std::string& expect, ByteBuffer& out,
                     int timeoutMs, bool withLf);

    // Reads and drops incoming bytes for ms milliseconds. Always true.
    bool drainFor(int ms);

    // Sleeps until input is waiting or ms has passed; on a closed or broken port it sleeps ms.
    void waitForInput(int64_t ms);

private:
    bool openDevice(const std::string& device, int baud);

    serial::Serial* serial_;
    int port_ = -1;
};
