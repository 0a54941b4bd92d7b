#include "kit/SysGridLayout.h"

SysGridLayout::SysGridLayout(QWidget* parent) : QGridLayout(parent) {}

void SysGridLayout::addRows(const QList<QWidget*>& widgets, int columns) {
    const int first = count() == 0 ? 0 : rowCount();
    for (int i = 0; i < widgets.size(); ++i)
        addWidget(widgets[i], first + i / columns, i % columns);
}
