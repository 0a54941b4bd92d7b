#pragma once

#include <QByteArray>
#include <QString>

// Files and bytes for tests.

// The whole file, or "<missing>" when it cannot be read.
QByteArray readFile(const QString& path);
// Replaces the file with bytes; fails the test when that does not work.
void writeFile(const QString& path, const QByteArray& bytes);
// n bytes that look like data: the same for the same seed, different for another.
QByteArray pattern(int n, int seed);
