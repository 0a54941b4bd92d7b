#include "kit/SysExportTableBase.h"

#include <utility>

SysExportTableBase::~SysExportTableBase() = default;

void SysExportTableBase::setHeaders(QStringList headers) {
    this->headers = std::move(headers);
}

void SysExportTableBase::addRow(QStringList row) {
    rows.append(std::move(row));
}

void SysExportTableBase::setRows(QList<QStringList> rows) {
    this->rows = std::move(rows);
}
