#include "kit/SysAttrList.h"

#include <QHeaderView>

SysAttrList::SysAttrList(QWidget* parent) : SysTable(parent, QStringList()) {
    horizontalHeader()->setVisible(false);
    setColumnCount(2);
    setEditable(false);
    horizontalHeader()->setDefaultAlignment(Qt::AlignRight);
    autoHeight = true;
}

// Adds a row at the end; with autoHeight the list becomes that row's height taller.
int SysAttrList::appendRow() {
    const int row = rowCount();
    setRowCount(row + 1);
    if (autoHeight)
        setFixedHeight(height() + rowHeight(row));
    return row;
}

void SysAttrList::addNameItem(int row, const QString& name) {
    auto* cell = new QTableWidgetItem(name);
    cell->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    setItem(row, 0, cell);
}

void SysAttrList::addAttr(QString name, QString value) {
    const int row = appendRow();
    addNameItem(row, name);
    setCellText(row, 1, value);
}

void SysAttrList::addAttrWidget(QString name, QWidget* w) {
    const int row = appendRow();
    addNameItem(row, name);
    setCellWidget(row, 1, w);
}

void SysAttrList::addWidgets(QWidget* left, QWidget* right) {
    const int row = appendRow();
    setCellWidget(row, 0, left);
    setCellWidget(row, 1, right);
}

void SysAttrList::hideAttr(int row) {
    hideRow(row);
}
