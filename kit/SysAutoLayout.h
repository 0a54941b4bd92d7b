#pragma once

#include "kit/SysVLayout.h"

#include <QList>
#include <QString>

#include <utility>

class SysHLayout;

// Vertical stack of horizontal rows, filled left to right with row lengths given up front.
// Rows past the last given length keep that length.
class SysAutoLayout : public SysVLayout {
    Q_OBJECT

public:
    explicit SysAutoLayout(QWidget* parent = nullptr);

    // Appends the row lengths of `spec`, integers joined by ":".
    void setRowSizes(QString spec);
    // Appends `widgets` after those already placed, each to the end of its row.
    void addWidgets(QList<QWidget*> widgets, Qt::Alignment align = Qt::Alignment());

    QList<int> rowSizes;
    QList<QWidget*> widgets;
    QList<SysHLayout*> rows;

private:
    // Row and column of the widget at `index`.
    std::pair<int, int> locate(int index) const;
};
