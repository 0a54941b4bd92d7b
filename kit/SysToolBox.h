#pragma once

#include <QToolBox>

// Tool box of the kit: a column of tabs that fold open one page at a time.
class SysToolBox : public QToolBox {
    Q_OBJECT

public:
    explicit SysToolBox(QWidget* parent = nullptr);
};
