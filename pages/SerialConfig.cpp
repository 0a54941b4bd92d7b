#include "pages/SerialConfig.h"

#include "kit/SysXmlDocument.h"

namespace {

QString bit(bool on) {
    return on ? QStringLiteral("1") : QStringLiteral("0");
}

bool number(const QDomElement& e, const char* name, int* to) {
    if (!e.hasAttribute(QLatin1String(name)))
        return false;
    *to = e.attribute(QLatin1String(name)).toInt(nullptr, 10);
    return true;
}

bool flagAt(const QDomElement& e, const char* name, bool* to) {
    int value = 0;
    if (!number(e, name, &value))
        return false;
    *to = value != 0;
    return true;
}

} // namespace

SerialConfig::SerialConfig() {
    for (int i = 0; i < kCmdItems; ++i)
        cmdList.append(SerialCmdItem());
}

void SerialConfig::read(const QString& path) {
    SysXmlDocument doc;
    if (!doc.load(path))
        return;
    for (QDomElement child = doc.root().firstChildElement(); !child.isNull();
         child = child.nextSiblingElement()) {
        if (child.tagName() == QLatin1String("setting")) {
            if (!number(child, "cycleValue", &cycleValue) ||
                !flagAt(child, "isHexSend", &isHexSend) ||
                !flagAt(child, "isHexRecv", &isHexRecv) ||
                !flagAt(child, "isBackspace", &isBackspace) ||
                !flagAt(child, "isReturn", &isReturn) || !flagAt(child, "isDTR", &isDTR) ||
                !flagAt(child, "isRTS", &isRTS) || !flagAt(child, "isTimestamp", &isTimestamp))
                return;
        } else if (child.tagName() == QLatin1String("cmdList")) {
            int i = 0;
            for (QDomElement item = child.firstChildElement(); !item.isNull() && i < kCmdItems;
                 item = item.nextSiblingElement(), ++i) {
                if (!item.hasAttribute(QStringLiteral("cmd")))
                    return;
                cmdList[i].cmd = item.attribute(QStringLiteral("cmd"));
                if (!flagAt(item, "isHex", &cmdList[i].isHex))
                    return;
            }
        }
    }
}

bool SerialConfig::write(const QString& path) const {
    SysXmlDocument doc;
    doc.createDocument(QStringLiteral("GBK"));
    QDomElement root = doc.createRoot(QStringLiteral("Root"));
    QDomElement setting = doc.createChild(root, QStringLiteral("setting"));
    const QString values[] = {QString::number(cycleValue),
                              bit(isHexSend),
                              bit(isHexRecv),
                              bit(isBackspace),
                              bit(isReturn),
                              bit(isDTR),
                              bit(isRTS),
                              bit(isTimestamp)};
    const char* const names[] = {"cycleValue", "isHexSend", "isHexRecv", "isBackspace",
                                 "isReturn",   "isDTR",     "isRTS",     "isTimestamp"};
    for (int i = 0; i < 8; ++i)
        doc.setAttribute(setting, QLatin1String(names[i]), values[i]);
    QDomElement list = doc.createChild(root, QStringLiteral("cmdList"));
    for (const SerialCmdItem& entry : cmdList) {
        QDomElement item = doc.createChild(list, QStringLiteral("item"));
        doc.setAttribute(item, QStringLiteral("cmd"), entry.cmd);
        doc.setAttribute(item, QStringLiteral("isHex"), bit(entry.isHex));
    }
    return doc.saveAs(path);
}
