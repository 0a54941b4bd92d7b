#include <QApplication>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <cstdlib>

// Every test program runs with a QApplication on the offscreen platform, so widget tests
// build real pages without a display and queued signals have an event loop to run in. The
// per-user runtime folder (where virtual ports are published) and the settings folder are
// private ones, so tests neither see nor disturb the ports and settings of a running Bramble.
int main(int argc, char** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QTemporaryDir runtime;
    setenv("XDG_RUNTIME_DIR", runtime.path().toLocal8Bit().constData(), 1);
    // Settings the pages keep between sessions go to the same private folder.
    setenv("XDG_CONFIG_HOME", (runtime.path() + "/config").toLocal8Bit().constData(), 1);
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
