#include "engines/AppImpleBase.h"

#include <cstdarg>

AppImpleBase::AppImpleBase() : QObject(nullptr) {
    qRegisterMetaType<SYS_LOG_LEVEL>("SYS_LOG_LEVEL");
}

AppImpleBase::~AppImpleBase() = default;

void AppImpleBase::logError(const char* format, ...) {
    va_list args;
    va_start(args, format);
    logV(SYS_LOG_ERROR, format, args);
    va_end(args);
}

void AppImpleBase::logInfo(const char* format, ...) {
    va_list args;
    va_start(args, format);
    logV(SYS_LOG_INFO, format, args);
    va_end(args);
}

void AppImpleBase::logV(SYS_LOG_LEVEL level, const char* format, va_list args) {
    if (!logEnabled)
        return;
    emit sendLog(level, QString::vasprintf(format, args));
}
