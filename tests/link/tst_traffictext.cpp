#include "support/testsupport.h"

#include "link/traffictext.h"

#include <QTest>

using TrafficText::SlotFollower;

namespace {

// ">G00" a command (its CR added), "<COK" a reply, "!" a step without one.
int follow(const QStringList &traffic) {
    SlotFollower follower;
    for (const QString &row : traffic) {
        if (row.startsWith('>'))
            follower.see(Link::Traffic::Sent, row.mid(1) + '\r');
        else if (row.startsWith('<'))
            follower.see(Link::Traffic::Received, row.mid(1));
        else
            follower.see(Link::Traffic::NoReply, QString());
    }
    return follower.slot();
}

const QStringList kSelectFive = {">G00", "<COK", ">I41", "<D0", ">D5", "<D5"};

} // namespace

class TrafficTextTest : public QObject {
    Q_OBJECT

private slots:
    // What the log shows of a line, and that the replay reads it back to the same bytes.
    void visibleText_data() {
        QTest::addColumn<QString>("raw");
        QTest::addColumn<QString>("shown");
        QTest::newRow("command") << "G01\r"
                                 << "G01\\r";
        QTest::newRow("noise") << QString::fromLatin1("\x01\xfe#?\x7f\r") << "\\x01\\xFE#?\\x7F\\r";
        QTest::newRow("backslash") << "a\\b"
                                   << "a\\\\b";
        QTest::newRow("blanks kept") << "D    invalid data"
                                     << "D    invalid data";
        QTest::newRow("line feed, tab") << "\n\t"
                                        << "\\n\\t";
        QTest::newRow("Latin-1") << QString::fromLatin1("D\xe9") << "D\\xE9";
    }
    void visibleText() {
        QFETCH(QString, raw);
        QFETCH(QString, shown);
        QCOMPARE(TrafficText::visible(raw), shown);
        QCOMPARE(TrafficText::fromVisible(shown), std::optional<QString>(raw));
    }

    // Every kind of row goes out as a line of the file and comes back whole, a lost line
    // told from a silent rack.
    void rowsReadBack() {
        using Link::Traffic;
        const QList<TrafficText::Row> rows = {
            {45296789, Traffic::Sent, -1, "G00\r", false},
            {45296790, Traffic::Received, 0, "D5:QZ8", false},
            {45296791, Traffic::NoReply, 16, "", false},
            {45296792, Traffic::NoReply, 16, "", true},
            {45296793, Traffic::NoReply, 5, QString::fromLatin1("\x01\xfe"), false}};
        QStringList lines;
        for (const TrafficText::Row &row : rows)
            lines << TrafficText::plainRow(row);
        QCOMPARE(lines,
                 QStringList({"12:34:56.789 > -- G00\\r", "12:34:56.790 < 00 D5:QZ8\\r",
                              "12:34:56.791 ! 16 (no reply)", "12:34:56.792 ! 16 (line lost)",
                              "12:34:56.793 ? 05 \\x01\\xFE"}));
        for (qsizetype n = 0; n < rows.size(); ++n) {
            QString why;
            const std::optional<TrafficText::Row> back = TrafficText::parsePlainRow(lines[n], &why);
            QVERIFY2(back, qPrintable(why));
            QCOMPARE(TrafficText::plainRow(*back), lines[n]);
            QCOMPARE(back->raw, rows[n].raw);
            QCOMPARE(back->lineLost, rows[n].lineLost);
        }
    }

    void brokenEscapesAreRefused() {
        for (const char *text : {"\\q", "\\x4", "ab\\", "\\x-1", "\\xZZ"})
            QVERIFY2(!TrafficText::fromVisible(QString::fromLatin1(text)), text);
    }

    // The slot column follows group 00 item 41 through the traffic alone.
    void slotColumn_data() {
        QTest::addColumn<QStringList>("traffic");
        QTest::addColumn<int>("slot");
        QTest::newRow("nothing selected yet")
            << QStringList{">G00", "<COK", ">I40", "<DVER:1"} << -1;
        QTest::newRow("selected") << kSelectFive << 5;
        QTest::newRow("leading zero, reply lost")
            << QStringList{">G0", "<COK", ">I041", "<D0", ">D05", "!"} << 5;
        QTest::newRow("refused keeps the last")
            << kSelectFive + QStringList{">G00", "<COK", ">I41", "<D5", ">D9", "<CNG"} << 5;
        QTest::newRow("group refused")
            << QStringList{">G00", "<CNG", ">I41", "<CNG", ">D5", "<CNG"} << -1;
        QTest::newRow("group unanswered")
            << QStringList{">G00", "!", ">I41", "<D0", ">D5", "<D5"} << -1;
        QTest::newRow("another item")
            << QStringList{">G00", "<COK", ">I40", "<D1", ">D5", "<D5"} << -1;
        QTest::newRow("another group")
            << QStringList{">G01", "<COK", ">I41", "<D1", ">D5", "<D5"} << -1;
        QTest::newRow("no such slot")
            << QStringList{">G00", "<COK", ">I41", "<D0", ">D17", "<D17"} << -1;
    }
    void slotColumn() {
        QFETCH(QStringList, traffic);
        QFETCH(int, slot);
        QCOMPARE(follow(traffic), slot);
    }
};

VX_TEST(TrafficTextTest)
#include "tst_traffictext.moc"
