#include "shell/MainWindow.h"
#include "shell/PluginEntry.h"
#include "support/HostWords.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDateTime>
#include <QTableWidget>

#include <thread>

namespace {

class ProcessLog : public ::testing::Test {
protected:
    void SetUp() override {
        window = static_cast<MainWindow*>(Create());
        window->setTextService(&words);
        window->init();
        table = window->logTable();
    }
    void TearDown() override { Release(); }

    QString cell(int row, int col) const {
        auto* item = table->item(row, col);
        return item ? item->text() : QString();
    }
    QColor colour(int row, int col) const {
        auto* item = table->item(row, col);
        return item ? item->foreground().color() : QColor();
    }

    HostWords words;
    MainWindow* window = nullptr;
    QTableWidget* table = nullptr;
};

} // namespace

TEST_F(ProcessLog, WorkerLinesLandWhenTheEventLoopRuns) {
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->columnCount(), 3);
    EXPECT_EQ(table->horizontalHeaderItem(2)->text(), "Message");
    EXPECT_EQ(table->rowCount(), 10);

    std::thread worker([this] {
        for (int i = 0; i < 12; ++i)
            window->addTestLog(SYS_LOG_INFO, QString("line %1").arg(i));
        window->logError("failed at %d%%", 50);
    });
    worker.join();
    EXPECT_TRUE(cell(0, 2).isEmpty()); // queued for the interface thread, not written yet

    const QDateTime before = QDateTime::currentDateTime();
    QApplication::processEvents();
    for (int i = 0; i < 12; ++i)
        EXPECT_EQ(cell(i, 2), QString("line %1").arg(i));
    EXPECT_EQ(cell(12, 1), "ERROR");
    EXPECT_EQ(cell(12, 2), "failed at 50%");
    EXPECT_GE(table->rowCount(), 14); // grows beyond its first ten rows, with one spare
    const QDateTime stamped = QDateTime::fromString(cell(0, 0), "yyyy-MM-dd hh:mm:ss.zzz");
    ASSERT_TRUE(stamped.isValid()) << cell(0, 0).toStdString();
    EXPECT_LE(qAbs(stamped.msecsTo(before)), 2000);
}

TEST_F(ProcessLog, LevelsHaveTheirWordsAndColours) {
    window->addTestLog(SYS_LOG_DEBUG, "d");
    window->addTestLog(SYS_LOG_ERROR, "e");
    window->addTestLog(SYS_LOG_WARN, "w");
    window->logInfo("%s=%d", "i", 3);
    QApplication::processEvents();
    EXPECT_EQ(cell(0, 1), "DEBUG");
    EXPECT_EQ(cell(1, 1), "ERROR");
    EXPECT_EQ(cell(2, 1), "WARN");
    EXPECT_EQ(cell(3, 1), "INFO");
    EXPECT_EQ(cell(3, 2), "i=3");
    for (int col = 0; col < 3; ++col) {
        EXPECT_EQ(colour(1, col), QColor("#FF0000"));
        EXPECT_EQ(colour(2, col), QColor("#FFA500"));
        EXPECT_NE(colour(3, col), QColor("#FF0000"));
        EXPECT_NE(colour(0, col), QColor("#FFA500"));
    }
    EXPECT_EQ(table->item(1, 0)->textAlignment(), int(Qt::AlignCenter));
    EXPECT_EQ(table->item(1, 1)->textAlignment(), int(Qt::AlignCenter));
}
