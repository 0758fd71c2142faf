// vxsoak: the monitor of the main window left running against the simulated demo rack, with a
// fault of the line injected now and then at random (silence, garbage, a reply split or without
// CR, late or refused replies, a cut line). After a failed pass it does what a user would:
// connects again if the line went, uploads, starts the monitor again. Resident memory is sampled
// throughout; the run fails when it grew by the limit or more after the warm-up.
#include "benchsupport.h"

#include "app/allviews.h"
#include "app/frmvxcfg.h"
#include "app/session.h"
#include "app/trafficlog.h"
#include "demorack.h"
#include "link/link.h"
#include "rack/cardtable.h"
#include "rack/monitor.h"
#include "simline.h"
#include "simrack.h"
#include "ui/people.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QFile>
#include <QRandomGenerator>
#include <QTimer>

#include <cstdio>
#include <vector>

namespace {

const SimFault kFaults[] = {
    SimFault::NoReply, SimFault::Split,   SimFault::NoCR,   SimFault::Delay,  SimFault::Late,
    SimFault::Garbage, SimFault::Timeout, SimFault::Refuse, SimFault::Unused, SimFault::CutLine};

struct Sample {
    double seconds;
    double rssMb;
};

} // namespace

int main(int argc, char **argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Runs the monitor against the simulated demo rack with random line faults and checks that "
        "resident memory stays flat after the warm-up.");
    parser.addHelpOption();
    const QCommandLineOption secondsOption("seconds", "Length of the run (600).", "s", "600");
    const QCommandLineOption warmOption(
        "warm-up", "Seconds before the memory baseline (60, at most a quarter of the run).", "s",
        "60");
    const QCommandLineOption limitOption("limit", "Growth in MB that fails the run (1).", "MB",
                                         "1");
    const QCommandLineOption instantOption("instant", "No line time: passes as fast as they go.");
    const QCommandLineOption seedOption("seed", "Seed of the fault picks (random).", "n");
    parser.addOptions({secondsOption, warmOption, limitOption, instantOption, seedOption});
    parser.process(app);
    const double seconds = parser.value(secondsOption).toDouble();
    const double warmUp = std::min(parser.value(warmOption).toDouble(), seconds / 4);
    const double limitMb = parser.value(limitOption).toDouble();
    const quint32 seed = parser.isSet(seedOption) ? parser.value(seedOption).toUInt()
                                                  : QRandomGenerator::global()->generate();
    QRandomGenerator random(seed);

    SimRack rack;
    LoadDemoRack(rack);
    auto *line = new SimLine(&rack);
    // 9600 baud, as the rack's line runs.
    if (!parser.isSet(instantOption)) line->setByteTimeMicros(1042);
    Link::setPort(std::unique_ptr<SerialLine>(line));
    int messages = 0;
    People::setMessageHandler([&messages](const People::Message &) {
        ++messages;
        return People::Answer::Ok;
    });

    RegisterAllViews();
    FrmVxCfg window;
    window.setEndProgram([] {});
    window.show();
    // The traffic log keeps its last rows by design. The soak starts with that ring full of
    // rows shaped like a monitor pass's, so what it measures is growth past every bound.
    for (int n = 0; n < TrafficLogModel::kCapacity / 2; ++n) {
        // Texts of their own, as the line's are, not one shared literal.
        Link::notifyTraffic(Link::Traffic::Sent,
                            QLatin1Char('I') + QString::number(n % 90 + 10) + QLatin1Char('\r'));
        Link::notifyTraffic(Link::Traffic::Received,
                            QLatin1Char('D') + QString::number(n % 9000 + 1000));
    }
    window.trafficLog()->flush();

    QElapsedTimer clock;
    clock.start();
    std::vector<Sample> samples;
    int faults = 0, restarts = 0, reconnects = 0;
    // Faults come every 2 to 10 s; memory is read every 10 s. Both run inside the monitor's own
    // event pump.
    QTimer faultTimer;
    faultTimer.setSingleShot(true);
    QObject::connect(&faultTimer, &QTimer::timeout, [&] {
        const SimFault kind = kFaults[random.bounded(int(std::size(kFaults)))];
        rack.addFault({kind, QString(), 1, kind == SimFault::Split ? 3 : 500});
        ++faults;
        faultTimer.start(2000 + random.bounded(8000));
    });
    QTimer sampleTimer;
    QObject::connect(&sampleTimer, &QTimer::timeout, [&] {
        // The simulator's transcript is for tests; here it would only grow.
        rack.clearTranscript();
        const double now = clock.elapsed() / 1000.0;
        samples.push_back({now, Bench::statusMb("VmRSS")});
        std::printf("%6.0f s  VmRSS %7.2f MB  passes %6llu  faults %4d  restarts %4d  "
                    "reconnects %3d  messages %4d\n",
                    now, samples.back().rssMb, static_cast<unsigned long long>(MonitorPasses()),
                    faults, restarts, reconnects, messages);
        std::fflush(stdout);
        if (now >= seconds) IsMonitoring = false;
    });
    std::printf("soak: %.0f s, baseline after %.0f s, limit %.2f MB, seed %u\n", seconds, warmUp,
                limitMb, seed);
    faultTimer.start(2000 + random.bounded(8000));
    sampleTimer.start(10000);

    while (clock.elapsed() / 1000.0 < seconds) {
        if (!line->isOpen() || !IsConnected) {
            QString error;
            if (!line->isOpen() && !line->open(1, &error)) {
                std::fprintf(stderr, "vxsoak: %s\n", qPrintable(error));
                return 1;
            }
            if (!ConnectRack()) continue; // a fault hit the link test: try again
            ++reconnects;
        }
        window.CmdUpload_Click();
        if (!IsConnected) continue;
        ++restarts;
        window.cmdStart_Click();
        window.cmdStop_Click();
    }
    faultTimer.stop();
    sampleTimer.stop();
    Link::setPort(nullptr);

    double baseline = -1, highest = 0;
    for (const Sample &sample : samples) {
        if (baseline < 0 && sample.seconds >= warmUp) baseline = sample.rssMb;
        if (baseline >= 0) highest = std::max(highest, sample.rssMb);
    }
    if (baseline < 0) {
        std::fprintf(stderr, "vxsoak: the run was too short for a memory sample\n");
        return 1;
    }
    const double growth = highest - baseline;
    std::printf("\nVmRSS %.2f MB after %.0f s, highest after it %.2f MB: growth %.2f MB "
                "(limit %.2f); %llu passes, %d faults, %d monitor starts, %d reconnects\n",
                baseline, warmUp, highest, growth, limitMb,
                static_cast<unsigned long long>(MonitorPasses()), faults, restarts, reconnects);
    if (growth >= limitMb) {
        std::printf("FAILED: resident memory grew by %.2f MB\n", growth);
        return 1;
    }
    return 0;
}
