#include "cli/CliApp.h"

#include "base/PortTable.h"
#include "cli/CliOutput.h"
#include "engines/AppImpleUtils.h"
#include "engines/AppQZ4420Imple.h"
#include "engines/SysByteArray.h"

#include <QCommandLineParser>
#include <QJsonArray>
#include <QJsonObject>

#include <memory>

namespace {

const char kUsage[] =
    "usage: bramble-cli <command> [options]\n"
    "  ports [--json]\n"
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

// The engines' lines go to the call's output.
template <typename Engine> void hookLog(Engine& engine, CliOutput& output) {
    QObject::connect(
        &engine, &Engine::sendLog,
        [&output](SYS_LOG_LEVEL level, const QString& line) { output.log(level, line); });
}

QString imageTypeName(int type) {
    return type == 0 ? QStringLiteral("partition") : QStringLiteral("nv");
}

} // namespace

CliApp::CliApp(QTextStream& out, QTextStream& err) : out_(out), err_(err) {}

int CliApp::run(const QStringList& args) {
    const QStringList words = QStringList{QStringLiteral("bramble-cli")} + args;
    const bool json = args.contains(QStringLiteral("--json"));
    CliOutput output(out_, err_, json);
    output_ = &output;
    const QString command = args.value(0);
    int status = BadCall;
    if (command == QLatin1String("ports"))
        status = ports(words);
    else if (command == QLatin1String("aio"))
        status = aio(words);
    else if (command == QLatin1String("nv"))
        status = nv(words);
    else if (command.isEmpty() || command == QLatin1String("--help") ||
             command == QLatin1String("-h"))
        usage(QString());
    else
        usage(QStringLiteral("unknown command: %1").arg(command));
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
            // ADDR:PATH[:ram]; a path may hold colons of its own.
            const int first = spec.indexOf(':');
            QString path = spec.mid(first + 1);
            AioEntry entry;
            if (path.endsWith(QLatin1String(":ram"))) {
                entry.toRam = true;
                path.chop(4);
            }
            entry.path = path;
            if (first < 1 || path.isEmpty() || !hexValue(spec.left(first), entry.startAddr)) {
                usage(QStringLiteral("--file %1 is not ADDR:PATH[:ram] with a hex address")
                          .arg(spec));
                return BadCall;
            }
            entries.append(entry);
        }
        const QString out = parser.value(QStringLiteral("out"));
        if (!engine.createAio(parser.value(QStringLiteral("stub")), entries, out, stubAddr)) {
            output_->error(QStringLiteral("cannot make %1").arg(out));
            return Failed;
        }
        output_->result({{"type", "result"}, {"ok", true}, {"out", out}},
                        {QStringLiteral("wrote %1").arg(out)});
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
            output_->result({{"type", "result"}, {"ok", true}, {"out", out}},
                            {QStringLiteral("wrote %1").arg(out)});
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
        output_->result({{"type", "result"}, {"ok", true}, {"out", out}},
                        {QStringLiteral("wrote %1").arg(out)});
        return Ok;
    }
    usage(QStringLiteral("nv takes show, to-conf or from-conf"));
    return BadCall;
}
