#pragma once

#include <QString>

// One saved command of the terminal's table.
struct SerialCmdItem {
    bool isHex = false; // the command is a list of hex bytes
    QString cmd;
};
