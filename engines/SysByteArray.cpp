#include "engines/SysByteArray.h"

#include "base/ByteBuffer.h"

void SysByteArray::appendU32(uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8)
        data_.append(char((value >> shift) & 0xFF));
}

void SysByteArray::appendText(const QString& text) {
    const std::string bytes = text.toStdString();
    data_.append(bytes.data(), int(bytes.size()));
}

void SysByteArray::append(const SysByteArray& other, int count) {
    if (count < 0 || count > other.size())
        count = other.size();
    data_.append(other.constData(), count);
}

uint32_t SysByteArray::readU32() {
    uint32_t value = 0;
    for (int i = 0; i < 4; ++i)
        value |= uint32_t(uint8_t(data_.at(pos_ + i))) << (8 * i);
    pos_ += 4;
    return value;
}

// A cursor that seek put in front of the data has nothing to read.
bool SysByteArray::readBytes(int count, SysByteArray& out) {
    if (count < 0 || pos_ < 0 || count > remaining())
        return false;
    out.clear();
    out.append(data_.constData() + pos_, count);
    pos_ += count;
    return true;
}

bool SysByteArray::readBytes(int count, ByteBuffer& out) {
    if (count < 0 || pos_ < 0 || count > remaining())
        return false;
    out.resize(count);
    std::copy(data_.constData() + pos_, data_.constData() + pos_ + count,
              reinterpret_cast<char*>(out.data()));
    pos_ += count;
    return true;
}
