#include "support/testsupport.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>

// The program itself, started as a user starts it: it must come up with its window shown, which
// the start-up benchmark relies on to time it.
class StartTest : public QObject {
    Q_OBJECT

private slots:
    void showsItsWindowAndLeaves() {
        const QString program = QCoreApplication::applicationDirPath() + "/../vxcfg";
        QVERIFY2(QFileInfo(program).isExecutable(), qPrintable(program));
        QProcess process;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("QT_QPA_PLATFORM", "offscreen");
        env.insert("VXCFG_QUIT_WHEN_SHOWN", "1");
        process.setProcessEnvironment(env);
        process.start(program, {});
        QVERIFY(process.waitForFinished(30000));
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 0);
        const QString out = QString::fromLocal8Bit(process.readAllStandardOutput());
        const QRegularExpressionMatch shown =
            QRegularExpression("^shown (\\d+\\.\\d) ms after main\\n$").match(out);
        QVERIFY2(shown.hasMatch(), qPrintable(out));
        QVERIFY(shown.captured(1).toDouble() > 0);
    }
};

VX_TEST(StartTest)
#include "tst_start.moc"
