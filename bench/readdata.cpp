// vxbench-readdata: how long a ReadData takes through the real serial port code against the
// simulator at 9600 baud, how much of that is line time, and what it costs in CPU.
#include "benchsupport.h"
#include "link/exchange.h"
#include "link/link.h"
#include "link/qserialline.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>

#include <cstdio>

namespace {
int fail(const QString &text) {
    return Bench::fail("vxbench-readdata", text);
}
} // namespace

int main(int argc, char **argv) {
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Runs ReadData of the comm card's version through QSerialPort against vxrack-sim at "
        "9600 baud and prints the time and CPU per step.");
    parser.addHelpOption();
    const QCommandLineOption countOption({"n", "count"}, "ReadData exchanges to time (200).", "n",
                                         "200");
    const QCommandLineOption sim("sim", "The vxrack-sim program.", "path");
    const QCommandLineOption instant("instant", "No line time: the overhead alone.");
    parser.addOptions({countOption, sim, instant});
    parser.process(app);
    bool ok = false;
    const int runs = parser.value(countOption).toInt(&ok);
    if (!ok || runs < 1) return fail("-n takes a number from 1");

    Bench::Simulator simulator;
    QString error;
    if (!simulator.start(parser.value(sim),
                         parser.isSet(instant) ? QStringList{} : QStringList{"--baud"}, &error))
        return fail(error);

    auto *line = new QSerialLine;
    Link::setPort(std::unique_ptr<SerialLine>(line));
    if (!line->open(1, &error)) return fail(error);

    Bench::LineCount count;
    if (ReadData(3, "00", "40").isEmpty()) return fail("no answer from the simulator");
    count.reset();

    int failures = 0;
    const double simCpuBefore = simulator.cpuMs();
    const double cpuBefore = Bench::cpuMsSelf();
    QElapsedTimer wall;
    wall.start();
    for (int i = 0; i < runs; ++i)
        if (ReadData(3, "00", "40").isEmpty()) ++failures;
    const double wallMs = wall.nsecsElapsed() / 1e6;
    const double cpuMs = Bench::cpuMsSelf() - cpuBefore;
    const double simCpuMs = simulator.cpuMs() - simCpuBefore;

    Link::setPort(nullptr);

    const double perStep = wallMs / double(count.steps);
    const double lineMs = parser.isSet(instant) ? 0.0 : Bench::kByteMs;
    const double linePerStep = double(count.sent + count.received) * lineMs / double(count.steps);
    std::printf("ReadData exchanges      %d (%d failed), %lld steps, %lld without reply\n", runs,
                failures, static_cast<long long>(count.steps),
                static_cast<long long>(count.silent));
    std::printf("bytes per step          %.1f sent, %.1f received\n",
                double(count.sent) / double(count.steps),
                double(count.received) / double(count.steps));
    std::printf("mean per ReadData       %.3f ms\n", wallMs / runs);
    std::printf("mean step time          %.3f ms\n", perStep);
    std::printf("line time per step      %.3f ms (10 bits a byte at 9600 baud%s)\n", linePerStep,
                parser.isSet(instant) ? ", not emulated" : "");
    std::printf("overhead per step       %.3f ms\n", perStep - linePerStep);
    std::printf("CPU per step            %.3f ms (this program)\n", cpuMs / double(count.steps));
    if (simCpuMs >= 0)
        std::printf("CPU per step            %.3f ms (simulator)\n",
                    simCpuMs / double(count.steps));
    return failures == 0 ? 0 : 1;
}
