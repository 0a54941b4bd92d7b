#pragma once

#include <cstdarg>

#include "kit/SysSplitter.h"
#include "kit/SysTable.h"
#include "shell/PluginUIBase.h"
#include "shell/SysLogLevel.h"

#include <mutex>

class SysMenu;

// The one plug-in window: the four tool pages above the process log.
class MainWindow : public PluginUIBase {
    Q_OBJECT
public:
    MainWindow();
    ~MainWindow() override;

    QString pluginTitle() override;
    QString versionLog() override;
    void init() override;

    // The window that Create made; the same routine, so it takes the same lock.
    static MainWindow* instance();

    // The host's word for a key.
    static QString text(const QString& key);
    // The words for a process without a window (the command line): text() and formatText()
    // answer from `words` while no window has words of its own. Null ends it.
    static void useWords(HostTextService* words);
    // The host's word for a key, filled printf-style like every logged line: a format's
    // conversions take the arguments, and "%%" in any word gives "%".
    static QString formatText(const char* key, ...);

    // Queues one line for the process log; callable from any thread. The row is written on
    // the interface thread when its event loop runs. Invokable so that the host stand-in can
    // reach it without linking the plug-in's code.
    Q_INVOKABLE void addTestLog(SYS_LOG_LEVEL level, QString strLog);

    // printf-style lines at level ERROR and INFO.
    void logError(const char* format, ...) __attribute__((format(printf, 2, 3)));
    void logInfo(const char* format, ...) __attribute__((format(printf, 2, 3)));

    SysTable* logTable() const { return logTable_; }

    // Fills the process log's context menu: the four exports and clearing the log.
    void fillLogMenu(SysMenu* menu);

signals:
    void addTestLogSig(SYS_LOG_LEVEL level, QString strLog);

private:
    // Formats and logs one line; logError and logInfo share it.
    void logV(SYS_LOG_LEVEL level, const char* format, va_list args);
    void buildTabs();
    void buildProcessLog();
    void writeLogRow(SYS_LOG_LEVEL level, const QString& strLog);
    void showLogMenu();

    SysSplitter splitter_;
    SysTable* logTable_ = nullptr;
    std::once_flag logConnected_;
};
