#pragma once

#include <QString>

#include <functional>

class QWidget;

// The one way the program asks the user for a file or a folder. Each call shows the native
// QFileDialog, unless a test has installed an answer: then the answer stands in for the user
// and no dialog appears. An empty result always means the user cancelled.
class SysFileDialog {
public:
    enum Kind { OpenFile, SaveFile, ExistingDirectory };

    // Stands in for the user: gets what the dialog would have shown and returns the chosen
    // path, or an empty text for a cancel. The directory kind gets an empty filter.
    using Answer = std::function<QString(Kind kind, const QString& caption, const QString& dir,
                                         const QString& filter)>;

    static QString getOpenFileName(QWidget* parent, const QString& caption, const QString& dir,
                                   const QString& filter);
    static QString getSaveFileName(QWidget* parent, const QString& caption, const QString& dir,
                                   const QString& filter);
    // Shows folders only.
    static QString getExistingDirectory(QWidget* parent, const QString& caption,
                                        const QString& dir);

    // Installs `answer` for every later call; an empty function brings the dialogs back.
    // Interface thread only, like the dialogs themselves.
    static void setAnswer(Answer answer);
    static bool hasAnswer();

    SysFileDialog() = delete;
};
