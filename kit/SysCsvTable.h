#pragma once

#include "kit/SysExportTableBase.h"

// Comma-separated export: one line for the header and one for each row, cells joined by ","
// as they stand. Nothing is quoted or escaped, so a comma or line break inside a cell goes
// into the file unchanged.
class SysCsvTable : public SysExportTableBase {
public:
    bool save(QString path) override;
};
