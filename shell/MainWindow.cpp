#include "shell/MainWindow.h"

#include "kit/SysGroupBox.h"
#include "kit/SysTab.h"
#include "kit/SysVLayout.h"
#include "pages/BlendWindow.h"
#include "pages/CRUDWindow.h"
#include "pages/CmdWindow.h"
#include "pages/DownloadWindow.h"
#include "shell/PluginEntry.h"
#include "shell/VersionHistory.h"

#include <QBrush>
#include <QColor>
#include <QDateTime>
#include <QHeaderView>
#include <QTableWidget>

#include <cstdarg>

MainWindow::MainWindow() : splitter_(nullptr) {}

MainWindow::~MainWindow() = default;

MainWindow* MainWindow::instance() {
    return static_cast<MainWindow*>(Create());
}

QString MainWindow::text(const QString& key) {
    return instance()->textService()->text(key);
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

// A plain table in the log's place until the kit's table takes it over.
void MainWindow::buildProcessLog() {
    auto* box = new SysGroupBox(this, text(QStringLiteral("main/procLog/title")));
    splitter_.addWidget(box);
    auto* layout = new SysVLayout(box);
    logTable_ = new QTableWidget(box);
    layout->addWidget(logTable_);
    const QStringList header =
        text(QStringLiteral("main/procLog/table/header")).split('/', Qt::KeepEmptyParts);
    logTable_->setColumnCount(header.size());
    logTable_->setHorizontalHeaderLabels(header);
    logTable_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    logTable_->setColumnWidth(0, 250);
    logTable_->setColumnWidth(1, 100);
    logTable_->setRowCount(10);
    logTable_->horizontalHeader()->setStretchLastSection(true);
    logTable_->verticalHeader()->setVisible(false);
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

void MainWindow::writeLogRow(SYS_LOG_LEVEL level, const QString& strLog) {
    if (!logTable_)
        return;
    static const char* const kWords[] = {"DEBUG", "ERROR", "WARN", "INFO"};
    const QString cells[3] = {
        QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss.zzz")),
        QString::fromLatin1(level >= 0 && level <= 3 ? kWords[level] : ""), strLog};
    const int row = logCursor_;
    if (row >= logTable_->rowCount())
        logTable_->setRowCount(row + 1);
    for (int col = 0; col < 3 && col < logTable_->columnCount(); ++col) {
        auto* item = logTable_->item(row, col);
        if (!item) {
            item = new QTableWidgetItem;
            if (col < 2)
                item->setTextAlignment(Qt::AlignCenter);
            logTable_->setItem(row, col, item);
        }
        item->setText(cells[col]);
        if (level == SYS_LOG_ERROR)
            item->setForeground(QColor(QStringLiteral("#FF0000")));
        else if (level == SYS_LOG_WARN)
            item->setForeground(QColor(QStringLiteral("#FFA500")));
        else
            item->setForeground(QBrush());
    }
    if (row + 1 >= logTable_->rowCount())
        logTable_->setRowCount(row + 2);
    logTable_->scrollTo(logTable_->model()->index(row + 1, 0));
    ++logCursor_;
}

void MainWindow::logError(const char* format, ...) {
    va_list args;
    va_start(args, format);
    const QString line = QString::vasprintf(format, args);
    va_end(args);
    addTestLog(SYS_LOG_ERROR, line);
}

void MainWindow::logInfo(const char* format, ...) {
    va_list args;
    va_start(args, format);
    const QString line = QString::vasprintf(format, args);
    va_end(args);
    addTestLog(SYS_LOG_INFO, line);
}
