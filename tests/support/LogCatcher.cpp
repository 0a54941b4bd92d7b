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
    QStringList out;
    for (const Line& l : lines())
        out << l.text;
    return out;
}

QStringList LogCatcher::errors() const {
    QStringList out;
    for (const Line& l : lines())
        if (l.level == SYS_LOG_ERROR)
            out << l.text;
    return out;
}

QStringList LogCatcher::infos() const {
    QStringList out;
    for (const Line& l : lines())
        if (l.level == SYS_LOG_INFO)
            out << l.text;
    return out;
}

QStringList LogCatcher::starting(const QString& prefix) const {
    QStringList out;
    for (const Line& l : lines())
        if (l.text.startsWith(prefix))
            out << l.text;
    return out;
}

void LogCatcher::clear() {
    std::lock_guard<std::mutex> lock(mutex_);
    lines_.clear();
}
