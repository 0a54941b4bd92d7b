#include "kit/SysMessageBox.h"

#include <QMessageBox>

#include <cstdarg>
#include <utility>

namespace {

SysMessageBox::Answer& installedAnswer() {
    static SysMessageBox::Answer answer;
    return answer;
}

} // namespace

QStringList SysMessageBox::buttonsOf(Kind kind) {
    if (kind == Question)
        return {QStringLiteral("是"), QStringLiteral("否")};
    return {QStringLiteral("确定")};
}

int SysMessageBox::exec(Kind kind, const QString& title, const QString& text) {
    const QStringList buttons = buttonsOf(kind);
    if (installedAnswer())
        return installedAnswer()(kind, title, text, buttons);
    switch (kind) {
    case Error:
        return QMessageBox::critical(nullptr, title, text, buttons[0]);
    case Info:
        return QMessageBox::information(nullptr, title, text, buttons[0]);
    case Question:
        // Return presses "是"; Escape gives -1.
        return QMessageBox::information(nullptr, title, text, buttons[0], buttons[1], QString(), 0,
                                        -1);
    }
    return -1;
}

void SysMessageBox::setAnswer(Answer answer) {
    installedAnswer() = std::move(answer);
}

bool SysMessageBox::hasAnswer() {
    return static_cast<bool>(installedAnswer());
}

void sysShowError(QString title, const char* format, ...) {
    va_list args;
    va_start(args, format);
    const QString text = QString::vasprintf(format, args);
    va_end(args);
    SysMessageBox::exec(SysMessageBox::Error, title, text);
}

void sysShowInfo(QString title, const char* format, ...) {
    va_list args;
    va_start(args, format);
    const QString text = QString::vasprintf(format, args);
    va_end(args);
    SysMessageBox::exec(SysMessageBox::Info, title, text);
}

bool sysAsk(QString title, const char* format, ...) {
    va_list args;
    va_start(args, format);
    const QString text = QString::vasprintf(format, args);
    va_end(args);
    return SysMessageBox::exec(SysMessageBox::Question, title, text) == 0;
}
