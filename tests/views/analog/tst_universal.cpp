#include "app/desk.h"

#include "rack/textroutines.h"
#include "views/analog/universal.h"
#include "views/analog/universaltypes.h"

#include <QCheckBox>
#include <QComboBox>

using vxtest::CardDesk;
using vxtest::preamble;
using vxtest::writeLines;

namespace {

constexpr int kSlot = 6;

FrmXE4 *xe4(const CardDesk &rack) {
    return qobject_cast<FrmXE4 *>(rack.view);
}

// The channel's three lines: the item, then the data (the prefix, and a value when one follows).
QStringList channelLines(const QString &item, int ch, const QString &value = QString()) {
    return writeLines("01", item, QStringLiteral("0%1").arg(ch) + value);
}

// The four values of a channel item of the simulated card, as its store keeps them.
QStringList stored(CardDesk &rack, const QString &item) {
    return rack.sim.rack.slot(kSlot).groups.value("01").value(item).mid(1).split(',');
}

void pickInputType(FrmXE4 *view, int ch, int row) {
    view->List_InputType[ch]->setCurrentIndex(row);
    emit view->List_InputType[ch]->activated(row);
}

} // namespace

class UniversalViewTest : public QObject {
    Q_OBJECT
private slots:
    // Every row of both lists: its place, its text, its code, and whether the A build has it.
    void inputTypeTables_data() {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("code");
        QTest::addColumn<int>("indexA"); // -1: not on the A build
        const struct {
            const char *text, *code;
            int indexA;
        } rows[] = {
            {"-12 to 12V", "00", 0},
            {"- 6 to  6V", "01", 1},
            {"- 3 to  3V", "02", 2},
            {"-1000 to 1000mV", "03", 3},
            {"-500 to 500mV", "04", 4},
            {"-250 to 250mV", "05", 5},
            {"-125 to 125mV", "06", 6},
            {"-60 to 60mV", "07", 7},
            {"(PR)", "10", -1},
            {"K(CA)", "11", 8},
            {"E(CRC)", "12", 9},
            {"J(IC)", "13", 10},
            {"T(CC)", "14", 11},
            {"B(RH)", "15", -1},
            {"R", "16", -1},
            {"S", "17", -1},
            {"C(WRe 5-26)", "18", -1},
            {"N", "19", -1},
            {"U", "1A", -1},
            {"L", "1B", -1},
            {"P(Platinel2)", "1C", -1},
            {"Pt100(JIS'97 IEC)", "30", 12},
            {"Pt1000", "35", -1},
            {"Pt50ohm(JIS'81)", "36", 13},
            {"Pt100(JIS'89)", "37", 14},
            {"JPt100(JIS'89)", "38", 15},
            {"Ni100", "39", -1},
            {"Ni120", "3A", -1},
            {"Ni508.4", "3B", -1},
            {"Ni1000", "3C", -1},
            {"Cu50", "3D", -1},
            {"POT200", "50", 16},
            {"POT500", "51", 17},
            {"POT5k", "52", 18},
        };
        int index = 0;
        for (const auto &row : rows) {
            QTest::newRow(row.text)
                << index++ << QString(row.text) << QString(row.code) << row.indexA;
        }
    }
    void inputTypeTables() {
        using namespace UniversalTypes;
        QFETCH(int, index);
        QFETCH(QString, text);
        QFETCH(QString, code);
        QFETCH(int, indexA);
        QCOMPARE(InputTypeTexts(false).size(), 34);
        QCOMPARE(InputTypeTexts(true).size(), 19);
        QCOMPARE(InputTypeTexts(false).at(index), text);
        QCOMPARE(InputTypeCode(text, false), code);
        QCOMPARE(InputTypeText(code, false), text);
        QCOMPARE(InputTypeIndex(text, true), indexA);
        QCOMPARE(InputTypeCode(text, true), indexA < 0 ? QString("99") : code);
        QCOMPARE(InputTypeText(code, true), indexA < 0 ? QString() : text);
    }

    void uploadOnTheWire() {
        CardDesk rack("XE4", kSlot, "1.31");
        FrmXE4 *view = xe4(rack);
        QVERIFY(view);
        QVERIFY(!view->IsBuildA);
        QCOMPARE(view->txtVerNo->text(), QString("001.31"));
        QCOMPARE(view->List_InputType[1]->count(), 34);
        QCOMPARE(view->List_TempUnit->count(), 3);
        QVERIFY(view->List_ADCSpeed->isVisible());

        rack.runWorker(view->cmdUp);
        // No group is opened; every read carries its channel prefix.
        QStringList expected = preamble(kSlot);
        for (const char *item : {"87", "13", "57"})
            expected += writeLines("01", item, "");
        for (int ch = 1; ch <= 4; ++ch)
            for (const char *item : {"05", "50", "20", "25"})
                expected += channelLines(item, ch);
        for (int ch = 1; ch <= 4; ++ch)
            for (const char *item : {"55", "56", "53", "54"})
                expected += channelLines(item, ch);
        for (int ch = 1; ch <= 4; ++ch)
            for (const char *item : {"51", "52"})
                expected += channelLines(item, ch);
        QCOMPARE(rack.sent().mid(0, expected.size()), expected);

        // A thermocouple shows burnout and CJC, Pt100 burnout only, a voltage neither.
        const CardRecord &rec = CardTable(kSlot);
        QCOMPARE(rec.Param(7), QString("K(CA)"));
        QCOMPARE(rec.Param(21), QString("Pt100(JIS'97 IEC)"));
        QCOMPARE(rec.Param(8), QString("Up"));
        QCOMPARE(rec.Param(9), QString("1"));
        QCOMPARE(rec.Param(15), QString("-200"));
        QCOMPARE(rec.ChParam(1), QString("0"));
        QCOMPARE(rec.ChParam(4), QString("1"));
        QCOMPARE(rec.Param(57), QString("   C"));
        QCOMPARE(rec.Param(58), QString("Middle"));
        QCOMPARE(rec.Param(59), QString("0"));
        const QList<bool> shown = {
            !view->List_BurnOut[1]->isHidden(), !view->ChkCJC[1]->isHidden(),
            !view->List_BurnOut[2]->isHidden(), !view->ChkCJC[2]->isHidden(),
            !view->List_BurnOut[3]->isHidden(), !view->ChkCJC[3]->isHidden()};
        QCOMPARE(shown, QList<bool>({true, true, true, false, false, false}));
        QCOMPARE(view->List_ChEnable[4]->palette().color(QPalette::Button), kFlagOnColour);
    }

    void downloadWritesEveryField() {
        CardDesk rack("XE4", kSlot);
        FrmXE4 *view = xe4(rack);
        rack.runWorker(view->cmdUp);
        pickInputType(view, 3, 9); // "K(CA)" for the voltage channel
        QVERIFY(!view->List_BurnOut[3]->isHidden() && !view->ChkCJC[3]->isHidden());
        view->List_ChEnable[4]->setCurrentIndex(0);
        QCOMPARE(view->List_ChEnable[4]->palette().color(QPalette::Button), kFlagOffColour);
        view->chkLimit->setChecked(true);
        rack.box("txtBias", 3)->clear();

        rack.runWorker(view->cmdDown);
        QStringList expected = preamble(kSlot, "01") + writeLines("01", "87", "0") +
                               writeLines("01", "13", "2") + writeLines("01", "57", "1");
        const QStringList types = {"11", "30", "11", "50"};
        const QStringList burnOuts = {"1", "1", "0", "0"};
        for (int ch = 1; ch <= 4; ++ch)
            expected += channelLines("05", ch, types[ch - 1]) + channelLines("50", ch, "1") +
                        channelLines("20", ch, burnOuts[ch - 1]) +
                        channelLines("25", ch, ch == 1 ? "1" : "0");
        for (int ch = 1; ch <= 4; ++ch)
            expected += channelLines("55", ch, "0") + channelLines("56", ch, "10000") +
                        channelLines("53", ch, ch == 3 ? "" : "0.00") +
                        channelLines("54", ch, "1.0000");
        const QStringList zeros = {"0", "-200", "-10", "0"}, fulls = {"1370", "850", "10", "100"};
        for (int ch = 1; ch <= 4; ++ch)
            expected +=
                channelLines("51", ch, zeros[ch - 1]) + channelLines("52", ch, fulls[ch - 1]);
        QCOMPARE(rack.sent().mid(0, expected.size()), expected);
        QCOMPARE(stored(rack, "05"), QStringList({"11", "30", "11", "50"}));
        QCOMPARE(stored(rack, "50"), QStringList({"1", "1", "1", "1"}));
        QCOMPARE(CardTable(kSlot).Param(35), QString("K(CA)"));
        QCOMPARE(CardTable(kSlot).ChParam(4), QString("0"));
        // Only an Upload changes the limit's cell.
        QCOMPARE(CardTable(kSlot).Param(59), QString("0"));
        QVERIFY(rack.messages.messages.isEmpty());
    }

    void buildA() {
        CardDesk rack("XE4A", kSlot);
        FrmXE4 *view = xe4(rack);
        QVERIFY(view->IsBuildA);
        QCOMPARE(view->txtCardType->text(), QString("XE4/A"));
        QCOMPARE(view->List_InputType[1]->count(), 19);
        QCOMPARE(view->List_TempUnit->count(), 2);
        QVERIFY(!view->List_ADCSpeed->isVisible());
        // A code the build lacks shows nothing and is not written back.
        rack.sim.rack.slot(kSlot).setItem("01", "05", "D19,30,00,50");
        rack.runWorker(view->cmdUp);
        QCOMPARE(view->List_InputType[1]->currentIndex(), -1);
        QCOMPARE(CardTable(kSlot).Param(7), QString());
        QVERIFY(!view->List_BurnOut[1]->isVisible());

        view->List_TempUnit->setCurrentIndex(-1);
        rack.runWorker(view->cmdDown);
        const QString wire = rack.sent().join(' ');
        QVERIFY(wire.contains("G01 I87 D0 G01 I13 D3"));
        QVERIFY(!wire.contains("G01 I05 D01"));
        QVERIFY(wire.contains("G01 I05 D0230"));
        QCOMPARE(view->List_TempUnit->currentText(), QString("   C"));
        view->List_TempUnit->setCurrentIndex(1);
        rack.runWorker(view->cmdDown);
        QVERIFY(rack.sent().join(' ').contains("G01 I87 D1 "));
    }

    // The simulated card takes what its build knows and refuses the rest.
    void simulatedBuildsRefuse_data() {
        QTest::addColumn<QString>("model");
        QTest::addColumn<QString>("item");
        QTest::addColumn<QString>("data");
        QTest::addColumn<QString>("reply");
        QTest::newRow("N on standard") << "XE4"
                                       << "05"
                                       << "0119"
                                       << "D0119";
        QTest::newRow("N on A") << "XE4A"
                                << "05"
                                << "0119"
                                << "CNG";
        QTest::newRow("K on A") << "XE4A"
                                << "05"
                                << "0211"
                                << "D0211";
        QTest::newRow("kelvin on A") << "XE4A"
                                     << "87"
                                     << "2"
                                     << "CNG";
        QTest::newRow("middle on A") << "XE4A"
                                     << "13"
                                     << "2"
                                     << "CNG";
        QTest::newRow("read channel 3") << "XE4"
                                        << "50"
                                        << "03"
                                        << "D1";
        QTest::newRow("channel 5") << "XE4"
                                   << "50"
                                   << "051"
                                   << "CNG";
    }
    void simulatedBuildsRefuse() {
        QFETCH(QString, model);
        QFETCH(QString, item);
        QFETCH(QString, data);
        QFETCH(QString, reply);
        SimRack rack;
        rack.slot(2).model = model;
        InstallProfile(rack.slot(2));
        rack.refreshDirectory();
        for (const char *line : {"G00", "I41", "D2", "G01"})
            rack.answer(line);
        rack.answer("I" + item);
        QCOMPARE(rack.answer("D" + data), reply);
    }

    // Refusals of reads show as an empty list, refusals of writes are tried again, silently.
    void refusals() {
        CardDesk rack("XE4", kSlot);
        FrmXE4 *view = xe4(rack);
        rack.sim.rack.slot(kSlot).setItem("01", "20", "D    invalid data");
        rack.runWorker(view->cmdUp);
        QCOMPARE(rack.sent().count("I20"), 4);
        QCOMPARE(view->List_BurnOut[1]->currentIndex(), -1);
        QCOMPARE(CardTable(kSlot).Param(8), QString());

        rack.sim.rack.addFault({SimFault::Refuse, "D0111", -1, 0});
        rack.runWorker(view->cmdDown);
        const QStringList sent = rack.sent();
        QCOMPARE(sent.count("D0111"), 11);
        const qsizetype last = sent.lastIndexOf("D0111");
        QCOMPARE(sent.mid(last + 1, 3), writeLines("01", "50", "011"));
        QVERIFY(rack.messages.messages.isEmpty());
    }

    // The rule each number field applies to every change of its text.
    void numberRule_data() {
        QTest::addColumn<QString>("control");
        QTest::addColumn<QString>("prev");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("prevAfter");
        const QList<std::array<const char *, 5>> rows = {
            {"txtZScale", "100", "32000", "32000", "32000"},
            {"txtZScale", "100", "32001", "100", "100"},
            {"txtFScale", "100", "-", "-", "-"},
            {"txtZScale", "100", "-0", "-0", "-0"},
            {"txtZScale", "5", "2.5", "2", "2"},
            {"txtZScale", "5", "3.5", "4", "4"},
            {"txtZScale", "7", "1-2", "7", "7"},
            {"txtZScale", "7", "1..2", "7", "7"},
            {"txtZScale", "7", "CNG", "7", "7"},
            {"txtZScale", "7", "", "", ""},
            {"txtZBase", "9999", "99999", "99999", "99999"},
            {"txtFBase", "99999", "999999", "99999", "99999"},
            {"txtZBase", "0", "-1000", "0", "0"},
            {"txtZBase", "12", ".", "12", "12"},
            {"txtFBase", "12", ".", ".", "12"},
            {"txtBias", "0.5", "1.234", "1.23", "1.23"},
            {"txtBias", "0.5", "-", "-", "0.5"},
            {"txtBias", "1", "320.01", "1", "1"},
            {"txtBias", "1", "-320", "-320", "-320"},
            {"txtGain", "1.0000", "3.3", "1.0000", "1.0000"},
            {"txtGain", "1", "1.23456", "1.2346", "1.2346"},
            {"txtGain", "1", "0.12345", "0.1234", "0.1234"},
        };
        for (const auto &[control, prev, typed, text, after] : rows)
            QTest::addRow("%s %s after %s", control, typed, prev)
                << QString(control) << QString(prev) << QString(typed) << QString(text)
                << QString(after);
    }
    void numberRule() {
        QFETCH(QString, control);
        QFETCH(QString, prev);
        QFETCH(QString, typed);
        QFETCH(QString, text);
        QFETCH(QString, prevAfter);
        const UniversalEntry entry = UniversalNumberRule(control, typed, prev);
        QCOMPARE(entry.text, text);
        QCOMPARE(entry.prevText, prevAfter);
    }

    // Typed keys go through the filter and the rule, one at a time.
    void typingIsJudgedAsItGoes() {
        CardDesk rack("XE4", kSlot);
        QLineEdit *scale = rack.box("txtZScale", 1);
        scale->clear();
        scale->setFocus();
        QTest::keyClicks(scale, "32x001");
        QCOMPARE(scale->text(), QString("3200"));
        QLineEdit *bias = rack.box("txtBias", 2);
        bias->clear();
        QTest::keyClicks(bias, "-1.234");
        QCOMPARE(bias->text(), QString("-1.23"));
    }

    void cycleAsksAgainWhileMeasuring() {
        CardDesk rack("XE4", kSlot);
        auto reads = std::make_shared<QMap<QString, int>>();
        auto stuck = std::make_shared<bool>(false);
        rack.sim.rack.slot(kSlot).live = [reads, stuck](const QString &g, const QString &item,
                                                        qint64) -> std::optional<QString> {
            if (g != "00" || item.toInt() < 10 || item.toInt() > 13) return std::nullopt;
            const int n = ++(*reads)[item];
            if ((item == "11" && n <= 2) || (item == "12" && *stuck)) return QString("D:TMOUT");
            return QString("D%1:-1.25").arg(item.toInt() - 9);
        };
        // The value keeps its point.
        QTRY_COMPARE(xe4(rack)->valueBox(2)->text(), QString("-1.25"));
        QCOMPARE(reads->value("10"), reads->value("11") - 2);
        // A channel that stays busy ends the round as a lost link does.
        reads->clear();
        *stuck = true;
        QTRY_COMPARE(rack.messages.messages.size(), 1);
        QCOMPARE(rack.messages.messages[0].text, QString("Uploading incomplete"));
        QCOMPARE(reads->value("12"), 1 + 10);
        QVERIFY(!IsConnected);
    }
};

VX_TEST(UniversalViewTest)
#include "tst_universal.moc"
