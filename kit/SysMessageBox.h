#pragma once

#include <QString>
#include <QStringList>

#include <functional>

// The kit's one-line message dialogs. Each shows a QMessageBox without a parent, unless a
// test has installed an answer: then the answer stands in for the user and no dialog appears.
class SysMessageBox {
public:
    enum Kind { Error, Info, Question };

    // Stands in for the user: gets what the dialog would show and returns the index of the
    // button pressed, or -1 for Escape.
    using Answer = std::function<int(Kind kind, const QString& title, const QString& text,
                                     const QStringList& buttons)>;

    // Shows the dialog of `kind` ("确定" for errors and information, "是" and "否" for
    // questions) and gives back the index of the button pressed, -1 for Escape.
    static int exec(Kind kind, const QString& title, const QString& text);
    static QStringList buttonsOf(Kind kind);

    // Installs `answer` for every later dialog; an empty function brings the dialogs back.
    // Interface thread only, like the dialogs themselves.
    static void setAnswer(Answer answer);
    static bool hasAnswer();

    SysMessageBox() = delete;
};

// An error dialog titled `title` with the text of a printf format.
void sysShowError(QString title, const char* format, ...) __attribute__((format(printf, 2, 3)));
// An information dialog titled `title` with the text of a printf format.
void sysShowInfo(QString title, const char* format, ...) __attribute__((format(printf, 2, 3)));
// A yes/no question; true only when the user answers yes, so Escape is no.
bool sysAsk(QString title, const char* format, ...) __attribute__((format(printf, 2, 3)));
