#include "kit/SysAutoLayout.h"

#include "kit/SysHLayout.h"

#include <algorithm>

SysAutoLayout::SysAutoLayout(QWidget* parent) : SysVLayout(parent) {}

void SysAutoLayout::setRowSizes(QString spec) {
    for (const QString& piece : spec.split(':')) {
        bool ok = false;
        const int size = piece.trimmed().toInt(&ok);
        if (ok)
            rowSizes << size;
    }
}

void SysAutoLayout::addWidgets(QList<QWidget*> list, Qt::Alignment align) {
    const int first = widgets.size();
    widgets << list;
    for (int i = first; i < widgets.size(); ++i) {
        const int row = locate(i).first;
        while (rows.size() < row + 1) {
            // Made without a parent so that addLayout can adopt it: Qt refuses to nest a
            // layout that already has a parent.
            auto* rowLayout = new SysHLayout();
            addLayout(rowLayout);
            rows << rowLayout;
        }
        rows[row]->addWidget(widgets[i], 0, align);
    }
}

std::pair<int, int> SysAutoLayout::locate(int index) const {
    // Rows beyond the given lengths repeat the last one; with no usable length, each such row
    // holds one widget so that the walk always ends.
    const int tail = rowSizes.isEmpty() ? 1 : std::max(rowSizes.last(), 1);
    int before = 0;
    for (int row = 0;; ++row) {
        const int size = row < rowSizes.size() ? rowSizes[row] : tail;
        if (before + size > index)
            return {row, index - before};
        before += size;
    }
}
