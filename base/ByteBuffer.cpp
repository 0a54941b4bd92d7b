#include "base/ByteBuffer.h"

#include "base/BaseUtils.h"

#include <algorithm>

void ByteBuffer::append(const void* p, int n) {
    if (n <= 0)
        return;
    const auto* b = static_cast<const unsigned char*>(p);
    bytes_.insert(bytes_.end(), b, b + n);
}

void ByteBuffer::appendU16(unsigned v) {
    appendByte(static_cast<unsigned char>(v & 0xFF));
    appendByte(static_cast<unsigned char>((v >> 8) & 0xFF));
}

void ByteBuffer::appendU32(unsigned v) {
    for (int shift = 0; shift < 32; shift += 8)
        appendByte(static_cast<unsigned char>((v >> shift) & 0xFF));
}

void ByteBuffer::fill(unsigned char value, int n) {
    if (n > 0)
        bytes_.insert(bytes_.end(), size_t(n), value);
}

std::string ByteBuffer::text() const {
    const auto zero = std::find(bytes_.begin(), bytes_.end(), 0);
    return std::string(bytes_.begin(), zero);
}

int ByteBuffer::find(const std::string& needle, int start, bool ignoreCase) const {
    const int n = int(needle.size());
    const int total = size();
    if (n == 0)
        return -1;
    auto same = [ignoreCase](unsigned char a, unsigned char b) {
        if (a == b)
            return true;
        return ignoreCase && isAsciiLetter(char(a)) && isAsciiLetter(char(b)) &&
               (a > b ? a - b : b - a) == 32;
    };
    int i = std::max(start, 0);
    while (i + n <= total) {
        if (!same(bytes_[size_t(i)], static_cast<unsigned char>(needle[0]))) {
            ++i;
            continue;
        }
        int k = 1;
        while (k < n && same(bytes_[size_t(i + k)], static_cast<unsigned char>(needle[size_t(k)])))
            ++k;
        if (k == n)
            return i;
        i += k + 1; // resume behind the byte that broke the comparison
    }
    return -1;
}

bool ByteBuffer::slice(int pos, int len, std::string& out) const {
    if (pos < 0 || len < 0 || pos + len > size())
        return false;
    out.assign(reinterpret_cast<const char*>(bytes_.data()) + pos, size_t(len));
    return true;
}
