#pragma once

#include <QByteArray>

#include <cstdint>

// One request frame as the simulated stub received it.
struct SimFrame {
    QByteArray raw;       // every byte of the frame, start byte to check byte
    uint8_t type = 0;     // the frame type byte
    QByteArray payload;   // the bytes between the length field and the check byte
    bool checkOk = false; // the check byte was the sum of the bytes before it
};
