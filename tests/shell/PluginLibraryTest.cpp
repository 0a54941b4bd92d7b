#include "host/PluginHost.h"
#include "shell/PluginUIBase.h"
#include "support/HostWords.h"

#include <gtest/gtest.h>

#include <QProcess>
#include <QTabWidget>

#include <cstdlib>

namespace {
// The plug-in built beside the tests; BRAMBLE_PLUGIN points elsewhere, e.g. at an installed one.
QString pluginPath() {
    const char* path = std::getenv("BRAMBLE_PLUGIN");
    return QString::fromLocal8Bit(path ? path : BRAMBLE_PLUGIN_PATH);
}
} // namespace

TEST(PluginLibrary, ExportsExactlyCreateAndRelease) {
    const QString path = pluginPath();
    QProcess nm;
    nm.start("nm", {"-D", "--defined-only", path});
    ASSERT_TRUE(nm.waitForFinished(30000));
    QStringList symbols;
    for (const QString& line : QString::fromLocal8Bit(nm.readAllStandardOutput()).split('\n')) {
        const QStringList parts = line.split(' ', Qt::SkipEmptyParts);
        if (parts.size() == 3)
            symbols << parts[2];
    }
    symbols.sort();
    EXPECT_EQ(symbols, QStringList({"Create", "Release"}));
}

TEST(PluginLibrary, HostLoadsTheLibraryAndGetsTheWindow) {
    HostWords words;
    PluginHost host;
    QString error;
    ASSERT_TRUE(host.start(pluginPath(), &words, &error)) << error.toStdString();
    PluginUIBase* window = host.window();
    // The window it gets is the plug-in's (PluginEntry checks what that window holds).
    EXPECT_EQ(window->textService(), &words);
    EXPECT_EQ(window->pluginTitle(), "Bramble");
    ASSERT_NE(window->findChild<QTabWidget*>(), nullptr);
    host.release();
    EXPECT_EQ(host.window(), nullptr);

    PluginHost missing;
    EXPECT_FALSE(missing.start("/nonexistent/libbramble.so", &words, &error));
    EXPECT_FALSE(error.isEmpty());
}
