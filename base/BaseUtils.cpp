#include "base/BaseUtils.h"

#include <QRegExp>

#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <ctime>
#include <thread>

std::string stringFormat(const char* format, ...) {
    va_list args;
    va_start(args, format);
    va_list measure;
    va_copy(measure, args);
    const int n = std::vsnprintf(nullptr, 0, format, measure);
    va_end(measure);
    std::string out;
    if (n > 0) {
        out.resize(size_t(n) + 1);
        std::vsnprintf(&out[0], out.size(), format, args);
        out.resize(size_t(n));
    }
    va_end(args);
    return out;
}

std::string timestampText(bool withMs) {
    const auto now = std::chrono::system_clock::now();
    const std::time_t secs = std::chrono::system_clock::to_time_t(now);
    const int ms =
        int(std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() %
            1000);
    std::tm t{};
    localtime_r(&secs, &t);
    if (withMs)
        return stringFormat("%04d-%02d-%02d %02d:%02d:%02d.%03d", t.tm_year + 1900, t.tm_mon + 1,
                            t.tm_mday, t.tm_hour, t.tm_min, t.tm_sec, ms);
    return stringFormat("%04d-%02d-%02d %02d:%02d:%02d", t.tm_year + 1900, t.tm_mon + 1, t.tm_mday,
                        t.tm_hour, t.tm_min, t.tm_sec);
}

void sleepMs(int ms) {
    if (ms > 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

bool isAsciiLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

QStringList regexFindAll(const QString& pattern, const QString& text) {
    QStringList found;
    QRegExp rx(pattern, Qt::CaseSensitive);
    int pos = 0;
    while ((pos = rx.indexIn(text, pos)) != -1) {
        const QString match = rx.cap(0);
        if (match.isEmpty())
            break;
        found << match;
        pos += match.size();
    }
    return found;
}
