#include "base/ByteBuffer.h"
#include "engines/AppImpleUtils.h"
#include "support/LogCatcher.h"

#include "support/TestFiles.h"
#include "support/Wire.h"
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtEndian>

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <vector>

namespace {

// Puts a little-endian word into an image at a byte offset.
void putU32(QByteArray& image, int at, quint32 value) {
    for (int i = 0; i < 4; ++i)
        image[at + i] = char((value >> (8 * i)) & 0xFF);
}

quint32 u32At(const QByteArray& image, int at) {
    return qFromLittleEndian<quint32>(image.constData() + at);
}

bool allErased(const QByteArray& image, int from, int to) {
    for (int i = from; i < to; ++i) {
        if (uchar(image[i]) != 0xFF)
            return false;
    }
    return true;
}

// Names and values only: desc has no place in an image.
void expectSameItems(const QList<NvItem>& got, const QList<NvItem>& want) {
    ASSERT_EQ(got.size(), want.size());
    for (int i = 0; i < want.size(); ++i) {
        EXPECT_EQ(got[i].name, want[i].name) << "item " << i;
        EXPECT_EQ(got[i].value, want[i].value) << "item " << i;
        EXPECT_TRUE(got[i].desc.isEmpty()) << "item " << i;
    }
}

QList<NvItem> partitionList() {
    return {{"x", "1", ""}, {"partition", "p", ""}, {"uboot", "u", ""}};
}

// The codec, and the lines it logs.
class NvCodec : public ::testing::Test {
protected:
    // The image the writer makes of the list.
    QByteArray write(const QList<NvItem>& list, int type, int size) {
        ByteBuffer out;
        EXPECT_TRUE(utils.kvToNv(list, type, out, size)) << log.texts().join('\n').toStdString();
        return bytesOf(out);
    }
    // Reads the image and expects its type and items.
    void expectReadBack(const QByteArray& image, int type, const QList<NvItem>& want) {
        QList<NvItem> items;
        int got = -1;
        ASSERT_TRUE(utils.nvToKv(image, items, got));
        EXPECT_EQ(got, type);
        expectSameItems(items, want);
    }

    AppImpleUtils utils;
    LogCatcher log{&utils};
};
using NvConfFile = NvCodec;

} // namespace

TEST_F(NvCodec, Crc32MatchesTheStandardValues) {
    auto crc = [](const char* text) {
        return AppImpleUtils::crc32Of(0, reinterpret_cast<const unsigned char*>(text),
                                      int(qstrlen(text)));
    };
    EXPECT_EQ(crc("abc"), 0x352441C2u);
    EXPECT_EQ(crc("123456789"), 0xCBF43926u);
    EXPECT_EQ(crc(""), 0u);
    // A start value continues an earlier run, as zlib's does.
    const auto* abc = reinterpret_cast<const unsigned char*>("abc");
    EXPECT_EQ(AppImpleUtils::crc32Of(AppImpleUtils::crc32Of(0, abc, 2), abc + 2, 1), 0x352441C2u);
}

TEST_F(NvCodec, OneItemImageByteForByte) {
    const QByteArray image = write({{"a", "b", "ignored"}}, 1, 4096);

    QByteArray want(4096, '\xFF');
    want[0] = 0;
    want[4] = 0;
    want[12] = 0;
    want.replace(24, 4, "EF41");
    // The record at 36: marks, total length 44, CRC over its bytes 28..43, k and v, padded texts.
    want.replace(36, 44,
                 QByteArray::fromHex("00ffffff00ffffffffffffffffffffffffffffff2c000000"
                                     "198405f6"
                                     "01ffffff01000000"
                                     "61ffffff62ffffff"));
    EXPECT_EQ(image.toHex(), want.toHex());
    expectReadBack(image, 1, {{"a", "b", ""}});
    EXPECT_TRUE(log.texts().isEmpty());
}

TEST_F(NvCodec, RecordLengthsAndPadding) {
    // A 4-byte key has no padding; an empty value has no bytes; the next record follows at once.
    const QByteArray image = write({{"abcd", "", ""}, {"k", "vwxyz", ""}}, 1, 4096);
    EXPECT_EQ(u32At(image, 36 + 20), 40u);
    EXPECT_EQ(uchar(image[36 + 28]), 4);
    EXPECT_EQ(u32At(image, 36 + 32), 0u);
    EXPECT_EQ(image.mid(72, 4), QByteArray("abcd"));
    EXPECT_EQ(uchar(image[76]), 0); // second record begins here
    EXPECT_EQ(u32At(image, 76 + 20), 48u);
    EXPECT_EQ(u32At(image, 76 + 32), 5u);
    EXPECT_EQ(image.mid(76 + 40, 8), QByteArray("vwxyz\xFF\xFF\xFF"));
    EXPECT_TRUE(allErased(image, 124, 4096));
}

TEST_F(NvCodec, SectorsBehindTheRecordsGetAHeaderOnly) {
    const QByteArray image = write({{"a", "b", ""}}, 1, 8192);
    ASSERT_EQ(image.size(), 8192);
    EXPECT_EQ(image.mid(0, 13).toHex(), QByteArray("00ffffff00ffffffffffffff00"));
    EXPECT_EQ(image.mid(4096, 13).toHex(), QByteArray("00ffffffffffffffffffffff00"));
    EXPECT_EQ(image.mid(4096 + 24, 4), QByteArray("EF41"));
    EXPECT_TRUE(allErased(image, 4096 + 28, 8192));

    expectReadBack(image, 1, {{"a", "b", ""}});

    // A full sector is left with its mark at 8; the next one is opened for records.
    const QList<NvItem> two = {{"a", QString(3984, 'v'), ""}, {"b", "c", ""}};
    const QByteArray full = write(two, 1, 8192);
    EXPECT_EQ(full.mid(0, 13).toHex(), QByteArray("00ffffff00ffffff00ffffff00"));
    EXPECT_TRUE(allErased(full, 4060, 4096));
    EXPECT_EQ(full.mid(4096, 13).toHex(), QByteArray("00ffffff00ffffffffffffff00"));
    EXPECT_EQ(full.mid(4096 + 72, 1), QByteArray("b"));
    expectReadBack(full, 1, two);
    EXPECT_TRUE(log.texts().isEmpty());
}

TEST_F(NvCodec, InvalidSectorTagFailsWithItsBytes) {
    QList<NvItem> items;
    int type = -1;
    // %c gives the byte as a Latin-1 character: 0xFF is U+00FF.
    EXPECT_FALSE(utils.nvToKv(QByteArray(4096, '\xFF'), items, type));
    EXPECT_EQ(log.errors(), QStringList("NV_TO_KV: parse invalid nv type: " +
                                        QString(4, QChar(0xFF)) + ", sector index: 0"));
    EXPECT_EQ(log.texts().size(), 1);
    EXPECT_TRUE(items.isEmpty());
    EXPECT_EQ(type, -1);

    // The items of the sectors read before the bad one stay.
    QByteArray image = write({{"a", "b", ""}}, 1, 4096) + QByteArray(4096, '\xFF');
    image.replace(4096 + 24, 4, "EF42");
    log.clear();
    EXPECT_FALSE(utils.nvToKv(image, items, type));
    EXPECT_EQ(log.texts(), QStringList("NV_TO_KV: parse invalid nv type: EF42, sector index: 1"));
    expectSameItems(items, {{"a", "b", ""}});
    EXPECT_EQ(type, 1);
}

TEST_F(NvCodec, PartitionImageKeepsKeyRecordsBelow1024) {
    const QByteArray image = write(partitionList(), 0, 4096);
    EXPECT_EQ(image.mid(24, 4), QByteArray("EF40"));
    // Key area: partition (36 + 12 + 4 = 52 bytes), then uboot (36 + 8 + 4 = 48 bytes).
    EXPECT_EQ(u32At(image, 36 + 20), 52u);
    EXPECT_EQ(image.mid(72, 9), QByteArray("partition"));
    EXPECT_EQ(image.mid(84, 1), QByteArray("p"));
    EXPECT_EQ(uchar(image[88]), 0);
    EXPECT_EQ(image.mid(88 + 36, 5), QByteArray("uboot"));
    EXPECT_TRUE(allErased(image, 136, 1024));
    // Ordinary records: the whole list, keys included, from 1024 on.
    EXPECT_EQ(image.mid(1024 + 36, 1), QByteArray("x"));
    EXPECT_EQ(image.mid(1068 + 36, 9), QByteArray("partition"));
    EXPECT_EQ(image.mid(1120 + 36, 5), QByteArray("uboot"));
    EXPECT_TRUE(allErased(image, 1168, 4096));

    expectReadBack(image, 0, partitionList());

    // Names with capitals count as keys and are written as they are.
    const QByteArray capitals = write({{"Partition", "P", ""}, {"UBOOT", "U", ""}}, 0, 4096);
    EXPECT_EQ(capitals.mid(72, 9), QByteArray("Partition"));
    EXPECT_EQ(capitals.mid(88 + 36, 5), QByteArray("UBOOT"));

    // An empty list opens no sector, so it needs no keys: every sector gets the bare header.
    const QByteArray empty = write({}, 0, 3 * 4096);
    for (int s = 0; s < 3 * 4096; s += 4096) {
        EXPECT_EQ(empty.mid(s, 13).toHex(), QByteArray("00ffffffffffffffffffffff00")) << s;
        EXPECT_EQ(empty.mid(s + 24, 4), QByteArray("EF40")) << s;
        EXPECT_TRUE(allErased(empty, s + 28, s + 4096)) << s;
    }
    expectReadBack(empty, 0, {});
    EXPECT_TRUE(log.texts().isEmpty());
}

TEST_F(NvCodec, KeyItemsAreCountedByMatchAndAMissingOneFailsTheSave) {
    QTemporaryDir dir;
    const QString path = dir.filePath("partition.bin");
    writeFile(path, "old content");
    EXPECT_FALSE(utils.saveNvFile({{"x", "1", ""}, {"partition", "p", ""}}, 0, path, 4096));
    EXPECT_EQ(log.errors(), QStringList({"GET_KEY_NV_LIST: want to get 2 keys: (partition,uboot), "
                                         "but get 1.",
                                         "NV_TO_KV: no key partiion find in kv list!",
                                         "SAVE_NV_FILE: kv to nv format failed!"}));
    EXPECT_EQ(log.texts().size(), 3);
    EXPECT_EQ(readFile(path), QByteArray()); // truncated before the image was built

    ByteBuffer out;
    log.clear();
    EXPECT_FALSE(utils.kvToNv({{"a", "b", ""}}, 2, out, 4096));
    EXPECT_EQ(log.texts(), QStringList("KV_TO_NV: invalid nv bin type: 2"));

    // The count is of matches, not of names: two uboot items fill both places, and the walk
    // stops there.
    QList<NvItem> keys;
    EXPECT_TRUE(utils.getKeyNvList(
        {{"a", "", ""}, {"UBoot", "1", ""}, {"uboot", "2", ""}, {"partition", "3", ""}}, keys,
        AppImpleUtils::keyNames()));
    ASSERT_EQ(keys.size(), 2);
    EXPECT_EQ(keys[0].value, "1");
    EXPECT_EQ(keys[1].value, "2");
    EXPECT_EQ(log.texts().size(), 1);
}

TEST_F(NvCodec, WriterRefusesWhatDoesNotFit) {
    ByteBuffer out;
    auto failure = [&](const QList<NvItem>& list, int type, int size) {
        log.clear();
        const bool ok = utils.kvToNv(list, type, out, size);
        EXPECT_FALSE(ok);
        EXPECT_EQ(out.size(), std::max(size, 0));
        return log.texts().join('|');
    };
    const QString big(5000, 'v');
    EXPECT_EQ(failure({{"big", big, ""}}, 1, 4096),
              "KV_TO_NV: item big does not fit in the image!");
    EXPECT_EQ(failure({{"big", big, ""}}, 1, 8192),
              "KV_TO_NV: item big does not fit in its sector!");
    // Room left: the first record ends at 4000, where a place is still open, but the second
    // needs 100 bytes.
    EXPECT_EQ(failure({{"a", QString(3924, 'v'), ""}, {"b", QString(60, 'w'), ""}}, 1, 8192),
              "KV_TO_NV: item b does not fit in its sector!");
    EXPECT_TRUE(utils.kvToNv({{"a", QString(3924, 'v'), ""}, {"b", QString(56, 'w'), ""}}, 1, out,
                             4096)); // 96 bytes end exactly at the sector's end
    EXPECT_EQ(failure({{"partition", QString(1000, 'p'), ""}, {"uboot", "u", ""}}, 0, 4096),
              "KV_TO_NV: key item partition does not fit below offset 1024!");
    EXPECT_EQ(failure({{"partition", "p", ""}, {"uboot", "u", ""}}, 0, 1024),
              "KV_TO_NV: item partition does not fit in the image!");
    // 92 records of 44 bytes fill a sector; the 93rd needs a second one.
    QList<NvItem> many;
    for (int i = 0; i < 200; ++i)
        many.append({QString::asprintf("n%03d", i), "v", ""});
    EXPECT_EQ(failure(many, 1, 4096), "KV_TO_NV: item n092 does not fit in the image!");
    EXPECT_EQ(failure(many, 1, 8192), "KV_TO_NV: item n184 does not fit in the image!");
    EXPECT_EQ(failure({{QString(256, 'k'), "v", ""}}, 1, 4096),
              "KV_TO_NV: key of item " + QString(256, 'k') + " is longer than 255 bytes!");
    EXPECT_EQ(failure({{"a", "b", ""}}, 1, 60), "KV_TO_NV: item a does not fit in the image!");
    EXPECT_EQ(failure({{"a", "b", ""}}, 1, -1), "KV_TO_NV: invalid image size: -1");
    // An image that is not a whole number of sectors takes what fits.
    EXPECT_TRUE(utils.kvToNv({{"a", "b", ""}}, 1, out, 100));
    EXPECT_TRUE(allErased(bytesOf(out), 80, 100));

    QTemporaryDir dir;
    log.clear();
    EXPECT_FALSE(utils.saveNvFile(many, 1, dir.filePath("nv.bin"), 4096));
    EXPECT_EQ(log.texts(), QStringList({"KV_TO_NV: item n092 does not fit in the image!",
                                        "SAVE_NV_FILE: kv to nv format failed!"}));
}

TEST_F(NvCodec, FileRoundTripAndFileFailures) {
    QTemporaryDir dir;
    // The long record comes first: a record never moves on to the next sector for room.
    QList<NvItem> list = {{QString(255, 'k'), QString(300, 'x'), ""}};
    for (int i = 0; i < 200; ++i)
        list.append({QString::asprintf("n%03d", i), "v", "dropped"});
    list.append({QString::fromUtf8("名字"), QString::fromUtf8("中文值 é"), ""});
    list.append({"empty", "", ""});
    list.append({"uboot", "1", ""});
    list.append({"partition", "2", ""});

    for (int type : {0, 1}) {
        const QString path = dir.filePath(QString("made/on/demand/%1.bin").arg(type));
        ASSERT_TRUE(utils.saveNvFile(list, type, path, 4 * 4096))
            << log.texts().join('\n').toStdString();
        ByteBuffer image;
        ASSERT_TRUE(utils.kvToNv(list, type, image, 4 * 4096));
        EXPECT_EQ(readFile(path), bytesOf(image));
        QList<NvItem> loaded;
        int loadedType = -1;
        ASSERT_TRUE(utils.loadNvFile(path, loaded, loadedType));
        EXPECT_EQ(loadedType, type);
        expectSameItems(loaded, list);
    }
    EXPECT_TRUE(log.texts().isEmpty());

    QList<NvItem> none;
    int type = -1;
    const QString missing = dir.filePath("missing.bin");
    EXPECT_FALSE(utils.loadNvFile(missing, none, type));
    EXPECT_EQ(log.texts(), QStringList("LOAD_NV_FILE: open NV file failed: " + missing));

    // A plain file where a directory would have to be.
    writeFile(dir.filePath("plain"), "x");
    log.clear();
    EXPECT_FALSE(utils.saveNvFile(list, 1, dir.filePath("plain/nv.bin"), 4096));
    EXPECT_EQ(log.texts(), QStringList("NV_TO_TEXT: open CSV file failed!"));

    if (!QFile::exists("/dev/full"))
        GTEST_SKIP() << "no /dev/full to fail a write";
    log.clear();
    EXPECT_FALSE(utils.saveNvFile({{"a", "b", ""}}, 1, "/dev/full", 4096));
    EXPECT_EQ(log.texts(), QStringList("NV_TO_TEXT: write data to file failed!"));
}

TEST_F(NvCodec, ReaderStopsAtShortImagesAndBadLengths) {
    const QByteArray image = write(
        {{"first", "1", ""}, {"second", QString("ab") + QChar(0) + "cd", ""}, {"third", "333", ""}},
        1, 4096);
    // Records: first at 36 (48 bytes), second at 84 (52 bytes), third at 136.
    QList<NvItem> items;
    int type = -1;
    ASSERT_TRUE(utils.nvToKv(image, items, type));
    ASSERT_EQ(items.size(), 3);
    EXPECT_EQ(items[1].value, "ab"); // text ends at a NUL byte

    for (int cut : {84 + 10, 84 + 36, 84 + 44, 84 + 48}) {
        items.clear();
        EXPECT_TRUE(utils.nvToKv(image.left(cut), items, type)) << cut;
        expectSameItems(items, {{"first", "1", ""}});
    }
    items.clear();
    type = -1;
    EXPECT_TRUE(utils.nvToKv(image.left(27), items, type)); // ends inside the tag
    EXPECT_TRUE(items.isEmpty());
    EXPECT_EQ(type, -1);

    // A total length shorter than a record's head ends the sector instead of looping.
    QByteArray zeroLength = image;
    putU32(zeroLength, 84 + 20, 0);
    items.clear();
    EXPECT_TRUE(utils.nvToKv(zeroLength, items, type));
    ASSERT_EQ(items.size(), 2);
    EXPECT_EQ(items[1].name, "second");

    // A value length past the image is the end of the data; the CRC is not looked at.
    QByteArray longValue = image;
    putU32(longValue, 84 + 32, 0xFFFFFFF0u);
    putU32(longValue, 36 + 24, 0x12345678u);
    items.clear();
    EXPECT_TRUE(utils.nvToKv(longValue, items, type));
    expectSameItems(items, {{"first", "1", ""}});
    EXPECT_TRUE(log.texts().isEmpty());
}

// Random and damaged images: the reader never reads outside the image (each image lies in a
// heap block of its exact size, so the sanitizer build sees any overrun), never loops, and
// fails only for a bad tag. Random lists that the writer accepts read back unchanged.
TEST_F(NvCodec, RandomImagesAndListsAreHandledSafely) {
    std::mt19937 rng(20240611);
    auto below = [&rng](int n) { return int(rng() % unsigned(n)); };
    auto randomList = [&]() {
        QList<NvItem> list;
        const int count = below(12);
        for (int i = 0; i < count; ++i) {
            const QString name = below(4) == 0 ? (below(2) ? "partition" : "UBoot")
                                               : QString("k%1").arg(rng() % 100000);
            QString value(below(4) == 0 ? below(1500) : below(20), QChar('a' + below(26)));
            if (below(5) == 0)
                value += QString::fromUtf8("值é");
            list.append({name, value, ""});
        }
        return list;
    };

    int accepted = 0;
    for (int iteration = 0; iteration < 3000; ++iteration) {
        const int sectors = 1 + below(3);
        const QList<NvItem> list = randomList();
        const int type = below(2);
        ByteBuffer out;
        const bool written = utils.kvToNv(list, type, out, sectors * 4096);
        ASSERT_EQ(out.size(), sectors * 4096);
        QByteArray image = bytesOf(out);
        if (written && iteration % 3 == 0) {
            ASSERT_NO_FATAL_FAILURE(expectReadBack(image, type, list));
            ++accepted;
            continue;
        }
        if (iteration % 3 == 1) {
            // Random bytes under valid tags, with many places that look like records.
            for (char& c : image)
                c = char(rng());
            for (int s = 0; s < image.size(); s += 4096)
                image.replace(s + 24, 4, below(8) ? (below(2) ? "EF40" : "EF41") : "EFxx");
            for (int i = 0; i < 64; ++i)
                image[below(image.size()) & ~3] = 0;
        } else {
            // Damaged lengths, flipped bytes and a cut end.
            static const quint32 lengths[] = {0,          1,           35,          36,
                                              37,         44,          4095,        4096,
                                              0x7FFFFFFF, 0x80000000u, 0xFFFFFFFEu, 0xFFFFFFFFu};
            for (int i = below(8); i > 0; --i) {
                const int at = (below(image.size()) & ~3) - 4;
                if (at >= 0)
                    putU32(image, at, below(3) ? lengths[below(12)] : quint32(rng()));
            }
            for (int i = below(8); i > 0; --i)
                image[below(image.size())] = char(rng());
            if (below(2))
                image.truncate(below(image.size() + 1));
        }

        const int n = image.size();
        std::unique_ptr<char[]> exact(new char[size_t(n) + (n == 0)]);
        std::copy(image.constBegin(), image.constEnd(), exact.get());
        QList<NvItem> items;
        int parsedType = -1;
        log.clear();
        const bool ok = utils.nvToKv(QByteArray::fromRawData(exact.get(), n), items, parsedType);
        // Each record takes at least its 36-byte head.
        EXPECT_LE(items.size(), (n / 4096 + 1) * (4096 / 36));
        if (ok) {
            EXPECT_TRUE(log.texts().isEmpty());
        } else {
            ASSERT_EQ(log.texts().size(), 1);
            EXPECT_TRUE(log.texts()[0].startsWith("NV_TO_KV: parse invalid nv type: "));
        }
    }
    EXPECT_GT(accepted, 200); // the writer really took a fair share of the lists
}

TEST_F(NvConfFile, SavedBytesAndReadBack) {
    QTemporaryDir dir;
    const QString path = dir.filePath("nv.conf");
    const QList<NvItem> list = {{"a", "b", "c"},
                                {QString::fromUtf8("名"), QString::fromUtf8("中文é"), ""},
                                {"q", "<\"&>", "tab\there"}};
    ASSERT_TRUE(utils.saveConfFile(list, path));
    EXPECT_EQ(readFile(path),
              QByteArray("<?xml version = \"1.0\" encoding = \"GBK\"?>\n"
                         "<Root>\n"
                         " <ITEM name=\"a\" value=\"b\" desc=\"c\"/>\n"
                         " <ITEM name=\"\xC3\xFB\" value=\"\xD6\xD0\xCE\xC4\xA8\xA6\" desc=\"\"/>\n"
                         " <ITEM name=\"q\" value=\"&lt;&quot;&amp;>\" desc=\"tab&#x9;here\"/>\n"
                         "</Root>\n"));
    QList<NvItem> loaded;
    ASSERT_TRUE(utils.loadConfFile(path, loaded));
    ASSERT_EQ(loaded.size(), list.size());
    for (int i = 0; i < list.size(); ++i) {
        EXPECT_EQ(loaded[i].name, list[i].name);
        EXPECT_EQ(loaded[i].value, list[i].value);
        EXPECT_EQ(loaded[i].desc, list[i].desc);
    }

    ASSERT_TRUE(utils.saveConfFile({}, path));
    EXPECT_EQ(readFile(path),
              QByteArray("<?xml version = \"1.0\" encoding = \"GBK\"?>\n<Root/>\n"));
    EXPECT_TRUE(log.texts().isEmpty());

    // Any child counts, whatever its tag; missing attributes read as empty, extra ones are
    // ignored. Loaded items are appended to what the list holds.
    writeFile(path, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                    "<Root><ITEM name=\"n\" value=\"v\" desc=\"d\" extra=\"e\"/>"
                    "<Other value=\"w\"><inner/></Other></Root>");
    loaded = {{"kept", "", ""}};
    ASSERT_TRUE(utils.loadConfFile(path, loaded));
    ASSERT_EQ(loaded.size(), 3);
    EXPECT_EQ(loaded[1].desc, "d");
    EXPECT_EQ(loaded[2].name, "");
    EXPECT_EQ(loaded[2].value, "w");

    const QString missing = dir.filePath("missing.conf");
    EXPECT_FALSE(utils.loadConfFile(missing, loaded));
    writeFile(path, "not xml");
    EXPECT_FALSE(utils.loadConfFile(path, loaded));
    EXPECT_EQ(loaded.size(), 3);
    EXPECT_FALSE(utils.saveConfFile(list, dir.filePath("no/such/dir/nv.conf")));
    EXPECT_EQ(log.texts(), QStringList({"LOAD_CONF_FILE: load file failed: " + missing,
                                        "LOAD_CONF_FILE: load file failed: " + path,
                                        "SAVE_CONF_FILE: save failed!"}));
}
