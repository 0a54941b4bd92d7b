#pragma once

#include <cstdarg>

#include "kit/SysSplitter.h"
#include "shell/MainWindow.h"
#include "shell/SysLogLevel.h"

#include <QVariant>

#include <functional>
#include <map>

// Base of the four tool pages. Worker threads reach the page's widgets only through
// sendMsg: the handler registered under the id runs on the interface thread. Pages log into
// the process log through addLog, logError and logInfo, from any thread.
class TabWinBase : public SysSplitter {
    Q_OBJECT
public:
    explicit TabWinBase(QWidget* parent);

    // Stores fn under id; a later call for the same id replaces it.
    void registerMsg(int id, std::function<void(QVariant)> fn);
    // Runs the handler of id on the interface thread with a copy of value; unknown ids are
    // dropped. From the interface thread the handler runs at once.
    void sendMsg(int id, QVariant value);

    void addLog(SYS_LOG_LEVEL level, QString strLog);
    void logError(const char* format, ...) __attribute__((format(printf, 2, 3)));
    void logInfo(const char* format, ...) __attribute__((format(printf, 2, 3)));
    // The host's word for a key, as it stands.
    static QString word(const char* key) { return MainWindow::text(QString::fromLatin1(key)); }
    // The host's word for key, filled with args like every logged line, as an error or
    // information line. Strings go in as 8-bit text.
    template <typename... Args> void errorLine(const char* key, Args... args) {
        addLog(SYS_LOG_ERROR, MainWindow::formatText(key, args...));
    }
    template <typename... Args> void infoLine(const char* key, Args... args) {
        addLog(SYS_LOG_INFO, MainWindow::formatText(key, args...));
    }

    // Routes an engine's log lines into the process log, on the engine's own thread.
    template <typename Engine> void hookEngineLog(Engine* engine) {
        qRegisterMetaType<SYS_LOG_LEVEL>("SYS_LOG_LEVEL");
        QObject::disconnect(engine, &Engine::sendLog, engine, nullptr);
        TabWinBase* page = this;
        QObject::connect(
            engine, &Engine::sendLog, engine,
            [page](SYS_LOG_LEVEL level, QString line) { page->addLog(level, line); },
            Qt::DirectConnection);
    }

signals:
    void msgSig(int id, QVariant value);

private:
    // Formats and logs one line; logError and logInfo share it.
    void logV(SYS_LOG_LEVEL level, const char* format, va_list args);
    std::map<int, std::function<void(QVariant)>> handlers_;
};
