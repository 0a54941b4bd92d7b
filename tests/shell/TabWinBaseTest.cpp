#include "pages/TabWinBase.h"
#include "shell/MainWindow.h"
#include "shell/PluginEntry.h"
#include "support/HostWords.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QTableWidget>
#include <QThread>

#include <thread>

namespace {

// An engine-like object: a log signal and nothing else.
class LoggingEngine : public QObject {
    Q_OBJECT
public:
    void say(SYS_LOG_LEVEL level, const QString& line) { emit sendLog(level, line); }
signals:
    void sendLog(SYS_LOG_LEVEL level, QString strLog);
};

} // namespace

TEST(TabWinBase, MessagesRunTheirHandlersOnTheInterfaceThread) {
    TabWinBase page(nullptr);
    QThread* handlerThread = nullptr;
    QVariant seen;
    page.registerMsg(0, [&](QVariant v) {
        handlerThread = QThread::currentThread();
        seen = v;
    });

    // On the interface thread the handler runs at once.
    page.sendMsg(0, 7);
    EXPECT_EQ(seen.toInt(), 7);
    EXPECT_EQ(handlerThread, QThread::currentThread());

    // From a worker it is queued; a handler registered before delivery is the one that runs.
    std::thread worker([&] {
        page.sendMsg(0, QString("queued"));
        page.sendMsg(99, 1); // nobody listens: dropped
    });
    worker.join();
    EXPECT_EQ(seen.toInt(), 7);
    QString replaced;
    page.registerMsg(0, [&](QVariant v) { replaced = v.toString(); });
    QApplication::processEvents();
    EXPECT_EQ(replaced, "queued");
    EXPECT_EQ(seen.toInt(), 7);
}

TEST(TabWinBase, EngineAndPageLinesReachTheProcessLog) {
    HostWords words;
    auto* window = static_cast<MainWindow*>(Create());
    window->setTextService(&words);
    window->init();
    {
        TabWinBase page(nullptr);
        LoggingEngine engine;
        page.hookEngineLog(&engine);
        page.hookEngineLog(&engine); // hooking again replaces, so each line comes once
        std::thread worker([&] {
            engine.say(SYS_LOG_ERROR, "DL_TRUNK: write failed");
            page.logInfo("%s %d", "page", 1);
            page.logError("%s", "page error");
        });
        worker.join();
        QApplication::processEvents();
    }
    QTableWidget* table = window->logTable();
    ASSERT_NE(table->item(2, 2), nullptr);
    EXPECT_EQ(table->item(0, 2)->text(), "DL_TRUNK: write failed");
    EXPECT_EQ(table->item(0, 1)->text(), "ERROR");
    EXPECT_EQ(table->item(1, 2)->text(), "page 1");
    EXPECT_EQ(table->item(1, 1)->text(), "INFO");
    EXPECT_EQ(table->item(2, 2)->text(), "page error");
    EXPECT_EQ(table->item(3, 2), nullptr);
    Release();
}

#include "TabWinBaseTest.moc"
