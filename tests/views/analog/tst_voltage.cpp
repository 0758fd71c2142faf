#include "app/desk.h"

#include "rack/textroutines.h"
#include "views/analog/voltage.h"


#include <array>

using vxtest::CardDesk;
using vxtest::preamble;
using vxtest::writeLines;

class VoltageViewTest : public QObject {
    Q_OBJECT
private slots:
    void uploadOfAFourChannelCardOnTheWire() {
        CardDesk rack("QF4", 3, "2.10");
        QVERIFY(rack.view);
        QCOMPARE(rack.view->txtVerNo->text(), QString("2.10"));
        // The cycle polls at once; values lose their decimal point.
        QTRY_VERIFY(!rack.view->valueBox(4)->text().isEmpty());
        QVERIFY(!rack.view->valueBox(1)->text().contains('.'));

        rack.sim.rack.slot(3).setItem("01", "44", "D42:-1200");
        rack.runWorker(rack.view->cmdUp);
        QStringList expected = preamble(3, "01");
        for (int ch = 1; ch <= 4; ++ch)
            for (int item : {2 * ch + 40, 2 * ch + 41, 2 * ch + 8, 2 * ch + 9})
                expected << "G01"
                         << "I" + QString::number(item);
        expected += writeLines("02", "01", "1");
        for (int ch = 1; ch <= 4; ++ch)
            expected << "G02"
                     << "I" + QString::number(ch + 41);
        QCOMPARE(rack.sent().mid(0, expected.size()), expected);
        // Fields and record both take the value behind the tag.
        QCOMPARE(rack.box("txtZScale", 2)->text(), QString("-1200"));
        QCOMPARE(CardTable(3).Param(5), QString("-1200"));
        QCOMPARE(CardTable(3).Param(4), QString("0.000"));
        QCOMPARE(CardTable(3).ChParam(4), QString("0"));
        QCOMPARE(CardTable(3).VerNo, QString("2.10"));
    }

    void downloadWritesAcceptedFieldsOnly() {
        CardDesk rack("QF4", 3);
        rack.runWorker(rack.view->cmdUp);
        rack.box("txtZScale", 1)->setText("32000");
        rack.box("txtFScale", 1)->clear(); // empty: refilled from its cell, nothing sent
        rack.box("txtBias", 2)->setText("-320");
        rack.box("txtGain", 2)->setText("3.2");
        rack.box("txtEnable", 3)->setText("1");
        rack.box("txtEnable", 4)->setText("2"); // no flag: the record's flag comes back
        rack.runWorker(rack.view->cmdDown);
        const QStringList sent = rack.sent();
        QCOMPARE(sent.mid(0, 12), preamble(3, "01") + writeLines("01", "42", "32000"));
        const QString wire = sent.join(' ');
        QVERIFY(!wire.contains("G01 I43"));
        QVERIFY(wire.contains("G01 I12 D-320 G01 I13 D3.2"));
        QVERIFY(wire.contains("G02 I44 D1"));
        QVERIFY(!sent.contains("D2"));
        QVERIFY(!wire.contains("G02 I45"));
        QCOMPARE(rack.box("txtFScale", 1)->text(), QString("10000"));
        QCOMPARE(CardTable(3).Param(1), QString("32000"));
        QCOMPARE(rack.box("txtEnable", 4)->text(), QString("0"));
        QCOMPARE(FieldColour(rack.box("txtEnable", 3)), kFlagOnColour);
        QCOMPARE(CardTable(3).ChParam(3), QString("1"));
        QCOMPARE(rack.sim.rack.slot(3).groups["01"]["42"], QString("D32000"));
    }

    void rangeFailureSendsNothing_data() {
        QTest::addColumn<QString>("control");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("message");
        const QList<std::array<const char *, 3>> rows = {
            {"txtZScale", "32001", "Zero Scale:Incorrect settings"},
            {"txtFScale", "-32000.5", "Full Scale:Incorrect settings"},
            {"txtBias", "320.1", "Zero Adjust:Incorrect settings"},
            {"txtGain", "3.3", "Full Adjust:Incorrect settings"},
        };
        for (const auto &[control, text, message] : rows)
            QTest::newRow(control) << QString(control) << QString(text) << QString(message);
    }
    void rangeFailureSendsNothing() {
        QFETCH(QString, control);
        QFETCH(QString, text);
        QFETCH(QString, message);
        CardDesk rack("QF8", 5);
        rack.box(control, 8)->setText(text);
        rack.runWorker(rack.view->cmdDown);
        QCOMPARE(rack.messages.messages.size(), 1);
        QCOMPARE(rack.messages.messages[0].text, message);
        QCOMPARE(rack.messages.messages[0].title, QString("VXCFG"));
        QCOMPARE(rack.messages.messages[0].icon, People::Icon::Information);
        QVERIFY(!rack.sent().contains("G01"));
    }

    // What the card refused is neither believed nor sent back.
    void refusals() {
        {
            CardDesk rack("QF4", 3);
            rack.sim.rack.addFault({SimFault::Refuse, "I42", 1, 0});
            rack.runWorker(rack.view->cmdUp);
            QCOMPARE(rack.box("txtZScale", 1)->text(), QString("CNG"));
            rack.runWorker(rack.view->cmdDown);
            QVERIFY(!rack.sent().contains("DCNG"));
            QVERIFY(rack.messages.messages.isEmpty());
        }
        // A flag refused every time shows what came back, which is nothing.
        CardDesk rack("QF4", 3);
        rack.box("txtEnable", 1)->setText("1");
        rack.sim.rack.addFault({SimFault::Refuse, "D1", -1, 0});
        rack.runWorker(rack.view->cmdDown);
        QVERIFY(rack.sent().contains("I42"));
        QCOMPARE(rack.box("txtEnable", 1)->text(), QString("0"));
        QCOMPARE(FieldColour(rack.box("txtEnable", 1)), kFlagOffColour);
    }

    void downloadRunsBeforeUpload() {
        CardDesk rack("QF4", 3);
        rack.box("txtZScale", 1)->setText("7");
        rack.view->cmdUp->click();
        rack.view->cmdDown->click();
        QTRY_VERIFY(!rack.view->UploadPending && rack.sent().count("I45") >= 2);
        const QString sent = rack.sent().join(' ');
        const qsizetype write = sent.indexOf("G01 I42 D7");
        const qsizetype read = sent.indexOf("G01 I42 G01 I43"); // the Upload's reads
        QVERIFY(write > 0);
        QVERIFY(read > write);
    }

    void sixteenChannelPages() {
        CardDesk rack("QF16A", 2);
        auto *view = qobject_cast<FrmQF16 *>(rack.view);
        QVERIFY(view);
        rack.runWorker(view->cmdUp);
        QCOMPARE(rack.box("txtFScale", 16)->text(), QString("10000"));
        rack.box("txtZScale", 1)->setText("-5");
        view->changeButton->click();
        QVERIFY(view->adjustPage());
        QCOMPARE(rack.box("txtFScale", 16)->text(), QString("0.000"));
        // Typed on the adjust page and not switched away: sent as an adjust.
        rack.box("txtZScale", 16)->setText("1.5");
        rack.runWorker(view->cmdDown);
        QVERIFY(rack.sent().join(' ').contains("G01 I42 D-5"));
        QVERIFY(rack.sent().join(' ').contains("G01 I40 D1.5"));
        QCOMPARE(CardTable(2).Param(63), QString("1.5"));
        // Out of range on the hidden scale page still stops the Download.
        view->changeButton->click();
        rack.box("txtFScale", 3)->setText("40000");
        view->changeButton->click();
        rack.runWorker(view->cmdDown);
        QCOMPARE(rack.messages.messages.size(), 1);
        QCOMPARE(rack.messages.messages[0].text, QString("Full Scale:Incorrect settings"));
        QVERIFY(!rack.sent().contains("G01"));
    }

    void sixteenChannelCycleKeepsTimeoutValues() {
        CardDesk rack("QG1", 2);
        QTRY_VERIFY(!rack.view->valueBox(5)->text().isEmpty());
        rack.sim.rack.slot(2).live = [](const QString &g, const QString &i,
                                        qint64) -> std::optional<QString> {
            if (g == "00" && i == "14") return QString("D5:TMOUT");
            if (g == "00" && i.toInt() >= 10 && i.toInt() <= 25) return QString("D1:1.5");
            return std::nullopt;
        };
        const QString before = rack.view->valueBox(5)->text();
        QTRY_COMPARE(rack.view->valueBox(6)->text(), QString("15"));
        QCOMPARE(rack.view->valueBox(5)->text(), before);
        QVERIFY(rack.messages.messages.isEmpty());
    }

    // Values read from a card, kept in a project file and opened again reach the card unchanged.
    void projectFileRoundTrip() {
        CardDesk rack("QF8", 4);
        SimCard &card = rack.sim.rack.slot(4);
        for (int ch = 1; ch <= 8; ++ch) {
            card.setItem("01", QString::number(2 * ch + 40), QString("D%1").arg(-100 * ch));
            card.setItem("01", QString::number(2 * ch + 41), QString("D%1").arg(1000 * ch));
            card.setItem("01", QString::number(2 * ch + 8), QString("D%1.5").arg(ch));
            card.setItem("01", QString::number(2 * ch + 9), QString("D0.%1").arg(ch));
            card.setItem("02", QString::number(ch + 41), QString("D%1").arg(ch % 2));
        }
        const auto original = card.groups;
        rack.runWorker(rack.view->cmdUp);

        rack.throughProjectFile();
        rack.runWorker(rack.view->cmdDown);
        QCOMPARE(card.groups["01"], original["01"]);
        QCOMPARE(card.groups["02"], original["02"]);
        QVERIFY(rack.messages.messages.isEmpty());
    }
};

VX_TEST(VoltageViewTest)
#include "tst_voltage.moc"
