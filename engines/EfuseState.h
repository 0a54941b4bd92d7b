#pragma once

#include <cstdint>

// The efuse state word, decoded: the flash encryption count of bits 8 to 15, then one flag
// for each of bits 2 to 6 and 16 to 19.
struct EfuseState {
    uint32_t flashEcryptCount = 0;
    bool safeBootMode = false;          // bit 2
    bool flashEncryptEnabled = false;   // bit 3
    bool bit4 = false;                  // bit 4, kept by every write
    bool aesPrivateKeyReadable = false; // bit 5
    bool aesPrivateKeyWritable = false; // bit 6
    bool frequency = false;             // bit 16
    bool bootromLogOutput = false;      // bit 17
    bool bit18 = false;                 // bit 18, kept by every write
    bool bootromStartupType = false;    // bit 19
};
