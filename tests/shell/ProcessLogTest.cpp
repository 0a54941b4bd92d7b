#include "kit/SysMenu.h"
#include "support/MainWindowTest.h"
#include "support/QtPrinters.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QDateTime>
#include <QHeaderView>
#include <QImage>

#include <thread>

namespace {

class ProcessLog : public MainWindowTest {
protected:
    QString cell(int row, int col) const {
        auto* item = log->item(row, col);
        return item ? item->text() : QString();
    }
    QColor colour(int row, int col) const {
        auto* item = log->item(row, col);
        return item ? item->foreground().color() : QColor();
    }
};

} // namespace

TEST_F(ProcessLog, PanelIsAReadOnlyTableOfTimeLevelAndText) {
    EXPECT_EQ(log->columnCount(), 3);
    EXPECT_EQ(log->horizontalHeaderItem(0)->text(), "Time");
    EXPECT_EQ(log->horizontalHeaderItem(2)->text(), "Message");
    EXPECT_EQ(log->rowCount(), 10);
    EXPECT_EQ(log->columnWidth(0), 250);
    EXPECT_EQ(log->columnWidth(1), 100);
    EXPECT_EQ(log->editTriggers(), QAbstractItemView::NoEditTriggers);
    // The columns' alignments and the header's colours are read off the rows and the screen
    // below.
    EXPECT_EQ(log->contextMenuPolicy(), Qt::CustomContextMenu);
}

TEST_F(ProcessLog, WorkerLinesLandWhenTheEventLoopRuns) {
    std::thread worker([this] {
        for (int i = 0; i < 12; ++i)
            window->addTestLog(SYS_LOG_INFO, QString("line %1").arg(i));
        window->logError("failed at %d%%", 50);
    });
    worker.join();
    EXPECT_TRUE(cell(0, 2).isEmpty()); // queued for the interface thread, not written yet
    EXPECT_EQ(log->nextRow, 0);

    const QDateTime before = QDateTime::currentDateTime();
    QApplication::processEvents();
    for (int i = 0; i < 12; ++i)
        EXPECT_EQ(cell(i, 2), QString("line %1").arg(i));
    EXPECT_EQ(cell(12, 1), "ERROR");
    EXPECT_EQ(cell(12, 2), "failed at 50%");
    EXPECT_EQ(log->nextRow, 13);
    // The table grows beyond its first ten rows and keeps one spare row below the last line.
    EXPECT_EQ(log->rowCount(), 14);
    EXPECT_NE(log->item(13, 0), nullptr);
    EXPECT_TRUE(cell(13, 0).isEmpty());
    const QDateTime stamped = QDateTime::fromString(cell(0, 0), "yyyy-MM-dd hh:mm:ss.zzz");
    ASSERT_TRUE(stamped.isValid()) << cell(0, 0).toStdString();
    // Stamped when written on the interface thread, not when queued.
    EXPECT_GE(stamped, before.addMSecs(-1));
    EXPECT_LE(stamped.msecsTo(QDateTime::currentDateTime()), 2000);
}

TEST_F(ProcessLog, LevelsHaveTheirWordsAndColours) {
    QStringList levels;
    EXPECT_EQ(during(
                  [&] {
                      window->addTestLog(SYS_LOG_DEBUG, "d");
                      window->addTestLog(SYS_LOG_ERROR, "e");
                      window->addTestLog(SYS_LOG_WARN, "w");
                      window->logInfo("%s=%d", "i", 3);
                  },
                  &levels),
              QStringList({"d", "e", "w", "i=3"}));
    EXPECT_EQ(levels, QStringList({"DEBUG", "ERROR", "WARN", "INFO"}));
    for (int col = 0; col < 3; ++col) {
        EXPECT_EQ(colour(1, col), QColor("#FF0000"));
        EXPECT_EQ(colour(2, col), QColor("#FFA500"));
        // Debug and info lines keep the log's own colour: no colour of their own.
        EXPECT_FALSE(log->item(0, col)->data(Qt::ForegroundRole).isValid());
        EXPECT_FALSE(log->item(3, col)->data(Qt::ForegroundRole).isValid());
    }
    EXPECT_EQ(log->item(1, 0)->textAlignment(), int(Qt::AlignCenter));
    EXPECT_EQ(log->item(1, 1)->textAlignment(), int(Qt::AlignCenter));
    EXPECT_EQ(log->item(1, 2)->textAlignment(), int(Qt::AlignLeft | Qt::AlignVCenter));

    // The log's sheet leaves the item colours alone: the rows show them on screen, and the
    // header shows the accent colour given after the log was built.
    window->resize(1000, 800);
    log->scrollToTop(); // the log follows its last line; the coloured rows are at the top
    const QImage shot = log->grab().toImage();
    int red = 0, orange = 0, accent = 0;
    for (int y = 0; y < shot.height(); ++y) {
        for (int x = 0; x < shot.width(); ++x) {
            const QColor c = shot.pixelColor(x, y);
            red += c == QColor("#FF0000");
            orange += c == QColor("#FFA500");
            accent += c == QColor("#409eff");
        }
    }
    EXPECT_GT(red, 20);
    EXPECT_GT(orange, 20);
    EXPECT_GT(accent, 1000);
}

TEST_F(ProcessLog, ClearingFromTheMenuRestartsAtRowZeroInTheDefaultColour) {
    SysMenu menu(log);
    window->fillLogMenu(&menu); // as a right click builds it
    const QList<QAction*> actions = menu.actions();
    QStringList texts;
    for (QAction* action : actions)
        texts << action->text();
    EXPECT_EQ(texts,
              QStringList({QString::fromUtf8("导出到HTML"), QString::fromUtf8("导出到CSV"),
                           QString::fromUtf8("导出选区到HTML"), QString::fromUtf8("导出选区到CSV"),
                           QString::fromUtf8("清空表格")}));
    ASSERT_EQ(actions.size(), 5);

    for (int i = 0; i < 11; ++i)
        window->logError("bad %d", i);
    QApplication::processEvents();
    ASSERT_EQ(colour(0, 2), QColor("#FF0000"));

    // How the table's clearing empties its rows is the kit's test; the log goes on at row 0.
    actions[4]->trigger();
    EXPECT_EQ(log->horizontalHeaderItem(1)->text(), "Level");
    EXPECT_EQ(during([&] { window->logInfo("fresh"); }), QStringList({"fresh"}));
    EXPECT_EQ(cell(0, 1), "INFO");
    for (int col = 0; col < 3; ++col)
        EXPECT_FALSE(log->item(0, col)->data(Qt::ForegroundRole).isValid()) << col;
    EXPECT_EQ(log->item(2, 2), nullptr);
}
