// bramble-cli: Bramble's engines from the command line, for scripts and production lines.

#include "cli/CliApp.h"

#include <QCoreApplication>
#include <QTextStream>

#include <unistd.h>

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Mosswood"));
    QCoreApplication::setApplicationName(QStringLiteral("Bramble"));
    QTextStream out(stdout);
    QTextStream err(stderr);
    CliApp cli(out, err, isatty(STDERR_FILENO) != 0);
    return cli.run(QCoreApplication::arguments().mid(1));
}
