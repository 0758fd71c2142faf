#include "simoptions.h"

#include "link/comports.h"

#include <QCommandLineParser>

namespace {

struct FaultKind {
    const char *name;
    SimFault fault;
    int defaultParam; // -1: takes no parameter
    int minParam;
    int maxParam;
    const char *what;
};

// The names a user types, and what each does to the command it matches.
const FaultKind kFaultKinds[] = {
    {"noreply", SimFault::NoReply, -1, 0, 0, "the command is swallowed"},
    {"split", SimFault::Split, 3, 2, 64, "the reply comes in PARAM pieces (3)"},
    {"nocr", SimFault::NoCR, -1, 0, 0, "the reply comes without its CR"},
    {"delay", SimFault::Delay, 500, 0, 2999, "the reply comes PARAM ms late (500)"},
    {"late", SimFault::Late, 500, 0, 600000,
     "the reply comes PARAM ms after the 3000 ms step limit (500)"},
    {"garbage", SimFault::Garbage, -1, 0, 0, "junk bytes and a CR instead of the reply"},
    {"dtmout", SimFault::Timeout, -1, 0, 0, "the rack's time-out word DTMOUT"},
    {"cng", SimFault::Refuse, -1, 0, 0, "the refusal CNG"},
    {"cnu", SimFault::Unused, -1, 0, 0, "CNU, the item is not used"},
    {"cut", SimFault::CutLine, -1, 0, 0,
     "the line is cut (the port hangs up), then plugged back in"},
};

QString faultHelp() {
    QString text = QStringLiteral(
        "Faults: --fault KIND[:MATCH[:COUNT[:PARAM]]], repeatable. The fault hits commands that\n"
        "begin with MATCH (empty: any command; it cannot hold a colon), COUNT times (default 1,\n"
        "\"all\" for every one). The first rule that matches a command is used. KIND is one of:\n");
    for (const FaultKind &kind : kFaultKinds)
        text += QStringLiteral("  %1 %2\n").arg(QLatin1String(kind.name), -8).arg(kind.what);
    text += QStringLiteral("Example: --fault split:I40:all:4 --fault noreply:G01:2\n");
    return text;
}

const char *kDescription =
    "Serves a simulated VX rack on a pseudo-terminal and links it as COMn in the ports folder,\n"
    "where VXCFG finds it. Prints \"COM<n> -> <device>\" when ready. Ctrl+C or SIGTERM stops it\n"
    "and removes the link. Without --rack it serves the demo rack; the rack file format is in\n"
    "sim/README.md (--write-rack gives a file to start from).";

} // namespace

std::optional<SimFaultRule> parseFault(const QString &plan, QString *error) {
    const QStringList parts = plan.split(QLatin1Char(':'));
    auto fail = [&](const QString &why) {
        if (error) *error = QStringLiteral("--fault %1: %2").arg(plan, why);
        return std::nullopt;
    };
    if (parts.size() > 4) return fail(QStringLiteral("too many fields (KIND:MATCH:COUNT:PARAM)"));
    const QString name = parts.at(0).trimmed().toLower();
    const FaultKind *kind = nullptr;
    for (const FaultKind &k : kFaultKinds)
        if (name == QLatin1String(k.name)) kind = &k;
    if (!kind) return fail(QStringLiteral("unknown kind \"%1\"").arg(parts.at(0)));

    SimFaultRule rule{kind->fault, parts.value(1), 1, std::max(0, kind->defaultParam)};
    const QString count = parts.value(2).trimmed();
    if (count.compare(QLatin1String("all"), Qt::CaseInsensitive) == 0) {
        rule.count = -1;
    } else if (!count.isEmpty()) {
        bool ok = false;
        rule.count = count.toInt(&ok);
        if (!ok || rule.count < 1)
            return fail(QStringLiteral("COUNT must be a number from 1 or \"all\""));
    }
    const QString param = parts.value(3).trimmed();
    if (!param.isEmpty()) {
        if (kind->defaultParam < 0)
            return fail(QStringLiteral("%1 takes no parameter").arg(QLatin1String(kind->name)));
        bool ok = false;
        rule.param = param.toInt(&ok);
        if (!ok || rule.param < kind->minParam || rule.param > kind->maxParam)
            return fail(QStringLiteral("PARAM of %1 must be %2 to %3")
                            .arg(QLatin1String(kind->name))
                            .arg(kind->minParam)
                            .arg(kind->maxParam));
    }
    return rule;
}

SimCommand parseSimOptions(const QStringList &arguments, SimOptions &options, QString *message) {
    QCommandLineParser parser;
    parser.setApplicationDescription(QString::fromLatin1(kDescription));
    const QCommandLineOption help({"h", "help"}, "Shows this help.");
    const QCommandLineOption com("com", "Links the rack as COM<n>, 1 to 16 (default 1).", "n", "1");
    const QCommandLineOption portDir(
        "port-dir", "The ports folder (default $VXCFG_PORT_DIR, else ~/.config/vxcfg/ports).",
        "dir");
    const QCommandLineOption rack("rack", "Serves the rack described in <file>.", "file");
    const QCommandLineOption fromLog(
        "from-log",
        "Serves the rack that a traffic log saved by VXCFG (plain text) shows, answering as it "
        "answered then.",
        "file");
    const QCommandLineOption writeRack(
        "write-rack", "Writes the rack (demo, --rack or --from-log) to <file> and stops.", "file");
    const QCommandLineOption baud("baud", "Emulates 9600 baud: about 1.04 ms a byte, both ways.");
    const QCommandLineOption log("log", "Writes every command and reply to <file> as they pass.",
                                 "file");
    const QCommandLineOption fault("fault", "Adds a fault (see below).", "fault");
    parser.addOptions({help, com, portDir, rack, fromLog, writeRack, baud, log, fault});

    if (!parser.parse(arguments)) {
        if (message) *message = parser.errorText();
        return SimCommand::Error;
    }
    if (parser.isSet(help)) {
        if (message) *message = parser.helpText() + QLatin1Char('\n') + faultHelp();
        return SimCommand::Help;
    }
    if (!parser.positionalArguments().isEmpty()) {
        if (message)
            *message = QStringLiteral("Unexpected argument \"%1\"; see --help.")
                           .arg(parser.positionalArguments().constFirst());
        return SimCommand::Error;
    }
    bool ok = false;
    options.com = parser.value(com).toInt(&ok);
    if (!ok || options.com < 1 || options.com > 16) {
        if (message) *message = QStringLiteral("--com takes a number from 1 to 16.");
        return SimCommand::Error;
    }
    options.portDir = parser.isSet(portDir) ? parser.value(portDir) : ComPorts::portDirectory();
    options.rackFile = parser.value(rack);
    options.fromLog = parser.value(fromLog);
    if (!options.rackFile.isEmpty() && !options.fromLog.isEmpty()) {
        if (message) *message = QStringLiteral("--rack and --from-log exclude each other.");
        return SimCommand::Error;
    }
    options.writeRack = parser.value(writeRack);
    options.emulateBaud = parser.isSet(baud);
    options.logFile = parser.value(log);
    options.faults.clear();
    for (const QString &plan : parser.values(fault)) {
        QString error;
        const std::optional<SimFaultRule> rule = parseFault(plan, &error);
        if (!rule) {
            if (message) *message = error;
            return SimCommand::Error;
        }
        options.faults.append(*rule);
    }
    return SimCommand::Run;
}
