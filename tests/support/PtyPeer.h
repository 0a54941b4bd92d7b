#pragma once

#include <string>

// The far end of a pseudo terminal: tests open slavePath() through ComPort and play the
// board on the master side.
class PtyPeer {
public:
    PtyPeer();
    ~PtyPeer();
    PtyPeer(const PtyPeer&) = delete;
    PtyPeer& operator=(const PtyPeer&) = delete;

    const std::string& slavePath() const { return slavePath_; }
    bool isOpen() const { return master_ >= 0; }

    void write(const std::string& bytes);
    // Everything that arrives until `quietMs` pass without a byte (or `maxMs` in all).
    std::string read(int quietMs = 50, int maxMs = 2000);
    // Exactly n bytes, or fewer when `timeoutMs` passes first.
    std::string readExactly(size_t n, int timeoutMs = 2000);
    // Drops what the port side has sent so far.
    void drain();
    // Closes the master: to the port side the device has gone.
    void close();

private:
    // What comes until `want` bytes are in (0: any number), a wait of `quietMs` brings
    // nothing, or `maxMs` have passed.
    std::string take(size_t want, int quietMs, int maxMs);

    int master_ = -1;
    std::string slavePath_;
};
