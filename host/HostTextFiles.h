#pragma once

#include "shell/HostTextService.h"

#include <QHash>
#include <QString>

// The host stand-in's word service: one UTF-8 file per language, a line per key,
// "key<TAB>text". Empty lines and lines starting with '#' are skipped. In the text, "\n",
// "\t" and "\\" stand for a line break, a tab and a backslash. An unknown key answers with
// the key itself, so a missing word shows up on the screen instead of an empty label.
class HostTextFiles : public HostTextService {
public:
    explicit HostTextFiles(QString configDir = QString());

    // Reads one word file; false (and nothing kept) when it cannot be read or a line has no tab.
    bool load(const QString& path, QString* error = nullptr);

    bool contains(const QString& key) const { return texts_.contains(key); }
    QStringList keys() const { return texts_.keys(); }

    QString configDir() override;
    QString text(QString key) override;

private:
    QString configDir_;
    QHash<QString, QString> texts_;
};
