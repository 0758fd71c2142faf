// vxbench-readdata: how long a ReadData takes through the real serial port code against the
// simulator at 9600 baud, how much of that is line time, and what it costs in CPU.
#include "link/exchange.h"
#include "link/link.h"
#include "link/qserialline.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdio>
#include <sys/resource.h>
#include <unistd.h>

namespace {

double cpuMsSelf() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return (usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1e3 +
           (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e3;
}

// User and system time of another process, from /proc; -1 when it cannot be read.
double cpuMsOf(qint64 pid) {
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly)) return -1;
    const QByteArray text = stat.readAll();
    // Fields after the command name in parentheses; utime and stime are the 14th and 15th.
    const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
    if (fields.size() < 13) return -1;
    const double ticks = fields.at(11).toDouble() + fields.at(12).toDouble();
    return ticks * 1e3 / double(sysconf(_SC_CLK_TCK));
}

QString simulatorPath(const QString &given) {
    if (!given.isEmpty()) return given;
    const QString fromEnv = qEnvironmentVariable("VXRACK_SIM");
    if (!fromEnv.isEmpty()) return fromEnv;
    return QStringLiteral(VXRACK_SIM_BUILT);
}

int fail(const QString &text) {
    std::fprintf(stderr, "vxbench-readdata: %s\n", qPrintable(text));
    return 1;
}

} // namespace

int main(int argc, char **argv) {
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Runs ReadData of the comm card's version through QSerialPort against vxrack-sim at "
        "9600 baud and prints the time and CPU per step.");
    parser.addHelpOption();
    const QCommandLineOption count({"n", "count"}, "ReadData exchanges to time (200).", "n", "200");
    const QCommandLineOption sim("sim", "The vxrack-sim program.", "path");
    const QCommandLineOption instant("instant", "No line time: the overhead alone.");
    parser.addOptions({count, sim, instant});
    parser.process(app);
    bool ok = false;
    const int runs = parser.value(count).toInt(&ok);
    if (!ok || runs < 1) return fail("-n takes a number from 1");

    QTemporaryDir portDir;
    QProcess simulator;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("VXCFG_PORT_DIR", portDir.path());
    simulator.setProcessEnvironment(env);
    QStringList arguments{"--com", "1"};
    if (!parser.isSet(instant)) arguments << "--baud";
    simulator.start(simulatorPath(parser.value(sim)), arguments);
    if (!simulator.waitForStarted(10000)) return fail("cannot start " + simulator.program());
    while (!simulator.canReadLine())
        if (!simulator.waitForReadyRead(10000)) return fail("the simulator did not get ready");
    std::printf("%s", simulator.readLine().constData());

    qputenv("VXCFG_PORT_DIR", portDir.path().toLocal8Bit());
    auto *line = new QSerialLine;
    Link::setPort(std::unique_ptr<SerialLine>(line));
    QString error;
    if (!line->open(1, &error)) return fail(error);

    qint64 steps = 0, sentBytes = 0, receivedBytes = 0, silent = 0;
    Link::addTrafficObserver([&](Link::Traffic kind, const QString &text) {
        switch (kind) {
        case Link::Traffic::Sent:
            ++steps;
            sentBytes += text.size();
            break;
        case Link::Traffic::Received:
            receivedBytes += text.size() + 1;
            break;
        case Link::Traffic::NoReply:
            ++silent;
            break;
        }
    });

    if (ReadData(3, "00", "40").isEmpty()) return fail("no answer from the simulator");
    steps = sentBytes = receivedBytes = silent = 0;

    int failures = 0;
    const double simCpuBefore = cpuMsOf(simulator.processId());
    const double cpuBefore = cpuMsSelf();
    QElapsedTimer wall;
    wall.start();
    for (int i = 0; i < runs; ++i)
        if (ReadData(3, "00", "40").isEmpty()) ++failures;
    const double wallMs = wall.nsecsElapsed() / 1e6;
    const double cpuMs = cpuMsSelf() - cpuBefore;
    const double simCpuMs = cpuMsOf(simulator.processId()) - simCpuBefore;

    Link::setPort(nullptr);
    simulator.terminate();
    simulator.waitForFinished(5000);

    const double perStep = wallMs / double(steps);
    const double lineMs = parser.isSet(instant) ? 0.0 : 10.0 * 1000.0 / 9600.0;
    const double linePerStep = double(sentBytes + receivedBytes) * lineMs / double(steps);
    std::printf("ReadData exchanges      %d (%d failed), %lld steps, %lld without reply\n", runs,
                failures, static_cast<long long>(steps), static_cast<long long>(silent));
    std::printf("bytes per step          %.1f sent, %.1f received\n",
                double(sentBytes) / double(steps), double(receivedBytes) / double(steps));
    std::printf("mean per ReadData       %.3f ms\n", wallMs / runs);
    std::printf("mean step time          %.3f ms\n", perStep);
    std::printf("line time per step      %.3f ms (10 bits a byte at 9600 baud%s)\n", linePerStep,
                parser.isSet(instant) ? ", not emulated" : "");
    std::printf("overhead per step       %.3f ms\n", perStep - linePerStep);
    std::printf("CPU per step            %.3f ms (this program)\n", cpuMs / double(steps));
    if (simCpuMs >= 0)
        std::printf("CPU per step            %.3f ms (simulator)\n", simCpuMs / double(steps));
    return failures == 0 ? 0 : 1;
}
