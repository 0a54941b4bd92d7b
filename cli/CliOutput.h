#pragma once

#include "shell/SysLogLevel.h"

#include <QJsonObject>
#include <QString>
#include <QTextStream>

// What a call of the command line prints. Plain: results on standard output, log lines on
// standard error. With --json: one JSON object a line on standard output and nothing else, so
// that a script follows it line by line: {"type": "log", "level", "text"}, then the command's
// own objects.
class CliOutput {
public:
    // `live`: standard error is a terminal, on which boards get a live line each.
    CliOutput(QTextStream& out, QTextStream& err, bool json, bool live = false);

    bool json() const { return json_; }
    // A log line of the given level (an engine's, or the command line's own), of one board
    // when `board` is given. Callers on several threads take turns themselves.
    void log(SYS_LOG_LEVEL level, const QString& text, const QString& board = QString());
    void error(const QString& text) { log(SYS_LOG_ERROR, text); }
    // A result: the object under --json, else the plain lines.
    void result(const QJsonObject& object, const QStringList& plain);
    // The result of a command that made a file.
    void wrote(const QString& path);
    // While boards run, a terminal shows one line per board, its latest, redrawn in place,
    // instead of every line scrolling past. Elsewhere every line is printed.
    void beginBoards(const QStringList& boards);
    void endBoards();

private:
    void redrawBoards();

    QTextStream& out_;
    QTextStream& err_;
    bool json_;
    bool live_;
    QStringList boards_;     // while boards run on a terminal
    QStringList boardLines_; // each one's latest line
};
