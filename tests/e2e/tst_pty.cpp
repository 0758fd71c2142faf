#include "support/testsupport.h"

#include "demorack.h"
#include "link/exchange.h"
#include "link/qserialline.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <sys/resource.h>

namespace {

QString simulatorPath() {
    const QString fromEnv = qEnvironmentVariable("VXRACK_SIM");
    if (!fromEnv.isEmpty()) return fromEnv;
    return QCoreApplication::applicationDirPath() + "/../vxrack-sim";
}

qint64 cpuMillis() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return (usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1000 +
           (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1000;
}

// The vxrack-sim program in a ports folder of its own.
struct SimProcess {
    QTemporaryDir dir;
    QProcess process;
    QString device;
    int com = 1;

    explicit SimProcess(int comNumber = 1) : com(comNumber) {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("VXCFG_PORT_DIR", dir.path());
        process.setProcessEnvironment(env);
        process.setProgram(simulatorPath());
    }
    ~SimProcess() {
        if (process.state() == QProcess::NotRunning) return;
        process.terminate();
        if (!process.waitForFinished(5000)) process.kill();
        process.waitForFinished(5000);
    }

    QString linkPath() const { return QDir(dir.path()).filePath(QStringLiteral("COM%1").arg(com)); }

    // Waits for the next "COMn -> device" line; false if the program ends or stays silent.
    bool waitLinked() {
        while (!process.canReadLine())
            if (!process.waitForReadyRead(10000)) return false;
        const QString line = QString::fromLocal8Bit(process.readLine()).trimmed();
        const QString head = QStringLiteral("COM%1 -> ").arg(com);
        if (!line.startsWith(head)) return false;
        device = line.mid(head.size());
        return true;
    }

    bool start(QStringList arguments = {}) {
        process.setArguments(arguments << "--com" << QString::number(com));
        process.start();
        return process.waitForStarted(10000) && waitLinked();
    }
};

// The answer the demo rack gives to a command sequence, from the same rack in this process.
QString demoAnswer(const QStringList &commands) {
    SimRack demo;
    LoadDemoRack(demo);
    QString reply;
    for (const QString &command : commands)
        reply = demo.answer(command);
    return reply;
}

} // namespace

// The simulator as a separate program on a real pseudo-terminal, opened through QSerialPort.
class PtyTest : public QObject {
    Q_OBJECT

    QByteArray m_savedPortDir;

    // Installs the real serial line on the simulator's COM number.
    static QSerialLine *openLine(SimProcess &sim) {
        qputenv("VXCFG_PORT_DIR", sim.dir.path().toLocal8Bit());
        auto *line = new QSerialLine;
        Link::setPort(std::unique_ptr<SerialLine>(line));
        QString error;
        if (!line->open(sim.com, &error)) qWarning("%s", qPrintable(error));
        return line;
    }

private slots:
    void initTestCase() {
        m_savedPortDir = qgetenv("VXCFG_PORT_DIR");
        QVERIFY2(QFileInfo(simulatorPath()).isExecutable(), qPrintable(simulatorPath()));
    }
    void init() {
        Clock::setDivisor(1);
        Link::resetTimer();
    }
    void cleanup() {
        Link::setPort(nullptr);
        Link::resetTimer();
        qputenv("VXCFG_PORT_DIR", m_savedPortDir);
    }

    void exchangesOverTheTerminal() {
        SimProcess sim(3);
        const QString logPath = sim.dir.filePath("transcript.log");
        QVERIFY(sim.start({"--log", logPath}));
        QCOMPARE(QFileInfo(sim.linkPath()).symLinkTarget(), sim.device);
        QVERIFY(openLine(sim)->isOpen());

        QCOMPARE(ReadData(3, "00", "40"), demoAnswer({"G00", "I40"}).mid(1));
        for (int slot = 1; slot <= 16; ++slot) {
            const QString item = QString::number(9 + slot);
            QCOMPARE(ReadData(3, "00", item), demoAnswer({"G00", "I" + item}).mid(1));
        }
        // The multi-power card: the list gives its family, the card its full name.
        QCOMPARE(WriteData(3, "00", "41", "3"), QString("3"));
        QCOMPARE(ReadData(3, "00", "04"), demoAnswer({"G00", "I41", "D3", "G00", "I04"}).mid(1));
        QVERIFY(ReadData(3, "00", "04") != demoAnswer({"G00", "I12"}).section(':', 1));
        // A write is echoed and kept; the comm card's group 01 starts out as "1".
        QCOMPARE(WriteData(3, "00", "41", "0"), QString("0"));
        QCOMPARE(WriteData(3, "01", "01", "0"), QString("0"));
        QCOMPARE(ReadData(3, "01", "01"), QString("0"));

        QFile log(logPath);
        QVERIFY(log.open(QIODevice::ReadOnly));
        const QStringList lines = QString::fromUtf8(log.readAll()).split('\n', Qt::SkipEmptyParts);
        QStringList wire;
        for (const QString &line : lines)
            wire << line.section(' ', 1);
        QCOMPARE(wire.mid(0, 4), QStringList({"> G00", "< COK", "> I40", "< DVER:1.00"}));
        QCOMPARE(wire.mid(wire.size() - 4), QStringList({"> G01", "< COK", "> I01", "< D0"}));

        // A user closes the port and opens it again, as Disconnect and Connect do.
        for (int round = 0; round < 2; ++round) {
            Link::port()->close();
            QVERIFY(Link::port()->open(sim.com));
            QCOMPARE(ReadData(3, "00", "40"), demoAnswer({"G00", "I40"}).mid(1));
        }
    }

    // A stop signal is a clean end: exit code 0 and the link gone, so no stale COMn is left.
    void stopSignalsRemoveTheLink() {
        for (const int signal : {SIGTERM, SIGINT}) {
            SimProcess sim(5);
            QVERIFY(sim.start());
            QVERIFY(QFileInfo(sim.linkPath()).isSymLink());
            ::kill(pid_t(sim.process.processId()), signal);
            QVERIFY(sim.process.waitForFinished(10000));
            QCOMPARE(sim.process.exitStatus(), QProcess::NormalExit);
            QCOMPARE(sim.process.exitCode(), 0);
            QVERIFY(!QFileInfo(sim.linkPath()).isSymLink());
        }
    }

    void killedSimulatorUnplugsThePort() {
        SimProcess sim(6);
        QVERIFY(sim.start());
        SerialLine *line = openLine(sim);
        QSignalSpy lost(line, &SerialLine::lineLost);
        QVERIFY(!ReadData(3, "00", "40").isEmpty());

        sim.process.kill();
        QVERIFY(sim.process.waitForFinished(10000));
        const qint64 cpuBefore = cpuMillis();
        QElapsedTimer wall;
        wall.start();
        QCOMPARE(SendLine("G00\r"), QString());
        QVERIFY(!line->isOpen());
        QCOMPARE(lost.count(), 1);
        // A port left open on a hung-up terminal reports its error in a tight loop.
        const qint64 cpu = cpuMillis() - cpuBefore;
        QVERIFY2(cpu <= wall.elapsed() / 2 + 100,
                 qPrintable(QString("%1 ms CPU in %2 ms").arg(cpu).arg(wall.elapsed())));
        QCOMPARE(ReadData(3, "00", "40"), QString());
    }

};

VX_TEST(PtyTest)
#include "tst_pty.moc"
