#pragma once

#include "pages/TabWinBase.h"

// Editing NV items and blending conf files with binary NV images.
class BlendWindow : public TabWinBase {
    Q_OBJECT
public:
    explicit BlendWindow(QWidget* parent);
};
