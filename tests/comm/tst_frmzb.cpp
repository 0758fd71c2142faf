#include "comm/commrack.h"

#include "comm/frmzb.h"

#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>

using vxtest::CommRack;
using vxtest::readLines;
using vxtest::writeLines;

namespace {

QString positions(int first, int step = 0) {
    QStringList list;
    for (int ch = 0; ch < 16; ++ch)
        list << QString::number((first + ch * step) % 8);
    return list.join(',');
}

// The positions the sixteen lists of page column `j` show, "-" for none.
QString column(const FrmZB &dialog, int j) {
    QStringList list;
    for (int ch = 0; ch < 16; ++ch) {
        const int index = dialog.cbScl[size_t(j * 16 + ch)]->currentIndex();
        list << (index < 0 ? QString("-") : QString::number(index));
    }
    return list.join(',');
}

} // namespace

class FrmZBTest : public QObject {
    Q_OBJECT

private slots:
    // Opening shows the record; only Upload brings the card's values, into fields and record.
    void openingShowsTheRecordAndUploadTheCard() {
        CommRack rack("VX-ZB2", "1.10");
        CardRecord &record = CardTable(kCommRecord);
        record.Param(2) = "9";
        record.ChParam(5) = "PUMP";
        record.Param(17) = positions(3);
        record.Param(18) = "1,2"; // too short: blank lists
        record.Param(34) = "42";
        FrmZB dialog;
        dialog.OpenView("VX-ZB2:00");
        QCOMPARE(rack.sent(), writeLines("17", "0", "1") + readLines("00", {"55"}));
        QCOMPARE(dialog.txtTimeout->text(), QString("9"));
        QCOMPARE(dialog.txtCardList[5]->text(), QString("PUMP"));
        QCOMPARE(column(dialog, 0), positions(3));
        QCOMPARE(column(dialog, 1), QStringList(16, "-").join(','));
        QCOMPARE(dialog.txtN2ADR[1]->text(), QString("42"));
        // Touching one blank list of a column does not yet make a text.
        dialog.cbScl[16]->setCurrentIndex(4);
        QCOMPARE(dialog.scaling(2), QString("1,2"));

        rack.clear();
        dialog.cmdUp->click();
        QStringList expected = writeLines("00", "01", "F") + writeLines("00", "41", "00") +
                               writeLines("00", "01", "1") + readLines("00", {"40", "04", "09"}) +
                               writeLines("17", "0", "1") + readLines("00", {"55"}) +
                               writeLines("17", "1", "1");
        for (int i = 1; i <= 16; ++i)
            expected += readLines("17", {QString::number(25 + i)});
        for (int i = 1; i <= 16; ++i)
            expected += writeLines("17", "43", QString("%1;").arg(i - 1));
        for (int i = 1; i <= 16; ++i)
            expected += readLines("17", {QString::number(44 + i), QString::number(60 + i)});
        QCOMPARE(rack.sent(), expected);
        QCOMPARE(record.VerNo, QString("V1.10"));
        QCOMPARE(record.CardName, QString("ZB2"));
        QCOMPARE(record.Param(1), QString("30"));
        QCOMPARE(record.Param(2), QString("5"));
        QCOMPARE(record.ChParam(5), QString("IO05"));
        QCOMPARE(record.Param(17), positions(0, 1));
        QCOMPARE(record.Param(18), positions(0));
        QCOMPARE(record.Param(34), QString("2"));
        QCOMPARE(column(dialog, 0), positions(0, 1));
        QVERIFY(rack.messages.messages.isEmpty());
    }

    // The pages change what shows and nothing else: what was typed on one page survives the
    // others, and Download sends all sixteen cards whichever page shows.
    void pagesKeepWhatWasTyped() {
        CommRack rack("VX-ZB1", "1.00");
        FrmZB dialog;
        dialog.cmdUp_Click();
        dialog.txtN2ADR[1]->setText("77");         // card 2
        dialog.cbScl[16 + 15]->setCurrentIndex(7); // card 2, channel 16
        dialog.OptScl[3]->click();
        QCOMPARE(dialog.lblSclCard[0]->text(), QString("I/O 9"));
        QCOMPARE(dialog.txtN2ADR[1]->text(), QString("10"));
        dialog.txtN2ADR[0]->setText("55"); // card 9
        dialog.txtVNDAHU[0]->clear();      // an empty text is sent as an empty data field
        dialog.cbScl[0]->setCurrentIndex(2);
        dialog.OptScl[1]->click();
        QCOMPARE(dialog.txtN2ADR[1]->text(), QString("77"));
        QCOMPARE(dialog.cbScl[31]->currentIndex(), 7);
        dialog.OptScl[4]->click();

        rack.clear();
        dialog.cmdDown->click();
        const QString wire = rack.wire();
        QVERIFY(wire.startsWith("G00 I01 DF G00 I41 D00 G01 I01 D1 G00 I40 G00 I1 D1 G00 I55 D5 "
                                "G17 I1 D1 G17 I26 DIO01"));
        QVERIFY(wire.contains("G17 I44 D1:0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,7; "));
        QVERIFY(wire.contains("G17 I44 D8:2,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0; "));
        QVERIFY(wire.contains("G17 I46 D77 G17 I62 D0 "));
        QVERIFY(wire.contains("G17 I45 D1 G17 I61 D0 "));
        QVERIFY(wire.contains("G17 I53 D55 G17 I69 D "));
        QVERIFY(wire.endsWith("G17 I60 D16 G17 I76 D0"));
        QCOMPARE(CardTable(kCommRecord).Param(34), QString("77"));
        QCOMPARE(CardTable(kCommRecord).Param(57), QString());
        // The card keeps what it was sent.
        dialog.cmdUp_Click();
        QCOMPARE(dialog.scaling(9), "2," + QStringList(15, "0").join(','));
    }

    void downloadStopsWithoutATime() {
        CommRack rack("VX-ZB1", "1.00");
        FrmZB dialog;
        dialog.cmdUp_Click();
        dialog.txtTimeout->clear();
        rack.clear();
        dialog.cmdDown_Click();
        QCOMPARE(rack.messages.messages.size(), 1);
        QCOMPARE(rack.messages.messages[0].text, QString("Please enter Timeout Val."));
        QCOMPARE(rack.messages.messages[0].icon, People::Icon::Information);
        QCOMPARE(rack.sent(), writeLines("00", "01", "F") + writeLines("00", "41", "00") +
                                  writeLines("01", "01", "1") + readLines("00", {"40"}));
        QVERIFY(dialog.cmdDown->isEnabled() && dialog.cbScl[63]->isEnabled());
    }

    void readCardAsksTheCardFirst() {
        CommRack rack("VX-ZB1", "1.00");
        FrmZB dialog;
        dialog.cmdUp_Click();
        dialog.txtCardList[3]->setText("FAN");
        dialog.cmdDown_Click();
        QCOMPARE(rack.card().groups["17"]["28"], QString("DFAN"));
        rack.clear();
        dialog.cmdReadCard->click();
        QCOMPARE(rack.sent().mid(0, 15),
                 writeLines("00", "01", "F") + writeLines("00", "41", "00") +
                     writeLines("17", "1", "1") + writeLines("17", "42", "1") +
                     writeLines("00", "01", "F"));
        QCOMPARE(dialog.txtCardList[3]->text(), QString("IO03"));
    }
};

VX_TEST(FrmZBTest)
#include "tst_frmzb.moc"
