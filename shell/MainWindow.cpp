#include "shell/MainWindow.h"

#include "kit/SysGroupBox.h"
#include "kit/SysMenu.h"
#include "kit/SysTab.h"
#include "kit/SysTable.h"
#include "kit/SysVLayout.h"
#include "pages/BlendWindow.h"
#include "pages/CRUDWindow.h"
#include "pages/CmdWindow.h"
#include "pages/DownloadWindow.h"
#include "shell/PluginEntry.h"
#include "shell/VersionHistory.h"

#include <QColor>
#include <QCursor>
#include <QDateTime>

#include <cstdarg>

MainWindow::MainWindow() : splitter_(nullptr) {}

MainWindow::~MainWindow() = default;

MainWindow* MainWindow::instance() {
    return static_cast<MainWindow*>(Create());
}

namespace {

// The command line's words; while null, text() asks the window's.
HostTextService* g_words = nullptr;

} // namespace

void MainWindow::useWords(HostTextService* words) {
    g_words = words;
}

QString MainWindow::text(const QString& key) {
    return g_words ? g_words->text(key) : instance()->textService()->text(key);
}

QString MainWindow::formatText(const char* key, ...) {
    const std::string format = text(QString::fromLatin1(key)).toStdString();
    va_list args;
    va_start(args, key);
    const QString line = QString::vasprintf(format.c_str(), args);
    va_end(args);
    return line;
}

QString MainWindow::pluginTitle() {
    return textService()->text(QStringLiteral("main/title"));
}

QString MainWindow::versionLog() {
    return VersionHistory::html(textService());
}

void MainWindow::init() {
    setCentralWidget(&splitter_);
    splitter_.setOpaqueResize(true);
    splitter_.setHorizontal(false);
    buildTabs();
    buildProcessLog();
    splitter_.setHorizontal(false);
    splitter_.setStretchFactor(0, 1);
    splitter_.setStretchFactor(1, 1);
}

void MainWindow::buildTabs() {
    auto* tabs = new SysTab(this);
    splitter_.addWidget(tabs);
    tabs->addTab(new DownloadWindow(tabs), text(QStringLiteral("main/tab/download")));
    tabs->addTab(new CRUDWindow(tabs), text(QStringLiteral("main/tab/crud")));
    tabs->addTab(new CmdWindow(tabs), text(QStringLiteral("main/tab/cmd")));
    tabs->addTab(new BlendWindow(tabs), text(QStringLiteral("main/tab/blend")));
}

// The process log: a read-only table of time, level and text under the tabs, with the
// export and clear entries on its context menu.
void MainWindow::buildProcessLog() {
    auto* box = new SysGroupBox(this, text(QStringLiteral("main/procLog/title")));
    splitter_.addWidget(box);
    auto* layout = new SysVLayout(box);
    logTable_ = new SysTable(box);
    logTable_->setObjectName(QStringLiteral("processLog")); // found by name from outside
    layout->addWidget(logTable_);
    logTable_->setHeaders(
        text(QStringLiteral("main/procLog/table/header")).split('/', Qt::KeepEmptyParts));
    logTable_->setEditable(false);
    logTable_->setColumnWidth(0, 250);
    logTable_->setColumnWidth(1, 100);
    logTable_->setRowCount(10);
    logTable_->setColumnAlign(0, Qt::AlignCenter);
    logTable_->setColumnAlign(1, Qt::AlignCenter);
    logTable_->setHeaderVerticalPadding(0.25f);
    logTable_->setItemVerticalPadding(0.125f);
    logTable_->setHeaderTextColor("#FFF");
    logTable_->setHeaderBackgroundColor("#409eff");
    logTable_->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(logTable_, &SysTable::customContextMenuRequested, this, &MainWindow::showLogMenu);
}

void MainWindow::fillLogMenu(SysMenu* menu) {
    sysAddTableMenu(logTable_, menu, true, QStringLiteral("导出到HTML"),
                    QStringLiteral("导出到CSV"), QStringLiteral("导出选区到HTML"),
                    QStringLiteral("导出选区到CSV"), QStringLiteral("清空表格"));
}

// A fresh menu for each right click, gone when it closes.
void MainWindow::showLogMenu() {
    SysMenu menu(logTable_);
    fillLogMenu(&menu);
    menu.exec(QCursor::pos());
}

void MainWindow::addTestLog(SYS_LOG_LEVEL level, QString strLog) {
    // The first line, from whatever thread, connects the signal to the row writer; the
    // connection crosses to the interface thread whenever the line comes from another one.
    std::call_once(logConnected_, [this] {
        qRegisterMetaType<SYS_LOG_LEVEL>("SYS_LOG_LEVEL");
        MainWindow* self = this;
        connect(
            this, &MainWindow::addTestLogSig, this,
            [self](SYS_LOG_LEVEL lvl, QString line) { self->writeLogRow(lvl, line); },
            Qt::AutoConnection);
    });
    emit addTestLogSig(level, strLog);
}

// Writes one line at the table's cursor, stamped with the time of writing, and keeps a spare
// row below it in view. Lines that are neither errors nor warnings keep the table's colour.
void MainWindow::writeLogRow(SYS_LOG_LEVEL level, const QString& strLog) {
    if (!logTable_)
        return;
    static const char* const kWords[] = {"DEBUG", "ERROR", "WARN", "INFO"};
    const QString word = QString::fromLatin1(level >= 0 && level <= 3 ? kWords[level] : "");
    const int row = logTable_->nextRow;
    logTable_->setRowTexts(
        row, {QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss.zzz")),
              word, strLog});
    if (level == SYS_LOG_ERROR || level == SYS_LOG_WARN) {
        const QColor colour(level == SYS_LOG_ERROR ? QStringLiteral("#FF0000")
                                                   : QStringLiteral("#FFA500"));
        logTable_->forEachRowItem(
            row, [&colour](QTableWidgetItem* cell, int) { cell->setForeground(colour); });
    }
    logTable_->scrollToRow(row);
    ++logTable_->nextRow;
}

void MainWindow::logError(const char* format, ...) {
    va_list args;
    va_start(args, format);
    logV(SYS_LOG_ERROR, format, args);
    va_end(args);
}

void MainWindow::logInfo(const char* format, ...) {
    va_list args;
    va_start(args, format);
    logV(SYS_LOG_INFO, format, args);
    va_end(args);
}

void MainWindow::logV(SYS_LOG_LEVEL level, const char* format, va_list args) {
    addTestLog(level, QString::vasprintf(format, args));
}
