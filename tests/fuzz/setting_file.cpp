// The download page's ".setting" reader.
#include "FuzzInput.h"
#include "pages/DownloadSettingFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::startQt();
    DownloadSettingFile file;
    file.read(fuzz::inputFile(data, size), 30);
    return 0;
}
