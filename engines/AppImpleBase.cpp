#include "engines/AppImpleBase.h"

#include <cstdarg>

AppImpleBase::AppImpleBase() : QObject(nullptr) {
    qRegisterMetaType<SYS_LOG_LEVEL>("SYS_LOG_LEVEL");
}

AppImpleBase::~AppImpleBase() = default;

void AppImpleBase::logError(const char* format, ...) {
    if (!logEnabled)
        return;
    va_list args;
    va_start(args, format);
    const QString line = QString::vasprintf(format, args);
    va_end(args);
    emit sendLog(SYS_LOG_ERROR, line);
}

void AppImpleBase::logInfo(const char* format, ...) {
    if (!logEnabled)
        return;
    va_list args;
    va_start(args, format);
    const QString line = QString::vasprintf(format, args);
    va_end(args);
    emit sendLog(SYS_LOG_INFO, line);
}
