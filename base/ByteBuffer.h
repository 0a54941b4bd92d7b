#pragma once

#include <string>
#include <vector>

// A growable byte vector in which frames are built and replies land. Multi-byte values are
// stored least significant byte first.
class ByteBuffer {
public:
    ByteBuffer() = default;
    ByteBuffer(const void* p, int n) { append(p, n); }
    explicit ByteBuffer(const std::string& s) { append(s.data(), int(s.size())); }

    void append(const void* p, int n);
    void appendByte(unsigned char v) { bytes_.push_back(v); }
    void appendByte(char v) { bytes_.push_back(static_cast<unsigned char>(v)); }
    void appendU16(unsigned v);
    void appendU32(unsigned v);
    void fill(unsigned char value, int n);

    // Pointer to the byte at offset; offset == size() is allowed as the end pointer.
    unsigned char* at(int offset) { return bytes_.data() + offset; }
    const unsigned char* at(int offset) const { return bytes_.data() + offset; }

    // The bytes from offset 0 up to the first zero byte (or the end).
    std::string text() const;

    // Index of the first match of needle at or after start, or -1. After a byte that breaks a
    // comparison the scan goes on behind that byte, so "OK" is not found in "OOK".
    int find(const std::string& needle, int start, bool ignoreCase) const;

    // Cuts len bytes from pos into out; false when they run past the end.
    bool slice(int pos, int len, std::string& out) const;

    int size() const { return int(bytes_.size()); }
    bool empty() const { return bytes_.empty(); }
    void clear() { bytes_.clear(); }
    void resize(int n) { bytes_.resize(size_t(n)); }
    unsigned char* data() { return bytes_.data(); }
    const unsigned char* data() const { return bytes_.data(); }
    unsigned char& operator[](int i) { return bytes_[size_t(i)]; }
    unsigned char operator[](int i) const { return bytes_[size_t(i)]; }
    const std::vector<unsigned char>& bytes() const { return bytes_; }
    bool operator==(const ByteBuffer& o) const { return bytes_ == o.bytes_; }
    bool operator!=(const ByteBuffer& o) const { return bytes_ != o.bytes_; }

private:
    std::vector<unsigned char> bytes_;
};
