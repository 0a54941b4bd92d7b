#pragma once

#include <cstdint>
#include <vector>

// A one-shot fault for the simulated board. It waits in the board's queue until a reply comes
// that it matches and can act on, changes that reply and is gone.
struct SimFault {
    enum class Kind {
        Drop,         // the reply never goes out (the request was carried out all the same)
        Delay,        // the reply is held back for ms
        Split,        // the reply goes out in pieces cut at `cuts`, with ms between pieces
        CorruptCheck, // the check byte of a reply frame is wrong
        State,        // the request is refused: a reply frame with state `value`, no payload
        WrongStart,   // the first byte of the reply is `value`
        WrongType,    // the type byte of a reply frame is not the request's
        OutOfStep,    // a raw header is answered 0xFF, then 0xFF again after `value` zeros
        SyncAnswer    // the answer to one sync word is `value`
    };

    // The replies a fault waits for.
    enum class Target {
        Any,       // whatever reply comes next that the fault can act on
        Frame,     // a reply frame; of one type unless frameType is -1
        RawHeader, // the byte that answers a raw 12-byte header
        RawBlock,  // the byte that answers a raw data block
        Sync       // the byte that answers a sync word
    };

    struct Match {
        Target target = Target::Any;
        int frameType = -1;
    };

    Kind kind = Kind::Drop;
    Match match;
    int ms = 0;
    std::vector<int> cuts;
    int value = 0;

    static Match anyReply() { return {Target::Any, -1}; }
    static Match frame(int type = -1) { return {Target::Frame, type}; }
    static Match rawHeader() { return {Target::RawHeader, -1}; }
    static Match rawBlock() { return {Target::RawBlock, -1}; }
    static Match syncWord() { return {Target::Sync, -1}; }

    static SimFault drop(Match m = anyReply());
    static SimFault delay(int ms, Match m = anyReply());
    // Pieces end at each offset in cuts (ascending, counted from the reply's first byte).
    static SimFault split(std::vector<int> cuts, int pauseMs, Match m = frame());
    static SimFault corruptCheck(Match m = frame());
    // Any state but 0: 1 is "failed", 2 "flash not enough", others are not known to the host.
    static SimFault state(uint8_t state, Match m = frame());
    static SimFault wrongStart(Match m = anyReply(), uint8_t byte = 0x55);
    static SimFault wrongType(Match m = frame());
    // zeros < 1: the board stays silent through all the zero bytes of the resync.
    static SimFault outOfStep(int zeros);
    static SimFault syncAnswer(uint8_t answer);

    // Whether this fault acts on a reply of kind `reply` (Frame, RawHeader, RawBlock or Sync)
    // to a frame of type `type` (-1 for raw replies).
    bool matches(Target reply, int type) const;
};
