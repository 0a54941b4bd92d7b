#include "cli/CliApp.h"

#include "base/PortTable.h"
#include "cli/CliOutput.h"
#include "engines/AppImpleUtils.h"
#include "engines/AppQZ4410Imple.h"
#include "engines/AppQZ4420Imple.h"
#include "engines/SysByteArray.h"
#include "pages/DownloadRun.h"
#include "pages/DownloadSession.h"
#include "pages/FlashRun.h"
#include "shell/MainWindow.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>

#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace {

const char kUsage[] =
    "usage: bramble-cli <command> [options]\n"
    "  ports [--json]\n"
    "  download --port P [--port P ...]\n"
    "           (--image AIO.bin | --stub FILE [--file ADDR:PATH[:ram] ...])\n"
    "           [--start-addr HEX] [--boot-baud N] [--baud N] [--no-reset] [--small-blocks]\n"
    "           [--verify] [--json]\n"
    "  read-flash --port P --addr HEX --len HEX --out FILE [--baud N] [--json]\n"
    "  erase --port P --addr HEX --len HEX [--json]\n"
    "  erase-all --port P [--json]\n"
    "  erase-ota --port P [--json]\n"
    "  cmd --port P [--baud N] TEXT [--json]\n"
    "  aio create --stub FILE --stub-addr HEX --file ADDR:PATH[:ram] ... --out FILE\n"
    "  aio show FILE [--json]\n"
    "  nv show IMAGE [--json]\n"
    "  nv to-conf IMAGE --out FILE\n"
    "  nv from-conf CONF --type nv|partition --size KB --out FILE\n";

QString hex(uint32_t value) {
    return QStringLiteral("0x%1").arg(value, 8, 16, QLatin1Char('0'));
}

// A hexadecimal number, "0x" allowed; false for anything else.
bool hexValue(const QString& text, uint32_t& value) {
    bool ok = false;
    const QString digits = text.trimmed();
    value = digits.toUInt(&ok, 16);
    return ok && !digits.isEmpty();
}

// One --file: ADDR:PATH[:ram] with a hexadecimal address; a path may hold colons of its own.
struct FileSpec {
    QString addrText;
    uint32_t addr = 0;
    QString path;
    bool toRam = false;
};

bool readFileSpec(const QString& spec, FileSpec& out) {
    const int first = spec.indexOf(':');
    out.addrText = spec.left(first);
    out.path = spec.mid(first + 1);
    out.toRam = out.path.endsWith(QLatin1String(":ram"));
    if (out.toRam)
        out.path.chop(4);
    return first >= 1 && !out.path.isEmpty() && hexValue(out.addrText, out.addr);
}

QString badFileSpec(const QString& spec) {
    return QStringLiteral("--file %1 is not ADDR:PATH[:ram] with a hex address").arg(spec);
}

// The engines' lines go to the call's output.
template <typename Engine> void hookLog(Engine& engine, CliOutput& output) {
    QObject::connect(
        &engine, &Engine::sendLog,
        [&output](SYS_LOG_LEVEL level, const QString& line) { output.log(level, line); });
}

// How long a firmware command waits for its "OK".
constexpr int kCmdWaitMs = 500;

QString imageTypeName(int type) {
    return type == 0 ? QStringLiteral("partition") : QStringLiteral("nv");
}

} // namespace

CliApp::CliApp(QTextStream& out, QTextStream& err, bool liveTerminal)
    : out_(out), err_(err), liveTerminal_(liveTerminal) {
    // The lines of the runs are the download page's, in English.
    words_.load(QStringLiteral(":/texts/en.tsv"));
}

int CliApp::run(const QStringList& args) {
    const QStringList words = QStringList{QStringLiteral("bramble-cli")} + args;
    const bool json = args.contains(QStringLiteral("--json"));
    CliOutput output(out_, err_, json, liveTerminal_);
    output_ = &output;
    MainWindow::useWords(&words_);
    const QString command = args.value(0);
    int status = BadCall;
    if (command == QLatin1String("ports"))
        status = ports(words);
    else if (command == QLatin1String("download"))
        status = download(words);
    else if (command == QLatin1String("read-flash") || command == QLatin1String("erase") ||
             command == QLatin1String("erase-all") || command == QLatin1String("erase-ota"))
        status = flash(words, command);
    else if (command == QLatin1String("cmd"))
        status = cmd(words);
    else if (command == QLatin1String("aio"))
        status = aio(words);
    else if (command == QLatin1String("nv"))
        status = nv(words);
    else if (command.isEmpty() || command == QLatin1String("--help") ||
             command == QLatin1String("-h"))
        usage(QString());
    else
        usage(QStringLiteral("unknown command: %1").arg(command));
    MainWindow::useWords(nullptr);
    output_ = nullptr;
    return status;
}

void CliApp::usage(const QString& text) {
    if (!text.isEmpty())
        output_->error(text);
    err_ << kUsage;
    err_.flush();
}

bool CliApp::parse(QCommandLineParser& parser, const QStringList& args, int positionals,
                   const QString& usageText) {
    parser.addOption({QStringLiteral("json"), QStringLiteral("One JSON object a line.")});
    if (!parser.parse(args)) {
        usage(parser.errorText());
        return false;
    }
    if (parser.positionalArguments().size() != positionals) {
        usage(QStringLiteral("%1 takes %2").arg(parser.positionalArguments().join(' '), usageText));
        return false;
    }
    return true;
}

int CliApp::ports(const QStringList& args) {
    QCommandLineParser parser;
    if (!parse(parser, args, 1, QStringLiteral("no arguments")))
        return BadCall;
    const QStringList names = PortTable::allPorts();
    output_->result({{"type", "ports"}, {"ports", QJsonArray::fromStringList(names)}}, names);
    return Ok;
}

int CliApp::aio(const QStringList& args) {
    const QString sub = args.value(2);
    QCommandLineParser parser;
    AppQZ4420Imple engine;
    hookLog(engine, *output_);
    if (sub == QLatin1String("show")) {
        if (!parse(parser, args, 3, QStringLiteral("one all-in-one image")))
            return BadCall;
        const QString path = parser.positionalArguments().at(2);
        QFile file(path);
        if (file.open(QIODevice::ReadOnly) && file.read(4) == "beno")
            return showBenoImage(path);
        SysByteArray stub;
        QVector<AioEntry> entries;
        uint32_t stubAddr = 0;
        if (!engine.parseAio(path, stub, entries, stubAddr)) {
            output_->error(QStringLiteral("%1 is no all-in-one image").arg(path));
            return Failed;
        }
        QJsonArray list;
        QStringList plain{
            QStringLiteral("stub   %1  %2 bytes").arg(hex(stubAddr)).arg(stub.size())};
        for (const AioEntry& entry : qAsConst(entries)) {
            list.append(QJsonObject{{"addr", hex(entry.startAddr)},
                                    {"size", int(entry.data.size())},
                                    {"ram", entry.toRam}});
            plain << QStringLiteral("%1  %2  %3 bytes")
                         .arg(entry.toRam ? QStringLiteral("ram  ") : QStringLiteral("flash"),
                              hex(entry.startAddr))
                         .arg(entry.data.size());
        }
        output_->result({{"type", "aio"},
                         {"format", "oneb"},
                         {"stub", QJsonObject{{"addr", hex(stubAddr)}, {"size", stub.size()}}},
                         {"entries", list}},
                        plain);
        return Ok;
    }
    if (sub == QLatin1String("create")) {
        parser.addOption(
            {QStringLiteral("stub"), QStringLiteral("Stub file."), QStringLiteral("file")});
        parser.addOption(
            {QStringLiteral("stub-addr"), QStringLiteral("Stub address."), QStringLiteral("hex")});
        parser.addOption({QStringLiteral("file"), QStringLiteral("An entry."),
                          QStringLiteral("addr:path[:ram]")});
        parser.addOption(
            {QStringLiteral("out"), QStringLiteral("Image to write."), QStringLiteral("file")});
        if (!parse(parser, args, 2, QStringLiteral("no positional arguments")))
            return BadCall;
        uint32_t stubAddr = 0;
        if (!parser.isSet(QStringLiteral("stub")) || !parser.isSet(QStringLiteral("out")) ||
            !hexValue(parser.value(QStringLiteral("stub-addr")), stubAddr)) {
            usage(QStringLiteral("aio create needs --stub, --stub-addr as a hex number and --out"));
            return BadCall;
        }
        QVector<AioEntry> entries;
        for (const QString& spec : parser.values(QStringLiteral("file"))) {
            FileSpec file;
            if (!readFileSpec(spec, file)) {
                usage(badFileSpec(spec));
                return BadCall;
            }
            AioEntry entry;
            entry.toRam = file.toRam;
            entry.path = file.path;
            entry.startAddr = file.addr;
            entries.append(entry);
        }
        const QString out = parser.value(QStringLiteral("out"));
        if (!engine.createAio(parser.value(QStringLiteral("stub")), entries, out, stubAddr)) {
            output_->error(QStringLiteral("cannot make %1").arg(out));
            return Failed;
        }
        output_->wrote(out);
        return Ok;
    }
    usage(QStringLiteral("aio takes show or create"));
    return BadCall;
}

int CliApp::nv(const QStringList& args) {
    const QString sub = args.value(2);
    QCommandLineParser parser;
    AppImpleUtils utils;
    hookLog(utils, *output_);
    if (sub == QLatin1String("show") || sub == QLatin1String("to-conf")) {
        const bool toConf = sub == QLatin1String("to-conf");
        if (toConf)
            parser.addOption({QStringLiteral("out"), QStringLiteral("Conf file to write."),
                              QStringLiteral("file")});
        if (!parse(parser, args, 3, QStringLiteral("one NV image")))
            return BadCall;
        if (toConf && !parser.isSet(QStringLiteral("out"))) {
            usage(QStringLiteral("nv to-conf needs --out"));
            return BadCall;
        }
        const QString path = parser.positionalArguments().at(2);
        QList<NvItem> items;
        int type = -1;
        if (!utils.loadNvFile(path, items, type)) {
            output_->error(QStringLiteral("%1 is no NV image").arg(path));
            return Failed;
        }
        if (toConf) {
            const QString out = parser.value(QStringLiteral("out"));
            if (!utils.saveConfFile(items, out)) {
                output_->error(QStringLiteral("cannot write %1").arg(out));
                return Failed;
            }
            output_->wrote(out);
            return Ok;
        }
        QJsonArray list;
        QStringList plain{
            QStringLiteral("%1 image, %2 items").arg(imageTypeName(type)).arg(items.size())};
        for (const NvItem& item : qAsConst(items)) {
            list.append(QJsonObject{{"name", item.name}, {"value", item.value}});
            plain << QStringLiteral("%1=%2").arg(item.name, item.value);
        }
        output_->result({{"type", "nv"}, {"imageType", imageTypeName(type)}, {"items", list}},
                        plain);
        return Ok;
    }
    if (sub == QLatin1String("from-conf")) {
        parser.addOption(
            {QStringLiteral("type"), QStringLiteral("nv or partition."), QStringLiteral("type")});
        parser.addOption(
            {QStringLiteral("size"), QStringLiteral("Image size in KB."), QStringLiteral("kb")});
        parser.addOption(
            {QStringLiteral("out"), QStringLiteral("Image to write."), QStringLiteral("file")});
        if (!parse(parser, args, 3, QStringLiteral("one conf file")))
            return BadCall;
        const QString typeName = parser.value(QStringLiteral("type"));
        const int type = typeName == QLatin1String("partition") ? 0
                         : typeName == QLatin1String("nv")      ? 1
                                                                : -1;
        bool sizeOk = false;
        const int kb = parser.value(QStringLiteral("size")).toInt(&sizeOk);
        if (type < 0 || !sizeOk || kb < 4 || kb > 24 || kb % 4 != 0 ||
            !parser.isSet(QStringLiteral("out"))) {
            usage(QStringLiteral("nv from-conf needs --type nv|partition, --size 4 to 24 in "
                                 "steps of 4, and --out"));
            return BadCall;
        }
        const QString conf = parser.positionalArguments().at(2);
        QList<NvItem> items;
        if (!utils.loadConfFile(conf, items)) {
            output_->error(QStringLiteral("cannot read %1").arg(conf));
            return Failed;
        }
        if (type == 0 && !AppImpleUtils::orderPartitionItems(items)) {
            output_->error(QStringLiteral("a partition image needs each of %1 exactly once")
                               .arg(AppImpleUtils::keyNames().join(',')));
            return Failed;
        }
        const QString out = parser.value(QStringLiteral("out"));
        if (!utils.saveNvFile(items, type, out, kb * 1024)) {
            output_->error(QStringLiteral("cannot write %1 as a %2 KB %3 image")
                               .arg(out)
                               .arg(kb)
                               .arg(typeName));
            return Failed;
        }
        output_->wrote(out);
        return Ok;
    }
    usage(QStringLiteral("nv takes show, to-conf or from-conf"));
    return BadCall;
}

namespace {

// The first other process that has `device` open, as "name (pid N)"; empty when none can be
// seen (the system shows a user only its own processes, or all of them to root).
QString holderOf(const QString& device) {
    const QString target = QFileInfo(device).canonicalFilePath();
    const QString self = QString::number(QCoreApplication::applicationPid());
    const QStringList pids =
        QDir(QStringLiteral("/proc")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString& pid : pids) {
        if (pid == self || pid.toInt() <= 0)
            continue;
        const QDir fds(QStringLiteral("/proc/%1/fd").arg(pid));
        for (const QFileInfo& fd : fds.entryInfoList(QDir::System | QDir::NoDotAndDotDot)) {
            if (fd.symLinkTarget() != target)
                continue;
            QFile comm(QStringLiteral("/proc/%1/comm").arg(pid));
            const QString name = comm.open(QIODevice::ReadOnly)
                                     ? QString::fromLocal8Bit(comm.readAll()).trimmed()
                                     : QString();
            return QStringLiteral("%1 (pid %2)").arg(name, pid);
        }
    }
    return QString();
}

// Why a port cannot be used, in words a user can act on; empty when it can.
QString portProblem(const QString& name) {
    const QString device = PortTable::deviceOf(name);
    const QFileInfo info(device);
    if (!info.exists())
        return QStringLiteral("no port %1 (%2 does not exist)").arg(name, device);
    if (!info.isReadable() || !info.isWritable())
        return QStringLiteral("no permission to use %1: add yourself to the dialout group "
                              "(sudo usermod -aG dialout $USER) and log in again")
            .arg(device);
    const QString holder = holderOf(device);
    if (!holder.isEmpty())
        return QStringLiteral("%1 is in use by %2").arg(name, holder);
    return QString();
}

struct BoardRun {
    QString port;
    bool ok = false;
    double seconds = 0;
    QString failingLine;
};

} // namespace

int CliApp::download(const QStringList& args) {
    QCommandLineParser parser;
    parser.addOption(
        {QStringLiteral("port"), QStringLiteral("A board's port."), QStringLiteral("port")});
    parser.addOption(
        {QStringLiteral("image"), QStringLiteral("All-in-one image."), QStringLiteral("file")});
    parser.addOption(
        {QStringLiteral("stub"), QStringLiteral("Stub file."), QStringLiteral("file")});
    parser.addOption(
        {QStringLiteral("file"), QStringLiteral("An entry."), QStringLiteral("addr:path[:ram]")});
    parser.addOption({QStringLiteral("start-addr"), QStringLiteral("Start address."),
                      QStringLiteral("hex"), QStringLiteral("0x200000")});
    parser.addOption({QStringLiteral("boot-baud"), QStringLiteral("Rate of the boot ROM."),
                      QStringLiteral("n"), QStringLiteral("115200")});
    parser.addOption({QStringLiteral("baud"), QStringLiteral("Download rate."), QStringLiteral("n"),
                      QStringLiteral("2000000")});
    parser.addOption({QStringLiteral("no-reset"), QStringLiteral("No reset over RTS.")});
    parser.addOption({QStringLiteral("small-blocks"), QStringLiteral("1024-byte blocks.")});
    parser.addOption({QStringLiteral("verify"), QStringLiteral("Read the flash back.")});
    if (!parse(parser, args, 1, QStringLiteral("no positional arguments")))
        return BadCall;
    const QStringList ports = parser.values(QStringLiteral("port"));
    const bool image = parser.isSet(QStringLiteral("image"));
    if (ports.isEmpty() || image == parser.isSet(QStringLiteral("stub"))) {
        usage(QStringLiteral("download needs --port and either --image or --stub"));
        return BadCall;
    }
    uint32_t startAddr = 0;
    bool bootOk = false;
    bool baudOk = false;
    parser.value(QStringLiteral("boot-baud")).toInt(&bootOk);
    parser.value(QStringLiteral("baud")).toInt(&baudOk);
    if (!hexValue(parser.value(QStringLiteral("start-addr")), startAddr) || !bootOk || !baudOk) {
        usage(QStringLiteral("--start-addr takes a hex number, --boot-baud and --baud numbers"));
        return BadCall;
    }
    DownloadSettings settings;
    settings.runMode = image ? 1 : 0;
    settings.uartBoot = !parser.isSet(QStringLiteral("no-reset"));
    settings.bigBlock = !parser.isSet(QStringLiteral("small-blocks"));
    settings.verify = parser.isSet(QStringLiteral("verify"));
    settings.bootBaud = parser.value(QStringLiteral("boot-baud"));
    settings.dlBaud = parser.value(QStringLiteral("baud"));
    settings.startupAddr = parser.value(QStringLiteral("start-addr"));
    settings.aioPath = parser.value(QStringLiteral("image"));
    settings.stubPath = parser.value(QStringLiteral("stub"));
    for (const QString& spec : parser.values(QStringLiteral("file"))) {
        FileSpec file;
        if (!readFileSpec(spec, file)) {
            usage(badFileSpec(spec));
            return BadCall;
        }
        DownloadRow row;
        row.selected = true;
        row.toRam = file.toRam;
        row.path = file.path;
        row.addr = file.addrText;
        settings.rows.append(row);
    }
    for (const QString& port : ports)
        if (!portUsable(port))
            return Failed;

    // Each board on a thread of its own, with its own port, engines and session.
    std::vector<BoardRun> runs(size_t(ports.size()));
    std::mutex printing;
    std::vector<std::thread> threads;
    output_->beginBoards(ports);
    for (int i = 0; i < ports.size(); ++i) {
        runs[size_t(i)].port = ports[i];
        threads.emplace_back([&, i] {
            BoardRun& run = runs[size_t(i)];
            auto session = std::make_shared<DownloadSession>(
                PageSession::Sink([&](SYS_LOG_LEVEL level, const QString& line) {
                    std::lock_guard<std::mutex> lock(printing);
                    // The step's own line comes before the run's closing "failed".
                    if (level == SYS_LOG_ERROR && run.failingLine.isEmpty())
                        run.failingLine = line;
                    output_->log(level, line, run.port);
                }));
            session->hookEngine(&session->engine);
            DownloadSettings mine = settings;
            mine.portNumber = PortTable::numberOf(run.port);
            QElapsedTimer timer;
            timer.start();
            run.ok = DownloadRun(session, mine).run();
            run.seconds = timer.nsecsElapsed() / 1e9;
            session->detach();
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    output_->endBoards();

    bool all = true;
    QJsonArray boards;
    // The bytes a board takes: the image, or the stub and the files.
    qint64 bytes = image ? QFileInfo(settings.aioPath).size() : QFileInfo(settings.stubPath).size();
    for (const DownloadRow& row : qAsConst(settings.rows))
        bytes += QFileInfo(row.path).size();
    QStringList table{QStringLiteral("%1  %2  %3  %4  %5")
                          .arg(QStringLiteral("board"), -12)
                          .arg(QStringLiteral("result"), -7)
                          .arg(QStringLiteral("bytes"), 9)
                          .arg(QStringLiteral("seconds"), 8)
                          .arg(QStringLiteral("failing line"))};
    for (const BoardRun& run : runs) {
        all = all && run.ok;
        boards.append(QJsonObject{{"board", run.port},
                                  {"ok", run.ok},
                                  {"bytes", bytes},
                                  {"seconds", run.seconds},
                                  {"failingLine", run.ok ? QString() : run.failingLine}});
        table << QStringLiteral("%1  %2  %3  %4  %5")
                     .arg(run.port, -12)
                     .arg(run.ok ? QStringLiteral("ok") : QStringLiteral("FAILED"), -7)
                     .arg(bytes, 9)
                     .arg(run.seconds, 8, 'f', 2)
                     .arg(run.ok ? QString() : run.failingLine);
    }
    output_->result({{"type", "summary"}, {"ok", all}, {"boards", boards}}, table);
    return all ? Ok : Failed;
}

bool CliApp::portUsable(const QString& port) {
    const QString problem = portProblem(port);
    if (!problem.isEmpty())
        output_->error(problem);
    return problem.isEmpty();
}

int CliApp::flash(const QStringList& args, const QString& command) {
    const bool read = command == QLatin1String("read-flash");
    const bool range = read || command == QLatin1String("erase");
    QCommandLineParser parser;
    parser.addOption(
        {QStringLiteral("port"), QStringLiteral("The board's port."), QStringLiteral("port")});
    if (range) {
        parser.addOption(
            {QStringLiteral("addr"), QStringLiteral("Start address."), QStringLiteral("hex")});
        parser.addOption({QStringLiteral("len"), QStringLiteral("Length."), QStringLiteral("hex")});
    }
    if (read) {
        parser.addOption(
            {QStringLiteral("out"), QStringLiteral("File to write."), QStringLiteral("file")});
        parser.addOption({QStringLiteral("baud"), QStringLiteral("Read-back rate."),
                          QStringLiteral("n"), QStringLiteral("2000000")});
    }
    if (!parse(parser, args, 1, QStringLiteral("no positional arguments")))
        return BadCall;
    FlashSettings settings;
    settings.portText = parser.value(QStringLiteral("port"));
    settings.workBaud = QStringLiteral("115200");
    settings.uploadBaud = parser.value(QStringLiteral("baud"));
    settings.path = parser.value(QStringLiteral("out"));
    bool baudOk = !read;
    if (read)
        settings.uploadBaud.toInt(&baudOk);
    if (settings.portText.isEmpty() || (read && settings.path.isEmpty()) || !baudOk ||
        (range && (!hexValue(parser.value(QStringLiteral("addr")), settings.address) ||
                   !hexValue(parser.value(QStringLiteral("len")), settings.length)))) {
        usage(QStringLiteral("%1 needs --port%2")
                  .arg(command,
                       read ? QStringLiteral(
                                  ", --addr and --len as hex numbers, --out and a numeric --baud")
                       : range ? QStringLiteral(", --addr and --len as hex numbers")
                               : QString()));
        return BadCall;
    }
    if (!portUsable(settings.portText))
        return Failed;
    settings.portNumber = PortTable::numberOf(settings.portText);
    auto session = std::make_shared<PageSession>(PageSession::Sink(
        [this](SYS_LOG_LEVEL level, const QString& line) { output_->log(level, line); }));
    session->hookEngine(&session->engine);
    const FlashRun::Action action = read                                ? FlashRun::Action::Upload
                                    : command == QLatin1String("erase") ? FlashRun::Action::Erase
                                    : command == QLatin1String("erase-all")
                                        ? FlashRun::Action::EraseAll
                                        : FlashRun::Action::EraseOta;
    const bool ok = FlashRun(session, settings, action).run();
    session->detach();
    output_->result({{"type", "result"}, {"ok", ok}}, {});
    return ok ? Ok : Failed;
}

int CliApp::cmd(const QStringList& args) {
    QCommandLineParser parser;
    parser.addOption(
        {QStringLiteral("port"), QStringLiteral("The board's port."), QStringLiteral("port")});
    parser.addOption({QStringLiteral("baud"), QStringLiteral("The port's rate."),
                      QStringLiteral("n"), QStringLiteral("115200")});
    if (!parse(parser, args, 2, QStringLiteral("one command text")))
        return BadCall;
    const QString port = parser.value(QStringLiteral("port"));
    bool baudOk = false;
    const int baud = parser.value(QStringLiteral("baud")).toInt(&baudOk);
    if (port.isEmpty() || !baudOk) {
        usage(QStringLiteral("cmd needs --port and a numeric --baud"));
        return BadCall;
    }
    if (!portUsable(port))
        return Failed;
    AppQZ4420Imple engine;
    hookLog(engine, *output_);
    ComPort com;
    if (!engine.openComPort(com, PortTable::numberOf(port), baud, false)) {
        output_->error(QStringLiteral("cannot open %1").arg(port));
        return Failed;
    }
    engine.setEcho(com, false, 0); // the reply without the command's echo
    const QString text = parser.positionalArguments().at(1);
    ByteBuffer reply;
    const bool ok = engine.sendCmdRsp(com, text, QStringLiteral("OK"), reply, kCmdWaitMs);
    com.close();
    const QString answer = QString::fromStdString(reply.text()).trimmed();
    output_->result({{"type", "reply"}, {"ok", ok}, {"command", text}, {"reply", answer}},
                    {answer});
    if (!ok)
        output_->error(QStringLiteral("no \"OK\" from the board for %1").arg(text));
    return ok ? Ok : Failed;
}

int CliApp::showBenoImage(const QString& path) {
    AppQZ4410Imple engine;
    hookLog(engine, *output_);
    QList<AioItem> items;
    if (!engine.parseAio(path, items)) {
        output_->error(QStringLiteral("%1 is no all-in-one image").arg(path));
        return Failed;
    }
    QJsonArray list;
    QStringList plain;
    for (const AioItem& item : qAsConst(items)) {
        list.append(QJsonObject{{"type", int(item.dlType)},
                                {"addr", hex(item.startAddr)},
                                {"size", int(item.data.size())}});
        plain << QStringLiteral("type %1  %2  %3 bytes")
                     .arg(item.dlType)
                     .arg(hex(item.startAddr))
                     .arg(item.data.size());
    }
    output_->result({{"type", "aio"}, {"format", "beno"}, {"entries", list}}, plain);
    return Ok;
}
