#include "app/screen.h"

#include "demorack.h"
#include "link/traffictext.h"
#include "replay.h"

#include <QTemporaryDir>
#include <QTest>

using vxtest::Desk;

namespace {

// The rows of a read in the log: group, item, and what came back ("< D1\r", "!", "? \x01\r").
QStringList read(int slot, const QString &group, const QString &item, const QString &outcome) {
    const QString s = TrafficText::slotText(slot);
    const QString mark = outcome.left(1);
    return {"> " + s + " G" + group + "\\r", "< " + s + " COK\\r", "> " + s + " I" + item + "\\r",
            mark + " " + s + " " + (mark == "!" ? "(no reply)" : outcome.mid(2))};
}

QByteArray logOf(const QStringList &rows) {
    QByteArray text = "# a saved traffic log\r\n";
    for (const QString &row : rows)
        text += "21:07:13.250 " + row.toLatin1() + "\r\n";
    return text;
}

// "5:01/13" reads item 13 of group 01 on slot 5, "5:01/13=600" writes 600 to it; the reply of
// the item or data line, or the group's own reply when the group was refused.
QString ask(SimRack &rack, const QString &request) {
    rack.answer("G00");
    rack.answer("I41");
    rack.answer("D" + request.section(':', 0, 0));
    const QString address = request.section(':', 1).section('=', 0, 0);
    const QString group = rack.answer("G" + address.section('/', 0, 0));
    if (group != "COK") return "G:" + group;
    const QString item = rack.answer("I" + address.section('/', 1));
    return request.contains('=') ? rack.answer("D" + request.section('=', 1)) : item;
}

} // namespace

// A rack made from a saved traffic log answers as the log shows the real one did.
class ReplayTest : public QObject {
    Q_OBJECT

private slots:
    void answersAsLogged_data() {
        QTest::addColumn<QStringList>("log");
        QTest::addColumn<QStringList>("requests");
        QTest::addColumn<QStringList>("replies");
        QTest::newRow("in order, then the last reply")
            << read(5, "01", "13", "< D1\\r") + read(5, "01", "13", "!") +
                   read(5, "01", "13", "? \\x01\\xFE\\r") + read(5, "01", "13", "< D2\\r")
            << QStringList{"5:01/13", "5:1/13", "5:01/13", "5:01/13", "5:01/13"}
            << QStringList{"D1", "", QString::fromLatin1("\x01\xfe"), "D2", "D2"};
        QTest::newRow("slot by slot")
            << read(3, "01", "13", "< D3\\r") + read(5, "01", "13", "< D5\\r")
            << QStringList{"5:01/13", "3:01/13", "0:01/13"} << QStringList{"D5", "D3", "G:CNG"};
        QTest::newRow("a write is echoed and kept")
            << read(5, "01", "13", "< D1\\r")
            << QStringList{"5:01/13", "5:01/13=600", "5:01/13", "5:01/14"}
            << QStringList{"D1", "D600", "D600", "CNU"};
        QTest::newRow("silent for good")
            << read(5, "01", "13", "!") << QStringList{"5:01/13", "5:01/13"} << QStringList{"", ""};
        QTest::newRow("a group the card refused")
            << QStringList{"> 05 G02\\r", "< 05 CNG\\r"} + read(5, "01", "13", "< D1\\r")
            << QStringList{"5:02/13", "5:01/13"} << QStringList{"G:CNG", "D1"};
    }
    void answersAsLogged() {
        QFETCH(QStringList, log);
        QFETCH(QStringList, requests);
        QFETCH(QStringList, replies);
        SimRack rack;
        QString error;
        QVERIFY2(Replay::parse(logOf(log), rack, &error), qPrintable(error));
        QStringList got;
        for (const QString &request : requests)
            got << ask(rack, request);
        QCOMPARE(got, replies);
    }

    // A file that is not a traffic log says where and why, and leaves the rack as it was.
    void brokenLogs_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("error");
        QTest::newRow("empty") << QByteArray("# nothing\n\n") << "no traffic in the file";
        QTest::newRow("CSV") << QByteArray("time,direction,slot,line\n12:00:00.000,>,--,\"G00\"\n")
                             << "line 1: a CSV export; the replay reads the plain text export of "
                                "the traffic log";
        QTest::newRow("short") << logOf({"> 05 G00\\r"}) + "12:00\n"
                               << "line 3: not a row of a traffic log (time, mark, slot, line)";
        QTest::newRow("time") << QByteArray("12:61:00.000 > 05 G00\\r\n")
                              << "line 1: the time is not HH:MM:SS.mmm";
        QTest::newRow("mark") << logOf({"* 05 G00\\r"}) << "line 2: the mark is not >, <, ! or ?";
        QTest::newRow("slot") << logOf({"> 17 G00\\r"}) << "line 2: the slot is not 00 to 16 or --";
        QTest::newRow("escape")
            << logOf({"< 05 D\\q"})
            << "line 2: a broken escape in the line (\\r \\n \\t \\\\ or \\xNN)";
        QTest::newRow("binary") << QByteArray("\x7f"
                                              "ELF\x02\x01\x01\0\0\0",
                                              10)
                                << "line 1: not a row of a traffic log (time, mark, slot, line)";
    }
    void brokenLogs() {
        QFETCH(QByteArray, text);
        QFETCH(QString, error);
        SimRack rack;
        LoadDemoRack(rack);
        QString why;
        QVERIFY(!Replay::parse(text, rack, &why));
        QCOMPARE(why, error);
        QCOMPARE(rack.slot(8).model, QString("QF8"));
    }

    // A scan that met a silent or noisy card, saved and replayed: the same screens and the same
    // message, so the trouble can be looked at on a desk.
    void troubleReplays_data() {
        QTest::addColumn<int>("fault");
        QTest::newRow("silence") << int(SimFault::NoReply);
        QTest::newRow("garbage") << int(SimFault::Garbage);
        QTest::newRow("healthy") << -1;
    }
    void troubleReplays() {
        QFETCH(int, fault);
        QTemporaryDir dir;
        const QString path = dir.filePath("field.txt");
        const QStringList recorded = vxtest::workInTheField(path, 90210, [&](SimRack &rack) {
            if (fault >= 0) rack.addFault({SimFault(fault), "I14", -1});
        });
        QVERIFY(recorded.contains(fault >= 0 ? "message Uploading incomplete / Uploading"
                                             : "after monitor pass"));
        Desk desk;
        QString error;
        QVERIFY2(Replay::load(path, desk.sim.rack, &error), qPrintable(error));
        QCOMPARE(vxtest::workThrough(desk, 8), recorded);
    }
};

VX_TEST(ReplayTest)
#include "tst_replay.moc"
