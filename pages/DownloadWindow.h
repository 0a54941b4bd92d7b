#pragma once

#include "pages/TabWinBase.h"

// Firmware download through the boot ROM and a stub.
class DownloadWindow : public TabWinBase {
    Q_OBJECT
public:
    explicit DownloadWindow(QWidget* parent);
};
