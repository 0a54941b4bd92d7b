#include "shell/PluginEntry.h"
#include "kit/SysGroupBox.h"
#include "kit/SysSplitter.h"
#include "kit/SysTab.h"
#include "pages/BlendWindow.h"
#include "pages/CRUDWindow.h"
#include "pages/CmdWindow.h"
#include "pages/DownloadWindow.h"
#include "shell/MainWindow.h"
#include "support/HostWords.h"

#include <gtest/gtest.h>

#include <QProgressBar>
#include <QRegularExpression>
#include <QStatusBar>

TEST(PluginEntry, CreateGivesOneObjectUntilRelease) {
    Release(); // with no object: nothing
    PluginUIBase* first = Create();
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(Create(), first);
    EXPECT_EQ(MainWindow::instance(), first);
    EXPECT_EQ(first->textService(), nullptr);
    EXPECT_FALSE(first->queryFlag());

    HostWords words;
    first->setTextService(&words);
    Release();
    Release();
    PluginUIBase* second = Create();
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->textService(), nullptr); // a new object, not the old one with its service
    Release();
}

TEST(PluginEntry, InitBuildsFourPagesAboveTheProcessLog) {
    HostWords words;
    PluginUIBase* window = Create();
    window->setTextService(&words);
    window->init();

    EXPECT_EQ(window->pluginTitle(), "Bramble");
    auto* splitter = qobject_cast<SysSplitter*>(window->centralWidget());
    ASSERT_NE(splitter, nullptr);
    EXPECT_EQ(splitter->orientation(), Qt::Vertical);
    ASSERT_EQ(splitter->count(), 2);

    auto* tabs = qobject_cast<SysTab*>(splitter->widget(0));
    ASSERT_NE(tabs, nullptr);
    ASSERT_EQ(tabs->count(), 4);
    EXPECT_EQ(tabs->tabText(0), "Download");
    EXPECT_EQ(tabs->tabText(1), "Flash");
    EXPECT_EQ(tabs->tabText(2), "Commands");
    EXPECT_EQ(tabs->tabText(3), "NV Blend");
    EXPECT_NE(qobject_cast<DownloadWindow*>(tabs->widget(0)), nullptr);
    EXPECT_NE(qobject_cast<CRUDWindow*>(tabs->widget(1)), nullptr);
    EXPECT_NE(qobject_cast<CmdWindow*>(tabs->widget(2)), nullptr);
    EXPECT_NE(qobject_cast<BlendWindow*>(tabs->widget(3)), nullptr);

    auto* log = qobject_cast<SysGroupBox*>(splitter->widget(1));
    ASSERT_NE(log, nullptr);
    EXPECT_EQ(log->title(), "Process Log");

    // The status bar stays hidden; its one-pixel bar is there but never driven.
    window->show();
    EXPECT_TRUE(window->statusBar()->isHidden());
    auto* bar = window->statusBar()->findChild<QProgressBar*>();
    ASSERT_NE(bar, nullptr);
    EXPECT_FALSE(bar->isTextVisible());
    EXPECT_TRUE(window->styleSheet().contains(
        QRegularExpression("QMainWindow QStatusBar::item\\s*\\{\\s*border:\\s*0px")))
        << window->styleSheet().toStdString();
    Release();
}

TEST(PluginEntry, VersionHistoryAsksEveryKeyOldestFirst) {
    EchoWords words;
    PluginUIBase* window = Create();
    window->setTextService(&words);
    const QString html = window->versionLog();
    Release();

    EXPECT_EQ(html.count("<p class=\"versionLog\">"), 36);
    EXPECT_EQ(html.count("</p>"), 36);
    EXPECT_EQ(html.count("<li class=\"versionLogContentItem\">"), 62);
    EXPECT_TRUE(
        html.startsWith("<p class=\"versionLog\"><span class=\"versionTitle\">version/v_1_0"
                        "</span><ol class=\"versionLogContent\"><li "
                        "class=\"versionLogContentItem\">version/v_1_0/log_1;</li></ol></p>"));
    EXPECT_TRUE(html.endsWith(
        "<span class=\"versionTitle\">version/v_1_7_7</span><ol class=\"versionLogContent\">"
        "<li class=\"versionLogContentItem\">version/v_1_7_7/log_1;</li>"
        "<li class=\"versionLogContentItem\">version/v_1_7_7/log_2;</li>"
        "<li class=\"versionLogContentItem\">version/v_1_7_7/log_3;</li></ol></p>"));
    // Every title and line is inserted as the service gives it, without escaping.
    EXPECT_LT(html.indexOf("version/v_1_5_9<"), html.indexOf("version/v_1_5_10<"));
    EXPECT_TRUE(html.contains("version/v_1_5_8/log_4;"));
    EXPECT_FALSE(html.contains("version/v_1_5_8/log_5"));
}
