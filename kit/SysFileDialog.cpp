#include "kit/SysFileDialog.h"

#include <QFileDialog>

#include <utility>

namespace {

SysFileDialog::Answer& installedAnswer() {
    static SysFileDialog::Answer answer;
    return answer;
}

} // namespace

QString SysFileDialog::getOpenFileName(QWidget* parent, const QString& caption, const QString& dir,
                                       const QString& filter) {
    if (installedAnswer())
        return installedAnswer()(OpenFile, caption, dir, filter);
    return QFileDialog::getOpenFileName(parent, caption, dir, filter);
}

QString SysFileDialog::getSaveFileName(QWidget* parent, const QString& caption, const QString& dir,
                                       const QString& filter) {
    if (installedAnswer())
        return installedAnswer()(SaveFile, caption, dir, filter);
    return QFileDialog::getSaveFileName(parent, caption, dir, filter);
}

QString SysFileDialog::getExistingDirectory(QWidget* parent, const QString& caption,
                                            const QString& dir) {
    if (installedAnswer())
        return installedAnswer()(ExistingDirectory, caption, dir, QString());
    return QFileDialog::getExistingDirectory(parent, caption, dir, QFileDialog::ShowDirsOnly);
}

void SysFileDialog::setAnswer(Answer answer) {
    installedAnswer() = std::move(answer);
}

bool SysFileDialog::hasAnswer() {
    return static_cast<bool>(installedAnswer());
}
