#pragma once

#include <QGridLayout>

// Grid layout of the kit, with nothing beyond the Qt grid.
class SysGridLayout : public QGridLayout {
    Q_OBJECT

public:
    explicit SysGridLayout(QWidget* parent = nullptr);
};
