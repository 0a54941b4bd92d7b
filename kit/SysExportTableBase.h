#pragma once

#include <QList>
#include <QString>
#include <QStringList>

// Text of a table, a header and rows of cells, ready to be written to a file by one of the
// export formats. A row may be shorter than the header: a cell that never held an item
// contributes nothing.
class SysExportTableBase {
public:
    virtual ~SysExportTableBase();

    // Writes the file, replacing what it held; false when it cannot be opened.
    virtual bool save(QString path) = 0;

    void setHeaders(QStringList headers);
    void addRow(QStringList row);
    void setRows(QList<QStringList> rows);

    QStringList headers;
    QList<QStringList> rows;
};
