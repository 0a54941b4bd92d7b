// The QZ4410's all-in-one image reader ("beno").
#include "FuzzInput.h"
#include "engines/AppQZ4410Imple.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::startQt();
    AppQZ4410Imple engine;
    QList<AioItem> items;
    engine.parseAio(fuzz::inputFile(data, size), items);
    return 0;
}
