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
    CliOutput(QTextStream& out, QTextStream& err, bool json);

    bool json() const { return json_; }
    // A log line of the given level (an engine's, or the command line's own), of one board
    // when `board` is given. Callers on several threads take turns themselves.
    void log(SYS_LOG_LEVEL level, const QString& text, const QString& board = QString());
    void error(const QString& text) { log(SYS_LOG_ERROR, text); }
    // A result: the object under --json, else the plain lines.
    void result(const QJsonObject& object, const QStringList& plain);
    // The result of a command that made a file.
    void wrote(const QString& path);

private:
    QTextStream& out_;
    QTextStream& err_;
    bool json_;
};
