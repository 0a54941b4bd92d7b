#include "support/HostWords.h"

#include <cstdlib>

HostWords::HostWords() {
    const char* root = std::getenv("BRAMBLE_SOURCE_DIR");
    load(QString::fromLocal8Bit(root ? root : BRAMBLE_SOURCE_DIR) + "/host/texts/en.tsv");
}
