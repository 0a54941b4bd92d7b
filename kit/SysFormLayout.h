#pragma once

#include <QFormLayout>

#include <string>

// Form layout of the kit: labels right-aligned and drawn in `labelColor`.
class SysFormLayout : public QFormLayout {
    Q_OBJECT

public:
    explicit SysFormLayout(QWidget* parent = nullptr);

    std::string labelColor;
};
