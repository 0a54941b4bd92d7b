#pragma once

#include "shell/SysLogLevel.h"
#include "support/QtPrinters.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <mutex>
#include <vector>

class AppImpleBase;

// Collects the lines an engine logs, on whatever thread it logs them.
class LogCatcher {
public:
    explicit LogCatcher(AppImpleBase* engine);

    struct Line {
        SYS_LOG_LEVEL level;
        QString text;
    };
    std::vector<Line> lines() const;
    QStringList texts() const;
    QStringList errors() const;
    QStringList infos() const;
    // The texts that start with prefix.
    QStringList starting(const QString& prefix) const;
    void clear();

private:
    QStringList select(const std::function<bool(const Line&)>& wanted) const;

    mutable std::mutex mutex_;
    std::vector<Line> lines_;
};
