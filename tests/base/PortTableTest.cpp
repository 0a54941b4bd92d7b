#include "base/PortTable.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryFile>

TEST(PortTable, NumbersNamesBothWays) {
    EXPECT_EQ(PortTable::numberOf("COM5"), 5);
    EXPECT_EQ(PortTable::numberOf("  COM12 "), 12);
    EXPECT_EQ(PortTable::numberOf(""), -1);
    EXPECT_EQ(PortTable::numberOf("   "), -1);

    // Any other name gets a number of its own, the same one every time.
    const int usb = PortTable::numberOf("ttyUSB0");
    const int acm = PortTable::numberOf("ttyACM0");
    EXPECT_GT(usb, 255);
    EXPECT_NE(usb, acm);
    EXPECT_EQ(PortTable::numberOf("ttyUSB0"), usb);
    EXPECT_EQ(PortTable::nameOf(usb), "ttyUSB0");
    EXPECT_EQ(PortTable::nameOf(acm), "ttyACM0");
    EXPECT_EQ(PortTable::nameOf(3), "COM3");
    EXPECT_EQ(PortTable::nameOf(-1), "");
}

TEST(PortTable, DevicesAndVirtualPorts) {
    const QString dir = PortTable::virtualPortDir();
    EXPECT_TRUE(dir.endsWith("/bramble/ports"));
    ASSERT_TRUE(QDir().mkpath(dir));

    EXPECT_EQ(PortTable::deviceOf("/dev/pts/7"), "/dev/pts/7");
    EXPECT_EQ(PortTable::deviceOf("ttyUSB0"), "/dev/ttyUSB0");
    EXPECT_EQ(PortTable::deviceOf(""), "");

    QTemporaryFile target;
    ASSERT_TRUE(target.open());
    ASSERT_TRUE(QFile::link(target.fileName(), dir + "/sim0"));
    ASSERT_TRUE(QFile::link(dir + "/gone-target", dir + "/dead0")); // its target is missing
    EXPECT_EQ(PortTable::deviceOf("sim0"), dir + "/sim0");
    EXPECT_EQ(PortTable::virtualPorts(), QStringList({"sim0"}));
    QFile::remove(dir + "/sim0");
    QFile::remove(dir + "/dead0");
    EXPECT_TRUE(PortTable::virtualPorts().isEmpty());
    EXPECT_EQ(PortTable::deviceOf("sim0"), "/dev/sim0");
}
