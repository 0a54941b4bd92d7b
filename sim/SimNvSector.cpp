#include "sim/SimNvSector.h"

#include <cstdint>

namespace {

void putU32(QByteArray& b, int at, uint32_t v) {
    for (int i = 0; i < 4; ++i)
        b[at + i] = char(v >> (8 * i));
}

int padded(int n) {
    return (n + 3) & ~3;
}

// The usual reflected CRC-32 (polynomial 0xEDB88320), bit by bit: a few records only.
uint32_t crc32(const char* p, int n) {
    uint32_t crc = 0xFFFFFFFFu;
    for (int i = 0; i < n; ++i) {
        crc ^= uint8_t(p[i]);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
    }
    return ~crc;
}

} // namespace

QByteArray SimNvSector::make(const QList<Item>& items, const QByteArray& tag) {
    QByteArray sector(kSize, char(0xFF));
    // Header: in use (0), opened for records (4), valid (12), the tag at 24.
    sector[0] = sector[4] = sector[12] = 0;
    sector.replace(24, 4, tag.left(4));
    // The "EF40" kind keeps its first records further in, behind a key area.
    int at = tag == "EF40" ? 1024 : 36;
    for (const Item& item : items) {
        const QByteArray key = item.first.left(255);
        const QByteArray& value = item.second;
        const int total = 36 + padded(key.size()) + padded(value.size());
        if (at + total > kSize)
            break;
        sector[at] = sector[at + 4] = 0;
        putU32(sector, at + 20, uint32_t(total));
        sector[at + 28] = char(key.size());
        putU32(sector, at + 32, uint32_t(value.size()));
        sector.replace(at + 36, key.size(), key);
        sector.replace(at + 36 + padded(key.size()), value.size(), value);
        putU32(sector, at + 24, crc32(sector.constData() + at + 28, total - 28));
        at += total;
    }
    return sector;
}
