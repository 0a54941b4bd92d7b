#pragma once

#include "kit/SysExportTableBase.h"

#include <string>

// HTML export: one bordered table whose header row is filled with the theme colour and whose
// odd rows are tinted with a light shade of it. Cell text is written as it stands, so markup
// in a cell stays markup in the file.
class SysHtmlTable : public SysExportTableBase {
public:
    bool save(QString path) override;

    void setThemeColor(std::string color);

    std::string themeColor = "#409eff";
};
