#pragma once

#include <QByteArray>
#include <QString>

#include <vector>

// A one-shot change to the simulated firmware's answer to a command line. It waits until a
// line comes that it matches, changes the answer to that line and is gone. The echo of the
// line is not part of the answer: it goes out as it would on a board, untouched.
struct SimLineFault {
    enum class Kind {
        Split,    // the answer goes out in pieces cut at `cuts`, with ms between pieces
        Delay,    // the answer is held back for ms
        Withhold, // no answer goes out (the command was carried out all the same)
        Replace,  // `text` goes out instead of the answer (the command was carried out)
        Refuse    // the command is not carried out; the answer is `text` then "ERROR"
    };

    Kind kind = Kind::Withhold;
    // The command the fault waits for: a line that is this text, or starts with it and a
    // blank. Empty: the next line, whatever it is.
    QString command;
    std::vector<int> cuts;
    int ms = 0;
    QByteArray text;

    // Pieces end at each offset in cuts (ascending, counted from the answer's first byte).
    static SimLineFault split(std::vector<int> cuts, int pauseMs, const QString& command = {});
    static SimLineFault delay(int ms, const QString& command = {});
    static SimLineFault withhold(const QString& command = {});
    static SimLineFault replace(const QByteArray& text, const QString& command = {});
    // reason, when given, stands in front of "ERROR" with a blank between.
    static SimLineFault refuse(const QString& command = {}, const QByteArray& reason = {});

    bool matches(const QString& line) const;
};
