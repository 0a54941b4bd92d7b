#pragma once

#include "pages/TabWinBase.h"

// Commands to running firmware, RF tests and the serial terminal.
class CmdWindow : public TabWinBase {
    Q_OBJECT
public:
    explicit CmdWindow(QWidget* parent);
};
