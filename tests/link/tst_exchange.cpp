#include "support/testsupport.h"

#include "link/exchange.h"

#include <QElapsedTimer>
#include <QRegularExpression>
#include <QTest>
#include <QTimer>

using vxtest::SimSession;

// The three write/read flavours against the same rack behaviour, row by row.
class ExchangeTest : public QObject {
    Q_OBJECT

    static QStringList sent(SimSession &s) { return s.rack.commands(); }

private slots:
    void init() { Clock::setDivisor(100); }

    void readOfAStoredItem() {
        SimSession s;
        s.rack.slot(3).model = "QF4";
        s.rack.slot(3).setItem("01", "02", "D1:100");
        s.rack.refreshDirectory();
        QCOMPARE(WriteData(3, "00", "41", "3"), QString("3"));
        QCOMPARE(ReadData(3, "01", "02"), QString("1:100"));
        QCOMPARE(sent(s), QStringList({"G00", "I41", "D3", "G01", "I02"}));
    }

    void bytesWaitingAtTheStart() {
        SimSession s;
        s.line->inject("stale");
        QCOMPARE(ReadDataOnce("00", "40"), QString());
        QCOMPARE(WriteDataOnce("00", "01", "F"), QString());
        QVERIFY(sent(s).isEmpty());
        // The checked write does not look, so its first step takes the stale bytes away.
        QCOMPARE(WriteDataChkOnce("00", "01", "F"), QString());
        QCOMPARE(sent(s), QStringList({"G00"}));
        QCOMPARE(s.line->bytesAvailable(), 0);
        QCOMPARE(WriteDataChkOnce("00", "01", "F"), QString("F"));
    }

    void emptyItem() {
        SimSession s;
        QCOMPARE(ReadData(3, "99", ""), QString());
        QCOMPARE(sent(s), QStringList({"G99", "G99", "G99", "G99"}));
        s.rack.clearTranscript();
        WriteDataOnce("00", "", "1");
        QCOMPARE(sent(s), QStringList({"G00", "I"}));
        s.rack.clearTranscript();
        QCOMPARE(WriteDataChkOnce("00", "", "1"), QString());
        QCOMPARE(sent(s), QStringList({"G00"}));
    }

    // A refusal, an unused item, a timeout or silence at the group, the item or the data step:
    // what each flavour makes of it ("-": a read has no data step).
    void failedStepPerFlavour_data() {
        QTest::addColumn<int>("fault");
        QTest::addColumn<QString>("step");
        QTest::addColumn<QStringList>("readWriteChecked");
        const int cng = int(SimFault::Refuse), cnu = int(SimFault::Unused),
                  timeout = int(SimFault::Timeout), silence = int(SimFault::NoReply);
        QTest::newRow("G CNG") << cng << "G" << QStringList{"", "", ""};
        QTest::newRow("I CNG") << cng << "I" << QStringList{"CNG", "", "CNG"};
        QTest::newRow("I CNU") << cnu << "I" << QStringList{"NEEDLESS", "", "NEEDLESS"};
        QTest::newRow("I DTMOUT") << timeout << "I" << QStringList{"", "", ""};
        QTest::newRow("I silence") << silence << "I" << QStringList{"", "", ""};
        QTest::newRow("D CNG") << cng << "D" << QStringList{"-", "", ""};
        QTest::newRow("D CNU") << cnu << "D" << QStringList{"-", "", ""};
        QTest::newRow("D DTMOUT") << timeout << "D" << QStringList{"-", "", ""};
        QTest::newRow("D silence") << silence << "D" << QStringList{"-", "", ""};
    }
    void failedStepPerFlavour() {
        QFETCH(int, fault);
        QFETCH(QString, step);
        QFETCH(QStringList, readWriteChecked);
        SimSession s;
        const SimFaultRule rule{SimFault(fault), step, 1, 0};
        if (readWriteChecked[0] != "-") {
            s.rack.addFault(rule);
            QCOMPARE(ReadDataOnce("00", "40"), readWriteChecked[0]);
        }
        s.rack.addFault(rule);
        QCOMPARE(WriteDataOnce("00", "01", "F"), readWriteChecked[1]);
        s.rack.addFault(rule);
        QCOMPARE(WriteDataChkOnce("00", "01", "F"), readWriteChecked[2]);
        // No flavour goes on to the next step after such a reply.
        if (step == "G") QVERIFY(sent(s).filter(QRegularExpression("^[ID]")).isEmpty());
        if (step == "I") QVERIFY(!sent(s).contains("DF"));
    }

    void invalidDataReply() {
        SimSession s;
        s.rack.comm().setItem("00", "50", "D    invalid data");
        QCOMPARE(ReadData(3, "00", "50"), QString("invalid data"));
        QCOMPARE(WriteDataChk(10, "00", "50", "7"), QString("CNG"));
        s.rack.clearTranscript();
        QCOMPARE(WriteData(3, "00", "50", "7"), QString("7"));
        QCOMPARE(sent(s), QStringList({"G00", "I50", "D7"}));
    }

    void retryLayer() {
        SimSession s;
        // "CNU" on the item: a write fails every attempt, the checked write answers at once.
        QCOMPARE(WriteData(3, "00", "77", "1"), QString());
        QCOMPARE(sent(s).count("I77"), 4);
        s.rack.clearTranscript();
        QCOMPARE(WriteDataChk(10, "00", "77", "1"), QString("NEEDLESS"));
        QCOMPARE(sent(s).count("I77"), 1);
        // "CNG" ends a read at once.
        s.rack.clearTranscript();
        s.rack.addFault({SimFault::Refuse, "I", -1, 0});
        QCOMPARE(ReadData(3, "00", "40"), QString("CNG"));
        QCOMPARE(sent(s).count("I40"), 1);
        s.rack.clearFaults();
        // A bare "D" is no value: retried, then the empty result.
        s.rack.clearTranscript();
        s.rack.comm().setItem("00", "60", "D");
        QCOMPARE(ReadData(3, "00", "60"), QString());
        QCOMPARE(sent(s).count("I60"), 4);
        // Blanks around a value are not part of it.
        s.rack.comm().setItem("00", "61", "D  12.5  ");
        QCOMPARE(ReadData(3, "00", "61"), QString("12.5"));
    }

    void replyInPiecesIsCollected() {
        SimSession s;
        s.rack.addFault({SimFault::Split, "I", 1, 4});
        QCOMPARE(ReadData(0, "00", "40"), QString("VER:1.00"));
    }

    void lateReplyBlocksUntilSomethingEmptiesTheBuffer() {
        SimSession s;
        s.rack.addFault({SimFault::Late, "I", 1, 2000});
        QCOMPARE(ReadDataOnce("00", "40"), QString());
        QTRY_VERIFY(s.line->bytesAvailable() > 0);
        s.rack.clearTranscript();
        QCOMPARE(ReadData(3, "00", "40"), QString());
        QCOMPARE(WriteData(3, "00", "01", "F"), QString());
        QVERIFY(sent(s).isEmpty());
        QCOMPARE(WriteDataChk(10, "00", "01", "F"), QString("F"));
        QCOMPARE(ReadData(3, "00", "40"), QString("VER:1.00"));
    }

    void nestedStepEndsTheOuterStep() {
        SimSession s(10);
        // The outer reply would come well inside its limit, but a nested step ends first.
        s.rack.addFault({SimFault::Delay, "G00", 1, 2000});
        QString nested;
        QTimer::singleShot(20, [&] {
            s.rack.clearFaults();
            nested = SendLine("G01\r");
        });
        QString outer;
        SendRecv("G00\r", outer);
        QCOMPARE(outer, QString());
        QCOMPARE(nested, QString("COK"));
    }

    void cutLineEndsTheStepAndClosesThePort() {
        SimSession s;
        s.rack.addFault({SimFault::CutLine, "I", 1, 0});
        QCOMPARE(ReadData(3, "00", "40"), QString());
        QVERIFY(!s.line->isOpen());
        QCOMPARE(sent(s).count("I40"), 1); // later attempts find the port closed
    }

    void floodWithoutCrIsCapped() {
        SimSession s;
        s.rack.addFault({SimFault::NoReply, "G", 1, 0});
        QTimer::singleShot(1, [&] { s.line->inject(QByteArray(1 << 20, 'x')); });
        QString reply;
        SendRecv("G00\r", reply);
        QCOMPARE(reply, QString());
        QTimer::singleShot(1, [&] { s.line->inject(QByteArray(1 << 20, 'y') + "\r"); });
        SendRecv("G00\r", reply);
        QVERIFY(reply.size() <= kMaxReplyBytes);
    }

    void closedPortFailsQuietly() {
        SimSession s;
        s.line->close();
        QElapsedTimer clock;
        clock.start();
        QCOMPARE(ReadData(3, "00", "40"), QString());
        QCOMPARE(WriteDataChk(10, "00", "01", "F"), QString());
        QVERIFY(clock.elapsed() < 100);
    }
};

VX_TEST(ExchangeTest)
#include "tst_exchange.moc"
