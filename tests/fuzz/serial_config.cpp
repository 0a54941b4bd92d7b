// The terminal's serial.config reader.
#include "FuzzInput.h"
#include "pages/SerialConfig.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::startQt();
    SerialConfig config;
    config.read(fuzz::inputFile(data, size));
    return 0;
}
