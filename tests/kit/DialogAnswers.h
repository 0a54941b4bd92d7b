#pragma once

#include "kit/SysFileDialog.h"

#include <QStringList>

#include <vector>

// Stands in for the user of the file dialogs while it lives: answers each dialog with the next
// of `answers`, then with `reply`, and records what each dialog would have shown.
struct DialogAnswers {
    struct Asked {
        SysFileDialog::Kind kind;
        QString caption, dir, filter;
    };
    explicit DialogAnswers(QStringList list = {}) : answers(std::move(list)) {
        SysFileDialog::setAnswer([this](SysFileDialog::Kind kind, const QString& caption,
                                        const QString& dir, const QString& filter) {
            asked.push_back({kind, caption, dir, filter});
            return answers.isEmpty() ? reply : answers.takeFirst();
        });
    }
    ~DialogAnswers() { SysFileDialog::setAnswer(nullptr); }

    QStringList answers;
    QString reply;
    std::vector<Asked> asked;
};
