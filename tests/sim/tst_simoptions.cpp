#include "support/testsupport.h"

#include "simoptions.h"

#include <QTest>

Q_DECLARE_METATYPE(SimFault)

namespace {

SimCommand parse(const QStringList &arguments, SimOptions &options, QString &message) {
    return parseSimOptions(QStringList{"vxrack-sim"} + arguments, options, &message);
}

} // namespace

// The simulator's command line: every fault a user can type, and the mistakes they can make.
class SimOptionsTest : public QObject {
    Q_OBJECT

private slots:
    void faultSpecs_data() {
        QTest::addColumn<QString>("plan");
        QTest::addColumn<SimFault>("kind");
        QTest::addColumn<QString>("match");
        QTest::addColumn<int>("count");
        QTest::addColumn<int>("param");
        QTest::newRow("bare kind") << "noreply" << SimFault::NoReply << "" << 1 << 0;
        QTest::newRow("upper case") << "DTMOUT:I40" << SimFault::Timeout << "I40" << 1 << 0;
        QTest::newRow("split default") << "split:G" << SimFault::Split << "G" << 1 << 3;
        QTest::newRow("split pieces") << "split:I11:all:5" << SimFault::Split << "I11" << -1 << 5;
        QTest::newRow("delay default") << "delay::2" << SimFault::Delay << "" << 2 << 500;
        QTest::newRow("late") << "late:D:3:100" << SimFault::Late << "D" << 3 << 100;
    }
    void faultSpecs() {
        QFETCH(QString, plan);
        QString error;
        const std::optional<SimFaultRule> rule = parseFault(plan, &error);
        QVERIFY2(rule, qPrintable(error));
        QTEST(rule->kind, "kind");
        QTEST(rule->match, "match");
        QTEST(rule->count, "count");
        QTEST(rule->param, "param");
    }

    void badFaultSpecs_data() {
        QTest::addColumn<QString>("plan");
        QTest::addColumn<QString>("reason");
        const QList<std::pair<const char *, const char *>> rows = {
            {"slow:I40", "unknown kind"}, {"noreply:G:0", "COUNT"},
            {"noreply:G:many", "COUNT"},  {"cng:I:1:5", "no parameter"},
            {"split:I:1:1", "PARAM"},     {"delay:I:1:3000", "PARAM"},
            {"late:I:1:-5", "PARAM"},     {"split:I:1:2:3", "too many"},
        };
        for (const auto &[plan, reason] : rows)
            QTest::newRow(plan) << QString(plan) << QString(reason);
    }
    void badFaultSpecs() {
        QFETCH(QString, plan);
        QFETCH(QString, reason);
        QString error;
        QVERIFY(!parseFault(plan, &error));
        QVERIFY2(error.contains(plan) && error.contains(reason), qPrintable(error));
    }

    void commandLine() {
        const QByteArray saved = qgetenv("VXCFG_PORT_DIR");
        qputenv("VXCFG_PORT_DIR", "/tmp/from-env");
        SimOptions options;
        QString message;
        QCOMPARE(parse({}, options, message), SimCommand::Run);
        QCOMPARE(options.com, 1);
        QCOMPARE(options.portDir, QString("/tmp/from-env"));
        QVERIFY(!options.emulateBaud);

        QCOMPARE(parse({"--com", "16", "--port-dir", "/x", "--baud", "--fault", "cng:I40",
                        "--fault", "split::all", "--log", "t.log", "--rack", "r.rack"},
                       options, message),
                 SimCommand::Run);
        QCOMPARE(options.com, 16);
        QCOMPARE(options.portDir, QString("/x"));
        QVERIFY(options.emulateBaud);
        QCOMPARE(options.faults.size(), 2);
        QCOMPARE(options.faults.at(1).kind, SimFault::Split);
        QCOMPARE(options.logFile, QString("t.log"));
        QCOMPARE(options.rackFile, QString("r.rack"));
        qputenv("VXCFG_PORT_DIR", saved);

        QCOMPARE(parse({"--help"}, options, message), SimCommand::Help);
        for (const char *word : {"--fault", "--baud", "--rack", "--port-dir", "noreply", "cut"})
            QVERIFY2(message.contains(word), word);

        for (const QStringList &bad :
             {QStringList{"--com", "0"}, QStringList{"--com", "17"}, QStringList{"--com", "two"},
              QStringList{"--fault", "x"}, QStringList{"--bogus"}, QStringList{"stray"}}) {
            message.clear();
            QCOMPARE(parse(bad, options, message), SimCommand::Error);
            QVERIFY2(!message.isEmpty(), qPrintable(bad.join(' ')));
        }
    }
};

VX_TEST(SimOptionsTest)
#include "tst_simoptions.moc"
