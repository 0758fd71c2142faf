#include "support/testsupport.h"

#include "demorack.h"
#include "rackfile.h"

#include <QTemporaryDir>
#include <QTest>

namespace {

// What the rack answers to a read of group/item on a slot, through its own protocol core.
QString ask(SimRack &rack, int slot, const QString &group, const QString &item) {
    rack.answer("G00");
    rack.answer("I41");
    rack.answer(QString::number(slot).prepend('D'));
    if (rack.answer("G" + group) != "COK") return "(no group)";
    return rack.answer("I" + item);
}

QStringList slotList(SimRack &rack) {
    QStringList list;
    for (int n = 1; n <= 16; ++n)
        list << ask(rack, 0, "00", QString::number(9 + n));
    return list;
}

} // namespace

// The rack file: what a person writes reaches the wire as written, and a broken file says where
// and why without touching the rack.
class RackFileTest : public QObject {
    Q_OBJECT

private slots:
    void writtenFormsReachTheWire() {
        const QByteArray text = "\xef\xbb\xbf# a rack of two cards\r\n"
                                "[comm]\r\n"
                                "model = VX-ZE1   # trailing comment\r\n"
                                "version=3.02\r\n"
                                "[ Slot 4 ]\r\n"
                                "model = QZ4\r\n"
                                "dip = 01,00,80\r\n"
                                "1/2 = D1:100\r\n"
                                "02/07 = D#5        # a # inside a word is text\r\n"
                                "02/08 = \"D  x # y \\\"q\\\" \\\\ \\x41 \"  # quoted\r\n"
                                "00/12 = D7\r\n"
                                "[slot 16]\n"
                                "model = XDU4AC02\n"
                                "listname = XDU\n";
        SimRack rack;
        QString error;
        QVERIFY2(RackFile::parse(text, rack, &error), qPrintable(error));
        QCOMPARE(ask(rack, 0, "00", "04"), QString("DVX-ZE1"));
        QCOMPARE(ask(rack, 0, "00", "40"), QString("DVER:3.02"));
        QCOMPARE(ask(rack, 4, "01", "02"), QString("D1:100"));
        QCOMPARE(ask(rack, 4, "2", "7"), QString("D#5"));
        QCOMPARE(ask(rack, 4, "02", "08"), QString("D  x # y \"q\" \\ A "));
        QCOMPARE(ask(rack, 4, "00", "12"), QString("D7"));
        QCOMPARE(ask(rack, 4, "00", "39"), QString("DSW:01,00,80"));
        QCOMPARE(ask(rack, 16, "00", "04"), QString("DXDU4AC02"));
        const QStringList list = slotList(rack);
        QCOMPARE(list.at(3), QString("D4:QZ4"));
        QCOMPARE(list.at(15), QString("D16:XDU"));
        QCOMPARE(list.filter(":UNKNOWN").size(), 14);
    }

    void writerReadsBackToTheSameRack() {
        SimRack demo;
        LoadDemoRack(demo);
        demo.slot(9).model = "QX2";
        demo.slot(9).setItem("03", "05", " D  odd # \"text\"\t");
        demo.slot(9).setItem("03", "06", "D\\path");
        demo.refreshDirectory();

        SimRack copy;
        QString error;
        QVERIFY2(RackFile::parse(RackFile::write(demo), copy, &error), qPrintable(error));
        for (int n = 0; n <= 16; ++n) {
            QCOMPARE(copy.slot(n).model, demo.slot(n).model);
            QCOMPARE(copy.slot(n).listName, demo.slot(n).listName);
            QCOMPARE(copy.slot(n).groups, demo.slot(n).groups);
        }

        QTemporaryDir dir;
        const QString path = dir.filePath("demo.rack");
        QVERIFY(RackFile::save(path, demo, &error));
        SimRack loaded;
        QVERIFY2(RackFile::load(path, loaded, &error), qPrintable(error));
        QCOMPARE(slotList(loaded), slotList(demo));
    }

    void brokenFilesNameTheLine_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<int>("line");
        QTest::addColumn<QString>("reason");
        const struct {
            const char *text;
            int line;
            const char *reason;
        } rows[] = {
            {"# c\nmodel = QF4\n", 2, "before"},
            {"[comm]\n[slot 17]\n", 2, "does not exist"},
            {"[slot 2]\nmodel=A\n[slot 02]\n", 3, "twice"},
            {"[slot 2]\nmodel=A\n1/2=D1\n01/02=D2\n", 4,
             "twice"}, // the same item, written two ways
            {"[comm]\n[slot 5]\n1/2=D1\n", 2, "no model"},
            {"[slot 5]\nmodel = unknown\n", 2, "empty slot"},
            {"[comm]\ndip = 00,00,00\n", 2, "comm card has no dip"},
            {"[slot 1]\nmodel QF4\n", 2, "key = value"},
            {"[slot 1]\nmodel=A\n01/xx = D1\n", 3, "not group/item"},
            {"[slot 1]\nmodel=A\n00/40 = DVER:9\n", 3, "version"},
            {"[comm]\n00/12 = D3:QF4\n", 2, "slot list"},
            {"[slot 1]\nmodel = \"QF4\n", 2, "no closing quote"},
            {"[slot 1]\nmodel = \"Q\\x4\"\n", 2, "two hex digits"},
            {"[slot 1]\nmodel = QF4\xe2\x82\xac\n", 2, "cannot carry"}, // beyond Latin-1
        };
        for (const auto &r : rows)
            QTest::addRow("%s, line %d", r.reason, r.line)
                << QByteArray(r.text) << r.line << QString(r.reason);
    }
    void brokenFilesNameTheLine() {
        QFETCH(QByteArray, text);
        QFETCH(int, line);
        QFETCH(QString, reason);
        SimRack rack;
        LoadDemoRack(rack);
        const QStringList before = slotList(rack);
        QString error;
        QVERIFY(!RackFile::parse(text, rack, &error));
        QVERIFY2(error.startsWith(QString("line %1: ").arg(line)), qPrintable(error));
        QVERIFY2(error.contains(reason, Qt::CaseInsensitive), qPrintable(error));
        QCOMPARE(slotList(rack), before);
        QCOMPARE(ask(rack, 0, "00", "04"), QString("DVX-ZT1"));
    }

    void filesThatCannotBeTaken() {
        QTemporaryDir dir;
        SimRack rack;
        QString error;
        QVERIFY(!RackFile::load(dir.filePath("missing.rack"), rack, &error));
        QVERIFY2(error.startsWith(dir.filePath("missing.rack")), qPrintable(error));

        QFile big(dir.filePath("big.rack"));
        QVERIFY(big.open(QIODevice::WriteOnly));
        QVERIFY(big.resize(RackFile::kMaxBytes + 1));
        big.close();
        QVERIFY(!RackFile::load(big.fileName(), rack, &error));
        QVERIFY2(error.contains("too large"), qPrintable(error));

        QFile bad(dir.filePath("bad.rack"));
        QVERIFY(bad.open(QIODevice::WriteOnly));
        bad.write("[comm]\n\n[slot 9]\nversion = 1\n");
        bad.close();
        QVERIFY(!RackFile::load(bad.fileName(), rack, &error));
        QVERIFY2(error.startsWith(bad.fileName() + ": line 3:"), qPrintable(error));
    }
};

VX_TEST(RackFileTest)
#include "tst_rackfile.moc"
