#pragma once

#include "host/HostTextFiles.h"

#include <QString>
#include <QStringList>
#include <QTextStream>

class CliOutput;
class QCommandLineParser;

// bramble-cli: the engines that the pages run, called from scripts. run() takes one call's
// arguments (without the program's name) and gives its exit status: 0 when everything asked
// for succeeded, 1 when something failed, 2 for a call that is not understood. Every failure
// is one clear line.
class CliApp {
public:
    // `liveTerminal`: standard error is a terminal, where running boards get a live line each.
    CliApp(QTextStream& out, QTextStream& err, bool liveTerminal = false);

    int run(const QStringList& args);

    enum Status { Ok = 0, Failed = 1, BadCall = 2 };

private:
    // Each command parses its own options from `args` (the call's words, the program's name
    // first, as QCommandLineParser wants them).
    int ports(const QStringList& args);
    int download(const QStringList& args);
    // read-flash, erase, erase-all and erase-ota: the flash page's actions.
    int flash(const QStringList& args, const QString& command);
    int cmd(const QStringList& args);
    // False, after its line, for a port that does not exist or may not be opened.
    bool portUsable(const QString& port);
    int aio(const QStringList& args);
    int nv(const QStringList& args);
    // The QZ4410's all-in-one image ("beno"): its records' download types, addresses, sizes.
    int showBenoImage(const QString& path);

    // Parses `args` with the options the command added, plus --json and --help; false after a
    // line for an unknown option or a missing positional argument.
    bool parse(QCommandLineParser& parser, const QStringList& args, int positionals,
               const QString& usage);
    void usage(const QString& text);

    QTextStream& out_;
    QTextStream& err_;
    bool liveTerminal_;
    CliOutput* output_ = nullptr;
    HostTextFiles words_;
};
