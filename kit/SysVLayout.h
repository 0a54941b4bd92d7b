#pragma once

#include <QVBoxLayout>

// Vertical box layout of the kit; it exists so that layouts read as kit types.
class SysVLayout : public QVBoxLayout {
    Q_OBJECT

public:
    explicit SysVLayout(QWidget* parent = nullptr);
};
