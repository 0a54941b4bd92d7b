#pragma once

#include <QString>

// One named NV setting; desc lives in conf files only.
struct NvItem {
    QString name;
    QString value;
    QString desc;
};
