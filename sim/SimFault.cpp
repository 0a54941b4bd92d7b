#include "sim/SimFault.h"

#include <utility>

namespace {

SimFault make(SimFault::Kind kind, SimFault::Match m) {
    SimFault f;
    f.kind = kind;
    f.match = m;
    return f;
}

} // namespace

SimFault SimFault::drop(Match m) {
    return make(Kind::Drop, m);
}

SimFault SimFault::delay(int ms, Match m) {
    SimFault f = make(Kind::Delay, m);
    f.ms = ms;
    return f;
}

SimFault SimFault::split(std::vector<int> cuts, int pauseMs, Match m) {
    SimFault f = make(Kind::Split, m);
    f.cuts = std::move(cuts);
    f.ms = pauseMs;
    return f;
}

SimFault SimFault::corruptCheck(Match m) {
    return make(Kind::CorruptCheck, m);
}

SimFault SimFault::state(uint8_t state, Match m) {
    SimFault f = make(Kind::State, m);
    f.value = state;
    return f;
}

SimFault SimFault::wrongStart(Match m, uint8_t byte) {
    SimFault f = make(Kind::WrongStart, m);
    f.value = byte;
    return f;
}

SimFault SimFault::wrongType(Match m) {
    return make(Kind::WrongType, m);
}

SimFault SimFault::outOfStep(int zeros) {
    SimFault f = make(Kind::OutOfStep, rawHeader());
    f.value = zeros;
    return f;
}

SimFault SimFault::syncAnswer(uint8_t answer) {
    SimFault f = make(Kind::SyncAnswer, syncWord());
    f.value = answer;
    return f;
}

bool SimFault::matches(Target reply, int type) const {
    // What each kind can act on: frames have a check, a type and a state; a raw header can be
    // out of step; a sync answer can be another byte; every reply can be lost, late or start
    // with another byte.
    bool canAct = false;
    switch (kind) {
    case Kind::Drop:
    case Kind::Delay:
    case Kind::WrongStart:
        canAct = true;
        break;
    case Kind::Split:
    case Kind::CorruptCheck:
    case Kind::State:
    case Kind::WrongType:
        canAct = reply == Target::Frame;
        break;
    case Kind::OutOfStep:
        canAct = reply == Target::RawHeader;
        break;
    case Kind::SyncAnswer:
        canAct = reply == Target::Sync;
        break;
    }
    if (!canAct)
        return false;
    if (match.target == Target::Any)
        return true;
    if (match.target != reply)
        return false;
    return reply != Target::Frame || match.frameType < 0 || match.frameType == type;
}
