#pragma once

#include <QString>
#include <QStringList>

// The process-wide table between the names of serial ports and the numbers that pages pass
// to ComPort::open. "COM<n>" is n; any other name gets a number of its own the first time it
// is seen and keeps it for the life of the process.
class PortTable {
public:
    // -1 for an empty (after trimming) name.
    static int numberOf(const QString& name);

    // The name behind a number: a name seen before, else "COM<n>"; empty for a negative number.
    static QString nameOf(int number);

    // The device to open for a name: a path stays a path, a virtual port becomes its link in
    // virtualPortDir(), any other name "/dev/<name>".
    static QString deviceOf(const QString& name);

    // The per-user folder of virtual ports: symbolic links whose file names are the port names.
    static QString virtualPortDir();

    // Names of the virtual ports that are there now, sorted.
    static QStringList virtualPorts();
    // Every port a user can pick now: the system's serial ports, then the virtual ports.
    static QStringList allPorts();
};
