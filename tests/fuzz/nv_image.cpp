// The NV image decoder, straight from bytes and through loadNvFile.
#include "FuzzInput.h"
#include "engines/AppImpleUtils.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::startQt();
    AppImpleUtils utils;
    QList<NvItem> items;
    int type = -1;
    utils.nvToKv(QByteArray(reinterpret_cast<const char*>(data), int(size)), items, type);
    items.clear();
    utils.loadNvFile(fuzz::inputFile(data, size), items, type);
    return 0;
}
