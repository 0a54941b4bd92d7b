#include "serial/Serial.h"
#include "support/PtyPeer.h"

#include <gtest/gtest.h>

#include <QTemporaryFile>

#include <functional>
#include <stdexcept>

namespace {

// Runs fn and gives back what() of the exception of type E that it raised.
template <typename E, typename Fn> std::string raised(Fn fn) {
    try {
        fn();
    } catch (const E& e) {
        return e.what();
    } catch (const std::exception& e) {
        return std::string("other exception: ") + e.what();
    }
    return "nothing raised";
}

} // namespace

TEST(Serial, OpenFailuresRaiseTheirTexts) {
    serial::Serial s;
    EXPECT_EQ(raised<std::invalid_argument>([&] { s.open(); }), "Empty port is invalid.");

    s.setPort("/dev/bramble-missing");
    const std::string missing = raised<serial::IOException>([&] { s.open(); });
    EXPECT_EQ(missing.rfind("IO Exception: Specified port, /dev/bramble-missing, does not exist., "
                            "file serial/impl/unix, line ",
                            0),
              0u)
        << missing;

    QTemporaryFile plain; // opens, but is no terminal
    ASSERT_TRUE(plain.open());
    s.setPort(plain.fileName().toStdString());
    const std::string notTty = raised<serial::IOException>([&] { s.open(); });
    EXPECT_EQ(notTty.rfind(
                  "IO Exception: Error getting the serial port state., file serial/impl/unix", 0),
              0u)
        << notTty;
    EXPECT_FALSE(s.isOpen());

    PtyPeer peer;
    s.setPort(peer.slavePath());
    s.open();
    EXPECT_TRUE(s.isOpen());
    EXPECT_EQ(raised<serial::SerialException>([&] { s.open(); }),
              "SerialException Serial port already open. failed.");

    // Bad settings are refused before they reach the driver; the port stays open.
    EXPECT_EQ(raised<std::invalid_argument>([&] { s.setBytesize(serial::bytesize_t(9)); }),
              "invalid char len");
    s.setBytesize(serial::eightbits);
    EXPECT_EQ(raised<std::invalid_argument>([&] { s.setStopbits(serial::stopbits_t(7)); }),
              "invalid stop bit");
    s.setStopbits(serial::stopbits_one);
    EXPECT_EQ(raised<std::invalid_argument>([&] { s.setParity(serial::parity_t(9)); }),
              "invalid parity");
    s.setParity(serial::parity_none);
    EXPECT_TRUE(s.isOpen());
    s.close();
    EXPECT_FALSE(s.isOpen());
}

TEST(Serial, ClosedPortOperationsRaiseTheirNames) {
    serial::Serial s;
    uint8_t byte = 0;
    EXPECT_EQ(s.available(), 0u);
    const std::pair<std::string, std::function<void()>> operations[] = {
        {"read", [&] { s.read(&byte, 1); }},
        {"write", [&] { s.write(&byte, 1); }},
        {"flush", [&] { s.flush(); }},
        {"flushInput", [&] { s.flushInput(); }},
        {"flushOutput", [&] { s.flushOutput(); }},
        {"setRTS", [&] { s.setRTS(true); }},
        {"setDTR", [&] { s.setDTR(true); }}};
    for (const auto& [name, operation] : operations)
        EXPECT_EQ(raised<serial::PortNotOpenedException>(operation),
                  "PortNotOpenedException Serial::" + name + " failed.");
    s.close(); // closing a closed port is nothing
}

TEST(Serial, ReadsAndWritesRawBytesWithTimeouts) {
    PtyPeer peer;
    serial::Serial s(peer.slavePath(), 115200);
    ASSERT_TRUE(s.isOpen());
    // Raw: no CR/LF translation, no echo, all 256 byte values.
    std::string all;
    for (int i = 0; i < 256; ++i)
        all.push_back(char(i));
    EXPECT_EQ(s.write(all), 256u);
    EXPECT_EQ(peer.readExactly(256), all);
    peer.write(all);
    EXPECT_EQ(s.read(256), all);
    EXPECT_TRUE(peer.read(20, 100).empty()); // nothing echoed back

    // A bounded read gives what came when its time is up.
    serial::Timeout t;
    t.read_timeout_constant = 60;
    s.setTimeout(t);
    peer.write("abc");
    EXPECT_EQ(s.read(10), "abc");
    peer.write("one\ntwo\nthr");
    EXPECT_EQ(s.readline(), "one\n");
    const auto rest = s.readlines();
    ASSERT_EQ(rest.size(), 2u);
    EXPECT_EQ(rest[0], "two\n");
    EXPECT_EQ(rest[1], "thr");
}
