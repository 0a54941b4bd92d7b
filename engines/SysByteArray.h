#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>

class ByteBuffer;

// A byte stream with a read cursor. Appends leave the cursor alone; reads move it.
// readU8 and readU32 do not test bounds: callers look at remaining() first.
class SysByteArray {
public:
    SysByteArray() = default;
    explicit SysByteArray(const QByteArray& bytes) : data_(bytes) {}
    virtual ~SysByteArray() = default;

    void appendU8(uint8_t byte) { data_.append(char(byte)); }
    void appendU32(uint32_t value);
    void appendText(const QString& text);
    // The first count bytes of other (all of them for -1); other's cursor is not looked at.
    void append(const SysByteArray& other, int count = -1);
    void append(const char* bytes, int count) { data_.append(bytes, count); }

    uint8_t readU8() { return uint8_t(data_.at(pos_++)); }
    uint32_t readU32();
    // Replace out's content with the next count bytes; false (cursor unmoved) past the end.
    bool readBytes(int count, SysByteArray& out);
    bool readBytes(int count, ByteBuffer& out);

    int remaining() const { return data_.size() - pos_; }
    bool hasMore() const { return remaining() > 0; }
    void seek(int pos) { pos_ = pos; }
    int pos() const { return pos_; }

    const QByteArray& bytes() const { return data_; }
    QByteArray& bytes() { return data_; }
    int size() const { return data_.size(); }
    const char* constData() const { return data_.constData(); }
    void clear() {
        data_.clear();
        pos_ = 0;
    }

private:
    QByteArray data_;
    int pos_ = 0;
};
