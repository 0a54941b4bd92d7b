#include "cli/CliOutput.h"

#include <QJsonDocument>

namespace {

QString levelName(SYS_LOG_LEVEL level) {
    switch (level) {
    case SYS_LOG_ERROR:
        return QStringLiteral("error");
    case SYS_LOG_WARN:
        return QStringLiteral("warn");
    case SYS_LOG_DEBUG:
        return QStringLiteral("debug");
    default:
        return QStringLiteral("info");
    }
}

} // namespace

CliOutput::CliOutput(QTextStream& out, QTextStream& err, bool json)
    : out_(out), err_(err), json_(json) {}

void CliOutput::log(SYS_LOG_LEVEL level, const QString& text, const QString& board) {
    if (json_) {
        QJsonObject line{{"type", "log"}, {"level", levelName(level)}, {"text", text}};
        if (!board.isEmpty())
            line.insert(QStringLiteral("board"), board);
        result(line, {});
        return;
    }
    if (!board.isEmpty())
        err_ << '[' << board << "] ";
    else if (level == SYS_LOG_ERROR)
        err_ << "bramble-cli: ";
    err_ << text << '\n';
    err_.flush();
}

void CliOutput::wrote(const QString& path) {
    result({{"type", "result"}, {"ok", true}, {"out", path}},
           {QStringLiteral("wrote %1").arg(path)});
}

void CliOutput::result(const QJsonObject& object, const QStringList& plain) {
    if (json_) {
        out_ << QJsonDocument(object).toJson(QJsonDocument::Compact) << '\n';
    } else {
        for (const QString& line : plain)
            out_ << line << '\n';
    }
    out_.flush();
}
