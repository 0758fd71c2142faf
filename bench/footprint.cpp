// vxbench-footprint: what the program costs before any line time. The time from a real process
// start of vxcfg (off screen) to its main window shown; resident memory after a scan of the full
// demo rack and after opening every view once, read from /proc/self/status; and the Save and Open
// of a project file of that full rack through the main window's own commands.
#include "benchsupport.h"

#include "app/allviews.h"
#include "app/frmvxcfg.h"
#include "app/session.h"
#include "link/link.h"
#include "link/qserialline.h"
#include "rack/cardtable.h"
#include "rack/projectfile.h"
#include "rack/scan.h"
#include "ui/people.h"
#include "ui/viewregistry.h"

#include <QApplication>
#include <QComboBox>
#include <QCommandLineParser>
#include <QDialog>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

namespace {

int fail(const QString &text) {
    return Bench::fail("vxbench-footprint", text);
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

double medianMs(int runs, const std::function<void()> &operation) {
    std::vector<double> times;
    for (int run = 0; run < runs; ++run) {
        QElapsedTimer wall;
        wall.start();
        operation();
        times.push_back(wall.nsecsElapsed() / 1e6);
    }
    return median(times);
}

// One start of the program until it says its window is shown: the time from the start request
// to that line, and the program's own figure from main() on.
bool timeStart(const QString &program, double &wallMs, double &inMainMs, QString &error) {
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("QT_QPA_PLATFORM", "offscreen");
    env.insert("VXCFG_QUIT_WHEN_SHOWN", "1");
    process.setProcessEnvironment(env);
    QElapsedTimer wall;
    wall.start();
    process.start(program, {});
    while (!process.canReadLine())
        if (!process.waitForReadyRead(10000)) {
            error = program + " did not say it was shown: " +
                    QString::fromLocal8Bit(process.readAllStandardError());
            return false;
        }
    wallMs = wall.nsecsElapsed() / 1e6;
    const QByteArray line = process.readLine();
    inMainMs = line.split(' ').value(1).toDouble();
    process.waitForFinished(10000);
    return true;
}

using Bench::statusMb;

void printMemory(const char *when) {
    std::printf("%-40s VmRSS %6.1f MB   VmHWM %6.1f MB\n", when, statusMb("VmRSS"),
                statusMb("VmHWM"));
}

} // namespace

int main(int argc, char **argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Times vxcfg's start to its window shown, reads its resident memory after a scan of the "
        "full demo rack and after opening every view, and times a project file Save and Open.");
    parser.addHelpOption();
    const QCommandLineOption repeat({"n", "runs"}, "Runs of each timing (5).", "n", "5");
    const QCommandLineOption sim("sim", "The vxrack-sim program.", "path");
    const QCommandLineOption program("program", "The vxcfg program.", "path",
                                     QStringLiteral(VXCFG_BUILT));
    parser.addOptions({repeat, sim, program});
    parser.process(app);
    bool ok = false;
    const int runs = parser.value(repeat).toInt(&ok);
    if (!ok || runs < 1) return fail("-n takes a number from 1");

    // The start first, while this process is still small and quiet.
    std::vector<double> startWall, startMain;
    QString error;
    for (int run = 0; run < runs; ++run) {
        double wall = 0, inMain = 0;
        if (!timeStart(parser.value(program), wall, inMain, error)) return fail(error);
        startWall.push_back(wall);
        startMain.push_back(inMain);
    }
    std::printf("start to main window shown (median of %d): %.1f ms, of which %.1f ms from "
                "main()\n\n",
                runs, median(startWall), median(startMain));

    Bench::Simulator simulator;
    if (!simulator.start(parser.value(sim), {}, &error)) return fail(error);
    People::setMessageHandler([](const People::Message &message) {
        std::fprintf(stderr, "message: %s\n", qPrintable(message.text));
        return People::Answer::Yes;
    });

    printMemory("before the main window");
    RegisterAllViews();
    FrmVxCfg window;
    window.setEndProgram([] {});
    window.show();
    QCoreApplication::processEvents();
    printMemory("main window shown");
    auto *line = new QSerialLine;
    Link::setPort(std::unique_ptr<SerialLine>(line));
    if (!line->open(1, &error)) return fail(error);
    if (!ConnectRack()) return fail("the simulator did not answer the link test");
    ScanRack();
    window.FillCardSelector();
    QCoreApplication::processEvents();
    int cards = 0;
    for (int slot = 1; slot <= 16; ++slot)
        cards += CardTable(slot).CardName.isEmpty() ? 0 : 1;
    if (cards != 16) return fail(QStringLiteral("the scan found %1 cards, not 16").arg(cards));
    printMemory("after a scan of 16 slots");

    // Each card's view as a user opens it, from the selector; then every other form made and shown.
    for (int slot = 1; slot <= 16; ++slot) {
        window.cboCardNo->setCurrentIndex(slot);
        window.cboCardNo_Click();
        QCoreApplication::processEvents();
    }
    printMemory("after the 16 cards' views");
    const QStringList forms = RegisteredViewNames();
    std::vector<std::pair<double, QString>> growth;
    for (const QString &name : forms) {
        const double before = statusMb("VmRSS");
        QWidget *form = ViewByName(name);
        if (!form || form->isVisible()) continue;
        // A card view lives in the main window's work area; a dialog is a window of its own.
        if (!qobject_cast<QDialog *>(form) && CurrentViewHost()) CurrentViewHost()->placeView(form);
        form->show();
        QCoreApplication::processEvents();
        form->hide();
        growth.emplace_back(statusMb("VmRSS") - before, name);
    }
    printMemory(qPrintable(QStringLiteral("after opening all %1 forms").arg(forms.size())));
    std::sort(growth.rbegin(), growth.rend());
    std::printf("  the most of it, of the forms opened by name:");
    for (size_t i = 0; i < std::min<size_t>(5, growth.size()); ++i)
        std::printf(" %s %.1f MB%s", qPrintable(growth[i].second), growth[i].first,
                    i + 1 < std::min<size_t>(5, growth.size()) ? "," : "\n");

    QTemporaryDir folder;
    const QString path = folder.filePath("rack.uJx");
    People::setFileHandler([&path](const People::FileRequest &) { return path; });
    const double saveMs = medianMs(runs, [&window] { window.mnuFilesSave_Click(); });
    const double openMs = medianMs(runs, [&window] { window.mnuFilesOpen_Click(); });
    std::printf("\nproject file of 16 cards, %lld bytes (median of %d): Save %.2f ms, Open "
                "%.2f ms\n",
                static_cast<long long>(QFileInfo(path).size()), runs, saveMs, openMs);
    Link::setPort(nullptr);
    return 0;
}
