#pragma once

#include "base/ByteBuffer.h"

#include <QString>

#include <cstdint>

// One record of a "beno" all-in-one image: dlType goes out as word 0 of the raw header.
struct AioItem {
    uint32_t dlType = 0;
    ByteBuffer data;
    uint32_t startAddr = 0;
    QString path;
};
