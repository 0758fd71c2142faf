#include "support/testsupport.h"

#include "cardprofiles.h"
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
                                "00/30 = D7\r\n"
                                "[slot 16]\n"
                                "model = XDU4AC02\n"
                                "listname = XDU\n";
        SimRack rack;
        QString error;
        QVERIFY2(RackFile::parse(text, rack, &error), qPrintable(error));
        // The comm card tells its name with a status behind a colon.
        QCOMPARE(ask(rack, 0, "00", "04"), QString("DVX-ZE1:00"));
        QCOMPARE(ask(rack, 0, "00", "40"), QString("DVER:3.02"));
        QCOMPARE(ask(rack, 4, "01", "02"), QString("D1:100"));
        QCOMPARE(ask(rack, 4, "2", "7"), QString("D#5"));
        QCOMPARE(ask(rack, 4, "02", "08"), QString("D  x # y \"q\" \\ A "));
        QCOMPARE(ask(rack, 4, "00", "30"), QString("D7"));
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
        InstallProfile(demo.slot(9)); // as a rack file's model installs it
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
};

VX_TEST(RackFileTest)
#include "tst_rackfile.moc"
