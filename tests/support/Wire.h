#pragma once

#include "base/ByteBuffer.h"

#include <QByteArray>

#include <chrono>
#include <cstdint>
#include <initializer_list>
#include <thread>

// Bytes as the host and the simulated board put them on the wire, built by hand from their
// layout, and the clock the timing checks read.

using Clock = std::chrono::steady_clock;

inline long msSince(Clock::time_point start) {
    return long(
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count());
}

inline void sleepFor(int ms) {
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

inline QByteArray bytesOf(const ByteBuffer& b) {
    return QByteArray(reinterpret_cast<const char*>(b.data()), b.size());
}

inline QByteArray bytes(std::initializer_list<int> list) {
    QByteArray b;
    for (int v : list)
        b += char(v);
    return b;
}

// Low byte first.
inline QByteArray le32(uint32_t v) {
    return bytes({int(v & 0xFF), int(v >> 8 & 0xFF), int(v >> 16 & 0xFF), int(v >> 24)});
}

// Start byte, type, payload length (2 bytes, low first), payload, a reply's state, and the sum
// of all bytes before it.
inline QByteArray frame(int start, int type, const QByteArray& payload, int state = -1) {
    QByteArray f = bytes({start, type, payload.size() & 0xFF, payload.size() >> 8}) + payload;
    if (state >= 0)
        f += char(state);
    unsigned sum = 0;
    for (char c : f)
        sum += uint8_t(c);
    return f + char(sum);
}
inline QByteArray request(int type, const QByteArray& payload = {}) {
    return frame(0xA5, type, payload);
}
inline QByteArray reply(int type, const QByteArray& payload = {}, int state = 0) {
    return frame(0x5A, type, payload, state);
}
