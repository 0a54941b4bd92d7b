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

CliOutput::CliOutput(QTextStream& out, QTextStream& err, bool json, bool live)
    : out_(out), err_(err), json_(json), live_(live && !json) {}

void CliOutput::beginBoards(const QStringList& boards) {
    if (!live_)
        return;
    boards_ = boards;
    boardLines_ = QVector<QString>(boards.size()).toList();
    for (int i = 0; i < boards_.size(); ++i)
        err_ << '\n'; // the lines that the redraw goes back over
    redrawBoards();
}

void CliOutput::endBoards() {
    boards_.clear();
    boardLines_.clear();
}

void CliOutput::redrawBoards() {
    err_ << "\x1b[" << boards_.size() << 'A';
    for (int i = 0; i < boards_.size(); ++i)
        err_ << "\x1b[2K[" << boards_[i] << "] " << boardLines_[i] << '\n';
    err_.flush();
}

void CliOutput::log(SYS_LOG_LEVEL level, const QString& text, const QString& board) {
    if (json_) {
        QJsonObject line{{"type", "log"}, {"level", levelName(level)}, {"text", text}};
        if (!board.isEmpty())
            line.insert(QStringLiteral("board"), board);
        result(line, {});
        return;
    }
    const int live = boards_.indexOf(board);
    if (!board.isEmpty() && live >= 0) {
        boardLines_[live] = text;
        redrawBoards();
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
