#include "app/desk.h"

#include "views/power/qy2.h"

#include <QSignalBlocker>

using vxtest::CardDesk;
using vxtest::preamble;
using vxtest::readLines;
using vxtest::writeLines;

namespace {

struct Item {
    QString group;
    int item;
};

// A channel's settings in the order of Upload and Download: item = factor * e + offset, and the
// record field on channel 1 (channel 2 is 12 further).
struct ChannelField {
    const char *control;
    const char *group;
    int factor, offset, cell;

    Item where(int e) const { return {group, factor * e + offset}; }
};

const ChannelField kChannel[] = {
    {"txtZScale", "01", 2, 14, 1},      {"txtFScale", "01", 2, 15, 2},
    {"txtBias", "01", 2, 8, 3},         {"txtGain", "01", 2, 9, 4},
    {"txtKCool", "02", 2, 8, 5},        {"txtKHeat", "02", 2, 9, 6},
    {"txtFlowCut", "02", 1, 13, 7},     {"txtTempCut", "02", 1, 15, 8},
    {"txtHys", "02", 1, 17, 9},         {"txtSuppTempAdj", "02", 2, 18, 10},
    {"txtAmbTempAdj", "02", 2, 19, 11},
};

// A value every field takes, different for each item: group 01 "1.NN", group 02 "2.NN".
QString valueOf(const Item &at) {
    return QStringLiteral("%1.%2").arg(at.group.toInt()).arg(at.item);
}

FrmQY2 *qy2(const CardDesk &rack) {
    return qobject_cast<FrmQY2 *>(rack.view);
}

QLineEdit *named(const CardDesk &rack, const QString &name) {
    return qy2(rack)->named(name);
}

// A card whose settings all hold their valueOf, the flag "1" and the coefficient "12.345".
void fillCard(SimCard &card) {
    for (int e = 1; e <= 2; ++e)
        for (const ChannelField &field : kChannel) {
            const Item at = field.where(e);
            card.setItem(at.group, QString::number(at.item), "D" + valueOf(at));
        }
    card.setItem("02", "43", "D1");
    card.setItem("00", "56", "D56:12.345");
}

} // namespace

class CalorieViewTest : public QObject {
    Q_OBJECT
private slots:
    void uploadAndDownloadOnTheWire() {
        CardDesk rack("QY2", 7);
        QVERIFY(qy2(rack));
        fillCard(rack.sim.rack.slot(7));
        QVERIFY(!rack.view->cmdDown->isEnabled());

        rack.runWorker(rack.view->cmdUp);
        QStringList expected = preamble(7, "01") + writeLines("02", "01", "1");
        for (int e = 1; e <= 2; ++e) {
            for (const ChannelField &field : kChannel) {
                const Item at = field.where(e);
                expected += readLines(at.group, {QString::number(at.item)});
                QCOMPARE(CardTable(7).Param(field.cell + 12 * (e - 1)), valueOf(at));
            }
        }
        // Channel 2's flag comes after its other settings, then the common items.
        expected += readLines("02", {"43"}) + readLines("00", {"56", "71", "69", "70"});
        QCOMPARE(rack.sent().mid(0, expected.size()), expected);
        QCOMPARE(CardTable(7).Param(24), QString("1"));
        QCOMPARE(CardTable(7).Param(25), QString("12.345"));
        QCOMPARE(named(rack, "txtTemp2")->text(), QString("24.8"));
        QVERIFY(rack.view->cmdDown->isEnabled());

        // An empty field is not sent and takes its record field again; the rest go in order.
        named(rack, "txtBias(2)")->setText("-1.5");
        named(rack, "txtHys(1)")->clear();
        rack.runWorker(rack.view->cmdDown);
        expected = preamble(7) + writeLines("00", "01", "1") + writeLines("01", "01", "1") +
                   writeLines("02", "01", "1");
        for (int e = 1; e <= 2; ++e)
            for (const ChannelField &field : kChannel) {
                const Item at = field.where(e);
                if (QString(field.control) == "txtHys" && e == 1) continue;
                const QString data = at.item == 12 && at.group == "01" ? "-1.5" : valueOf(at);
                expected += writeLines(at.group, QString::number(at.item), data);
            }
        expected += writeLines("02", "43", "1") + writeLines("00", "56", "12.345") +
                    writeLines("02", "01", "1");
        QCOMPARE(rack.sent().mid(0, expected.size()), expected);
        QCOMPARE(named(rack, "txtHys(1)")->text(), QString("2.18"));
        QCOMPARE(CardTable(7).Param(15), QString("-1.5"));
    }

    void presetOnTheWire() {
        CardDesk rack("QY2", 3);
        // The units come with the live values; the calorie presets need them.
        QTRY_COMPARE(named(rack, "txtCalUnit2")->text(), QString("GJ/h"));
        QTest::keyClicks(named(rack, "txtTotalCFlow1p"), "150.5");
        QTest::keyClicks(named(rack, "txtTotalCCal2p"), "9999.99");
        QTest::keyClicks(named(rack, "txtTotalHCal1p"), "12");
        {
            // Only a program could put a negative number here: it is emptied and not sent.
            QSignalBlocker bypass(named(rack, "txtTotalHFlow2p"));
            named(rack, "txtTotalHFlow2p")->setText("-3");
        }
        const CardRecord before = CardTable(3);
        rack.sim.rack.clearTranscript();
        qy2(rack)->cmdPreset->click();
        QTRY_VERIFY(!qy2(rack)->PresetPending && rack.sent().count("G00") >= 3);
        const QStringList expected = preamble(3, "02") + writeLines("02", "26", "150.5") +
                                     writeLines("02", "32", "9999.99") +
                                     writeLines("02", "31", "12") + QStringList{"G00"};
        QCOMPARE(rack.sent().mid(0, expected.size()), expected);
        QCOMPARE(named(rack, "txtTotalHFlow2p")->text(), QString());
        QCOMPARE(named(rack, "txtTotalCCal2p")->text(), QString("9999.99"));
        for (int k = 1; k <= CardRecord::kParams; ++k)
            QCOMPARE(CardTable(3).Param(k), before.Param(k));
        // The card's total starts again from the preset.
        QTRY_VERIFY(named(rack, "txtTotalCFlow1")->text().startsWith("150."));
    }

    // What a field keeps while the user types, and after the view fills it.
    void fieldCheck_data() {
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("unit"); // of channel 1's calories
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("filled"); // set by the program instead of typed
        QTest::addColumn<QString>("kept");
        const struct {
            const char *name, *field, *unit, *typed;
            bool filled;
            const char *kept;
        } rows[] = {
            {"minus then point", "txtBias(1)", "", "-.", false, "-0."},
            {"third decimal", "txtBias(1)", "", "1.234", false, "1.23"},
            {"minus inside", "txtBias(2)", "", "0-5", false, "05"},
            {"second point", "txtBias(1)", "", "1..5", false, "1.5"},
            {"bias below", "txtBias(1)", "", "-10.01", false, "-10.0"},
            {"adjust boundary", "txtSuppTempAdj(2)", "", "-5.00", false, "-5.00"},
            {"gain above", "txtGain(1)", "", "2.0001", false, "2.000"},
            {"heat boundary", "txtKHeat(1)", "", "2.9999", false, "2.9999"},
            {"heat above", "txtKHeat(2)", "", "3", false, ""},
            {"coefficient top", "txtCoff", "", "65.535", false, "65.535"},
            {"coefficient above", "txtCoff", "", "65.536", false, "65.53"},
            {"no sign, no letters", "txtZScale(1)", "", "-5a0", false, "50"},
            {"flag", "txtEnable(2)", "", "1", false, "1"},
            {"flag refuses 2", "txtEnable(2)", "", "2", false, ""},
            {"flag refuses 10", "txtEnable(2)", "", "10", false, "1"},
            {"GJ/h top", "txtTotalCCal1p", "GJ/h", "9999.99", false, "9999.99"},
            {"GJ/h above", "txtTotalCCal1p", "GJ/h", "10000", false, "1000"},
            {"MJ/h top", "txtTotalHCal1p", "MJ/h", "999999.99", false, "999999.99"},
            {"no unit", "txtTotalCCal1p", "", "12", false, ""},
            {"flow preset above", "txtTotalHFlow2p", "", "1000000", false, "100000"},
            {"gain under 0.1 filled", "txtGain(1)", "", "0.09", true, ""},
            {"word from the card", "txtBias(2)", "", "CNG", true, ""},
        };
        for (const auto &r : rows)
            QTest::newRow(r.name) << QString(r.field) << QString(r.unit) << QString(r.typed)
                                  << r.filled << QString(r.kept);
    }
    void fieldCheck() {
        QFETCH(QString, field);
        QFETCH(QString, unit);
        QFETCH(QString, typed);
        QFETCH(bool, filled);
        QFETCH(QString, kept);
        ResetModuleData();
        ClearViewRegistry();
        RegisterView("frmQY2", [] { return new FrmQY2; });
        auto *view = qobject_cast<FrmQY2 *>(ViewByName("frmQY2"));
        view->build();
        view->named("txtCalUnit1")->setText(unit);
        QLineEdit *box = view->named(field);
        QVERIFY(box);
        if (filled)
            box->setText(typed);
        else
            QTest::keyClicks(box, typed);
        QCOMPARE(box->text(), kept);
        ClearViewRegistry();
    }

    void livePassReadsAllBeforeShowing() {
        CardDesk rack("QY2", 5);
        rack.sim.rack.clearTranscript();
        QTRY_VERIFY(rack.sent().count("I66") >= 2);
        const QStringList items = {"12", "61", "13", "63", "27", "28", "65", "10", "11",
                                   "14", "15", "16", "17", "20", "62", "21", "64", "29",
                                   "30", "66", "18", "19", "22", "23", "24", "25"};
        QCOMPARE(rack.sent().mid(0, 6 + 52), preamble(5) + readLines("00", items));
        QCOMPARE(named(rack, "txtRTD2")->text(), QString("Pt100"));
        QVERIFY(!named(rack, "txtFlowVal1")->text().contains('.'));
        QVERIFY(named(rack, "txtSuppTemp1")->text().contains('.'));
        // A value that does not come shows as an empty field; the pass goes on and says nothing.
        rack.sim.rack.addFault({SimFault::NoReply, "I63", -1, 0});
        QTRY_VERIFY(named(rack, "txtCalUnit1")->text().isEmpty());
        QVERIFY(!named(rack, "txtRTD1")->text().isEmpty());
        QVERIFY(rack.messages.messages.isEmpty());
        QVERIFY(IsConnected);
    }

    // A project file enables Download at once, and its values reach the card unchanged.
    void projectFileEnablesDownload() {
        CardDesk rack("QY2", 8);
        QVERIFY(!rack.view->cmdDown->isEnabled());
        for (int e = 1; e <= 2; ++e)
            for (const ChannelField &field : kChannel)
                CardTable(8).Param(field.cell + 12 * (e - 1)) = valueOf(field.where(e));
        CardTable(8).Param(24) = "0";
        CardTable(8).Param(25) = "1.5";
        rack.throughProjectFile(false);
        QVERIFY(!rack.view->cmdDown->isEnabled());
        rack.reopen();
        QVERIFY(rack.view->cmdDown->isEnabled());
        rack.runWorker(rack.view->cmdDown);
        SimCard &card = rack.sim.rack.slot(8);
        for (int e = 1; e <= 2; ++e)
            for (const ChannelField &field : kChannel) {
                const Item at = field.where(e);
                QCOMPARE(card.groups[at.group][QString::number(at.item)], "D" + valueOf(at));
            }
        QCOMPARE(card.groups["02"]["43"], QString("D0"));
        QCOMPARE(card.groups["00"]["56"], QString("D1.5"));
        QVERIFY(rack.messages.messages.isEmpty());
    }
};

VX_TEST(CalorieViewTest)
#include "tst_qy2.moc"
