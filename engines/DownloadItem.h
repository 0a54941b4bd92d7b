#pragma once

#include <QString>

#include <cstdint>

// A file to download: where it goes and whether to RAM or to flash.
struct DownloadItem {
    uint32_t startAddr = 0;
    bool toRam = false;
    QString path;
};
