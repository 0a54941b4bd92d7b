#include "support/TestFiles.h"

#include <QFile>
#include <gtest/gtest.h>

QByteArray readFile(const QString& path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<missing>");
}

void writeFile(const QString& path, const QByteArray& bytes) {
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate)) << path.toStdString();
    ASSERT_EQ(f.write(bytes), bytes.size());
}

QByteArray pattern(int n, int seed) {
    QByteArray b(n, '\0');
    uint32_t x = uint32_t(seed) * 2654435761u + 1;
    for (int i = 0; i < n; ++i) {
        x = x * 1103515245u + 12345u;
        b[i] = char(x >> 24);
    }
    return b;
}
