#include "sim/SimLineFault.h"

#include <utility>

namespace {

SimLineFault make(SimLineFault::Kind kind, const QString& command) {
    SimLineFault f;
    f.kind = kind;
    f.command = command;
    return f;
}

} // namespace

SimLineFault SimLineFault::split(std::vector<int> cuts, int pauseMs, const QString& command) {
    SimLineFault f = make(Kind::Split, command);
    f.cuts = std::move(cuts);
    f.ms = pauseMs;
    return f;
}

SimLineFault SimLineFault::delay(int ms, const QString& command) {
    SimLineFault f = make(Kind::Delay, command);
    f.ms = ms;
    return f;
}

SimLineFault SimLineFault::withhold(const QString& command) {
    return make(Kind::Withhold, command);
}

SimLineFault SimLineFault::replace(const QByteArray& text, const QString& command) {
    SimLineFault f = make(Kind::Replace, command);
    f.text = text;
    return f;
}

SimLineFault SimLineFault::refuse(const QString& command, const QByteArray& reason) {
    SimLineFault f = make(Kind::Refuse, command);
    f.text = reason;
    return f;
}

bool SimLineFault::matches(const QString& line) const {
    if (command.isEmpty() || line == command)
        return true;
    return line.startsWith(command) && line.at(command.size()) == QLatin1Char(' ');
}
