#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

// The far end of the fuzz build's serial port: a board that answers each request with the
// next piece of a script, on a clock of its own. Time in the fuzz build is virtual while a
// script runs on the thread that plays it: every wait and sleep of the code under test moves
// the clock on at once instead of sleeping, so a reply that never comes costs no real time
// and a 500 ms wait is as cheap as a 1 ms one.
//
// Script: pieces, each a delay byte (units of 8 ms), a 16-bit little-endian length and that
// many bytes. A piece is armed by the first write after the last piece went out and becomes
// readable its delay after that write. Bytes past the last whole piece are no piece.
class ScriptedBoard {
public:
    static ScriptedBoard& instance();

    // Takes a new script and starts virtual time on the calling thread; finish() ends it.
    void load(const uint8_t* data, size_t size);
    void finish();
    static void advanceNs(int64_t ns);

    // The port's side.
    void wrote();
    size_t available();
    // Moves the clock to the next reply if it is due within ms, else by ms; true when bytes
    // are waiting then.
    bool waitReadable(uint32_t ms);
    size_t read(uint8_t* to, size_t size);
    // Drops what is waiting, as a flush of the port's input does.
    void dropPending() { pending_.clear(); }

private:
    struct Piece {
        int64_t delayNs;
        std::vector<uint8_t> bytes;
    };
    void release();

    std::deque<Piece> pieces_;
    std::deque<uint8_t> pending_;
    bool armed_ = false;
    int64_t dueNs_ = 0;
};
