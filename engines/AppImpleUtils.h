#pragma once

#include "engines/AppImpleBase.h"
#include "engines/NvItem.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

class ByteBuffer;

// NV data in its three forms: a list of items, a binary image of 4096-byte sectors (tag "EF40"
// for a partition image, type 0, or "EF41" for an nv image, type 1) and the XML conf file.
// Holds no state; a failure is told in error lines and gives false.
class AppImpleUtils : public AppImpleBase {
    Q_OBJECT
public:
    AppImpleUtils() = default;

    bool loadConfFile(const QString& path, QList<NvItem>& list);
    bool saveConfFile(const QList<NvItem>& list, const QString& path);
    bool loadNvFile(const QString& path, QList<NvItem>& list, int& type);
    bool saveNvFile(const QList<NvItem>& list, int type, const QString& path, int size);

    // Appends the records of every sector of image to list; type gets the last sector's type.
    bool nvToKv(const QByteArray& image, QList<NvItem>& list, int& type);
    // Builds an image of size bytes from list. Fails without writing outside the image when an
    // item does not fit where the layout puts it.
    bool kvToNv(const QList<NvItem>& list, int type, ByteBuffer& out, int size);
    // Appends to out the items whose lower-case name is one of keys, until out holds as many
    // items as there are keys; false when the list runs out first.
    bool getKeyNvList(const QList<NvItem>& list, QList<NvItem>& out, const QStringList& keys);

    // The names of the key items of a partition image: "partition" and "uboot".
    static QStringList keyNames();
    // What a "partition" image holds: the key items first, name and value lower-cased, in the
    // order they came, then the others as they stand. False, with the list unchanged, unless
    // each key name stands exactly once (in any case).
    static bool orderPartitionItems(QList<NvItem>& items);
    // CRC-32 (reflected polynomial 0xEDB88320), continuing from start; 0 starts afresh.
    static quint32 crc32Of(quint32 start, const unsigned char* bytes, int count);
};
