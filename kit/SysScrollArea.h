#pragma once

#include <QScrollArea>

// Scroll area of the kit, with nothing beyond the Qt scroll area.
class SysScrollArea : public QScrollArea {
    Q_OBJECT

public:
    explicit SysScrollArea(QWidget* parent = nullptr);
};
