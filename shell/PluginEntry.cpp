#include "shell/PluginEntry.h"

#include "base/Mutex.h"
#include "base/MutexLock.h"
#include "shell/MainWindow.h"

namespace {
PluginUIBase* g_plugin = nullptr;
} // namespace

PluginUIBase* Create() {
    static Mutex createLock;
    MutexLock lock(createLock);
    if (!g_plugin)
        g_plugin = new MainWindow();
    return g_plugin;
}

void Release() {
    static Mutex releaseLock;
    MutexLock lock(releaseLock);
    if (g_plugin) {
        delete g_plugin;
        g_plugin = nullptr;
    }
}
