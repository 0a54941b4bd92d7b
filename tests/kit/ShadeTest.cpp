#include "kit/SysDialog.h"
#include "kit/SysHLayout.h"
#include "kit/SysSplitter.h"
#include "kit/SysStyle.h"
#include "kit/SysVLayout.h"
#include "kit/SysWidget.h"
#include "support/QtPrinters.h"

#include <QGuiApplication>
#include <QLabel>
#include <QScreen>
#include <gtest/gtest.h>

#include <climits>
#include <cmath>

TEST(KitShade, LightenAndDarkenGiveExactLowerCaseBytes) {
    EXPECT_EQ(sysLighten("#409eff", 0.25f), "#70b6ff");
    EXPECT_EQ(sysLighten("#409eff", 0.75f), "#cfe7ff");
    // 95.5 and 48.5 round away from zero.
    EXPECT_EQ(sysLighten("#409eff", 0.5f), "#a0cfff");
    // 118.5 rounds up to 0x77; 191.25 down to 0xbf.
    EXPECT_EQ(sysDarken("#409eff", 0.25f), "#3077bf");
    // Three digits are doubled; upper case comes back in lower case.
    EXPECT_EQ(sysLighten("#ddd", 0.5f), "#eeeeee");
    EXPECT_EQ(sysDarken("#FFF", 0.5f), "#808080");
    EXPECT_EQ(sysLighten("#409EFF", 0.0f), "#409eff");
    EXPECT_EQ(sysLighten("#123456", 1.0f), "#ffffff");
    EXPECT_EQ(sysDarken("#123456", 1.0f), "#000000");
    EXPECT_EQ(sysLighten("#ffffff", 0.5f), "#ffffff");
    EXPECT_EQ(sysDarken("#000000", 0.5f), "#000000");
    EXPECT_EQ(sysLighten("#000", 0.5f), "#808080");
}

TEST(KitShade, AnythingButAHashColourAndAFactorInRangeGivesEmpty) {
    for (const char* bad : {"red", "transparent", "", "#", "#12345", "#1234567", "#ggg", "#12345g",
                            "409eff", " #409eff"}) {
        EXPECT_EQ(sysLighten(bad, 0.5f), "") << bad;
        EXPECT_EQ(sysDarken(bad, 0.5f), "") << bad;
    }
    for (float factor : {1.5f, -0.1f, 1.0001f, std::nanf("")}) {
        EXPECT_EQ(sysLighten("#409eff", factor), "") << factor;
        EXPECT_EQ(sysDarken("#409eff", factor), "") << factor;
    }
}

TEST(KitRange, WalksUpAndDownIncludingBothEnds) {
    auto ms = [](int v) { return QString("%1 ms").arg(v); };
    EXPECT_EQ(sysRangeStrings(0, 3, ms, 1), QStringList({"0 ms", "1 ms", "2 ms", "3 ms"}));
    EXPECT_EQ(sysRangeStrings(3, 0, ms, -1), QStringList({"3 ms", "2 ms", "1 ms", "0 ms"}));
    EXPECT_EQ(sysRangeStrings(0, 5, ms, 2), QStringList({"0 ms", "2 ms", "4 ms"}));
    EXPECT_EQ(sysRangeStrings(5, 0, ms, -2), QStringList({"5 ms", "3 ms", "1 ms"}));
    EXPECT_TRUE(sysRangeStrings(1, 0, ms, 1).isEmpty());
    EXPECT_TRUE(sysRangeStrings(0, 1, ms, -1).isEmpty());
    EXPECT_TRUE(sysRangeStrings(0, 3, ms, 0).isEmpty());
    EXPECT_EQ(sysRangeStrings(7, 7, ms, 1), QStringList({"7 ms"}));
    // The walk ends at the int limits instead of wrapping around.
    EXPECT_EQ(sysRangeStrings(INT_MAX - 1, INT_MAX, ms, 1).size(), 2);
    EXPECT_EQ(sysRangeStrings(INT_MIN + 1, INT_MIN, ms, -1).size(), 2);
}

TEST(KitSplitter, StretchSpecSetsOnlyWellFormedPieces) {
    QWidget parent;
    QList<QWidget*> widgets;
    for (int i = 0; i < 4; ++i)
        widgets << new QLabel(QString::number(i));

    SysSplitter* splitter = sysMakeSplitter(&parent, widgets, true, "0:1;;2:3;bad;1:2:3;9:4;3:7;");
    EXPECT_EQ(splitter->parent(), &parent);
    EXPECT_EQ(splitter->orientation(), Qt::Horizontal);
    ASSERT_EQ(splitter->count(), 4);
    const int expected[4] = {1, 0, 3, 7};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(splitter->widget(i), widgets[i]);
        EXPECT_EQ(splitter->widget(i)->sizePolicy().horizontalStretch(), expected[i]) << i;
        EXPECT_EQ(splitter->widget(i)->sizePolicy().verticalStretch(), expected[i]) << i;
    }

    QList<QWidget*> more{new QLabel, new QLabel};
    SysSplitter* plain = sysMakeSplitter(&parent, more, false, "");
    EXPECT_EQ(plain->orientation(), Qt::Vertical);
    for (QWidget* w : more)
        EXPECT_EQ(w->sizePolicy().horizontalStretch(), 0);
}

TEST(KitBox, FactoriesBuildMarginlessBoxes) {
    QWidget parent;
    QList<QWidget*> widgets{new QLabel("a"), new QLabel("b")};
    const Qt::Alignment align = Qt::AlignLeft | Qt::AlignVCenter;

    SysWidget* row = sysMakeBoxWidget(&parent, widgets, true, true, align);
    EXPECT_EQ(row->parent(), &parent);
    auto* h = qobject_cast<SysHLayout*>(row->layout());
    ASSERT_NE(h, nullptr);
    EXPECT_EQ(h->contentsMargins(), QMargins(0, 0, 0, 0));
    ASSERT_EQ(h->count(), 3);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(h->itemAt(i)->widget(), widgets[i]);
        EXPECT_EQ(widgets[i]->parent(), row);
        EXPECT_EQ(h->itemAt(i)->alignment(), align);
        EXPECT_EQ(h->stretch(i), 0);
    }
    EXPECT_NE(h->itemAt(2)->spacerItem(), nullptr);
    EXPECT_EQ(h->stretch(2), 1);

    SysWidget* column = sysMakeBoxWidget(&parent, {new QLabel}, false, false, Qt::AlignTop);
    auto* v = qobject_cast<SysVLayout*>(column->layout());
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(v->count(), 1);
    EXPECT_EQ(v->itemAt(0)->alignment(), Qt::AlignTop);

    QWidget host;
    QBoxLayout* layout = sysMakeBoxLayout(&host, {new QLabel, new QLabel}, false, true);
    EXPECT_NE(qobject_cast<SysVLayout*>(layout), nullptr);
    EXPECT_EQ(host.layout(), layout);
    EXPECT_EQ(layout->contentsMargins(), QMargins(0, 0, 0, 0));
    ASSERT_EQ(layout->count(), 3);
    EXPECT_EQ(layout->itemAt(0)->alignment(), Qt::Alignment());
    EXPECT_EQ(layout->itemAt(1)->widget()->parent(), &host);
    EXPECT_EQ(layout->stretch(2), 1);
}

TEST(KitResize, RelativeSizesTruncate) {
    QWidget reference;
    reference.resize(301, 201);
    QWidget w;
    sysResizeRelative(&w, &reference, 0.5f);
    EXPECT_EQ(w.size(), QSize(150, 100));

    SysDialog dialog;
    dialog.resizeRelative(0.25f, &reference);
    EXPECT_EQ(dialog.size(), QSize(75, 50));

    const QSize screen = QGuiApplication::primaryScreen()->availableGeometry().size();
    sysResizeRelative(&w, nullptr, 0.5f);
    EXPECT_EQ(w.size(), QSize(screen.width() / 2, screen.height() / 2));
}
