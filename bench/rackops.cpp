// vxbench-rack: the program's long operations, run by its own code through QSerialPort against
// the simulated demo rack at 9600 baud: the rack scan, one monitor pass, and the Upload and
// Download of an 8-channel voltage card. For each it prints the time taken beside the time the
// line needs for the bytes that crossed it (the physical limit), their ratio, and the CPU time.
#include "benchsupport.h"

#include "app/allviews.h"
#include "app/frmtrafficlog.h"
#include "app/frmvxcfg.h"
#include "app/session.h"
#include "app/trafficlog.h"
#include "link/exchange.h"
#include "link/link.h"
#include "link/qserialline.h"
#include "rack/cardtable.h"
#include "rack/monitor.h"
#include "rack/registry.h"
#include "rack/scan.h"
#include "ui/viewregistry.h"
#include "views/common/cardview.h"

#include <QApplication>
#include <QComboBox>
#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

namespace {

int fail(const QString &text) {
    return Bench::fail("vxbench-rack", text);
}

// The demo rack's 8-channel voltage card.
constexpr int kVoltageSlot = 8;

struct Figures {
    double wallMs = 0;
    double lineMs = 0;
    double cpuMs = 0;
    double ownMs = 0; // not waiting for a reply
    qint64 steps = 0;
    qint64 bytes = 0;
    qint64 silent = 0;
};

// Runs `operation` `runs` times and keeps the run of median time: on a shared machine a run
// now and then waits for the host, and a mean would carry that into every figure. A step
// without a reply is counted over all runs: on a healthy line there is none.
Figures measure(int runs, const std::function<void()> &operation) {
    std::vector<Figures> all;
    qint64 silent = 0;
    for (int run = 0; run < runs; ++run) {
        Bench::LineCount count;
        const double cpuBefore = Bench::cpuMsSelf();
        QElapsedTimer wall;
        wall.start();
        operation();
        const double wallMs = wall.nsecsElapsed() / 1e6;
        all.push_back({wallMs, count.lineMs(), Bench::cpuMsSelf() - cpuBefore,
                       wallMs - count.waitMs, count.steps, count.bytes(), count.silent});
        silent += count.silent;
    }
    std::sort(all.begin(), all.end(),
              [](const Figures &a, const Figures &b) { return a.wallMs < b.wallMs; });
    Figures median = all.at(all.size() / 2);
    median.silent = silent;
    return median;
}

void printRow(const char *name, const Figures &f) {
    std::printf("%-26s %6lld %7lld %10.1f %10.1f %7.3f %8.1f %6.2f%% %7.1f\n", name,
                static_cast<long long>(f.steps), static_cast<long long>(f.bytes), f.wallMs,
                f.lineMs, f.wallMs / f.lineMs, f.cpuMs, 100.0 * f.cpuMs / f.wallMs, f.ownMs);
}

// What the traffic log costs a line: the observer that runs inside each step (one more log
// beside the program's own), and the batch that brings rows into the open window afterwards, in
// batches of the size a 100 ms timer collects on the line and in one large one.
void printTrafficLogCost(TrafficLogModel *log) {
    constexpr int kLines = 200000;
    const QString command = QStringLiteral("I14\r");
    const QString reply = QStringLiteral("D5:QZ8");
    const auto notifyAll = [&] {
        const double before = Bench::cpuMsSelf();
        for (int n = 0; n < kLines / 2; ++n) {
            Link::notifyTraffic(Link::Traffic::Sent, command);
            Link::notifyTraffic(Link::Traffic::Received, reply);
        }
        return Bench::cpuMsSelf() - before;
    };
    log->flush();
    log->clear();
    log->setPaused(true);
    const double withProgramLog = notifyAll();
    double withOneMore = 0;
    {
        TrafficLogModel another(nullptr, kLines);
        withOneMore = notifyAll();
    }
    log->clear();
    log->setPaused(false);

    constexpr int kBatch = 20;
    constexpr int kBatches = 500;
    double batchMs = 0;
    for (int b = 0; b < kBatches; ++b) {
        for (int n = 0; n < kBatch / 2; ++n) {
            Link::notifyTraffic(Link::Traffic::Sent, command);
            Link::notifyTraffic(Link::Traffic::Received, reply);
        }
        const double before = Bench::cpuMsSelf();
        log->flush();
        QCoreApplication::processEvents(); // the window repaints what came
        batchMs += Bench::cpuMsSelf() - before;
    }
    log->clear();
    for (int n = 0; n < kLines / 2; ++n) {
        Link::notifyTraffic(Link::Traffic::Sent, command);
        Link::notifyTraffic(Link::Traffic::Received, reply);
    }
    double before = Bench::cpuMsSelf();
    log->flush();
    QCoreApplication::processEvents();
    const double bigBatchMs = Bench::cpuMsSelf() - before;

    std::printf("\ntraffic log, CPU a line: observer %.3f us (%d lines); into the open window "
                "%.1f us in batches of %d (%.2f ms a batch), %.2f us in one batch of %d\n",
                1e3 * (withOneMore - withProgramLog) / kLines, kLines,
                1e3 * batchMs / (kBatch * kBatches), kBatch, batchMs / kBatches,
                1e3 * bigBatchMs / kLines, kLines);
}

// One tick of the view with the given request pending, run at once rather than on its timer, so
// that the figure is the operation's and not the wait for the next tick.
void runViewRequest(CardView *view, bool CardView::*pending) {
    view->WaitForTimer->stop();
    view->CycleActive = false;
    view->*pending = true;
    view->WaitForTimer_Timer();
}

} // namespace

int main(int argc, char **argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Times the rack scan, a monitor pass and an 8-channel Upload and Download against "
        "vxrack-sim's demo rack at 9600 baud, beside the line time of their bytes.");
    parser.addHelpOption();
    const QCommandLineOption repeat({"n", "runs"}, "Runs of each operation (5).", "n", "5");
    const QCommandLineOption sim("sim", "The vxrack-sim program.", "path");
    const QCommandLineOption trafficLog(
        "traffic-log", "Runs with the traffic log window open, and prints what it costs a line.");
    parser.addOptions({repeat, sim, trafficLog});
    parser.process(app);
    bool ok = false;
    const int runs = parser.value(repeat).toInt(&ok);
    if (!ok || runs < 1) return fail("-n takes a number from 1");

    Bench::Simulator simulator;
    QString error;
    if (!simulator.start(parser.value(sim), {"--baud"}, &error)) return fail(error);

    RegisterAllViews();
    FrmVxCfg window;
    window.setEndProgram([] {});
    window.show();
    FrmTrafficLog *logWindow =
        parser.isSet(trafficLog) ? ShowTrafficLog(window.trafficLog(), &window) : nullptr;
    auto *line = new QSerialLine;
    Link::setPort(std::unique_ptr<SerialLine>(line));
    if (!line->open(1, &error)) return fail(error);
    if (!ConnectRack()) return fail("the simulator did not answer the link test");

    const double simCpuBefore = simulator.cpuMs();
    const double cpuBefore = Bench::cpuMsSelf();
    QElapsedTimer total;
    total.start();

    const Figures scan = measure(runs, ScanRack);
    if (CardTable(kVoltageSlot).CardName != QLatin1String("QF8"))
        return fail("the scan did not find the demo rack's QF8 in slot 8");
    window.FillCardSelector();
    const Figures pass = measure(runs, [] { ReadOverview(); });

    // The card view as a user opens it: picked in the selector.
    window.cboCardNo->setCurrentIndex(kVoltageSlot);
    window.cboCardNo_Click();
    auto *view = qobject_cast<CardView *>(LoadedView(QStringLiteral("frmQF8")));
    if (!view || !view->isVisible()) return fail("the QF8 view did not open");
    const Figures upload =
        measure(runs, [view] { runViewRequest(view, &CardView::UploadPending); });
    const Figures download =
        measure(runs, [view] { runViewRequest(view, &CardView::DownloadPending); });

    const double totalMs = total.nsecsElapsed() / 1e6;
    const double cpuMs = Bench::cpuMsSelf() - cpuBefore;
    const double simCpuMs = simulator.cpuMs() - simCpuBefore;
    Link::setPort(nullptr);
    window.trafficLog()->flush();
    const int logged = window.trafficLog()->rowCount();

    std::printf("\nMedian of %d runs each; line time is 10 bits a byte at 9600 baud; own: the time "
                "between a reply taken in and the next command handed to the line.\n\n",
                runs);
    std::printf("%-26s %6s %7s %10s %10s %7s %8s %7s %7s\n", "operation", "steps", "bytes",
                "time ms", "line ms", "ratio", "CPU ms", "CPU", "own ms");
    printRow("rack scan, 16 slots", scan);
    printRow("monitor pass, demo rack", pass);
    printRow("Upload, 8-channel card", upload);
    printRow("Download, 8-channel card", download);
    std::printf("\nwhole run %.0f ms: CPU %.0f ms here (%.2f%% of a core), %.0f ms in the "
                "simulator\n",
                totalMs, cpuMs, 100.0 * cpuMs / totalMs, simCpuMs);
    if (logWindow) {
        std::printf("the traffic log window was open: %d rows\n", logged);
        printTrafficLogCost(window.trafficLog());
    }
    const qint64 silent = scan.silent + pass.silent + upload.silent + download.silent;
    if (silent > 0) return fail(QStringLiteral("%1 steps got no reply").arg(silent));
    return 0;
}
