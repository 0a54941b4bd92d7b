#include "pages/DownloadSettingFile.h"

#include "kit/SysXmlDocument.h"

namespace {

bool isTrue(const QDomElement& e, const char* name) {
    return e.attribute(QLatin1String(name), QStringLiteral("true")) == QLatin1String("true");
}

QString flag(bool on) {
    return on ? QStringLiteral("true") : QStringLiteral("false");
}

} // namespace

DownloadSettingFile::Outcome DownloadSettingFile::read(const QString& path, int maxRows) {
    SysXmlDocument xml;
    if (!xml.load(path))
        return Outcome::OpenFailed;
    const QDomElement root = xml.root();
    if (root.tagName() != QLatin1String("Root"))
        return Outcome::RootInvalid;
    for (QDomElement child = root.firstChildElement(); !child.isNull();
         child = child.nextSiblingElement()) {
        const QString name = child.tagName();
        if (name == QLatin1String("Stub")) {
            hasStub = true;
            stubPath = child.attribute(QStringLiteral("strFile"));
            startupAddr = child.attribute(QStringLiteral("startupAddr"));
            continue;
        }
        if (name != QLatin1String("FileList")) {
            badNode = name;
            return Outcome::NodeInvalid;
        }
        int n = 0;
        for (QDomElement file = child.firstChildElement(); !file.isNull();
             file = file.nextSiblingElement(), ++n) {
            if (file.tagName() != QLatin1String("File")) {
                badNode = file.tagName();
                return Outcome::NodeInvalid;
            }
            if (n >= maxRows)
                break; // the list has its fixed rows; more entries have nowhere to go
            if (n >= rows.size())
                rows.resize(n + 1);
            DownloadRow& row = rows[n];
            row.selected = isTrue(file, "isSelected");
            row.toRam = isTrue(file, "isToRam");
            row.path = file.attribute(QStringLiteral("strFile")).trimmed();
            row.addr = file.attribute(QStringLiteral("startAddr"));
        }
    }
    return Outcome::Read;
}

bool DownloadSettingFile::write(const QString& path) const {
    SysXmlDocument xml;
    xml.createDocument(QStringLiteral("GBK"));
    QDomElement root = xml.createRoot(QStringLiteral("Root"));
    QDomElement stub = xml.createChild(root, QStringLiteral("Stub"));
    xml.setAttribute(stub, QStringLiteral("strFile"), stubPath);
    xml.setAttribute(stub, QStringLiteral("startupAddr"), startupAddr);
    QDomElement list = xml.createChild(root, QStringLiteral("FileList"));
    for (const DownloadRow& row : rows) {
        QDomElement file = xml.createChild(list, QStringLiteral("File"));
        xml.setAttribute(file, QStringLiteral("isSelected"), flag(row.selected));
        xml.setAttribute(file, QStringLiteral("isToRam"), flag(row.toRam));
        xml.setAttribute(file, QStringLiteral("strFile"), row.path);
        xml.setAttribute(file, QStringLiteral("startAddr"), row.addr);
    }
    return xml.saveAs(path);
}
