// The QZ4420's all-in-one image reader ("oneb").
#include "FuzzInput.h"
#include "engines/AppQZ4420Imple.h"
#include "engines/SysByteArray.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::startQt();
    AppQZ4420Imple engine;
    SysByteArray stub;
    QVector<AioEntry> entries;
    uint32_t stubAddr = 0;
    engine.parseAio(fuzz::inputFile(data, size), stub, entries, stubAddr);
    return 0;
}
