#include "SheetProbe.h"

#include "kit/SysDialog.h"
#include "kit/SysGroupBox.h"
#include "kit/SysLine.h"
#include "kit/SysMainWindow.h"
#include "kit/SysProgressBar.h"
#include "kit/SysSplitter.h"
#include "kit/SysTab.h"
#include "kit/SysWidget.h"

#include <gtest/gtest.h>

TEST(KitWidgetStyle, DefaultsComeAfterTheBaseSheetAndLaterRulesWin) {
    SysWidget w;
    EXPECT_TRUE(w.testAttribute(Qt::WA_StyledBackground));
    EXPECT_TRUE(
        w.styleSheet().startsWith(QString::fromUtf8("\tQWidget {\t\tfont-family: '微软雅黑';")));
    EXPECT_TRUE(sheetEndsWith(w, "\tQWidget {\t\tbackground-color: transparent;\t}"
                                 "\tQWidget {\t\tfont-size: 18px;\t}"));

    EXPECT_EQ(appendedBy(w, [&] { w.setFontSize(10); }), "\tQWidget {\t\tfont-size: 10px;\t}");
    EXPECT_EQ(appendedBy(w, [&] { w.setFontSize(20); }), "\tQWidget {\t\tfont-size: 20px;\t}");
    EXPECT_TRUE(w.styleSheet().contains("font-size: 10px;"));
    w.ensurePolished();
    EXPECT_EQ(w.font().pixelSize(), 20);

    EXPECT_EQ(appendedBy(w, [&] { w.setBackgroundColor("#abc"); }),
              "\tQWidget {\t\tbackground-color: #abc;\t}");
}

TEST(KitLineStyle, LineColourReplacesTheSheetAlongTheLine) {
    SysLine line(nullptr, true);
    EXPECT_EQ(line.styleSheet().toStdString(), "border-top: 1px solid #f0f0f0;");
    EXPECT_EQ(line.frameShape(), QFrame::HLine);

    line.setStyleSheet(line.styleSheet() + "QFrame { margin: 3px; }");
    line.setHorizontal(false);
    EXPECT_EQ(line.frameShape(), QFrame::VLine);
    line.setLineColor("#123456");
    EXPECT_EQ(line.styleSheet().toStdString(), "border-left: 1px solid #123456;");
}

TEST(KitGroupBoxStyle, TitleTrimmingAndShadedBorder) {
    SysGroupBox blank(nullptr, "   ");
    EXPECT_TRUE(blank.title().isEmpty());
    EXPECT_TRUE(sheetEndsWith(blank, "\tQGroupBox {\t\tborder-radius: 0.50em;\t}"
                                     "\tQGroupBox {\t\tmargin-top: 0px;\t}"));

    SysGroupBox box(nullptr, "  Log ");
    EXPECT_EQ(box.title().toStdString(), "Log");
    EXPECT_FALSE(box.styleSheet().contains("margin-top: 0px"));
    // The default theme colour reaches the border as its light shade.
    EXPECT_TRUE(box.styleSheet().contains("\tQGroupBox {\t\tborder-color: #cfe7ff;\t}"));
    EXPECT_TRUE(sheetEndsWith(box, "\tQGroupBox {\t\tborder-color: #cfe7ff;\t}"
                                   "\tQGroupBox {\t\tfont-size: 18px;\t}"
                                   "\tQGroupBox::title {\t\tfont-size: 18px;\t}"
                                   "\tQGroupBox {\t\tbackground-color: transparent;\t}"
                                   "\tQGroupBox {\t\tborder-radius: 0.50em;\t}"));

    EXPECT_EQ(appendedBy(box, [&] { box.setBorderColor("#000"); }),
              "\tQGroupBox {\t\tborder-color: #bfbfbf;\t}");
    // A named colour cannot be shaded: the rule carries an empty value.
    EXPECT_EQ(appendedBy(box, [&] { box.setThemeColor("red"); }),
              "\tQGroupBox {\t\tborder-color: ;\t}");
    EXPECT_EQ(appendedBy(box, [&] { box.setTitleOffset(0.75f); }),
              "\tQGroupBox {\t\tmargin-top: 0.75em;\t}\tQGroupBox::title {\t\ttop: -0.75em;\t}");
    EXPECT_EQ(appendedBy(box, [&] { box.setCornerRadii(1, 2, 3, 4.25f); }),
              "\tQGroupBox {\t\tborder-top-left-radius: 1.00em;\t\tborder-top-right-radius: "
              "2.00em;\t\tborder-bottom-left-radius: 3.00em;\t\tborder-bottom-right-radius: "
              "4.25em;\t}");
    EXPECT_EQ(appendedBy(box, [&] { box.setFontWeight(700); }),
              "\tQGroupBox {\t\tfont-weight: 700;\t}\tQGroupBox::title {\t\tfont-weight: 700;\t}");
}

TEST(KitProgressBarStyle, GradientStopsRadiusAndTextFormat) {
    SysProgressBar bar;
    // The bar's radius is printed with full precision, unlike every other em value.
    EXPECT_TRUE(
        bar.styleSheet().contains("\tQProgressBar {\t\tborder-radius: 0.625000em;\t}"
                                  "\tQProgressBar::chunk {\t\tborder-radius: 0.625000em;\t}"));
    EXPECT_TRUE(sheetEndsWith(bar, "\tQProgressBar {\t\tborder-color: #409eff;\t}"
                                   "\tQProgressBar::chunk {\t\tbackground-color: #409eff;\t}"));

    EXPECT_EQ(appendedBy(bar,
                         [&] {
                             bar.setChunkGradient({"#f00", "#0f0"});
                         }),
              "QProgressBar::chunk{background:qlineargradient(spread:pad,x1:0,y1:0,x2:1,y2:0,"
              "stop: 0.00 #f00,stop: 0.50 #0f0);}");
    EXPECT_EQ(appendedBy(bar,
                         [&] {
                             bar.setChunkGradient({"#111", "#222", "#333"});
                         }),
              "QProgressBar::chunk{background:qlineargradient(spread:pad,x1:0,y1:0,x2:1,y2:0,"
              "stop: 0.00 #111,stop: 0.33 #222,stop: 0.67 #333);}");

    EXPECT_EQ(appendedBy(bar, [&] { bar.setThemeColor("#67c23a"); }),
              "\tQProgressBar {\t\tborder-color: #67c23a;\t}"
              "\tQProgressBar::chunk {\t\tbackground-color: #67c23a;\t}");

    bar.setTextFormat("done {}", 0);
    EXPECT_EQ(bar.format().toStdString(), "done %p%");
    bar.setTextFormat("{} blocks", 1);
    EXPECT_EQ(bar.format().toStdString(), "%v/%m blocks");
    bar.setTextFormat("{} left", 2);
    EXPECT_EQ(bar.format().toStdString(), "{} left");
    bar.setTextFormat("plain %p", 0);
    EXPECT_EQ(bar.format().toStdString(), "plain %p");
    bar.setRange(0, 8);
    bar.setValue(2);
    bar.setTextFormat("{}", 1);
    EXPECT_EQ(bar.text().toStdString(), "2/8");
}

TEST(KitTabStyle, ThemeShadesAndDefaultsOrder) {
    SysTab tab;
    EXPECT_TRUE(tab.styleSheet().contains("\tQTabWidget::pane {\t\tborder-color: #cfe7ff;\t}"
                                          "\tQTabWidget QTabBar::tab:hover {\t\tbackground-color: "
                                          "#cfe7ff;\t}"));
    EXPECT_TRUE(sheetEndsWith(tab, "\tQTabWidget::pane {\t\tborder-radius: 0.50em;\t}"
                                   "\tQTabWidget {\t\tfont-size: 18px;\t}"
                                   "\tQTabWidget QTabBar {\t\tfont-size: 18px;\t}"
                                   "\tQTabWidget QTabBar::tab {\t\tfont-size: 18px;\t}"));

    EXPECT_EQ(appendedBy(tab, [&] { tab.setThemeColor("#000"); }),
              "\tQTabWidget::pane {\t\tborder-color: #bfbfbf;\t}"
              "\tQTabWidget QTabBar::tab:hover {\t\tbackground-color: #bfbfbf;\t}"
              "\tQTabWidget QTabBar::tab:selected {\t\tbackground-color: #000;"
              "\t\tborder-color: #000;\t}");
    EXPECT_EQ(appendedBy(tab, [&] { tab.setTabSelectedColor("#e6a23c"); }),
              "\tQTabWidget QTabBar::tab:selected {\t\tbackground-color: #e6a23c;"
              "\t\tborder-color: #e6a23c;\t}");
}

TEST(KitWindowStyle, MainWindowDialogAndSplitterRules) {
    SysMainWindow window;
    window.setPadding(1.5f);
    // The base style throws away everything appended before it.
    window.setBaseStyle("#f0f0f0");
    EXPECT_EQ(window.styleSheet().toStdString(),
              "\tQMainWindow {\t\tfont-size: 18px;\t\tbackground-color: #f0f0f0;"
              "\t\tpadding: 0px;\t}");

    SysDialog dialog;
    EXPECT_TRUE(sheetEndsWith(dialog, "\tQDialog {\t\tfont-size: 18px;\t}"
                                      "\tQDialog {\t\tbackground-color: #FFF;\t}"));

    SysSplitter splitter;
    EXPECT_TRUE(splitter.styleSheet().contains("QSplitter::handle {\t\tbackground: transparent;"));
    EXPECT_EQ(appendedBy(splitter, [&] { splitter.setHandleWidth(4); }),
              "\tQSplitter::handle {\t\twidth: 4px;\t}");
}
