#include "support/testsupport.h"

#include "link/comports.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

// The latency timer of a USB adapter, read from a folder laid out as sysfs lays it out.
class ComPortsTest : public QObject {
    Q_OBJECT

private slots:
    void latencyTimer_data() {
        QTest::addColumn<QByteArray>("content"); // empty: no such file
        QTest::addColumn<int>("ms");
        QTest::addColumn<bool>("advised");
        QTest::newRow("common default") << QByteArray("16\n") << 16 << true;
        QTest::newRow("already low") << QByteArray("1\n") << 1 << false;
        QTest::newRow("no timer") << QByteArray() << -1 << false;
        QTest::newRow("unreadable value") << QByteArray("fast\n") << -1 << false;
    }

    void latencyTimer() {
        QFETCH(QByteArray, content);
        QFETCH(int, ms);
        QFETCH(bool, advised);
        QTemporaryDir sys;
        const QString folder = sys.filePath("bus/usb-serial/devices/ttyUSB0");
        QVERIFY(QDir().mkpath(folder));
        const QString timer = folder + "/latency_timer";
        if (!content.isEmpty()) {
            QFile file(timer);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(content);
        }
        // The port as the program meets it: a COM link in the ports folder to the adapter.
        QTemporaryDir ports;
        const QString com = ports.filePath("COM3");
        QVERIFY(QFile::link("/dev/ttyUSB0", com));

        QCOMPARE(ComPorts::latencyTimerMs(com, sys.path()), ms);
        const QString advice = ComPorts::latencyAdvice(com, sys.path());
        QCOMPARE(!advice.isEmpty(), advised);
        if (advised) {
            QVERIFY(advice.contains(QStringLiteral("%1 ms").arg(ms)));
            QVERIFY(advice.endsWith("echo 1 | sudo tee " + timer));
        }
    }
};

VX_TEST(ComPortsTest)
#include "tst_comports.moc"
