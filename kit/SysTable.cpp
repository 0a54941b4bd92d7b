#include "kit/SysTable.h"

#include "kit/SysCsvTable.h"
#include "kit/SysFileDialog.h"
#include "kit/SysHLayout.h"
#include "kit/SysHtmlTable.h"
#include "kit/SysMenu.h"
#include "kit/SysSheet.h"
#include "kit/SysStyle.h"
#include "kit/SysWidget.h"

#include <QAction>
#include <QHeaderView>
#include <QResizeEvent>
#include <QScrollBar>

#include <algorithm>
#include <utility>

namespace {

const Qt::Alignment kDefaultAlign = Qt::AlignLeft | Qt::AlignVCenter;

// Everything of the look that does not depend on a value: the white table, the light header
// strip with its separators, items without focus outline, and thin rounded scroll bars
// whose colours setScrollBarColor gives.
const char kBaseSheet[] =
    "\tQTableWidget {\t\tfont-family: '微软雅黑';\t\tbackground-color: #FFFFFF;"
    "\t\tborder: none;\t\tcolor: #000;\t}"
    "\tQTableWidget QHeaderView {\t\tfont-family: '微软雅黑';\t\tbackground-color: #f0f0f0;"
    "\t\tborder-color: #f0f0f0;\t\tborder-right: 1px solid transparent;"
    "\t\tborder-radius: .25em;\t}"
    "\tQTableWidget QHeaderView::section {\t\tfont-family: '微软雅黑';"
    "\t\tborder: 1px solid transparent;\t\tborder-right: 1px solid #f0f0f0;"
    "\t\ttext-align: left;\t\tpadding: .25em .5em;\t}"
    "\tQTableWidget::item {\t\tfont-family: '微软雅黑';\t\toutline: none;\t\tmargin: 0px;\t}"
    "\tQTableWidget QScrollBar:vertical {\t\twidth: 8px;\t\tborder-radius: 4px;"
    "\t\tpadding: 1px;\t}"
    "\tQTableWidget QScrollBar:horizontal {\t\theight: 8px;\t\tborder-radius: 4px;"
    "\t\tpadding: 1px;\t}"
    "\tQTableWidget QScrollBar::handle {\t\tborder-radius: 2px;\t}"
    "\tQTableWidget QScrollBar::handle:vertical {\t\tmin-height: 7px;\t}"
    "\tQTableWidget QScrollBar::handle:horizontal {\t\tmin-width: 7px;\t}"
    "\tQTableWidget QScrollBar::add-line, QTableWidget QScrollBar::sub-line {\t\twidth: 0px;"
    "\t\theight: 0px;\t\tborder: none;\t\tbackground: transparent;\t}"
    "\tQTableWidget QScrollBar::add-page, QTableWidget QScrollBar::sub-page {"
    "\t\twidth: 0px;\t\theight: 0px;\t\tbackground: transparent;\t}";

// Cuts the rows after the last one that holds any text.
void dropTrailingEmptyRows(QList<QStringList>& rows) {
    int last = -1;
    for (int i = 0; i < rows.size(); ++i) {
        if (std::any_of(rows[i].cbegin(), rows[i].cend(),
                        [](const QString& text) { return !text.isEmpty(); }))
            last = i;
    }
    rows.erase(rows.begin() + (last + 1), rows.end());
}

bool saveTable(SysExportTableBase&& table, const QStringList& headers,
               const QList<QStringList>& rows, const QString& path) {
    table.setHeaders(headers);
    table.setRows(rows);
    return table.save(path);
}

SysHtmlTable htmlTable(const std::string& theme) {
    SysHtmlTable table;
    table.setThemeColor(theme);
    return table;
}

} // namespace

SysTable::SysTable(QWidget* parent, QStringList headers) : QTableWidget(parent) {
    SysSheet::set(this, QString::fromUtf8(kBaseSheet));
    setFontSize(18);
    setHeaderBackgroundColor("#e0e0e0");
    setScrollBarColor("#ddd");

    verticalHeader()->setVisible(false);
    verticalHeader()->setSectionsMovable(false);
    setDragDropMode(QAbstractItemView::NoDragDrop);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    horizontalHeader()->setStretchLastSection(true);
    horizontalHeader()->setHighlightSections(false);
    setFocusPolicy(Qt::NoFocus);
    setAutoScroll(true);

    exportColor = "#409eff";
    nextRow = 0;
    setHeaders(std::move(headers));
}

void SysTable::setHeaders(QStringList headers) {
    setColumnCount(headers.size());
    for (int column = 0; column < headers.size(); ++column)
        setHorizontalHeaderItem(column, new QTableWidgetItem(headers.at(column)));
}

void SysTable::setFitContent(bool fit) {
    horizontalHeader()->setSectionResizeMode(fit ? QHeaderView::ResizeToContents
                                                 : QHeaderView::Fixed);
}

void SysTable::addRows(int n) {
    setRowCount(rowCount() + n);
}

void SysTable::ensureRow(int row) {
    if (row >= rowCount())
        setRowCount(row + 1);
}

QTableWidgetItem* SysTable::ensureItem(int row, int column) {
    ensureRow(row);
    QTableWidgetItem* cell = item(row, column);
    if (!cell) {
        cell = new QTableWidgetItem(QString());
        cell->setTextAlignment(columnAlign.value(column, kDefaultAlign));
        setItem(row, column, cell);
    }
    return cell;
}

void SysTable::setCellText(int row, int column, QString text) {
    ensureItem(row, column)->setText(text);
}

void SysTable::setRowTexts(int row, QStringList texts) {
    for (int column = 0; column < texts.size(); ++column)
        ensureItem(row, column)->setText(texts.at(column));
    update();
}

void SysTable::setEditable(bool editable) {
    setEditTriggers(editable ? QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed
                             : QAbstractItemView::NoEditTriggers);
}

void SysTable::setColumnAlign(int column, Qt::Alignment align) {
    columnAlign.insert(column, align);
}

void SysTable::scrollToRow(int row) {
    ensureItem(row, 0);
    scrollToItem(ensureItem(row + 1, 0));
}

void SysTable::setCellWidget(int row, int column, QWidget* w) {
    SysSheet::move(w, [&] { QTableWidget::setCellWidget(row, column, w); });
}

void SysTable::setCellWidgetBox(int row, int column, QWidget* w, Qt::Alignment align) {
    auto* box = new SysWidget();
    auto* layout = new SysHLayout(box);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(w, 0, align);
    setCellWidget(row, column, box);
}

void SysTable::setRowBackground(int row, QColor color) {
    forEachRowItem(row, [&color](QTableWidgetItem* cell, int) { cell->setBackground(color); });
}

void SysTable::forEachRowItem(int row, std::function<void(QTableWidgetItem*, int column)> fn) {
    for (int column = 0; column < columnCount(); ++column)
        fn(ensureItem(row, column), column);
}

void SysTable::clearRows() {
    clearContents();
    nextRow = 0;
}

QStringList SysTable::headerTextsBetween(int firstColumn, int lastColumn) const {
    QStringList texts;
    for (int column = firstColumn; column <= lastColumn; ++column) {
        const QTableWidgetItem* header = horizontalHeaderItem(column);
        texts << (header ? header->text() : QString());
    }
    return texts;
}

QStringList SysTable::rowTextsBetween(int row, int firstColumn, int lastColumn) const {
    QStringList texts;
    for (int column = firstColumn; column <= lastColumn; ++column) {
        if (const QTableWidgetItem* cell = item(row, column))
            texts << cell->text();
    }
    return texts;
}

QStringList SysTable::headerTexts() const {
    return headerTextsBetween(0, columnCount() - 1);
}

QList<QStringList> SysTable::allRowTexts() const {
    QList<QStringList> rows;
    for (int row = 0; row < rowCount(); ++row)
        rows << rowTextsBetween(row, 0, columnCount() - 1);
    dropTrailingEmptyRows(rows);
    return rows;
}

QStringList SysTable::selectionHeaderTexts() const {
    int left = 0;
    int right = -1;
    for (const QTableWidgetSelectionRange& range : selectedRanges()) {
        left = std::max(left, range.leftColumn());
        right = std::max(right, range.rightColumn());
    }
    return headerTextsBetween(left, right);
}

QList<QStringList> SysTable::selectionRowTexts() const {
    QList<QStringList> rows;
    for (const QTableWidgetSelectionRange& range : selectedRanges()) {
        QList<QStringList> rangeRows;
        for (int row = range.topRow(); row <= range.bottomRow(); ++row)
            rangeRows << rowTextsBetween(row, range.leftColumn(), range.rightColumn());
        dropTrailingEmptyRows(rangeRows);
        rows << rangeRows;
    }
    return rows;
}

bool SysTable::exportAllHtml(QString path) {
    return saveTable(htmlTable(exportColor), headerTexts(), allRowTexts(), path);
}

bool SysTable::exportAllCsv(QString path) {
    return saveTable(SysCsvTable(), headerTexts(), allRowTexts(), path);
}

bool SysTable::exportSelectionHtml(QString path) {
    return saveTable(htmlTable(exportColor), selectionHeaderTexts(), selectionRowTexts(), path);
}

bool SysTable::exportSelectionCsv(QString path) {
    return saveTable(SysCsvTable(), selectionHeaderTexts(), selectionRowTexts(), path);
}

void SysTable::saveAllHtml() {
    const QString path = SysFileDialog::getSaveFileName(this, QString(), QStringLiteral("."),
                                                        QStringLiteral("*.html"));
    if (!path.isEmpty())
        exportAllHtml(path);
}

void SysTable::saveAllCsv() {
    const QString path = SysFileDialog::getSaveFileName(this, QString(), QStringLiteral("."),
                                                        QStringLiteral("*.csv"));
    if (!path.isEmpty())
        exportAllCsv(path);
}

void SysTable::saveSelectionHtml() {
    const QString path = SysFileDialog::getSaveFileName(this, QString(), QStringLiteral("."),
                                                        QStringLiteral("*.html"));
    if (!path.isEmpty())
        exportSelectionHtml(path);
}

void SysTable::saveSelectionCsv() {
    const QString path = SysFileDialog::getSaveFileName(this, QString(), QStringLiteral("."),
                                                        QStringLiteral("*.csv"));
    if (!path.isEmpty())
        exportSelectionCsv(path);
}

void SysTable::setRowWidgetMaker(std::function<void(int row)> make) {
    rowMaker_ = std::move(make);
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this, &SysTable::makeVisibleRows,
            Qt::UniqueConnection);
    makeVisibleRows();
}

void SysTable::makeRowWidgets(int row) {
    if (!rowMaker_ || row < 0 || row >= rowCount() || madeRows_.contains(row))
        return;
    madeRows_.insert(row);
    rowMaker_(row);
}

void SysTable::makeVisibleRows() {
    if (!rowMaker_ || !isVisible())
        return;
    const int first = std::max(rowAt(0), 0);
    int last = rowAt(viewport()->height() - 1);
    if (last < 0)
        last = rowCount() - 1;
    for (int row = first; row <= last; ++row)
        makeRowWidgets(row);
}

void SysTable::showEvent(QShowEvent* event) {
    QTableWidget::showEvent(event);
    makeVisibleRows();
}

void SysTable::resizeEvent(QResizeEvent* event) {
    if (!flexColumns.isEmpty()) {
        int used = 0;
        for (int column = 0; column < columnCount(); ++column) {
            if (!flexColumns.contains(column))
                used += columnWidth(column) + 1;
        }
        if (horizontalScrollBar()->isVisible())
            used += horizontalScrollBar()->height();
        // A vertical scroll bar takes its width from the columns too; left out, the columns
        // would overflow by that much, call up the horizontal bar, shrink under it, send it
        // away again and never come to rest.
        if (verticalScrollBar()->isVisible())
            used += verticalScrollBar()->width();
        const QMargins margins = contentsMargins();
        used += margins.left() + margins.right();
        const int share = (width() - used) / flexColumns.size();
        for (int column : flexColumns)
            setColumnWidth(column, share);
    }
    QTableWidget::resizeEvent(event);
    makeVisibleRows();
}

void SysTable::appendStyle(const QString& fragment) {
    SysSheet::append(this, fragment);
}

void SysTable::setHeaderBackgroundColor(std::string color) {
    headerBackgroundColor = color;
    appendStyle(QString::asprintf(
        "\tQTableWidget QHeaderView::section {\t\tbackground-color: %s;\t}", color.c_str()));
}

void SysTable::setHeaderTextColor(std::string color) {
    headerTextColor = color;
    appendStyle(
        QString::asprintf("\tQTableWidget QHeaderView::section {\t\tcolor: %s;\t}", color.c_str()));
}

void SysTable::setSelectionBackgroundColor(std::string color) {
    selectionBackgroundColor = color;
    appendStyle(QString::asprintf("\tQTableWidget::item::selected {\t\tbackground-color: %s;\t}",
                                  color.c_str()));
}

void SysTable::setSelectionTextColor(std::string color) {
    selectionTextColor = color;
    appendStyle(
        QString::asprintf("\tQTableWidget::item::selected {\t\tcolor: %s;\t}", color.c_str()));
}

void SysTable::setAllTextColor(std::string color) {
    appendStyle(QString::asprintf("\tQTableWidget QHeaderView::section {\t\tcolor: %s;\t}"
                                  "\tQTableWidget::item {\t\tcolor: %s;\t}",
                                  color.c_str(), color.c_str()));
}

void SysTable::setFontSize(int px) {
    appendStyle(QString::asprintf("\tQTableWidget {\t\tfont-size: %dpx;\t}"
                                  "\tQTableWidget QHeaderView::section {\t\tfont-size: %dpx;\t}"
                                  "\tQTableWidget::item {\t\tfont-size: %dpx;\t}",
                                  px, px, px));
}

void SysTable::setHeaderVerticalPadding(float em) {
    appendStyle(QString::asprintf("\tQTableWidget QHeaderView::section {\t\tpadding-top: %.2fem;"
                                  "\t\tpadding-bottom: %.2fem;\t}",
                                  em, em));
}

void SysTable::setItemVerticalPadding(float em) {
    appendStyle(QString::asprintf("\tQTableWidget::item {\t\tpadding-top: %.2fem;"
                                  "\t\tpadding-bottom: %.2fem;\t}",
                                  em, em));
}

void SysTable::setGridColor(std::string color) {
    appendStyle(QString::asprintf("\tQTableWidget {\t\tgridline-color: %s;\t}", color.c_str()));
}

void SysTable::setScrollBarColor(std::string color) {
    appendStyle(sysScrollBarRules("QTableWidget", color));
}

void sysAddTableMenu(SysTable* table, SysMenu* menu, bool withClear, QString allHtmlText,
                     QString allCsvText, QString selectionHtmlText, QString selectionCsvText,
                     QString clearText) {
    QObject::connect(menu->addAction(allHtmlText), &QAction::triggered, table,
                     &SysTable::saveAllHtml);
    QObject::connect(menu->addAction(allCsvText), &QAction::triggered, table,
                     &SysTable::saveAllCsv);
    QObject::connect(menu->addAction(selectionHtmlText), &QAction::triggered, table,
                     &SysTable::saveSelectionHtml);
    QObject::connect(menu->addAction(selectionCsvText), &QAction::triggered, table,
                     &SysTable::saveSelectionCsv);
    if (withClear)
        QObject::connect(menu->addAction(clearText), &QAction::triggered, table,
                         &SysTable::clearRows);
}
