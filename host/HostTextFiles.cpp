#include "host/HostTextFiles.h"

#include <QFile>
#include <QStandardPaths>
#include <QTextStream>

namespace {

QString unescape(const QString& raw) {
    QString out;
    out.reserve(raw.size());
    for (int i = 0; i < raw.size(); ++i) {
        const QChar c = raw.at(i);
        if (c != '\\' || i + 1 == raw.size()) {
            out.append(c);
            continue;
        }
        const QChar next = raw.at(++i);
        if (next == 'n')
            out.append('\n');
        else if (next == 't')
            out.append('\t');
        else if (next == '\\')
            out.append('\\');
        else
            out.append(c).append(next);
    }
    return out;
}

} // namespace

HostTextFiles::HostTextFiles(QString configDir) : configDir_(std::move(configDir)) {}

bool HostTextFiles::load(const QString& path, QString* error) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        if (error)
            *error = QStringLiteral("cannot open %1: %2").arg(path, file.errorString());
        return false;
    }
    QTextStream in(&file);
    in.setCodec("UTF-8");
    QHash<QString, QString> texts;
    int lineNo = 0;
    while (!in.atEnd()) {
        const QString line = in.readLine();
        ++lineNo;
        if (line.isEmpty() || line.startsWith('#'))
            continue;
        const int tab = line.indexOf('\t');
        if (tab <= 0) {
            if (error)
                *error = QStringLiteral("%1:%2: no key and tab").arg(path).arg(lineNo);
            return false;
        }
        texts.insert(line.left(tab), unescape(line.mid(tab + 1)));
    }
    texts_ = texts;
    return true;
}

QString HostTextFiles::configDir() {
    if (configDir_.isEmpty())
        return QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation);
    return configDir_;
}

QString HostTextFiles::text(QString key) {
    const auto it = texts_.constFind(key);
    return it == texts_.constEnd() ? key : it.value();
}
