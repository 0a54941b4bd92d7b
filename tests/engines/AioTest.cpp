// Both all-in-one readers on the images they are made for and on the faults each one names;
// random and mutated bytes are the fuzz targets' (aio_oneb, aio_beno).

#include "engines/AppQZ4410Imple.h"
#include "engines/AppQZ4420Imple.h"
#include "support/LogCatcher.h"
#include "support/TestFiles.h"
#include "support/Wire.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

namespace {

QByteArray onebRecord(int dlType, uint32_t addr, const QByteArray& content) {
    return QByteArray(1, char(dlType)) + le32(addr) + le32(uint32_t(content.size())) + content;
}

class Aio : public ::testing::Test {
protected:
    QString path(const QString& name) const { return dir.filePath(name); }
    // Parses with a fresh "oneb" reader; the lines it logged land in `lines`.
    bool parse(const QByteArray& image, QStringList* errors = nullptr) {
        writeFile(path("in.bin"), image);
        AppQZ4420Imple engine;
        LogCatcher log(&engine);
        stub = SysByteArray();
        entries.clear();
        stubAddr = 0xDEADBEEF;
        const bool ok = engine.parseAio(path("in.bin"), stub, entries, stubAddr);
        infos = log.infos();
        if (errors)
            *errors = log.errors();
        return ok;
    }

    QTemporaryDir dir;
    SysByteArray stub;
    QVector<AioEntry> entries;
    uint32_t stubAddr = 0;
    QStringList infos;
};

} // namespace

TEST(ByteStream, AppendsReadsAndCursorBounds) {
    SysByteArray s;
    s.appendU8(0x7F);
    s.appendU32(0x11223344);
    s.appendText(QStringLiteral("ab"));
    SysByteArray tail(QByteArray("xyz"));
    tail.seek(2); // the other stream's cursor plays no part
    s.append(tail, 2);
    s.append(tail);
    EXPECT_EQ(s.bytes(), QByteArray("\x7F\x44\x33\x22\x11"
                                    "abxyxyz"));
    EXPECT_EQ(s.pos(), 0); // appends leave the cursor alone

    EXPECT_EQ(s.readU8(), 0x7F);
    EXPECT_EQ(s.readU32(), 0x11223344u);
    EXPECT_EQ(s.remaining(), 7);
    SysByteArray part(QByteArray("old"));
    EXPECT_TRUE(s.readBytes(2, part));
    EXPECT_EQ(part.bytes(), QByteArray("ab"));
    ByteBuffer buf(std::string("longer than needed"));
    EXPECT_FALSE(s.readBytes(6, buf)); // past the end: nothing moves
    EXPECT_EQ(s.pos(), 7);
    EXPECT_TRUE(s.readBytes(5, buf));
    EXPECT_EQ(bytesOf(buf), QByteArray("xyxyz"));
    EXPECT_FALSE(s.hasMore());
    EXPECT_TRUE(s.readBytes(0, buf));
    EXPECT_EQ(buf.size(), 0);

    // A cursor outside the data reads nothing, on either side of it.
    s.seek(s.size() + 3);
    EXPECT_FALSE(s.readBytes(1, part));
    s.seek(-4);
    EXPECT_FALSE(s.readBytes(2, part));
    EXPECT_FALSE(s.readBytes(2, buf));
    EXPECT_EQ(part.bytes(), QByteArray("ab"));
    EXPECT_EQ(s.pos(), -4);
}

TEST_F(Aio, StubOnlyImageIsThirtyBytes) {
    writeFile(path("stub.bin"), pattern(16, 1));
    AppQZ4420Imple engine;
    LogCatcher log(&engine);
    ASSERT_TRUE(engine.createAio(path("stub.bin"), {}, path("out/deep/stub-only.aio"), 0x100000));
    const QByteArray file = readFile(path("out/deep/stub-only.aio"));
    ASSERT_EQ(file.size(), 30);
    EXPECT_EQ(file.left(14), QByteArray::fromHex("6F6E656201000000100010000000"));
    EXPECT_EQ(file.mid(14), pattern(16, 1));
    EXPECT_TRUE(log.texts().isEmpty());

    QStringList errors;
    EXPECT_FALSE(parse(file, &errors));
    EXPECT_EQ(errors, QStringList({"PARSE_AIO: no any common file in all-in-one file!"}));
    EXPECT_EQ(stub.bytes(), pattern(16, 1)); // the stub was read before the end test failed
    EXPECT_EQ(stubAddr, 0x100000u);
}

TEST_F(Aio, RoundTripKeepsOrderAndTargets) {
    writeFile(path("stub.bin"), pattern(100, 2));
    writeFile(path("a.bin"), pattern(5000, 3));
    writeFile(path("b.bin"), QByteArray());
    writeFile(path("c.bin"), pattern(1, 4));
    QVector<AioEntry> list(3);
    list[0].toRam = false;
    list[0].path = path("a.bin");
    list[0].startAddr = 0x10000;
    list[1].toRam = true;
    list[1].path = path("b.bin");
    list[1].startAddr = 0x20000000;
    list[2].toRam = false;
    list[2].path = path("c.bin");
    list[2].startAddr = 0xFFFFFFFF;
    AppQZ4420Imple engine;
    ASSERT_TRUE(engine.createAio(path("stub.bin"), list, path("all.aio"), 0x8000));

    const QByteArray file = readFile(path("all.aio"));
    EXPECT_EQ(file, QByteArray("oneb\x04", 5) + onebRecord(0, 0x8000, pattern(100, 2)) +
                        onebRecord(2, 0x10000, pattern(5000, 3)) +
                        onebRecord(1, 0x20000000, QByteArray()) +
                        onebRecord(2, 0xFFFFFFFF, pattern(1, 4)));

    ASSERT_TRUE(parse(file));
    EXPECT_EQ(stub.bytes(), pattern(100, 2));
    EXPECT_EQ(stubAddr, 0x8000u);
    ASSERT_EQ(entries.size(), 3);
    EXPECT_FALSE(entries[0].toRam);
    EXPECT_EQ(entries[0].startAddr, 0x10000u);
    EXPECT_EQ(bytesOf(entries[0].data), pattern(5000, 3));
    EXPECT_TRUE(entries[1].toRam);
    EXPECT_TRUE(entries[1].data.empty());
    EXPECT_EQ(entries[2].startAddr, 0xFFFFFFFFu);
    for (const AioEntry& e : entries)
        EXPECT_TRUE(e.path.isEmpty());
    EXPECT_EQ(
        infos,
        QStringList({"PARSE_AIO: find 4 bin in all-in-one file",
                     "PARSE_AIO: get file 0 info: dlType: 0, startAddr: 0x8000, len: 0x64",
                     "PARSE_AIO: get file 1 info: dlType: 2, startAddr: 0x10000, len: 0x1388",
                     "PARSE_AIO: get file 2 info: dlType: 1, startAddr: 0x20000000, len: 0x00",
                     "PARSE_AIO: get file 3 info: dlType: 2, startAddr: 0xffffffff, len: 0x01"}));
}

TEST_F(Aio, ReaderFaultsHaveTheirLines) {
    const QByteArray one = onebRecord(1, 0x10, pattern(8, 5));
    struct Case {
        QByteArray image;
        QString error;
    };
    const Case cases[] = {
        {QByteArray("beno\x01\0\0\0", 8) + one,
         "PARSE_AIO: can not find all-in-one start sign, file is invalid!"},
        {QByteArray("one"), "PARSE_AIO: can not find all-in-one start sign, file is invalid!"},
        {QByteArray("oneb\x02", 5) + one, "PARSE_AIO: has no file more to read! cur file index: 1"},
        {QByteArray("oneb\x01", 5) + pattern(8, 0),
         "PARSE_AIO: no data remain to read file header! cur file index: 0"},
        {QByteArray("oneb\x01", 5) + one.left(one.size() - 1),
         "PARSE_AIO: no data remain to read file content! cur file index: 0"},
        {QByteArray("oneb\x01", 5) + onebRecord(1, 0, QByteArray()), ""}, // an empty file is fine
    };
    for (const Case& c : cases) {
        QStringList errors;
        const bool ok = parse(c.image, &errors);
        if (c.error.isEmpty()) {
            EXPECT_TRUE(ok);
            continue;
        }
        EXPECT_FALSE(ok) << c.error.toStdString();
        EXPECT_EQ(errors, QStringList({c.error}));
    }
    // A length beyond the data, even one that wraps when added, is a fault.
    QStringList errors;
    EXPECT_FALSE(parse(QByteArray("oneb\x01\x02", 6) + le32(0) + le32(0xFFFFFFF0) + "xy", &errors));
    EXPECT_EQ(errors,
              QStringList({"PARSE_AIO: no data remain to read file content! cur file index: 0"}));
    QFile::remove(path("in.bin"));
    AppQZ4420Imple engine;
    LogCatcher log(&engine);
    EXPECT_FALSE(engine.parseAio(path("in.bin"), stub, entries, stubAddr));
    EXPECT_EQ(log.errors(), QStringList({"PARSE_AIO: can not open all-in-one file!"}));
}

TEST_F(Aio, ReaderAcceptsNoStubOddTypesAndTrailingBytes) {
    ASSERT_TRUE(parse(QByteArray("oneb\x02", 5) + onebRecord(7, 0x30, pattern(3, 9)) +
                      onebRecord(1, 0x40, pattern(2, 8)) + "trailing junk"));
    EXPECT_EQ(stub.size(), 0);
    EXPECT_EQ(stubAddr, 0xDEADBEEFu); // untouched without a stub record
    ASSERT_EQ(entries.size(), 2);
    EXPECT_FALSE(entries[0].toRam); // 7 reads as a flash file
    EXPECT_TRUE(entries[1].toRam);

    // A later stub record replaces an earlier one.
    ASSERT_TRUE(parse(QByteArray("oneb\x03", 5) + onebRecord(0, 1, pattern(4, 1)) +
                      onebRecord(0, 2, pattern(2, 2)) + onebRecord(2, 3, pattern(1, 3))));
    EXPECT_EQ(stub.bytes(), pattern(2, 2));
    EXPECT_EQ(stubAddr, 2u);
}

TEST_F(Aio, WriterReadsEverythingBeforeTouchingTheOutput) {
    writeFile(path("stub.bin"), pattern(10, 1));
    writeFile(path("out.aio"), "previous image");
    AppQZ4420Imple engine;
    LogCatcher log(&engine);
    QVector<AioEntry> list(1);
    list[0].path = path("missing.bin");
    EXPECT_FALSE(engine.createAio(path("stub.bin"), list, path("out.aio"), 0));
    EXPECT_EQ(log.errors(),
              QStringList({"RD_FILE: can not open file: " + path("missing.bin"),
                           "CREATE_AIO: read all data failed: " + path("missing.bin")}));
    EXPECT_EQ(readFile(path("out.aio")), QByteArray("previous image"));

    log.clear();
    EXPECT_FALSE(engine.createAio(path("no-stub.bin"), {}, path("out.aio"), 0));
    EXPECT_EQ(log.errors(),
              QStringList({"RD_FILE: can not open file: " + path("no-stub.bin"),
                           "CREATE_AIO: read all data failed: " + path("no-stub.bin")}));

    log.clear(); // the output's folder is a file: the image cannot be made
    EXPECT_FALSE(engine.createAio(path("stub.bin"), {}, path("stub.bin/out.aio"), 0));
    EXPECT_EQ(log.errors(), QStringList({"CREATE_AIO: can not create all-in-one file!"}));

    // The count byte holds 255 records with the stub; one more is refused, output untouched.
    writeFile(path("e.bin"), pattern(1, 0));
    QVector<AioEntry> many(254);
    for (AioEntry& e : many)
        e.path = path("e.bin");
    log.clear();
    ASSERT_TRUE(engine.createAio(path("stub.bin"), many, path("many.aio"), 0));
    EXPECT_EQ(uint8_t(readFile(path("many.aio")).at(4)), 255);
    ASSERT_TRUE(parse(readFile(path("many.aio"))));
    EXPECT_EQ(entries.size(), 254);
    many.append(many.first());
    EXPECT_FALSE(engine.createAio(path("stub.bin"), many, path("out.aio"), 0));
    EXPECT_EQ(log.errors().size(), 1);
    EXPECT_TRUE(log.errors().first().startsWith("CREATE_AIO: "));
    EXPECT_EQ(readFile(path("out.aio")), QByteArray("previous image"));
}

TEST_F(Aio, BenoReaderKeepsTypesAndStopsAtTheEndOfTheData) {
    auto record = [](uint32_t type, uint32_t addr, const QByteArray& content) {
        return le32(type) + le32(addr) + le32(uint32_t(content.size())) + content;
    };
    const QByteArray good = QByteArray("beno") + le32(2) + record(0, 0x100, pattern(20, 1)) +
                            record(9, 0x200, pattern(3, 2));
    writeFile(path("b.aio"), good);
    AppQZ4410Imple engine;
    LogCatcher log(&engine);
    QList<AioItem> items;
    ASSERT_TRUE(engine.parseAio(path("b.aio"), items));
    ASSERT_EQ(items.size(), 2);
    EXPECT_EQ(items[0].dlType, 0u);
    EXPECT_EQ(items[1].dlType, 9u);
    EXPECT_EQ(items[1].startAddr, 0x200u);
    EXPECT_EQ(bytesOf(items[0].data), pattern(20, 1));
    EXPECT_EQ(log.infos().first(), "PARSE_AIO: find 2 bin in all-in-one file");

    struct Case {
        QByteArray image;
        QString error;
    };
    const Case cases[] = {
        {QByteArray("oneb\x01", 5) + onebRecord(1, 0, pattern(1, 1)),
         "PARSE_AIO: can not find all-in-one start sign, file is invalid!"},
        {QByteArray("beno") + le32(0), "PARSE_AIO: can not parse any file in all-in-one file!"},
        {QByteArray("beno") + le32(3) + record(1, 0, pattern(2, 0)),
         "PARSE_AIO: has no file more to read! cur file index: 1"},
        {QByteArray("beno") + le32(1) + le32(1) + le32(2),
         "PARSE_AIO: no data remain to read file header! cur file index: 0"},
        {QByteArray("beno") + le32(1) + le32(1) + le32(2) + le32(0xFFFFFFFF) + "ab",
         "PARSE_AIO: no data remain to read file content! cur file index: 0"},
        {QByteArray("beno") + le32(0xFFFFFFFF) + record(1, 0, pattern(1, 0)),
         "PARSE_AIO: has no file more to read! cur file index: 1"},
    };
    for (const Case& c : cases) {
        writeFile(path("b.aio"), c.image);
        log.clear();
        items.clear();
        EXPECT_FALSE(engine.parseAio(path("b.aio"), items)) << c.error.toStdString();
        EXPECT_EQ(log.errors(), QStringList({c.error}));
    }
}
