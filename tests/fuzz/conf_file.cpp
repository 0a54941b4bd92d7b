// The conf file reader.
#include "FuzzInput.h"
#include "engines/AppImpleUtils.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::startQt();
    AppImpleUtils utils;
    QList<NvItem> items;
    utils.loadConfFile(fuzz::inputFile(data, size), items);
    return 0;
}
