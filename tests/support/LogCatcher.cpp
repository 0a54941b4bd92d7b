#include "support/LogCatcher.h"

#include "engines/AppImpleBase.h"

LogCatcher::LogCatcher(AppImpleBase* engine) {
    QObject::connect(
        engine, &AppImpleBase::sendLog, engine,
        [this](SYS_LOG_LEVEL level, QString text) {
            std::lock_guard<std::mutex> lock(mutex_);
            lines_.push_back({level, text});
        },
        Qt::DirectConnection);
}

std::vector<LogCatcher::Line> LogCatcher::lines() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return lines_;
}

QStringList LogCatcher::texts() const {
    return select([](const Line&) { return true; });
}

QStringList LogCatcher::errors() const {
    return select([](const Line& l) { return l.level == SYS_LOG_ERROR; });
}

QStringList LogCatcher::infos() const {
    return select([](const Line& l) { return l.level == SYS_LOG_INFO; });
}

QStringList LogCatcher::starting(const QString& prefix) const {
    return select([&](const Line& l) { return l.text.startsWith(prefix); });
}

QStringList LogCatcher::select(const std::function<bool(const Line&)>& wanted) const {
    QStringList out;
    for (const Line& l : lines())
        if (wanted(l))
            out << l.text;
    return out;
}

void LogCatcher::clear() {
    std::lock_guard<std::mutex> lock(mutex_);
    lines_.clear();
}
