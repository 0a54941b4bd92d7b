#include "kit/SysHtmlTable.h"

#include "kit/SysStyle.h"

#include <QByteArray>
#include <QFile>

#include <utility>

namespace {

// Opening of every cell; also the glue between two cells of a row.
const char kHeadCell[] = "<th style=\"padding:.25rem .75rem;\">";
const char kBodyCell[] = "<td style=\"padding:.25rem .75rem;\">";

} // namespace

void SysHtmlTable::setThemeColor(std::string color) {
    themeColor = std::move(color);
}

bool SysHtmlTable::save(QString path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite | QIODevice::Truncate | QIODevice::Text))
        return false;
    const QByteArray theme = QByteArray::fromStdString(themeColor);
    const QByteArray tint = QByteArray::fromStdString(sysLighten(themeColor, 0.9f));

    file.write("<html><head><title></title></head><body style=\"padding: 0px;margin: 0px;\">");
    file.write("<table border=\"" + theme +
               "\" style=\"width:100%;border-collapse: collapse; border: 1px solid " + tint +
               ";\">");
    if (!headers.isEmpty()) {
        file.write("<thead><tr style=\"color: #fff;background-color: " + theme + ";\">");
        file.write(kHeadCell);
        file.write(
            headers.join(QString::fromLatin1("</th>") + QLatin1String(kHeadCell)).toLocal8Bit());
        file.write("</th>");
        file.write("</tr></thead>");
    }
    file.write("<tbody>");
    for (int i = 0; i < rows.size(); ++i) {
        const QStringList& row = rows.at(i);
        if (row.isEmpty())
            continue; // its index still counts, so the tint stays on odd indices
        if (i % 2 == 0)
            file.write("<tr>");
        else
            file.write("<tr style=\"background-color:" + tint + "\">");
        file.write(kBodyCell);
        file.write(row.join(QString::fromLatin1("</td>") + QLatin1String(kBodyCell)).toLocal8Bit());
        file.write("</td></tr>");
    }
    file.write("</tbody></table>");
    file.write("</body></html>");
    file.close();
    return true;
}
