#pragma once

#include "kit/SysTable.h"

// Two-column list of names and values without a header, the names right-aligned. The list
// grows its fixed height with each row it gets, so it never scrolls.
class SysAttrList : public SysTable {
    Q_OBJECT

public:
    explicit SysAttrList(QWidget* parent = nullptr);

    void addAttr(QString name, QString value);
    // A row with the name and `w` standing in the value cell.
    void addAttrWidget(QString name, QWidget* w);
    // A row of two widgets.
    void addWidgets(QWidget* left, QWidget* right);
    void hideAttr(int row);

    bool autoHeight = true;

private:
    int appendRow();
    void addNameItem(int row, const QString& name);
};
