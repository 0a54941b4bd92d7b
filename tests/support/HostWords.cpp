#include "support/HostWords.h"

#include <QTemporaryDir>

#include <cstdlib>

namespace {

// Files the plug-in keeps (the terminal's serial.config) go to a folder of the test process's
// own, never to the user's.
QString processConfigDir() {
    static QTemporaryDir dir;
    return dir.path();
}

} // namespace

HostWords::HostWords() : HostTextFiles(processConfigDir()) {
    const char* root = std::getenv("BRAMBLE_SOURCE_DIR");
    load(QString::fromLocal8Bit(root ? root : BRAMBLE_SOURCE_DIR) + "/host/texts/en.tsv");
}
