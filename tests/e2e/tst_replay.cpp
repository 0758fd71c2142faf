#include "app/screen.h"

#include "link/qserialline.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using vxtest::Desk;

// A log saved in the field, served by the vxrack-sim program on a pseudo-terminal and worked
// through the real serial port: the same operations give the same screens.
class ReplayProcessTest : public QObject {
    Q_OBJECT

private slots:
    void replayedLogGivesTheSameScreens() {
        QTemporaryDir dir;
        const QString log = dir.filePath("field.txt");
        const QStringList recorded = vxtest::workInTheField(log, 4711);
        QVERIFY(recorded.contains("after monitor pass"));

        QProcess sim;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("VXCFG_PORT_DIR", dir.path());
        sim.setProcessEnvironment(env);
        sim.start(qEnvironmentVariable("VXRACK_SIM",
                                       QCoreApplication::applicationDirPath() + "/../vxrack-sim"),
                  {"--com", "1", "--from-log", log});
        while (!sim.canReadLine())
            QVERIFY2(sim.waitForReadyRead(10000), sim.readAllStandardError().constData());
        QVERIFY(sim.readLine().startsWith("COM1 -> "));

        const QByteArray portDir = qgetenv("VXCFG_PORT_DIR");
        qputenv("VXCFG_PORT_DIR", dir.path().toLocal8Bit());
        {
            Desk desk;
            Link::setPort(std::make_unique<QSerialLine>());
            Clock::setDivisor(10); // a terminal and another process: more than 30 ms a step
            QCOMPARE(vxtest::workThrough(desk, 8), recorded);
            QVERIFY(desk.sim.rack.transcript().isEmpty()); // all of it went through the terminal
        }
        qputenv("VXCFG_PORT_DIR", portDir);
        sim.terminate();
        QVERIFY(sim.waitForFinished(10000));
    }
};

VX_TEST(ReplayProcessTest)
#include "tst_replay.moc"
