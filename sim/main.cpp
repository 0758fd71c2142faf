// vxrack-sim: the simulated VX rack on a pseudo-terminal, linked as COMn for VXCFG.
#include "demorack.h"
#include "ptyserver.h"
#include "rackfile.h"
#include "replay.h"
#include "simoptions.h"

#include <QCoreApplication>
#include <QFile>
#include <QSocketNotifier>
#include <QTextStream>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace {

int g_stopPipe[2] = {-1, -1};

// Only what is safe in a signal handler: one byte into the pipe. The event loop does the rest.
void onStopSignal(int) {
    const int saved = errno;
    const char byte = 1;
    [[maybe_unused]] const ssize_t n = ::write(g_stopPipe[1], &byte, 1);
    errno = saved;
}

bool catchStopSignals() {
    if (::pipe2(g_stopPipe, O_CLOEXEC | O_NONBLOCK) != 0) return false;
    struct sigaction action {};
    action.sa_handler = onStopSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (int sig : {SIGINT, SIGTERM, SIGHUP})
        if (sigaction(sig, &action, nullptr) != 0) return false;
    return true;
}

void printLine(FILE *stream, const QString &text) {
    std::fputs(qPrintable(text + QLatin1Char('\n')), stream);
    std::fflush(stream);
}

} // namespace

int main(int argc, char **argv) {
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("vxrack-sim"));

    SimOptions options;
    QString message;
    switch (parseSimOptions(QCoreApplication::arguments(), options, &message)) {
    case SimCommand::Help:
        printLine(stdout, message);
        return 0;
    case SimCommand::Error:
        printLine(stderr, QStringLiteral("vxrack-sim: ") + message);
        return 2;
    case SimCommand::Run:
        break;
    }

    SimRack rack;
    bool loaded = true;
    if (!options.fromLog.isEmpty())
        loaded = Replay::load(options.fromLog, rack, &message);
    else if (!options.rackFile.isEmpty())
        loaded = RackFile::load(options.rackFile, rack, &message);
    else
        LoadDemoRack(rack);
    if (!loaded) {
        printLine(stderr, QStringLiteral("vxrack-sim: ") + message);
        return 1;
    }
    if (!options.writeRack.isEmpty()) {
        if (!RackFile::save(options.writeRack, rack, &message)) {
            printLine(stderr, QStringLiteral("vxrack-sim: ") + message);
            return 1;
        }
        return 0;
    }
    for (const SimFaultRule &rule : options.faults)
        rack.addFault(rule);

    QFile log(options.logFile);
    if (!options.logFile.isEmpty() && !log.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        printLine(stderr,
                  QStringLiteral("vxrack-sim: %1: %2").arg(options.logFile, log.errorString()));
        return 1;
    }

    if (!catchStopSignals()) {
        printLine(stderr, QStringLiteral("vxrack-sim: cannot catch the stop signals"));
        return 1;
    }
    QSocketNotifier stopNotifier(g_stopPipe[0], QSocketNotifier::Read);
    QObject::connect(&stopNotifier, &QSocketNotifier::activated, &app, &QCoreApplication::quit);

    PtyServer server(&rack);
    if (options.emulateBaud) server.setByteTimeMicros(1042);
    if (log.isOpen()) server.setLog(&log);
    QObject::connect(&server, &PtyServer::linked, [&](const QString &device) {
        printLine(stdout, QStringLiteral("COM%1 -> %2").arg(options.com).arg(device));
    });
    if (!server.start(options.com, options.portDir, &message)) {
        printLine(stderr, QStringLiteral("vxrack-sim: ") + message);
        return 1;
    }
    const int result = app.exec();
    server.stop();
    return result;
}
