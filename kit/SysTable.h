#pragma once

#include <QColor>
#include <QList>
#include <QMap>
#include <QSet>
#include <QStringList>
#include <QTableWidget>

#include <functional>
#include <string>

class SysMenu;

// The program's grid. Rows and items are made on demand by the row and cell operations, so a
// page writes to any cell without preparing the table first. The whole table or the current
// selection can be exported to HTML or CSV.
class SysTable : public QTableWidget {
    Q_OBJECT

public:
    explicit SysTable(QWidget* parent = nullptr, QStringList headers = QStringList());

    // One column for each text, the text as its header.
    void setHeaders(QStringList headers);
    // Columns follow their contents when true, keep their widths when false.
    void setFitContent(bool fit);
    void addRows(int n);
    // Grows the table so that `row` exists; never shrinks it.
    void ensureRow(int row);
    // Makes the row and the item exist; a new item gets the column's alignment.
    QTableWidgetItem* ensureItem(int row, int column);
    void setCellText(int row, int column, QString text);
    // Texts into columns 0 up to the size of the list.
    void setRowTexts(int row, QStringList texts);
    void setEditable(bool editable);
    // Alignment of items made from now on in `column`; items that exist keep theirs.
    void setColumnAlign(int column, Qt::Alignment align);
    // Scrolls so that the row after `row`, the next to be written, is in view.
    void scrollToRow(int row);
    // QTableWidget::setCellWidget, moving the finished widget in without styling it again.
    void setCellWidget(int row, int column, QWidget* w);
    // Puts `w` into the cell inside a margin-less box, aligned by `align`.
    void setCellWidgetBox(int row, int column, QWidget* w, Qt::Alignment align);
    void setRowBackground(int row, QColor color);
    // Cell widgets made when their row first comes into view: `make(row)` puts the row's
    // widgets in with setCellWidget. A table of many rows then costs nothing for the rows no
    // one scrolls to. A row made stays made.
    void setRowWidgetMaker(std::function<void(int row)> make);
    // Makes the row's widgets now, when a maker is set and they are not made yet.
    void makeRowWidgets(int row);
    void forEachRowItem(int row, std::function<void(QTableWidgetItem*, int column)> fn);
    // Deletes every item but keeps the rows and the header; the next append goes to row 0.
    void clearRows();

    // Writes the whole table or the current selection. Trailing rows without text are left
    // out. False when the file cannot be opened.
    bool exportAllHtml(QString path);
    bool exportAllCsv(QString path);
    bool exportSelectionHtml(QString path);
    bool exportSelectionCsv(QString path);

    // Ask for a file to save to, then export; a cancelled dialog does nothing.
    void saveAllHtml();
    void saveAllCsv();
    void saveSelectionHtml();
    void saveSelectionCsv();

    // The text that the exports write: the header texts, and the rows cut after the last one
    // that holds any text. A cell without an item adds nothing to its row.
    QStringList headerTexts() const;
    QList<QStringList> allRowTexts() const;
    // The same for the selection: the rows of each selected range in turn, and the header
    // texts of the columns from the largest left to the largest right column of the ranges.
    QStringList selectionHeaderTexts() const;
    QList<QStringList> selectionRowTexts() const;

    void setHeaderBackgroundColor(std::string color);
    void setHeaderTextColor(std::string color);
    void setSelectionBackgroundColor(std::string color);
    void setSelectionTextColor(std::string color);
    // Text of the header sections and the items alike.
    void setAllTextColor(std::string color);
    // Table, header sections and items.
    void setFontSize(int px);
    void setHeaderVerticalPadding(float em);
    void setItemVerticalPadding(float em);
    void setGridColor(std::string color);
    void setScrollBarColor(std::string color);

    // Alignment of new items by column; other columns get left and vertically centred.
    QMap<int, Qt::Alignment> columnAlign;
    // Columns that share the width left over by the others whenever the table is resized.
    QSet<int> flexColumns;
    // The row at which a page appends next; the page advances it.
    int nextRow = 0;
    // Theme of the HTML export.
    std::string exportColor;
    std::string headerBackgroundColor;
    std::string headerTextColor;
    std::string selectionBackgroundColor;
    std::string selectionTextColor;

protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    QStringList rowTextsBetween(int row, int firstColumn, int lastColumn) const;
    QStringList headerTextsBetween(int firstColumn, int lastColumn) const;
    void appendStyle(const QString& fragment);
    void makeVisibleRows();

    std::function<void(int row)> rowMaker_;
    QSet<int> madeRows_;
};

// Fills `menu` with the table's export entries, in this order: all rows to HTML, all rows to
// CSV, the selection to HTML, the selection to CSV, and with `withClear` the entry that clears
// the table. Each text is the label of its entry.
void sysAddTableMenu(SysTable* table, SysMenu* menu, bool withClear, QString allHtmlText,
                     QString allCsvText, QString selectionHtmlText, QString selectionCsvText,
                     QString clearText);
