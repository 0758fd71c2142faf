#include "app/desk.h"

#include "rack/textroutines.h"
#include "views/analog/millivolt.h"


using vxtest::CardDesk;

namespace {

// The items of `group` that a worker read (G, I) or wrote (G, I, D), in order; openings left out.
QStringList itemsIn(const QStringList &sent, const QString &group, bool writes) {
    QStringList items;
    for (qsizetype i = 0; i + 1 < sent.size(); ++i) {
        if (sent[i] != "G" + group || !sent[i + 1].startsWith('I') || sent[i + 1] == "I01")
            continue;
        const bool written = i + 2 < sent.size() && sent[i + 2].startsWith('D');
        if (written == writes) items << sent[i + 1].mid(1);
    }
    return items;
}

QStringList numbers(int first, int last) {
    QStringList items;
    for (int n = first; n <= last; ++n)
        items << QString::number(n);
    return items;
}

} // namespace

// The current transformer, millivolt, load-cell and QJS8 views.
class AnalogCardsTest : public QObject {
    Q_OBJECT
private slots:
    // Which base items each model moves, how its cells lie, and how often group 01 opens.
    void currentModelRules_data() {
        QTest::addColumn<QString>("model");
        QTest::addColumn<QStringList>("bases");
        QTest::addColumn<int>("zeroAdjustCell"); // of channel 1
        QTest::addColumn<int>("openings");
        QTest::newRow("QL4") << "QL4" << numbers(10, 17) << 3 << 1;
        QTest::newRow("QN4") << "QN4" << numbers(10, 17) << 3 << 1;
        QTest::newRow("QL4B") << "QL4B" << numbers(26, 33) << 3 << 1;
        QTest::newRow("QM4") << "QM4" << QStringList() << 3 << 1;
        QTest::newRow("QL8") << "QL8" << numbers(26, 41) << 33 << 2;
    }
    void currentModelRules() {
        QFETCH(QString, model);
        QFETCH(QStringList, bases);
        QFETCH(int, zeroAdjustCell);
        QFETCH(int, openings);
        CardDesk rack(model, 4);
        const int channels = model == "QL8" ? 8 : 4;
        const QStringList flags = numbers(42, 41 + channels);
        rack.sim.rack.slot(4).setItem("01", "10", "D1.5");
        rack.runWorker(rack.view->cmdUp);
        QCOMPARE(itemsIn(rack.sent(), "02", false), bases + flags);
        QCOMPARE(rack.sent().join(' ').count("G01 I01 D1"), openings);
        QCOMPARE(CardTable(4).Param(zeroAdjustCell), QString("1.5"));
        const bool none = bases.isEmpty();
        QCOMPARE(rack.box("txtZBase", 1)->isEnabled(), !none);
        QCOMPARE(CardTable(4).Param(17), none ? QString() : QString("0"));

        CardTable(4).Param(18) = "9";
        rack.runWorker(rack.view->cmdDown);
        QCOMPARE(itemsIn(rack.sent(), "02", true), bases + flags);
        QCOMPARE(rack.sent().join(' ').count("G01 I01 D1"), openings);
        QCOMPARE(CardTable(4).Param(18), none ? QString() : QString("5000"));
        QCOMPARE(rack.box("txtFBase", 1)->text(), CardTable(4).Param(18));

        // QL8 reads its version before the cycle starts; the others poll first.
        rack.sim.rack.clearTranscript();
        rack.window->cboCardNo_Click();
        QCOMPARE(rack.sent().at(7), openings == 2 ? QString("I40") : QString("I10"));
    }

    // Fields that are not empty go as typed; empty ones come back from the record, flags as
    // plain text.
    void currentDownloadRefills() {
        CardDesk rack("QL4", 2);
        rack.runWorker(rack.view->cmdUp);
        rack.box("txtZScale", 1)->clear();
        rack.box("txtGain", 1)->setText("abc");
        rack.box("txtEnable", 2)->setText("7");
        rack.box("txtEnable", 3)->clear();
        CardTable(2).ChParam(3) = "x";
        rack.runWorker(rack.view->cmdDown);
        const QString wire = rack.sent().join(' ');
        QVERIFY(!wire.contains("G01 I42 D"));
        QVERIFY(wire.contains("G01 I11 Dabc"));
        QVERIFY(wire.contains("G02 I43 D7"));
        QCOMPARE(rack.box("txtZScale", 1)->text(), QString("0"));
        QCOMPARE(rack.box("txtEnable", 2)->text(), QString("0"));
        QCOMPARE(FieldColour(rack.box("txtEnable", 2)), kFlagOffColour);
        QCOMPARE(rack.box("txtEnable", 3)->text(), QString("x"));
        QVERIFY(rack.messages.messages.isEmpty());
    }

    void millivoltCards_data() {
        QTest::addColumn<QString>("model");
        QTest::addColumn<int>("channels");
        QTest::addColumn<int>("firstBaseCell");
        QTest::newRow("QS4") << "QS4" << 4 << 9;
        QTest::newRow("QS8") << "QS8" << 8 << 17;
    }
    void millivoltCards() {
        QFETCH(QString, model);
        QFETCH(int, channels);
        QFETCH(int, firstBaseCell);
        CardDesk rack(model, 5);
        auto *view = qobject_cast<FrmQS *>(rack.view);
        QVERIFY(view);
        rack.sim.rack.slot(5).setItem("02", "10", "D-5");
        rack.runWorker(view->cmdUp);
        QCOMPARE(itemsIn(rack.sent(), "01", false), numbers(42, 41 + 2 * channels));
        // The cycle's percentages follow in group 02.
        QCOMPARE(itemsIn(rack.sent(), "02", false).mid(0, 3 * channels),
                 numbers(10, 9 + 2 * channels) + numbers(42, 41 + channels));
        QCOMPARE(CardTable(5).Param(firstBaseCell), QString("-5"));
        QCOMPARE(CardTable(5).Param(firstBaseCell - 1), QString("10000"));

        // The cycle reads the percentages from a group it never opens.
        rack.sim.rack.clearTranscript();
        rack.answerAll("12.5");
        QTRY_COMPARE(view->percentBox(channels)->text(), QString("125"));
        QCOMPARE(view->valueBox(1)->text(), QString("125"));
        QVERIFY(!rack.sent().join(' ').contains("G02 I01"));
        // A lost percentage ends the round as a lost value does.
        rack.sim.rack.addFault({SimFault::NoReply, "I61", -1, 0});
        QTRY_COMPARE(rack.messages.messages.size(), 1);
        QCOMPARE(rack.messages.messages[0].text, QString("Uploading incomplete"));
    }

    void loadCell() {
        CardDesk rack("QX2", 7);
        rack.sim.rack.slot(7).setItem("01", "07", "D3.5");
        rack.runWorker(rack.view->cmdUp);
        QCOMPARE(itemsIn(rack.sent(), "01", false),
                 QStringList({"42", "43", "10", "11", "8", "6", "4", "44", "45", "12", "13", "9",
                              "7", "5"}));
        QCOMPARE(rack.box("txtLoad", 2)->text(), QString("3.5"));
        QCOMPARE(CardTable(7).Param(13), QString("3.5"));
    }

    void outputTypes() {
        {
            // A record never uploaded keeps an empty type through a Download.
            CardDesk rack("QJS8", 8);
            rack.runWorker(rack.view->cmdDown);
            QCOMPARE(CardTable(8).Param(5), QString());
        }
        CardDesk rack("QJS8", 8);
        SimCard &card = rack.sim.rack.slot(8);
        card.setItem("00", "55", "DQJ4");
        card.setItem("00", "56", "DX");
        card.groups["00"].remove("57");
        rack.runWorker(rack.view->cmdUp);
        QCOMPARE(itemsIn(rack.sent(), "00", false).mid(0, 4),
                 QStringList({"55", "56", "57", "58"}));
        QStringList types;
        for (int ch = 1; ch <= 8; ++ch)
            types << CardTable(8).Param((ch - 1) * 5 + 5);
        QCOMPARE(types, QStringList({"0-10V DC", "4-20mA", "4-20mA", "4-20mA", "0-10V DC",
                                     "0-10V DC", "0-10V DC", "0-10V DC"}));
        QCOMPARE(rack.box("outPutType", 2)->text(), QString("4-20mA"));

        // No range check; the syntax still decides.
        rack.box("txtFScale", 1)->setText("99999");
        rack.box("txtZScale", 2)->setText("1.5");
        rack.box("txtEnable", 1)->setText("2");
        rack.runWorker(rack.view->cmdDown);
        const QString wire = rack.sent().join(' ');
        QVERIFY(wire.contains("G01 I43 D99999"));
        QVERIFY(!wire.contains("D1.5"));
        QVERIFY(!wire.contains("G02 I42"));
        QCOMPARE(rack.box("txtZScale", 2)->text(), CardTable(8).Param(6));
        QCOMPARE(CardTable(8).Param(10), QString("4-20mA"));
        QVERIFY(rack.messages.messages.isEmpty());
    }

    // What a card gave, kept in a project file and opened again, reaches the card unchanged.
    void projectFileRoundTrip_data() {
        QTest::addColumn<QString>("model");
        QTest::addColumn<QStringList>("changes"); // group/item=reply
        QTest::addColumn<int>("cell");
        QTest::addColumn<QString>("cellText");
        QTest::newRow("XE4") << "XE4"
                             << QStringList({"01/05=D13,37,03,52", "01/87=D1",
                                             "01/53=D1.25,0.00,-0.5,0.00", "01/50=D0,1,1,0"})
                             << 57 << "   F";
        QTest::newRow("QL8") << "QL8" << QStringList({"01/16=D2.5", "02/41=D9000"}) << 39 << "2.5";
        QTest::newRow("QS4") << "QS4" << QStringList({"02/17=D40"}) << 16 << "40";
        QTest::newRow("QX2") << "QX2" << QStringList({"01/04=D3"}) << 7 << "3";
        QTest::newRow("QJS8") << "QJS8" << QStringList({"01/56=D-100"}) << 36 << "-100";
    }
    void projectFileRoundTrip() {
        QFETCH(QString, model);
        QFETCH(QStringList, changes);
        QFETCH(int, cell);
        QFETCH(QString, cellText);
        CardDesk rack(model, 3);
        SimCard &card = rack.sim.rack.slot(3);
        for (const QString &change : changes)
            card.setItem(change.left(2), change.mid(3, 2), change.mid(6));
        const auto original = card.groups;
        rack.runWorker(rack.view->cmdUp);

        rack.throughProjectFile();
        QCOMPARE(CardTable(3).Param(cell), cellText);
        rack.runWorker(rack.view->cmdDown);
        QCOMPARE(card.groups["01"], original["01"]);
        QCOMPARE(card.groups["02"], original["02"]);
        QVERIFY(rack.messages.messages.isEmpty());
    }
};

VX_TEST(AnalogCardsTest)
#include "tst_analogcards.moc"
