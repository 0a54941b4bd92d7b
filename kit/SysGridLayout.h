#pragma once

#include <QGridLayout>
#include <QList>

// Grid layout of the kit.
class SysGridLayout : public QGridLayout {
    Q_OBJECT

public:
    explicit SysGridLayout(QWidget* parent = nullptr);

    // Adds the widgets row by row, `columns` to a row, behind what the grid holds.
    void addRows(const QList<QWidget*>& widgets, int columns);
};
