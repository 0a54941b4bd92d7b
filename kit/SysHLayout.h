#pragma once

#include <QHBoxLayout>

// Horizontal box layout of the kit; it exists so that layouts read as kit types.
class SysHLayout : public QHBoxLayout {
    Q_OBJECT

public:
    explicit SysHLayout(QWidget* parent = nullptr);
};
