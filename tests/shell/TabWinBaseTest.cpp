#include "pages/TabWinBase.h"
#include "support/MainWindowTest.h"
#include "support/QtPrinters.h"

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

using TabWinBaseOnTheWindow = MainWindowTest;

TEST_F(TabWinBaseOnTheWindow, EngineAndPageLinesReachTheProcessLog) {
    TabWinBase page(nullptr);
    LoggingEngine engine;
    page.hookEngineLog(&engine);
    page.hookEngineLog(&engine); // hooking again replaces, so each line comes once
    QStringList levels;
    EXPECT_EQ(during(
                  [&] {
                      std::thread worker([&] {
                          engine.say(SYS_LOG_ERROR, "DL_TRUNK: write failed");
                          page.logInfo("%s %d", "page", 1);
                          page.logError("%s", "page error");
                      });
                      worker.join();
                  },
                  &levels),
              QStringList({"DL_TRUNK: write failed", "page 1", "page error"}));
    EXPECT_EQ(levels, QStringList({"ERROR", "INFO", "ERROR"}));
}

#include "TabWinBaseTest.moc"
