#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <ostream>

// Readable failure messages for Qt values in test assertions.
inline void PrintTo(const QString& s, std::ostream* os) { *os << '"' << s.toStdString() << '"'; }

inline void PrintTo(const QStringList& list, std::ostream* os) {
    *os << "{";
    for (int i = 0; i < list.size(); ++i)
        *os << (i ? ", \"" : "\"") << list[i].toStdString() << '"';
    *os << "}";
}

inline void PrintTo(const QByteArray& b, std::ostream* os) {
    *os << b.size() << " bytes: " << b.left(64).toHex(' ').toStdString()
        << (b.size() > 64 ? " ..." : "");
}
