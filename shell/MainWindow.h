#pragma once

#include "kit/SysSplitter.h"
#include "shell/PluginUIBase.h"
#include "shell/SysLogLevel.h"

#include <mutex>

class QTableWidget;

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

    // Queues one line for the process log; callable from any thread. The row is written on
    // the interface thread when its event loop runs.
    void addTestLog(SYS_LOG_LEVEL level, QString strLog);

    // printf-style lines at level ERROR and INFO.
    void logError(const char* format, ...) __attribute__((format(printf, 2, 3)));
    void logInfo(const char* format, ...) __attribute__((format(printf, 2, 3)));

    QTableWidget* logTable() const { return logTable_; }

signals:
    void addTestLogSig(SYS_LOG_LEVEL level, QString strLog);

private:
    void buildTabs();
    void buildProcessLog();
    void writeLogRow(SYS_LOG_LEVEL level, const QString& strLog);

    SysSplitter splitter_;
    QTableWidget* logTable_ = nullptr;
    int logCursor_ = 0;
    std::once_flag logConnected_;
};
