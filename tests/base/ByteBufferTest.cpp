#include "base/ByteBuffer.h"
#include "base/BaseUtils.h"
#include "base/Deadline.h"
#include "base/Mutex.h"
#include "base/MutexLock.h"

#include <gtest/gtest.h>

#include <QRegularExpression>

#include <thread>

TEST(ByteBuffer, BuildsLittleEndianValues) {
    ByteBuffer b;
    b.appendByte(static_cast<unsigned char>(0xA5));
    b.appendByte('x');
    b.appendU16(0x1234);
    b.appendU32(0xA1B2C3D4u);
    b.fill(0x00, 2);
    b.append("ab", 2);
    const std::vector<unsigned char> want = {0xA5, 'x',  0x34, 0x12, 0xD4, 0xC3,
                                             0xB2, 0xA1, 0x00, 0x00, 'a',  'b'};
    EXPECT_EQ(b.bytes(), want);
    EXPECT_EQ(*b.at(2), 0x34);
    b.append(nullptr, 0);
    b.fill(0x7F, 0);
    EXPECT_EQ(b.size(), 12);
}

TEST(ByteBuffer, TextStopsAtTheFirstZero) {
    ByteBuffer b(std::string("OK\r\n"));
    b.fill(0, 1);
    b.append("tail", 4);
    EXPECT_EQ(b.text(), "OK\r\n");
    EXPECT_EQ(ByteBuffer(std::string("no zero")).text(), "no zero");
}

TEST(ByteBuffer, FindResumesBehindTheFailingByte) {
    // A failed comparison goes on behind the byte that broke it, not behind its start.
    EXPECT_EQ(ByteBuffer(std::string("OOK")).find("OK", 0, false), -1);
    EXPECT_EQ(ByteBuffer(std::string("xOOKOK")).find("OK", 0, false), 4);
    EXPECT_EQ(ByteBuffer(std::string("abcOK")).find("OK", 0, false), 3);
    EXPECT_EQ(ByteBuffer(std::string("OK")).find("OK", 0, false), 0);
    EXPECT_EQ(ByteBuffer(std::string("OKOK")).find("OK", 1, false), 2);
    // The needle must fit into what is left.
    EXPECT_EQ(ByteBuffer(std::string("xO")).find("OK", 0, false), -1);
    EXPECT_EQ(ByteBuffer(std::string("OK")).find("", 0, false), -1);
    EXPECT_EQ(ByteBuffer().find("OK", 0, false), -1);
    // Case folding: ASCII letters only, and only when asked.
    EXPECT_EQ(ByteBuffer(std::string("ok")).find("OK", 0, false), -1);
    EXPECT_EQ(ByteBuffer(std::string("..oK")).find("Ok", 0, true), 2);
    EXPECT_EQ(ByteBuffer(std::string("@")).find("`", 0, true), -1); // 0x40 and 0x60 are no letters
}

TEST(ByteBuffer, SliceRefusesToRunPastTheEnd) {
    const ByteBuffer b(std::string("0123456789"));
    std::string out = "keep";
    EXPECT_TRUE(b.slice(2, 3, out));
    EXPECT_EQ(out, "234");
    EXPECT_TRUE(b.slice(7, 3, out));
    EXPECT_EQ(out, "789");
    out = "keep";
    EXPECT_FALSE(b.slice(8, 3, out));
    EXPECT_EQ(out, "keep");
    EXPECT_TRUE(b.slice(10, 0, out));
    EXPECT_EQ(out, "");
}

TEST(Deadline, CountsDownAndExpires) {
    const Deadline zero(0);
    EXPECT_TRUE(zero.expired());
    const Deadline d(40);
    EXPECT_FALSE(d.expired());
    EXPECT_LE(d.remaining(), 40);
    EXPECT_GT(d.remaining(), 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(60));
    EXPECT_TRUE(d.expired());
    EXPECT_LT(d.remaining(), 0);
}

TEST(BaseUtils, FormatsAndFinds) {
    EXPECT_EQ(stringFormat("COM%d", 7), "COM7");
    EXPECT_EQ(stringFormat("%s", ""), "");
    const std::string longText(5000, 'z');
    EXPECT_EQ(stringFormat("<%s>", longText.c_str()).size(), 5002u);

    const QRegularExpression withMs("^\\d{4}-\\d{2}-\\d{2} \\d{2}:\\d{2}:\\d{2}\\.\\d{3}$");
    const QRegularExpression withoutMs("^\\d{4}-\\d{2}-\\d{2} \\d{2}:\\d{2}:\\d{2}$");
    EXPECT_TRUE(withMs.match(QString::fromStdString(timestampText(true))).hasMatch());
    EXPECT_TRUE(withoutMs.match(QString::fromStdString(timestampText(false))).hasMatch());

    EXPECT_TRUE(isAsciiLetter('a') && isAsciiLetter('Z'));
    EXPECT_FALSE(isAsciiLetter('@') || isAsciiLetter('[') || isAsciiLetter('`') ||
                 isAsciiLetter('{') || isAsciiLetter('1'));

    EXPECT_EQ(regexFindAll("[0-9]+", "a12b345c6"), QStringList({"12", "345", "6"}));
    EXPECT_EQ(regexFindAll("x", "abc"), QStringList());
    // An empty match ends the scan.
    EXPECT_EQ(regexFindAll("[0-9]*", "12ab34"), QStringList({"12"}));
    EXPECT_EQ(regexFindAll("A", "aA"), QStringList({"A"})); // case-sensitive
}

TEST(Mutex, IsRecursiveAndExcludesOtherThreads) {
    Mutex m;
    int counter = 0;
    std::thread other;
    {
        MutexLock outer(m);
        MutexLock inner(m); // the same thread may lock again
        other = std::thread([&] {
            MutexLock lock(m);
            counter = 2;
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        EXPECT_EQ(counter, 0); // the other thread waits until both locks are released
        counter = 1;
    }
    other.join();
    EXPECT_EQ(counter, 2);
}
