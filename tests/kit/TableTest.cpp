#include "DialogAnswers.h"
#include "SheetProbe.h"
#include "support/QtPrinters.h"

#include "kit/SysAttrList.h"
#include "kit/SysCsvTable.h"
#include "kit/SysFileDialog.h"
#include "kit/SysHtmlTable.h"
#include "kit/SysMenu.h"
#include "kit/SysTable.h"

#include "support/TestFiles.h"
#include <QAction>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QHeaderView>
#include <QImage>
#include <QLabel>
#include <QLayout>
#include <QScrollBar>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <vector>

namespace {

// A table with texts in the given cells; an empty text still makes an item, and a null
// QString leaves the cell without one.
void fill(SysTable& table, const QList<QStringList>& rows) {
    for (int row = 0; row < rows.size(); ++row) {
        for (int column = 0; column < rows[row].size(); ++column) {
            if (!rows[row][column].isNull())
                table.setCellText(row, column, rows[row][column]);
        }
    }
}

const char kHtmlHead[] = "<html><head><title></title></head><body style=\"padding: 0px;margin: "
                         "0px;\"><table border=\"#409eff\" style=\"width:100%;border-collapse: "
                         "collapse; border: 1px solid #ecf5ff;\">";
const char kHtmlTail[] = "</tbody></table></body></html>";
const QByteArray kThead = "<thead><tr style=\"color: #fff;background-color: #409eff;\">";
const QByteArray kTd = "<td style=\"padding:.25rem .75rem;\">";
const QByteArray kTh = "<th style=\"padding:.25rem .75rem;\">";
const QByteArray kTint = "<tr style=\"background-color:#ecf5ff\">";

} // namespace

TEST(KitTable, ConstructionLookStyleSettersAndEditingModes) {
    SysTable table(nullptr, {"A", "B"});
    EXPECT_EQ(table.columnCount(), 2);
    EXPECT_EQ(table.horizontalHeaderItem(1)->text(), "B");
    EXPECT_EQ(table.rowCount(), 0);
    EXPECT_EQ(table.nextRow, 0);
    EXPECT_FALSE(table.verticalHeader()->isVisibleTo(&table));
    EXPECT_EQ(table.selectionBehavior(), QAbstractItemView::SelectRows);
    EXPECT_TRUE(table.horizontalHeader()->stretchLastSection());
    EXPECT_FALSE(table.horizontalHeader()->highlightSections());
    EXPECT_EQ(table.focusPolicy(), Qt::NoFocus);
    EXPECT_TRUE(table.hasAutoScroll());
    EXPECT_EQ(table.dragDropMode(), QAbstractItemView::NoDragDrop);

    EXPECT_TRUE(table.styleSheet().startsWith(QString::fromUtf8(
        "\tQTableWidget {\t\tfont-family: '微软雅黑';\t\tbackground-color: #FFFFFF;")));
    // The defaults follow the base sheet in the order the constructor gives them.
    EXPECT_TRUE(sheetEndsWith(table,
                              "\tQTableWidget {\t\tfont-size: 18px;\t}"
                              "\tQTableWidget QHeaderView::section {\t\tfont-size: 18px;\t}"
                              "\tQTableWidget::item {\t\tfont-size: 18px;\t}"
                              "\tQTableWidget QHeaderView::section {\t\tbackground-color: "
                              "#e0e0e0;\t}"
                              "\tQTableWidget QScrollBar {\t\tbackground-color: #eeeeee;"
                              "\t\tborder: 1px solid #ddd;\t}"
                              "\tQTableWidget QScrollBar:hover {\t\tborder: 1px solid #ddd;\t}"
                              "\tQTableWidget QScrollBar::handle {\t\tbackground-color: #a6a6a6;\t}"
                              "\tQTableWidget QScrollBar::handle:hover {\t\tbackground-color: "
                              "#6f6f6f;\t}"));

    EXPECT_EQ(appendedBy(table, [&] { table.setHeaderTextColor("#FFF"); }),
              "\tQTableWidget QHeaderView::section {\t\tcolor: #FFF;\t}");
    EXPECT_EQ(appendedBy(table, [&] { table.setSelectionBackgroundColor("#409eff"); }),
              "\tQTableWidget::item::selected {\t\tbackground-color: #409eff;\t}");
    EXPECT_EQ(appendedBy(table, [&] { table.setSelectionTextColor("#fff"); }),
              "\tQTableWidget::item::selected {\t\tcolor: #fff;\t}");
    EXPECT_EQ(appendedBy(table, [&] { table.setAllTextColor("#333"); }),
              "\tQTableWidget QHeaderView::section {\t\tcolor: #333;\t}"
              "\tQTableWidget::item {\t\tcolor: #333;\t}");
    EXPECT_EQ(appendedBy(table, [&] { table.setHeaderVerticalPadding(0.25f); }),
              "\tQTableWidget QHeaderView::section {\t\tpadding-top: 0.25em;"
              "\t\tpadding-bottom: 0.25em;\t}");
    EXPECT_EQ(appendedBy(table, [&] { table.setItemVerticalPadding(0.125f); }),
              "\tQTableWidget::item {\t\tpadding-top: 0.13em;\t\tpadding-bottom: 0.13em;\t}");

    table.setEditable(true);
    EXPECT_EQ(table.editTriggers(),
              QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);
    table.setEditable(false);
    EXPECT_EQ(table.editTriggers(), QAbstractItemView::NoEditTriggers);
    table.setFitContent(true);
    EXPECT_EQ(table.horizontalHeader()->sectionResizeMode(0), QHeaderView::ResizeToContents);
    table.setFitContent(false);
    EXPECT_EQ(table.horizontalHeader()->sectionResizeMode(0), QHeaderView::Fixed);
}

// Rules appended after construction must reach the header, which the table's sheet styles.
TEST(KitTable, LaterHeaderRulesReachTheScreen) {
    SysTable table(nullptr, {"A", "B"});
    table.setHeaderBackgroundColor("#409eff");
    table.resize(300, 120);
    const QImage header = table.horizontalHeader()->grab().toImage();
    ASSERT_FALSE(header.isNull());
    int accent = 0;
    for (int y = 0; y < header.height(); ++y) {
        for (int x = 0; x < header.width(); ++x)
            accent += header.pixelColor(x, y) == QColor("#409eff");
    }
    // Most of the strip, not counting the separators and the text.
    EXPECT_GT(accent, header.width() * header.height() / 2);
}

TEST(KitTable, RowsAndItemsAreMadeOnDemand) {
    SysTable table(nullptr, {"A", "B", "C"});
    table.setColumnAlign(1, Qt::AlignCenter);

    // Writing beyond the end grows the table; the rows between stay without items.
    table.setCellText(4, 1, "x");
    EXPECT_EQ(table.rowCount(), 5);
    EXPECT_EQ(table.item(4, 1)->text(), "x");
    EXPECT_EQ(table.item(4, 1)->textAlignment(), int(Qt::AlignCenter));
    for (int row = 0; row < 4; ++row)
        EXPECT_EQ(table.item(row, 1), nullptr) << row;

    table.ensureRow(2);
    EXPECT_EQ(table.rowCount(), 5); // never shrinks
    table.ensureRow(5);
    EXPECT_EQ(table.rowCount(), 6);
    table.addRows(3);
    EXPECT_EQ(table.rowCount(), 9);

    // A new alignment reaches new items only.
    table.setColumnAlign(1, Qt::AlignRight | Qt::AlignTop);
    table.setRowTexts(0, {"a", "b"});
    EXPECT_EQ(table.item(0, 0)->textAlignment(), int(Qt::AlignLeft | Qt::AlignVCenter));
    EXPECT_EQ(table.item(0, 1)->textAlignment(), int(Qt::AlignRight | Qt::AlignTop));
    EXPECT_EQ(table.item(4, 1)->textAlignment(), int(Qt::AlignCenter));
    EXPECT_EQ(table.item(0, 2), nullptr);

    std::vector<int> visited;
    table.forEachRowItem(1, [&](QTableWidgetItem* cell, int column) {
        ASSERT_NE(cell, nullptr);
        EXPECT_EQ(cell, table.item(1, column));
        visited.push_back(column);
    });
    EXPECT_EQ(visited, (std::vector<int>{0, 1, 2}));
    table.setRowBackground(2, QColor("#123456"));
    for (int column = 0; column < 3; ++column)
        EXPECT_EQ(table.item(2, column)->background().color(), QColor("#123456"));

    // Scrolling to a row keeps the one after it in view, making it when needed.
    table.scrollToRow(10);
    EXPECT_EQ(table.rowCount(), 12);
    EXPECT_NE(table.item(10, 0), nullptr);
    EXPECT_NE(table.item(11, 0), nullptr);

    auto* label = new QLabel("w");
    table.setCellWidgetBox(3, 2, label, Qt::AlignRight);
    QWidget* box = table.cellWidget(3, 2);
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->metaObject()->className(), QByteArray("SysWidget"));
    EXPECT_EQ(label->parentWidget(), box);
    ASSERT_NE(box->layout(), nullptr);
    EXPECT_EQ(box->layout()->contentsMargins(), QMargins());
    EXPECT_EQ(box->layout()->itemAt(0)->alignment(), Qt::AlignRight);

    table.nextRow = 7;
    table.clearRows();
    EXPECT_EQ(table.nextRow, 0);
    EXPECT_EQ(table.rowCount(), 12);
    EXPECT_EQ(table.columnCount(), 3);
    EXPECT_EQ(table.horizontalHeaderItem(2)->text(), "C");
    EXPECT_EQ(table.item(4, 1), nullptr);
    EXPECT_EQ(table.item(0, 0), nullptr);
}

TEST(KitTable, CsvExportWritesCellsAsTheyStand) {
    QTemporaryDir dir;
    SysTable table(nullptr, {QString::fromUtf8("时间"), "B", "C"});
    // Row 1 has an item only in its third column; rows 3 and 4 hold nothing but empty items
    // and are cut with the rest of the empty tail.
    fill(table, {{"a,b", "2", QString::fromUtf8("三")},
                 {QString(), QString(), "only"},
                 {"", "", ""},
                 {"x", QString(), ""},
                 {"", ""},
                 {""}});
    table.setRowCount(8);
    const QString path = dir.filePath("all.csv");
    ASSERT_TRUE(table.exportAllCsv(path));
    EXPECT_EQ(readFile(path), QString::fromUtf8("时间,B,C\n"
                                                "a,b,2,三\n"
                                                "only\n"
                                                ",,\n"
                                                "x,\n")
                                  .toLocal8Bit());
    // The comma in the first cell makes a fourth column for whoever reads the file.
    EXPECT_EQ(readFile(path).split('\n').at(1).split(',').size(), 4);

    // A second export replaces the first.
    table.clearRows();
    ASSERT_TRUE(table.exportAllCsv(path));
    EXPECT_EQ(readFile(path), QString::fromUtf8("时间,B,C\n").toLocal8Bit());

    SysCsvTable bare;
    bare.addRow({"1", "2"});
    ASSERT_TRUE(bare.save(dir.filePath("bare.csv")));
    EXPECT_EQ(readFile(dir.filePath("bare.csv")), QByteArray("\n1,2\n"));

    // A file in a missing folder cannot be opened: nothing is written, nothing is made.
    const QString lost = dir.filePath("missing/all.csv");
    EXPECT_FALSE(table.exportAllCsv(lost));
    EXPECT_FALSE(QFile::exists(lost));
    EXPECT_FALSE(QDir(dir.filePath("missing")).exists());
}

TEST(KitTable, HtmlExportTintsOddRowsAndKeepsMarkup) {
    QTemporaryDir dir;
    SysTable table(nullptr, {"N", QString::fromUtf8("值")});
    fill(table, {{"0", "<b>bold</b>"}, {"1", QString::fromUtf8("一")}, {"2", "two"}});
    const QString path = dir.filePath("all.html");
    ASSERT_TRUE(table.exportAllHtml(path));
    EXPECT_EQ(readFile(path),
              kHtmlHead + kThead + kTh + "N</th>" + kTh + QString::fromUtf8("值").toLocal8Bit() +
                  "</th></tr></thead><tbody><tr>" + kTd + "0</td>" + kTd + "<b>bold</b></td></tr>" +
                  kTint + kTd + "1</td>" + kTd + QString::fromUtf8("一").toLocal8Bit() +
                  "</td></tr><tr>" + kTd + "2</td>" + kTd + "two</td></tr>" + kHtmlTail);

    // A row without items is left out, but its index still counts for the tint; the theme
    // is the table's export colour.
    SysTable gaps(nullptr, {"N"});
    gaps.exportColor = "#000";
    fill(gaps, {{"a"}, {QString()}, {"c"}, {"d"}});
    ASSERT_TRUE(gaps.exportAllHtml(path));
    EXPECT_EQ(readFile(path),
              QByteArray("<html><head><title></title></head><body style=\"padding: 0px;margin: "
                         "0px;\"><table border=\"#000\" style=\"width:100%;border-collapse: "
                         "collapse; border: 1px solid #e6e6e6;\"><thead><tr style=\"color: "
                         "#fff;background-color: #000;\">") +
                  kTh + "N</th></tr></thead><tbody><tr>" + kTd + "a</td></tr><tr>" + kTd +
                  "c</td></tr><tr style=\"background-color:#e6e6e6\">" + kTd + "d</td></tr>" +
                  kHtmlTail);

    // No header and no rows: no head section and an empty body.
    SysHtmlTable empty;
    ASSERT_TRUE(empty.save(path));
    EXPECT_EQ(readFile(path), QByteArray(kHtmlHead) + "<tbody>" + kHtmlTail);
    EXPECT_FALSE(empty.save(dir.filePath("missing/x.html")));
    EXPECT_FALSE(QFile::exists(dir.filePath("missing/x.html")));
}

TEST(KitTable, SelectionExportTakesEachRangeAndTheLastHeaders) {
    QTemporaryDir dir;
    SysTable table(nullptr, {"h0", "h1", "h2", "h3", "h4"});
    fill(table, {{"a0", "a1", "a2", "a3", "a4"},
                 {"b0", "b1", QString(), "b3", "b4"},
                 {"c0", "", "", "c3", ""},
                 {"d0", "", "", "", ""}});
    table.setRangeSelected(QTableWidgetSelectionRange(0, 1, 3, 2), true);
    table.setRangeSelected(QTableWidgetSelectionRange(1, 3, 3, 4), true);
    ASSERT_EQ(table.selectedRanges().size(), 2);

    const QString csv = dir.filePath("sel.csv");
    ASSERT_TRUE(table.exportSelectionCsv(csv));
    // First range: a1 a2, b1 (no item at b2), then the empty tail cut; second range: b3 b4,
    // c3 and an empty cell, and row 3 cut.
    EXPECT_EQ(readFile(csv), QByteArray("h3,h4\na1,a2\nb1\nb3,b4\nc3,\n"));

    const QString html = dir.filePath("sel.html");
    ASSERT_TRUE(table.exportSelectionHtml(html));
    EXPECT_EQ(readFile(html), kHtmlHead + kThead + kTh + "h3</th>" + kTh +
                                  "h4</th></tr></thead><tbody><tr>" + kTd + "a1</td>" + kTd +
                                  "a2</td></tr>" + kTint + kTd + "b1</td></tr><tr>" + kTd +
                                  "b3</td>" + kTd + "b4</td></tr>" + kTint + kTd + "c3</td>" + kTd +
                                  "</td></tr>" + kHtmlTail);

    // Nothing selected: neither headers nor rows.
    table.clearSelection();
    ASSERT_TRUE(table.exportSelectionCsv(csv));
    EXPECT_EQ(readFile(csv), QByteArray("\n"));
}

TEST(KitTable, ContextMenuSavesAskForAFileAndClearEmpties) {
    QTemporaryDir dir;
    SysTable table(nullptr, {"A"});
    fill(table, {{"1"}, {"2"}});
    table.nextRow = 2;
    table.selectRow(0);

    SysMenu menu(&table);
    sysAddTableMenu(&table, &menu, true, "all html", "all csv", "sel html", "sel csv", "clear");
    const QList<QAction*> actions = menu.actions();
    QStringList texts;
    for (QAction* action : actions)
        texts << action->text();
    EXPECT_EQ(texts, QStringList({"all html", "all csv", "sel html", "sel csv", "clear"}));
    ASSERT_EQ(actions.size(), 5);

    {
        DialogAnswers user({dir.filePath("1.html"), dir.filePath("2.csv"), dir.filePath("3.html"),
                            dir.filePath("4.csv")});
        for (int i = 0; i < 4; ++i)
            actions[i]->trigger();
        ASSERT_EQ(user.asked.size(), 4u);
        const char* filters[] = {"*.html", "*.csv", "*.html", "*.csv"};
        for (int i = 0; i < 4; ++i) {
            EXPECT_EQ(user.asked[i].kind, SysFileDialog::SaveFile);
            EXPECT_TRUE(user.asked[i].caption.isEmpty());
            EXPECT_EQ(user.asked[i].dir, ".");
            EXPECT_EQ(user.asked[i].filter, filters[i]);
        }
    }
    EXPECT_EQ(readFile(dir.filePath("2.csv")), QByteArray("A\n1\n2\n"));
    EXPECT_EQ(readFile(dir.filePath("4.csv")), QByteArray("A\n1\n"));
    EXPECT_TRUE(readFile(dir.filePath("1.html")).contains("2</td>"));
    EXPECT_FALSE(readFile(dir.filePath("3.html")).contains("2</td>"));
    EXPECT_TRUE(readFile(dir.filePath("3.html")).contains("1</td>"));

    // A cancel leaves everything as it was, also in the folder the dialog starts in.
    QTemporaryDir quiet;
    const QString home = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(quiet.path()));
    {
        DialogAnswers user;
        for (int i = 0; i < 4; ++i)
            actions[i]->trigger();
        EXPECT_EQ(user.asked.size(), 4u);
    }
    QDir::setCurrent(home);
    EXPECT_TRUE(QDir(quiet.path()).isEmpty());
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files).size(), 4);
    EXPECT_EQ(readFile(dir.filePath("2.csv")), QByteArray("A\n1\n2\n"));

    actions[4]->trigger();
    EXPECT_EQ(table.item(0, 0), nullptr);
    EXPECT_EQ(table.nextRow, 0);
    EXPECT_EQ(table.rowCount(), 2);

    SysMenu noClear(&table);
    sysAddTableMenu(&table, &noClear, false, "a", "b", "c", "d", "clear");
    texts.clear();
    for (QAction* action : noClear.actions())
        texts << action->text();
    EXPECT_EQ(texts, QStringList({"a", "b", "c", "d"}));
}

TEST(KitTable, FlexColumnsShareTheWidthLeftOver) {
    SysTable table(nullptr, {"fixed", "flex1", "fixed2", "flex2"});
    table.horizontalHeader()->setStretchLastSection(false);
    table.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    table.setColumnWidth(0, 100);
    table.setColumnWidth(2, 50);
    table.flexColumns = {1, 3};
    table.show();
    table.resize(600, 300);
    QApplication::processEvents();
    // Each fixed column counts one pixel of grid line beside its width.
    const QMargins margins = table.contentsMargins();
    const int share = (600 - (101 + 51) - margins.left() - margins.right()) / 2;
    EXPECT_EQ(table.columnWidth(1), share);
    EXPECT_EQ(table.columnWidth(3), share);
    EXPECT_EQ(table.columnWidth(0), 100);
    EXPECT_EQ(table.columnWidth(2), 50);

    // A shown horizontal scroll bar takes its height off the share, odd pixels are dropped.
    table.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    table.resize(641, 300);
    QApplication::processEvents();
    ASSERT_TRUE(table.horizontalScrollBar()->isVisible());
    const int barShare = (641 - (101 + 51) - table.horizontalScrollBar()->height() -
                          margins.left() - margins.right()) /
                         2;
    EXPECT_EQ(table.columnWidth(1), barShare);
    EXPECT_EQ(table.columnWidth(3), barShare);

    // A vertical scroll bar takes its width off the share too, so the columns fit the view
    // and no horizontal bar comes and goes.
    table.setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    table.ensureRow(99);
    table.resize(600, 300);
    QApplication::processEvents();
    ASSERT_TRUE(table.verticalScrollBar()->isVisible());
    EXPECT_FALSE(table.horizontalScrollBar()->isVisible());
    EXPECT_LE(table.horizontalHeader()->length(), table.viewport()->width());

    // Without flex columns a resize leaves the widths alone.
    table.flexColumns.clear();
    table.setColumnWidth(1, 40);
    table.resize(700, 300);
    QApplication::processEvents();
    EXPECT_EQ(table.columnWidth(1), 40);
}

TEST(KitAttrList, RowsOfNamesAndValuesGrowTheHeight) {
    SysAttrList list;
    EXPECT_TRUE(list.autoHeight);

    const int start = list.height();
    list.addAttr("Name", "value");
    EXPECT_EQ(list.rowCount(), 1);
    EXPECT_EQ(list.item(0, 0)->text(), "Name");
    EXPECT_EQ(list.item(0, 0)->textAlignment(), int(Qt::AlignRight | Qt::AlignVCenter));
    EXPECT_EQ(list.item(0, 1)->text(), "value");
    const int afterOne = start + list.rowHeight(0);
    EXPECT_EQ(list.height(), afterOne);
    EXPECT_EQ(list.minimumHeight(), afterOne);
    EXPECT_EQ(list.maximumHeight(), afterOne);

    auto* value = new QLabel("w");
    list.addAttrWidget("Widget", value);
    EXPECT_EQ(list.item(1, 0)->text(), "Widget");
    EXPECT_EQ(list.cellWidget(1, 1), value);
    auto* left = new QLabel("l");
    auto* right = new QLabel("r");
    list.addWidgets(left, right);
    EXPECT_EQ(list.cellWidget(2, 0), left);
    EXPECT_EQ(list.cellWidget(2, 1), right);
    EXPECT_EQ(list.height(), afterOne + list.rowHeight(1) + list.rowHeight(2));

    list.hideAttr(1);
    EXPECT_TRUE(list.isRowHidden(1));
    EXPECT_FALSE(list.isRowHidden(2));

    list.autoHeight = false;
    const int fixed = list.height();
    list.addAttr("More", "rows");
    EXPECT_EQ(list.height(), fixed);
}
