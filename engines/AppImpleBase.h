#pragma once

#include <cstdarg>

#include "shell/SysLogLevel.h"

#include <QObject>
#include <QString>

// Base of every engine: an object without port or thread that reports through sendLog.
// logError and logInfo format printf-style ("%s" takes 8-bit text) and emit only while
// logging is enabled.
class AppImpleBase : public QObject {
    Q_OBJECT
public:
    AppImpleBase();
    ~AppImpleBase() override;

    void setLogEnabled(bool enabled) { logEnabled = enabled; }
    bool isLogEnabled() const { return logEnabled; }

    void logError(const char* format, ...) __attribute__((format(printf, 2, 3)));
    void logInfo(const char* format, ...) __attribute__((format(printf, 2, 3)));

signals:
    void sendLog(SYS_LOG_LEVEL level, QString strLog);
    // Kept for the signature of the engines; progress is told by log lines instead.
    void sendWritenBytes(int v);

protected:
    bool logEnabled = true;

private:
    // Formats and logs one line; logError and logInfo share it.
    void logV(SYS_LOG_LEVEL level, const char* format, va_list args);
};
