#pragma once

#include "base/ByteBuffer.h"

#include <QString>

#include <cstdint>

// One file of a download list or of an all-in-one image. The writer uses toRam, path and
// startAddr; the reader fills toRam, startAddr and data and leaves path empty.
struct AioEntry {
    bool toRam = false;
    QString path;
    uint32_t startAddr = 0;
    ByteBuffer data;
};
