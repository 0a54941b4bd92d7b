#pragma once

#include <QLibrary>
#include <QString>

class PluginUIBase;
class HostTextService;

// Loads libbramble.so the way the host application does: resolves the two C entries, hands
// the window its word service, calls init, and releases it at the end.
class PluginHost {
public:
    PluginHost() = default;
    ~PluginHost();
    PluginHost(const PluginHost&) = delete;
    PluginHost& operator=(const PluginHost&) = delete;

    // Loads the library and creates the window with `texts` set and init() done.
    bool start(const QString& libraryPath, HostTextService* texts, QString* error);
    PluginUIBase* window() const { return window_; }
    // How long start() took to load the library, in Create and in init, in milliseconds.
    double loadMs() const { return loadMs_; }
    double createMs() const { return createMs_; }
    double initMs() const { return initMs_; }
    // Calls Release; the window is gone afterwards.
    void release();

private:
    using CreateFn = PluginUIBase* (*)();
    using ReleaseFn = void (*)();

    QLibrary library_;
    CreateFn create_ = nullptr;
    ReleaseFn release_ = nullptr;
    PluginUIBase* window_ = nullptr;
    double loadMs_ = 0, createMs_ = 0, initMs_ = 0;
};
