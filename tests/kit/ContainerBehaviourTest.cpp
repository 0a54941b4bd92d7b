#include "SheetProbe.h"

#include "kit/SysAutoLayout.h"
#include "kit/SysButton.h"
#include "kit/SysDialog.h"
#include "kit/SysHLayout.h"
#include "kit/SysMainWindow.h"
#include "kit/SysSplitter.h"
#include "kit/SysTab.h"
#include "kit/SysWidget.h"

#include <QApplication>

#include <QLabel>
#include <QPointer>
#include <QStatusBar>
#include <gtest/gtest.h>

#include <string>
#include <vector>

TEST(KitTab, ActivationHooksSeeEntryAndExitOnly) {
    SysTab tabs;
    std::vector<std::string> events;
    tabs.onTabActive(0, [&](bool on) { events.push_back(on ? "0+" : "0-"); });
    tabs.onTabActive(2, [&](bool on) { events.push_back(on ? "2+" : "2-"); });
    for (int i = 0; i < 4; ++i)
        tabs.addTab(new QWidget, QString::number(i));
    // The first tab, shown as the widget gets it, is no change.
    EXPECT_TRUE(events.empty());
    EXPECT_EQ(tabs.lastIndex, 0);

    tabs.setCurrentIndex(1);
    tabs.setCurrentIndex(2);
    tabs.setCurrentIndex(3);
    tabs.setCurrentIndex(0);
    tabs.setCurrentIndex(2);
    EXPECT_EQ(events, (std::vector<std::string>{"0-", "2+", "2-", "0+", "0-", "2+"}));
    EXPECT_EQ(tabs.lastIndex, 2);
}

TEST(KitTab, APageIsStyledAndMeasuredAtItsFirstShow) {
    SysTab tab;
    auto* first = new SysWidget;
    auto* second = new SysSplitter;
    auto* button = new SysButton(second, "later");
    second->addWidget(button);
    tab.addTab(first, "a");
    tab.addTab(second, "b");
    // Counts the styling passes that reach the page and the button from here on.
    struct Count : QObject {
        int polishes = 0;
        bool eventFilter(QObject*, QEvent* event) override {
            polishes += event->type() == QEvent::Polish;
            return false;
        }
    } onPage, onButton;
    second->installEventFilter(&onPage);
    button->installEventFilter(&onButton);
    tab.resize(400, 300);
    tab.show();
    QApplication::processEvents();
    EXPECT_TRUE(first->testAttribute(Qt::WA_WState_Polished));
    EXPECT_EQ(onPage.polishes + onButton.polishes, 0);
    EXPECT_EQ(second->minimumSizeHint(), QSize(0, 0));

    tab.setCurrentIndex(1);
    EXPECT_EQ(onPage.polishes, 1);
    EXPECT_EQ(onButton.polishes, 1);
    EXPECT_EQ(button->font().pixelSize(), 18); // the button's own sheet took
    EXPECT_GT(second->minimumSizeHint().width(), 0);
}

TEST(KitTab, TabCornersFollowTheTabPosition) {
    SysTab tabs;
    auto rule = [](const char* tl, const char* tr, const char* bl, const char* br) {
        return std::string("\tQTabWidget QTabBar::tab {\t\tborder-top-left-radius: ") + tl +
               ";\t\tborder-top-right-radius: " + tr + ";\t\tborder-bottom-left-radius: " + bl +
               ";\t\tborder-bottom-right-radius: " + br + ";\t}";
    };
    EXPECT_EQ(appendedBy(tabs, [&] { tabs.fitTabCorners(0.5f); }),
              rule("0.50em", "0.50em", "0px", "0px"));
    tabs.setTabPosition(QTabWidget::South);
    EXPECT_EQ(appendedBy(tabs, [&] { tabs.fitTabCorners(0.5f); }),
              rule("0px", "0px", "0.50em", "0.50em"));
    tabs.setTabPosition(QTabWidget::West);
    EXPECT_EQ(appendedBy(tabs, [&] { tabs.fitTabCorners(1.0f); }),
              rule("1.00em", "0px", "1.00em", "0px"));
    tabs.setTabPosition(QTabWidget::East);
    EXPECT_EQ(appendedBy(tabs, [&] { tabs.fitTabCorners(1.0f); }),
              rule("0px", "1.00em", "0px", "1.00em"));
}

TEST(KitSplitter, ClearingDeletesEveryChild) {
    SysSplitter splitter;
    splitter.clearWidgets();
    EXPECT_EQ(splitter.count(), 0);

    QList<QPointer<QWidget>> children;
    for (int i = 0; i < 3; ++i) {
        children << new QLabel(QString::number(i));
        splitter.addWidget(children.last());
    }
    splitter.clearWidgets();
    EXPECT_EQ(splitter.count(), 0);
    for (const auto& child : children)
        EXPECT_TRUE(child.isNull());

    // The splitter stays usable afterwards.
    splitter.addWidget(new QLabel);
    EXPECT_EQ(splitter.count(), 1);
}

TEST(KitAutoLayout, WidgetsFillRowsOfTheGivenSizes) {
    QWidget host;
    auto* layout = new SysAutoLayout(&host);
    EXPECT_EQ(host.layout(), layout);
    layout->setRowSizes("2:3");
    EXPECT_EQ(layout->rowSizes, (QList<int>{2, 3}));

    QList<QWidget*> first{new QLabel, new QLabel, new QLabel};
    layout->addWidgets(first, Qt::AlignLeft);
    ASSERT_EQ(layout->rows.size(), 2);
    EXPECT_EQ(layout->rows[0]->count(), 2);
    EXPECT_EQ(layout->rows[1]->count(), 1);
    EXPECT_EQ(layout->rows[1]->itemAt(0)->widget(), first[2]);
    EXPECT_EQ(layout->rows[1]->itemAt(0)->alignment(), Qt::AlignLeft);
    EXPECT_EQ(first[2]->parent(), &host);

    // Later widgets continue where the earlier ones stopped; rows past the list have the
    // last size.
    QList<QWidget*> second;
    for (int i = 0; i < 5; ++i)
        second << new QLabel;
    layout->addWidgets(second, Qt::Alignment());
    EXPECT_EQ(layout->widgets.size(), 8);
    ASSERT_EQ(layout->rows.size(), 3);
    EXPECT_EQ(layout->rows[1]->count(), 3);
    EXPECT_EQ(layout->rows[2]->count(), 3);
    EXPECT_EQ(layout->rows[2]->itemAt(2)->widget(), second[4]);
    ASSERT_EQ(layout->count(), 3);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(layout->itemAt(i)->layout(), layout->rows[i]);

    // A row of size zero stays empty; past the list a last size of zero cannot stall the
    // placement: each further widget gets a row of its own. Without sizes the same holds, as
    // in a plain vertical box.
    QWidget other;
    auto* column = new SysAutoLayout(&other);
    column->setRowSizes("1:0");
    column->addWidgets({new QLabel, new QLabel, new QLabel}, Qt::Alignment());
    ASSERT_EQ(column->rows.size(), 4);
    EXPECT_EQ(column->rows[0]->count(), 1);
    EXPECT_EQ(column->rows[1]->count(), 0);
    EXPECT_EQ(column->rows[2]->count(), 1);
    EXPECT_EQ(column->rows[3]->count(), 1);
    QWidget bare;
    auto* unsized = new SysAutoLayout(&bare);
    unsized->addWidgets({new QLabel, new QLabel}, Qt::Alignment());
    EXPECT_EQ(unsized->rows.size(), 2);
}

TEST(KitWindows, MainWindowAndDialogFrames) {
    QWidget owner;
    SysMainWindow window(&owner);
    // A parent does not turn the main window into a child widget.
    EXPECT_TRUE(window.isWindow());
    const Qt::WindowFlags flags = window.windowFlags();
    for (Qt::WindowType hint : {Qt::WindowCloseButtonHint, Qt::WindowMinimizeButtonHint,
                                Qt::WindowMaximizeButtonHint, Qt::CustomizeWindowHint})
        EXPECT_TRUE(flags.testFlag(hint)) << hint;
    EXPECT_TRUE(window.statusBar()->isHidden());
    EXPECT_FALSE(window.statusBar()->isSizeGripEnabled());

    SysDialog dialog;
    EXPECT_EQ(dialog.windowType(), Qt::Dialog);
    EXPECT_TRUE(dialog.windowFlags().testFlag(Qt::WindowMinMaxButtonsHint));
    EXPECT_TRUE(dialog.windowFlags().testFlag(Qt::WindowCloseButtonHint));
    EXPECT_TRUE(dialog.testAttribute(Qt::WA_StyledBackground));
}
