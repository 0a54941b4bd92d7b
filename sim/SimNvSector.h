#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>

// A board's NV sector as its firmware keeps it, written from the board's side: 4096 bytes of
// erased flash with a sector header, the tag ("EF40" or "EF41"), and one record per named
// value from the tag's first record place on. Lets the simulated flash hold settings such as
// the OTA status range that a tool looks up.
class SimNvSector {
public:
    using Item = QPair<QByteArray, QByteArray>; // key, value

    static constexpr int kSize = 4096;

    // Items that do not fit are left out.
    static QByteArray make(const QList<Item>& items, const QByteArray& tag = "EF41");
};
