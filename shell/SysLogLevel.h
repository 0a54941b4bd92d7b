#pragma once

#include <QMetaType>

// Level of a process log line.
enum SYS_LOG_LEVEL {
    SYS_LOG_DEBUG = 0,
    SYS_LOG_ERROR = 1,
    SYS_LOG_WARN = 2,
    SYS_LOG_INFO = 3,
};

Q_DECLARE_METATYPE(SYS_LOG_LEVEL)
