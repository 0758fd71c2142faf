#include "app/desk.h"

#include "profiles/pulse.h"
#include "rack/monitor.h"
#include "rack/overview.h"
#include "ui/widgets.h"
#include "views/power/pulse.h"

#include <QCheckBox>
#include <QLabel>

using vxtest::CardDesk;
using vxtest::preamble;
using vxtest::readLines;
using vxtest::writeLines;

namespace {

PulseView *pulse(const CardDesk &rack) {
    return qobject_cast<PulseView *>(rack.view);
}

// Clicks Clear or Preset and waits until the request has run and the cycle is back.
void request(CardDesk &rack, QPushButton *button) {
    rack.sim.rack.clearTranscript();
    button->click();
    QTRY_VERIFY(!pulse(rack)->ClearPending && !pulse(rack)->PresetPending &&
                rack.sent().count("G00") >= 3);
}

QStringList numbers(int first, int last) {
    QStringList items;
    for (int n = first; n <= last; ++n)
        items << QString::number(n);
    return items;
}

} // namespace

class PulseViewTest : public QObject {
    Q_OBJECT
private slots:
    void inputsOnTheWire() {
        CardDesk rack("QZ4", 3);
        rack.runWorker(rack.view->cmdUp);
        const QStringList channels[4] = {{"10", "26", "30", "54", "42", "43", "50"},
                                         {"11", "27", "31", "55", "44", "45", "51"},
                                         {"12", "28", "32", "56", "46", "47", "52"},
                                         {"13", "29", "33", "57", "48", "49", "53"}};
        QStringList expected = preamble(3, "01");
        for (const QStringList &items : channels)
            expected += readLines("01", items);
        expected += writeLines("02", "01", "1");
        QCOMPARE(rack.sent().mid(0, expected.size()), expected);
        QCOMPARE(CardTable(3).Param(28), QString("1000"));
        QVERIFY(rack.box("txtInputType", 1)->isReadOnly());

        // Gain and the input range go to the record only; an empty field is refilled.
        rack.box("txtGain", 2)->setText("2.5");
        rack.box("txtDropout", 1)->clear();
        rack.box("txtEdge", 4)->setText("1");
        rack.runWorker(rack.view->cmdDown);
        const QStringList controls = {"txtDropout", "txtThresh", "txtEdge",     "txtGain",
                                      "txtZScale",  "txtFScale", "txtInputType"};
        expected = preamble(3, "01");
        for (int e = 1; e <= 4; ++e)
            for (int f : {0, 1, 2, 4, 5})
                if (e > 1 || f > 0) // channel 1's empty Drop-Out is not sent
                    expected += writeLines("01", channels[e - 1].at(f),
                                           rack.box(controls.at(f), e)->text());
        expected += writeLines("02", "01", "1");
        QCOMPARE(rack.sent().mid(0, expected.size()), expected);
        QCOMPARE(rack.sim.rack.slot(3).groups["01"]["33"], QString("D1"));
        QCOMPARE(CardTable(3).Param(11), QString("2.5"));
        QCOMPARE(rack.sim.rack.slot(3).groups["01"]["55"], QString("D1.000"));
        QCOMPARE(rack.box("txtDropout", 1)->text(), QString("0"));
    }

    void counter32VersionRules_data() {
        QTest::addColumn<QString>("version");
        QTest::addColumn<bool>("divide");
        QTest::addColumn<bool>("offered");
        // The version's digits without the dot, as a number.
        QTest::newRow("0.4") << "0.4" << false << false;
        QTest::newRow("0.5") << "0.5" << true << false;
        QTest::newRow("9") << "9" << true << false;
        QTest::newRow("1.0") << "1.0" << true << true;
        QTest::newRow("1.10") << "1.10" << true << true;
        QTest::newRow("no number") << "V" << false << false;
    }
    void counter32VersionRules() {
        QFETCH(QString, version);
        QFETCH(bool, divide);
        QFETCH(bool, offered);
        CardDesk rack("QZ4B", 2, version);
        QCOMPARE(rack.view->objectName(), QString("frmQZ4A"));
        auto *view = qobject_cast<FrmQZ4A *>(rack.view);
        QCOMPARE(rack.box("txtDivide", 3)->isEnabled(), divide);
        QCOMPARE(view->CheckClear->isEnabled(), offered);
        QCOMPARE(BackColor(view->CheckClear) == QColor(Qt::white), offered);
        QVERIFY(view->CheckClear->isChecked());

        rack.runWorker(view->cmdUp);
        QCOMPARE(rack.sent().join(' ').contains("G01 I58"), divide);
        QCOMPARE(CardTable(2).Param(5), QString(divide ? "1" : "0"));
        QCOMPARE(rack.box("txtDivide", 1)->text(), QString(divide ? "1" : "0"));

        // A Download with the box ticked ends with the Clear.
        rack.runWorker(view->cmdDown);
        const QString wire = rack.sent().join(' ');
        QCOMPARE(wire.contains("G01 I61 D"), divide);
        if (!divide) QCOMPARE(CardTable(2).Param(5), QString());
        const QString clear = (preamble(2, "01") + writeLines("01", "09", "1")).join(' ');
        QVERIFY(wire.indexOf(clear) > wire.lastIndexOf(divide ? "G01 I61" : "G01 I29"));
        if (!offered) return;
        view->CheckClear->setChecked(false);
        rack.runWorker(view->cmdDown);
        QVERIFY(!rack.sent().contains("I09"));
        rack.reopen();
        QVERIFY(view->CheckClear->isChecked());
    }

    // The low and high words of the counters as the card gives them, at the moments when a
    // counter carries into its high word and when it runs over.
    void counter32Words_data() {
        QTest::addColumn<int>("channel");
        QTest::addColumn<quint64>("count");
        QTest::addColumn<QString>("low");
        QTest::addColumn<QString>("high");
        QTest::newRow("below the carry") << 2 << quint64(0xFFFF) << "FFFF"
                                         << "0000";
        QTest::newRow("carried") << 2 << quint64(0x10000) << "0000"
                                 << "0001";
        QTest::newRow("maximum") << 4 << quint64(0xFFFFFFFF) << "FFFF"
                                 << "FFFF";
        QTest::newRow("run over") << 4 << quint64(0x100000000) << "0000"
                                  << "0000";
    }
    void counter32Words() {
        QFETCH(int, channel);
        QFETCH(quint64, count);
        QFETCH(QString, low);
        QFETCH(QString, high);
        const SimCounterStart start = kCounter32Starts[channel - 1];
        CardDesk rack("QZ4A", 2, "1.10");
        rack.sim.rack.setTime(qint64((count - start.value) * 1000 / quint64(start.perSecond)));
        rack.sim.rack.clearTranscript();
        QTRY_VERIFY(rack.sent().count("I60") >= 2);
        const QString box = QString("txtParData0%1(%2)").arg(channel);
        QCOMPARE(pulse(rack)->liveBox(box.arg(1))->text(), low);
        QCOMPARE(pulse(rack)->liveBox(box.arg(2))->text(), high);
        QCOMPARE(pulse(rack)->liveBox(box.arg(3))->text(), QString::number(start.perSecond));
        const QStringList pass = preamble(2) + readLines("00", numbers(10, 17) + numbers(57, 60));
        const QStringList sent = rack.sent();
        QCOMPARE(sent.mid(sent.indexOf("G00"), pass.size()), pass);

        // Clear on its own: no progress, no question, the counters from zero.
        request(rack, pulse(rack)->CmdClear);
        const QStringList clear = preamble(2, "01") + writeLines("01", "09", "1");
        QCOMPARE(rack.sent().mid(0, clear.size() + 1), clear + QStringList{"G00"});
        QTRY_COMPARE(pulse(rack)->liveBox(box.arg(1))->text(), QString("0000"));
        QVERIFY(rack.messages.messages.isEmpty());
    }

    void counterMaxRules_data() {
        QTest::addColumn<QString>("min");
        QTest::addColumn<QString>("max");
        QTest::addColumn<bool>("minSent");
        QTest::addColumn<bool>("maxSent");
        const struct {
            const char *name, *min, *max;
            bool minSent, maxSent;
        } rows[] = {
            {"lowest", "1", "10000", true, true},
            {"highest", "0", "2147483647", true, true},
            {"leading zeros", "1", "0010000", true, true},
            {"too low", "2", "9999", false, false},
            {"too high", "", "2147483648", false, false},
            {"no digits", "-", "12a45", false, false},
        };
        for (const auto &r : rows)
            QTest::newRow(r.name) << QString(r.min) << QString(r.max) << r.minSent << r.maxSent;
    }
    void counterMaxRules() {
        QFETCH(QString, min);
        QFETCH(QString, max);
        QFETCH(bool, minSent);
        QFETCH(bool, maxSent);
        CardDesk rack("QZ8", 5);
        rack.runWorker(rack.view->cmdUp);
        rack.box("txtMin", 3)->setText(min);
        rack.box("txtFScale", 3)->setText(max);
        rack.runWorker(rack.view->cmdDown);
        const QString wire = rack.sent().join(' ');
        QCOMPARE(wire.contains("G01 I30 D"), minSent);
        QCOMPARE(wire.contains("G01 I31 D" + max + " "), maxSent);
        // A refused field is emptied; the record keeps what it had.
        QCOMPARE(rack.box("txtMin", 3)->text(), minSent ? min : QString());
        QCOMPARE(rack.box("txtFScale", 3)->text(), maxSent ? max : QString());
        QCOMPARE(CardTable(5).Param(6), minSent ? min : QString("0"));
        QCOMPARE(CardTable(5).Param(7), maxSent ? max : QString("99999999"));
    }

    void counterPreset() {
        CardDesk rack("QZ8", 5);
        auto *view = qobject_cast<CounterView *>(rack.view);
        rack.sim.rack.setTime(5000);
        // Without an Upload the rows cannot be checked against their Max.
        view->presetBox(1)->setText("5");
        request(rack, view->cmdPreset);
        QCOMPARE(rack.messages.messages.size(), 1);
        QCOMPARE(rack.messages.messages[0].text, QString("Please Upload before the Preset"));
        QCOMPARE(rack.messages.messages[0].title, QString("Preset"));
        QCOMPARE(rack.messages.messages[0].icon, People::Icon::Stop);
        const QStringList opening = preamble(5) + writeLines("02", "01", "1");
        QCOMPARE(rack.sent().mid(0, opening.size() + 1), opening + QStringList{"G00"});

        rack.runWorker(view->cmdUp);
        rack.box("txtFScale", 1)->setText("20000");
        rack.runWorker(view->cmdDown);
        const QStringList presets = {"20000", "99999999", "100000000", "12a", ""};
        for (int n = 1; n <= presets.size(); ++n)
            view->presetBox(n)->setText(presets.at(n - 1));
        request(rack, view->cmdPreset);
        const QStringList written =
            opening + writeLines("02", "10", "20000") + writeLines("02", "11", "99999999");
        QCOMPARE(rack.sent().mid(0, written.size() + 1), written + QStringList{"G00"});
        const QStringList shown = {"20000", "99999999", "", "", ""};
        for (int n = 1; n <= shown.size(); ++n)
            QCOMPARE(view->presetBox(n)->text(), shown.at(n - 1));
        // The counter stands at its preset, which is also its Max.
        QTRY_COMPARE(pulse(rack)->liveBox("txtParData01")->text(), QString("20000"));
        QCOMPARE(rack.messages.messages.size(), 1);
        rack.reopen();
        QCOMPARE(view->presetBox(1)->text(), QString());
    }

    void counterClearGoesBeforePreset() {
        CardDesk rack("QZ8", 5);
        auto *view = qobject_cast<CounterView *>(rack.view);
        rack.runWorker(view->cmdUp);
        view->presetBox(2)->setText("40");
        CardTable(5).CardName = "OLD";
        rack.sim.rack.clearTranscript();
        view->cmdPreset->click();
        view->CmdClear->click();
        QTRY_VERIFY(!view->PresetPending && rack.sent().contains("D40"));
        QStringList expected = preamble(5, "02");
        for (int n = 1; n <= 16; ++n)
            expected += writeLines("02", QString::number(n + 9), "0");
        expected += preamble(5) + writeLines("02", "01", "1") + writeLines("02", "11", "40");
        QCOMPARE(rack.sent().mid(0, expected.size()), expected);
        QCOMPARE(CardTable(5).CardName, QString("QZ8"));
    }

    void sixteenCounters() {
        CardDesk rack("XA16", 6);
        QCOMPARE(rack.view->objectName(), QString("frmQZ16"));
        auto *view = qobject_cast<CounterView *>(rack.view);
        rack.runWorker(view->cmdUp);
        QCOMPARE(CardTable(6).Param(16), QString("65535"));
        rack.box("txtFScale", 1)->setText("65536");
        rack.box("txtFScale", 2)->setText("40000");
        rack.runWorker(view->cmdDown);
        const QString wire = rack.sent().join(' ');
        QVERIFY(!wire.contains("G01 I27"));
        QVERIFY(wire.contains("G01 I29 D40000"));
        QCOMPARE(rack.box("txtFScale", 1)->text(), QString("65535"));

        // A row without its Max in the record is passed over without a word.
        CardTable(6).Param(3).clear();
        view->presetBox(1)->setText("100");
        view->presetBox(2)->setText("40001");
        view->presetBox(3)->setText("5");
        request(rack, view->cmdPreset);
        const QStringList expected =
            preamble(6) + writeLines("02", "01", "F") + writeLines("02", "10", "100");
        QCOMPARE(rack.sent().mid(0, expected.size() + 1), expected + QStringList{"G00"});
        QCOMPARE(view->presetBox(2)->text(), QString());
        QCOMPARE(view->presetBox(3)->text(), QString("5"));
        QVERIFY(rack.messages.messages.isEmpty());
    }

    // Values kept in a project file and opened again reach the card unchanged.
    void projectFileRoundTrip_data() {
        QTest::addColumn<QString>("model");
        QTest::addColumn<QStringList>("unsent");
        QTest::newRow("QZ2") << "QZ2" << QStringList{"30", "31"};
        QTest::newRow("QZ4") << "QZ4" << numbers(50, 57);
        QTest::newRow("QZ4A") << "QZ4A" << QStringList{"09"};
        QTest::newRow("QZ8") << "QZ8" << QStringList();
        QTest::newRow("QZ16") << "QZ16" << QStringList();
    }
    void projectFileRoundTrip() {
        QFETCH(QString, model);
        QFETCH(QStringList, unsent);
        unsent << "01"
               << "09"; // the opening of the group and the counters' Clear
        CardDesk rack(model, 4, "1.10");
        SimCard &card = rack.sim.rack.slot(4);
        for (const QString &item : card.groups["01"].keys()) {
            const int n = item.toInt();
            if (unsent.contains(item)) continue;
            // Flags where the QZ8 has them, else values every Max takes.
            const bool flag = model == "QZ8" && n % 2 == 0;
            card.setItem("01", item, flag ? QString("D%1").arg(n % 4 / 2) : "D1" + item + "00");
        }
        const auto original = card.groups["01"];
        rack.runWorker(rack.view->cmdUp);

        rack.throughProjectFile();
        QVERIFY(rack.messages.messages.isEmpty());
        rack.runWorker(rack.view->cmdDown);
        for (auto it = original.begin(); it != original.end(); ++it)
            if (!unsent.contains(it.key())) QCOMPARE(card.groups["01"].value(it.key()), it.value());
    }

    // The overview asks the QZ8's view for its row; the other pulse cards have plain rows.
    void overviewRows() {
        CardDesk rack("QZ8", 5);
        rack.window->cboCardNo->setCurrentIndex(0);
        rack.window->cboCardNo_Click();
        QTRY_VERIFY(!rack.view->CycleActive);
        FrmOverview *overview = Overview();
        ShowChData("QZ8", 5);
        for (int ch = 1; ch <= 4; ++ch)
            QVERIFY(!overview->lblInputDataLCh(5, ch)->isHidden());
        QVERIFY(overview->lblInputDataCh(5, 1)->isHidden());
        QVERIFY(overview->lblDIDataCh(5, 1)->isHidden());

        const QStringList models = {"QZ2", "QZ4", "QZ4A", "QZ16", "XA16"};
        for (int i = 0; i < models.size(); ++i) {
            SimCard &card = rack.sim.rack.slot(i + 6);
            card.model = models.at(i);
            InstallProfile(card);
            CardTable(i + 6).CardName = models.at(i);
        }
        rack.sim.rack.refreshDirectory();
        rack.sim.rack.slot(5).live = [](const QString &g, const QString &i, qint64) {
            return g == "00" ? std::optional<QString>(QString("D%1:%1.5").arg(i)) : std::nullopt;
        };
        rack.sim.rack.addFault({SimFault::NoReply, "I12", 4, 0}); // the QZ8's third word
        overview->lblInputDataLCh(5, 3)->setText("old");
        rack.sim.rack.clearTranscript();
        QVERIFY(ReadOverview());
        const QStringList wide = {"105", "115", "old", "135"};
        for (int ch = 1; ch <= 4; ++ch)
            QCOMPARE(overview->lblInputDataLCh(5, ch)->text(), wide.at(ch - 1));
        const QList<int> fields = {4, 4, 8, 8, 8};
        for (int i = 0; i < models.size(); ++i)
            for (int ch = 1; ch <= 8; ++ch)
                QVERIFY2(overview->lblInputDataCh(i + 6, ch)->text().isEmpty() == (ch > fields[i]),
                         qPrintable(models.at(i)));
        QVERIFY(rack.messages.messages.isEmpty());
    }
};

VX_TEST(PulseViewTest)
#include "tst_pulse.moc"
