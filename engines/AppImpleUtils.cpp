#include "engines/AppImpleUtils.h"

#include "base/ByteBuffer.h"
#include "kit/SysXmlDocument.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <cstring>

namespace {

// Image layout.
constexpr qint64 kSectorSize = 4096;
constexpr qint64 kHeaderSize = 36;   // sector header; EF41 records begin behind it
constexpr qint64 kKeyAreaEnd = 1024; // EF40: key records below, ordinary records from here
constexpr int kTagOffset = 24;
constexpr int kOpenedMark = 4;   // set when the sector was opened for records
constexpr int kLeftFullMark = 8; // set when the writer left the sector for lack of room
// A place can hold a record while place + kRecordRoom stays below the sector's end.
constexpr qint64 kRecordRoom = 37;

// Record layout.
constexpr qint64 kRecordHead = 36;
constexpr int kTotalLengthAt = 20;
constexpr int kCrcAt = 24;
constexpr int kKeyLengthAt = 28;
constexpr int kValueLengthAt = 32;
constexpr int kMaxKeyLength = 255;
constexpr quint32 kErased = 0xFFFFFFFFu;

constexpr std::array<quint32, 256> makeCrcTable() {
    std::array<quint32, 256> table{};
    for (quint32 i = 0; i < 256; ++i) {
        quint32 c = i;
        for (int bit = 0; bit < 8; ++bit)
            c = (c & 1) ? 0xEDB88320u ^ (c >> 1) : c >> 1;
        table[i] = c;
    }
    return table;
}
constexpr std::array<quint32, 256> kCrcTable = makeCrcTable();

qint64 padded(qint64 n) {
    return (n + 3) & ~qint64(3);
}

// UTF-8 text of at most n bytes, ending early at a NUL byte.
QString textAt(const char* p, qint64 n) {
    return QString::fromUtf8(p, int(qstrnlen(p, uint(n))));
}

void writeHeader(ByteBuffer& out, qint64 sector, const char* tag, bool openedForRecords) {
    const int at = int(sector);
    out[at] = 0;
    if (openedForRecords)
        out[at + kOpenedMark] = 0;
    out[at + 12] = 0;
    std::memcpy(out.at(at + kTagOffset), tag, 4);
}

// One record at pos; the room has been checked and the padding is still 0xFF from the fill.
void writeRecord(ByteBuffer& out, qint64 pos, const QByteArray& key, const QByteArray& value,
                 qint64 length) {
    unsigned char* r = out.at(int(pos));
    r[0] = 0;
    r[4] = 0;
    qToLittleEndian<quint32>(quint32(length), r + kTotalLengthAt);
    r[kKeyLengthAt] = uchar(key.size());
    qToLittleEndian<quint32>(quint32(value.size()), r + kValueLengthAt);
    std::memcpy(r + kRecordHead, key.constData(), size_t(key.size()));
    std::memcpy(r + kRecordHead + padded(key.size()), value.constData(), size_t(value.size()));
    const quint32 crc = AppImpleUtils::crc32Of(0, r + kKeyLengthAt, int(length) - kKeyLengthAt);
    qToLittleEndian<quint32>(crc, r + kCrcAt);
}

} // namespace

bool AppImpleUtils::loadConfFile(const QString& path, QList<NvItem>& list) {
    SysXmlDocument xml;
    if (!xml.load(path)) {
        logError("LOAD_CONF_FILE: load file failed: %s", path.toStdString().c_str());
        return false;
    }
    // Every child counts, whatever its tag and whichever attributes it carries.
    for (QDomNode node = xml.root().firstChild(); !node.isNull(); node = node.nextSibling()) {
        const QDomElement element = node.toElement();
        list.append(NvItem{element.attribute(QStringLiteral("name")),
                           element.attribute(QStringLiteral("value")),
                           element.attribute(QStringLiteral("desc"))});
    }
    return true;
}

bool AppImpleUtils::saveConfFile(const QList<NvItem>& list, const QString& path) {
    SysXmlDocument xml;
    xml.createDocument(QStringLiteral("GBK"));
    const QDomElement root = xml.createRoot(QStringLiteral("Root"));
    for (const NvItem& item : list) {
        const QDomElement element = xml.createChild(root, QStringLiteral("ITEM"));
        xml.setAttribute(element, QStringLiteral("name"), item.name);
        xml.setAttribute(element, QStringLiteral("value"), item.value);
        xml.setAttribute(element, QStringLiteral("desc"), item.desc);
    }
    if (!xml.saveAs(path)) {
        logError("SAVE_CONF_FILE: save failed!");
        return false;
    }
    return true;
}

bool AppImpleUtils::loadNvFile(const QString& path, QList<NvItem>& list, int& type) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        logError("LOAD_NV_FILE: open NV file failed: %s", path.toStdString().c_str());
        return false;
    }
    const QByteArray image = file.readAll();
    file.close();
    return nvToKv(image, list, type);
}

bool AppImpleUtils::saveNvFile(const QList<NvItem>& list, int type, const QString& path, int size) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        logError("NV_TO_TEXT: open CSV file failed!");
        return false;
    }
    ByteBuffer image;
    if (!kvToNv(list, type, image, size)) {
        logError("SAVE_NV_FILE: kv to nv format failed!");
        return false;
    }
    const qint64 written =
        image.empty() ? 0 : file.write(reinterpret_cast<const char*>(image.data()), image.size());
    // The file buffers small writes; a full disk shows only when they are flushed.
    if (written != image.size() || !file.flush()) {
        file.close();
        logError("NV_TO_TEXT: write data to file failed!");
        return false;
    }
    file.close();
    return true;
}

bool AppImpleUtils::nvToKv(const QByteArray& image, QList<NvItem>& list, int& type) {
    const qint64 size = image.size();
    const char* bytes = image.constData();
    auto u8 = [bytes](qint64 at) { return uchar(bytes[at]); };
    auto u32 = [bytes](qint64 at) { return qFromLittleEndian<quint32>(bytes + at); };

    int index = 0;
    for (qint64 sector = 0; sector < size; sector += kSectorSize, ++index) {
        // An image that ends inside a header or a record ends the data.
        if (sector + kTagOffset + 4 > size)
            return true;
        const char* tag = bytes + sector + kTagOffset;
        qint64 place;
        if (std::memcmp(tag, "EF40", 4) == 0) {
            type = 0;
            place = sector + kKeyAreaEnd;
        } else if (std::memcmp(tag, "EF41", 4) == 0) {
            type = 1;
            place = sector + kHeaderSize;
        } else {
            logError("NV_TO_KV: parse invalid nv type: %c%c%c%c, sector index: %d", uchar(tag[0]),
                     uchar(tag[1]), uchar(tag[2]), uchar(tag[3]), index);
            return false;
        }
        while (place - sector + kRecordRoom < kSectorSize) {
            if (place + kRecordHead > size)
                return true;
            const quint32 total = u32(place + kTotalLengthAt);
            if (u8(place) != 0 || total == kErased)
                break;
            const qint64 keyLength = u8(place + kKeyLengthAt);
            const qint64 valueLength = u32(place + kValueLengthAt);
            const qint64 valueAt = place + kRecordHead + padded(keyLength);
            if (valueAt + valueLength > size)
                return true;
            list.append(NvItem{textAt(bytes + place + kRecordHead, keyLength),
                               textAt(bytes + valueAt, valueLength), QString()});
            // A length shorter than a record's head cannot lead to the next record.
            if (total < kRecordHead)
                break;
            place += total;
        }
    }
    return true;
}

bool AppImpleUtils::kvToNv(const QList<NvItem>& list, int type, ByteBuffer& out, int size) {
    out.clear();
    if (size < 0) {
        logError("KV_TO_NV: invalid image size: %d", size);
        return false;
    }
    out.fill(0xFF, size);
    const char* tag = nullptr;
    if (type == 0) {
        tag = "EF40";
    } else if (type == 1) {
        tag = "EF41";
    } else {
        logError("KV_TO_NV: invalid nv bin type: %d", type);
        return false;
    }

    qint64 pos = 0;
    qint64 sector = 0;
    // Writes item at pos when its record ends within regionEnd and within the image.
    auto put = [&](const NvItem& item, qint64 regionEnd, bool keyArea) {
        const QByteArray key = item.name.toUtf8();
        const QByteArray value = item.value.toUtf8();
        if (key.size() > kMaxKeyLength) {
            logError("KV_TO_NV: key of item %s is longer than 255 bytes!", key.constData());
            return false;
        }
        const qint64 length = kRecordHead + padded(key.size()) + padded(value.size());
        if (pos + length > size) {
            logError("KV_TO_NV: item %s does not fit in the image!", key.constData());
            return false;
        }
        if (pos + length > regionEnd) {
            if (keyArea)
                logError("KV_TO_NV: key item %s does not fit below offset 1024!", key.constData());
            else
                logError("KV_TO_NV: item %s does not fit in its sector!", key.constData());
            return false;
        }
        writeRecord(out, pos, key, value, length);
        pos += length;
        return true;
    };

    for (const NvItem& item : list) {
        const qint64 inSector = pos % kSectorSize;
        if (inSector + kRecordRoom >= kSectorSize) {
            out[int(sector + kLeftFullMark)] = 0;
            pos += kSectorSize - inSector;
        }
        if (pos % kSectorSize == 0) {
            if (pos + kHeaderSize > size) {
                logError("KV_TO_NV: item %s does not fit in the image!",
                         item.name.toStdString().c_str());
                return false;
            }
            sector = pos;
            writeHeader(out, sector, tag, true);
            pos += kHeaderSize;
            if (type == 0) {
                QList<NvItem> keyItems;
                if (!getKeyNvList(list, keyItems, keyNames())) {
                    logError("NV_TO_KV: no key partiion find in kv list!");
                    return false;
                }
                for (const NvItem& keyItem : keyItems) {
                    if (!put(keyItem, sector + kKeyAreaEnd, true))
                        return false;
                }
                pos = sector + kKeyAreaEnd;
            }
        }
        if (!put(item, sector + kSectorSize, false))
            return false;
    }

    // The sectors behind the last record get a header without the opened mark.
    for (qint64 s = (pos + kSectorSize - 1) / kSectorSize * kSectorSize; s + kHeaderSize <= size;
         s += kSectorSize)
        writeHeader(out, s, tag, false);
    return true;
}

bool AppImpleUtils::getKeyNvList(const QList<NvItem>& list, QList<NvItem>& out,
                                 const QStringList& keys) {
    for (const NvItem& item : list) {
        if (out.size() == keys.size())
            return true;
        if (keys.contains(item.name.toLower()))
            out.append(item);
    }
    if (out.size() != keys.size()) {
        logError("GET_KEY_NV_LIST: want to get %d keys: (%s), but get %d.", int(keys.size()),
                 keys.join(QLatin1Char(',')).toStdString().c_str(), int(out.size()));
        return false;
    }
    return true;
}

QStringList AppImpleUtils::keyNames() {
    return {QStringLiteral("partition"), QStringLiteral("uboot")};
}

bool AppImpleUtils::orderPartitionItems(QList<NvItem>& items) {
    const QStringList keys = keyNames();
    QList<NvItem> keyItems;
    QList<NvItem> others;
    for (const NvItem& item : qAsConst(items)) {
        if (keys.contains(item.name.toLower()))
            keyItems.append({item.name.toLower(), item.value.toLower(), item.desc});
        else
            others.append(item);
    }
    if (keyItems.size() != keys.size())
        return false;
    items = keyItems + others;
    return true;
}

quint32 AppImpleUtils::crc32Of(quint32 start, const unsigned char* bytes, int count) {
    if (!bytes || count <= 0)
        return start;
    quint32 crc = ~start;
    for (int i = 0; i < count; ++i)
        crc = kCrcTable[(crc ^ bytes[i]) & 0xFFu] ^ (crc >> 8);
    return ~crc;
}
