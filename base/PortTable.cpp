#include "base/PortTable.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QMutex>
#include <QMutexLocker>
#include <QRegularExpression>
#include <QSerialPortInfo>
#include <QStandardPaths>

namespace {

// Numbers handed to names that are not "COM<n>" start far above any COM number in use.
constexpr int kFirstNamedPort = 1 << 16;

struct Table {
    QMutex mutex;
    QHash<QString, int> numbers;
    QHash<int, QString> names;
    int next = kFirstNamedPort;
};

Table& table() {
    static Table t;
    return t;
}

} // namespace

int PortTable::numberOf(const QString& rawName) {
    const QString name = rawName.trimmed();
    if (name.isEmpty())
        return -1;
    static const QRegularExpression com(QStringLiteral("^COM(\\d{1,9})$"));
    const auto match = com.match(name);
    if (match.hasMatch())
        return match.captured(1).toInt();

    Table& t = table();
    QMutexLocker lock(&t.mutex);
    const auto it = t.numbers.constFind(name);
    if (it != t.numbers.constEnd())
        return it.value();
    const int number = t.next++;
    t.numbers.insert(name, number);
    t.names.insert(number, name);
    return number;
}

QString PortTable::nameOf(int number) {
    if (number < 0)
        return QString();
    Table& t = table();
    QMutexLocker lock(&t.mutex);
    return t.names.value(number, QStringLiteral("COM%1").arg(number));
}

QString PortTable::deviceOf(const QString& name) {
    if (name.isEmpty() || name.startsWith('/'))
        return name;
    const QString link = virtualPortDir() + '/' + name;
    if (QFileInfo(link).isSymLink())
        return link;
    return QStringLiteral("/dev/") + name;
}

QString PortTable::virtualPortDir() {
    return QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) +
           QStringLiteral("/bramble/ports");
}

QStringList PortTable::allPorts() {
    QStringList names;
    const QList<QSerialPortInfo> infos = QSerialPortInfo::availablePorts();
    for (const QSerialPortInfo& info : infos)
        names << info.portName();
    return names << virtualPorts();
}

QStringList PortTable::virtualPorts() {
    QStringList names;
    const QFileInfoList entries =
        QDir(virtualPortDir())
            .entryInfoList(QDir::System | QDir::Files | QDir::NoDotAndDotDot, QDir::Name);
    for (const QFileInfo& entry : entries)
        if (entry.isSymLink() && entry.exists()) // a link whose target went away is no port
            names << entry.fileName();
    return names;
}
