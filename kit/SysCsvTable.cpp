#include "kit/SysCsvTable.h"

#include <QFile>

bool SysCsvTable::save(QString path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite | QIODevice::Truncate | QIODevice::Text))
        return false;
    file.write(headers.join(QLatin1Char(',')).toLocal8Bit() + '\n');
    for (const QStringList& row : rows)
        file.write(row.join(QLatin1Char(',')).toLocal8Bit() + '\n');
    file.close();
    return true;
}
