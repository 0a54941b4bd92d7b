#pragma once

#include "pages/TabWinBase.h"

// Reading and erasing a board's flash.
class CRUDWindow : public TabWinBase {
    Q_OBJECT
public:
    explicit CRUDWindow(QWidget* parent);
};
