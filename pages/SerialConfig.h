#pragma once

#include "pages/SerialCmdItem.h"

#include <QList>
#include <QString>

// The terminal's settings and saved commands as serial.config keeps them: a "setting" element
// with eight numbers and a "cmdList" of items, written in GBK.
struct SerialConfig {
    static constexpr int kCmdItems = 100;

    SerialConfig();

    bool isHexSend = false;
    bool isHexRecv = false;
    bool isDTR = false;
    bool isRTS = false;
    bool isReturn = true;
    bool isBackspace = true;
    bool isTimestamp = true;
    int cycleValue = 1000;
    QList<SerialCmdItem> cmdList; // always kCmdItems long

    // Reads path over the values held. Each attribute goes straight into its field; the first
    // one missing ends all reading and keeps what was read. A missing or broken file changes
    // nothing. Items beyond kCmdItems are passed by.
    void read(const QString& path);
    bool write(const QString& path) const;
};
