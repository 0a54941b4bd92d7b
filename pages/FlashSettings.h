#pragma once

#include <QString>

#include <cstdint>

// The flash page's values at one click, taken on the interface thread, so that a worker on
// its own thread never reads a widget.
struct FlashSettings {
    QString portText;    // as the port box shows it
    int portNumber = -1; // the port table's number for it, -1 when none is chosen
    QString workBaud;
    QString uploadBaud;
    uint32_t address = 0;
    uint32_t length = 0;
    QString path; // the upload's file, trimmed

    // An address or length field: hexadecimal with or without "0x"; what does not read as a
    // number up to 0x7FFFFFFF counts as 0.
    static uint32_t hexField(const QString& text) { return uint32_t(text.toInt(nullptr, 16)); }
};
