#include "host/PluginHost.h"

#include "shell/PluginUIBase.h"

#include <QElapsedTimer>

PluginHost::~PluginHost() {
    release();
}

bool PluginHost::start(const QString& libraryPath, HostTextService* texts, QString* error) {
    QElapsedTimer clock;
    clock.start();
    auto lap = [&clock] { return double(clock.nsecsElapsed()) / 1e6; };
    library_.setFileName(libraryPath);
    const bool loaded = library_.load();
    loadMs_ = lap();
    if (!loaded) {
        *error = library_.errorString();
        return false;
    }
    create_ = reinterpret_cast<CreateFn>(library_.resolve("Create"));
    release_ = reinterpret_cast<ReleaseFn>(library_.resolve("Release"));
    if (!create_ || !release_) {
        *error = QStringLiteral("%1 does not export Create and Release").arg(libraryPath);
        return false;
    }
    window_ = create_();
    createMs_ = lap() - loadMs_;
    if (!window_) {
        *error = QStringLiteral("Create returned no window");
        return false;
    }
    window_->setTextService(texts);
    window_->init();
    initMs_ = lap() - loadMs_ - createMs_;
    return true;
}

void PluginHost::release() {
    if (release_ && window_)
        release_();
    window_ = nullptr;
}
