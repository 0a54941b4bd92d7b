#pragma once

#include <QString>
#include <QStringList>

#include <string>

// Small stateless helpers shared across the system.

// printf into a std::string of exactly the needed size.
std::string stringFormat(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Local time as "YYYY-MM-DD hh:mm:ss" with ".mmm" behind it when withMs.
std::string timestampText(bool withMs);

// Blocks the calling thread for ms milliseconds (nothing for ms <= 0).
void sleepMs(int ms);

bool isAsciiLetter(char c);

// Every non-empty match of pattern in text, left to right, each scan going on behind the
// previous match; the scan stops at the first empty match.
QStringList regexFindAll(const QString& pattern, const QString& text);
