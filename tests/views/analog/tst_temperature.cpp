#include "app/desk.h"

#include "rack/textroutines.h"
#include "views/analog/temperature.h"

#include <QCheckBox>

using vxtest::CardDesk;
using vxtest::preamble;
using vxtest::readLines;
using vxtest::writeLines;

namespace {

// Time for a worker of eight channels, on a machine that may be busy.
constexpr int kLongWorker = 20000;

// The view's layout as the card family has it, for building the expected wire.
struct Shape {
    int channels;
    int baseChannels;
    int firstBaseCell;
    bool leadwire;
};

Shape shapeOf(const QString &model) {
    if (model.startsWith("QFR")) return {8, 4, 33, true};
    if (model.at(2) == '8') return {8, 8, 33, false};
    return {4, 4, 17, false};
}

QStringList numbers(const QList<int> &items) {
    QStringList texts;
    for (int item : items)
        texts << QString::number(item);
    return texts;
}

TemperatureView *temperatureView(const CardDesk &rack) {
    return qobject_cast<TemperatureView *>(rack.view);
}

// The first lines of the cycle's round after a worker: nothing more was sent in between.
const QStringList kNextRound = {"G00", "I01"};

// Turns of the event loop to wait for the dialog; its opening reads turn it many times.
constexpr int kDialogTurns = 1 << 20;

// A text for every field that differs from field to field and passes every acceptance test.
QString typed(int column, int ch) {
    return QString::number(column * 10 + ch);
}

} // namespace

class TemperatureViewTest : public QObject {
    Q_OBJECT
private slots:
    void openingReadsWhatTheCardReports_data() {
        QTest::addColumn<QString>("model");
        QTest::addColumn<QString>("version");
        QTest::addColumn<bool>("limit");
        QTest::addColumn<bool>("zero");
        const struct {
            const char *model, *version;
            bool limit, zero;
        } rows[] = {
            {"QP4", "1.0", true, false},   {"QP4", "0.9", false, false},
            {"QR4", "2.0", false, false},  {"QP8", "1.20", true, false},
            {"QR8", "1.20", false, false}, {"QP8A", "0.5", true, true},
        };
        for (const auto &r : rows)
            QTest::addRow("%s %s", r.model, r.version)
                << QString(r.model) << QString(r.version) << r.limit << r.zero;
    }
    void openingReadsWhatTheCardReports() {
        QFETCH(QString, model);
        QFETCH(QString, version);
        QFETCH(bool, limit);
        QFETCH(bool, zero);
        CardDesk rack(model, 5, version);
        TemperatureView *view = temperatureView(rack);
        QVERIFY(view);
        rack.reopen();
        const int channels = shapeOf(model).channels;
        QStringList items{"40"};
        for (int ch = 1; ch <= channels; ++ch)
            items << QString::number(24 + ch);
        items << "20"
              << "19";
        QCOMPARE(rack.sent().mid(0, 6 + 2 * items.size()), preamble(5) + readLines("00", items));
        QCOMPARE(view->inputType(3)->text(), QString(model.startsWith("QR") ? "Pt100" : "J"));
        QCOMPARE(view->txtUnit->text(), QString("deg.C"));
        QCOMPARE(view->txtBurnout->text(), QString("UP"));
        QCOMPARE(view->chkLimit->isVisible(), limit);
        if (view->zeroDeg) QCOMPARE(view->zeroDeg->isVisible() && view->zeroDeg->isEnabled(), zero);
    }

    // Resistance channels of the mixed card open their bases and leadwire; the others are shown
    // locked, and every channel past the fourth is a voltage input.
    void mixedCardLocksVoltageChannels() {
        CardDesk rack("QFR8", 2, "1.00");
        rack.sim.rack.slot(2).setItem("00", "57", "DQR");
        rack.sim.rack.slot(2).setItem("00", "55", "DCNG");
        rack.reopen();
        QCOMPARE(rack.sent().mid(0, 20),
                 preamble(2) + readLines("00", {"40", "55", "56", "57", "58", "59", "60"}));
        TemperatureView *view = temperatureView(rack);
        const QStringList kinds = {"0-10V DC", "Pt1000", "Pt1000", "0-10V DC", "0-10V DC"};
        for (int ch = 1; ch <= 5; ++ch) {
            QCOMPARE(view->inputType(ch)->text(), kinds.at(ch - 1));
            if (ch > 4) continue;
            for (const char *control : {"txtZBase", "txtFBase", "txtLineR"})
                QCOMPARE(rack.box(control, ch)->isReadOnly(), ch == 1 || ch == 4);
        }
        QVERIFY(!rack.box("txtZBase", 5));
        QVERIFY(!view->chkLimit);
    }

    void wireOfUploadAndDownload_data() {
        QTest::addColumn<QString>("model");
        QTest::addColumn<QString>("version");
        QTest::addColumn<bool>("limit");
        QTest::addColumn<QString>("limitCell"); // the mixed card leaves it alone
        const struct {
            const char *name, *model, *version;
            bool limit;
            const char *limitCell;
        } rows[] = {
            {"four channels", "QP4", "1.0", true, "1"},
            {"eight channels", "QP8", "0.9", false, ""},
            {"mixed", "QFR8", "1.00", false, "stale"},
        };
        for (const auto &r : rows)
            QTest::newRow(r.name) << QString(r.model) << QString(r.version) << r.limit
                                  << QString(r.limitCell);
    }
    void wireOfUploadAndDownload() {
        QFETCH(QString, model);
        QFETCH(QString, version);
        QFETCH(bool, limit);
        QFETCH(QString, limitCell);
        const Shape shape = shapeOf(model);
        CardDesk rack(model, 3, version);
        SimCard &card = rack.sim.rack.slot(3);
        card.setItem("02", "13", "D850.5"); // full base of channel 2
        card.setItem("00", "56", "DENA");
        CardTable(3).Param(64) = "stale";
        rack.runWorker(rack.view->cmdUp, kLongWorker);
        QStringList expected = preamble(3, "01");
        for (int ch = 1; ch <= shape.channels; ++ch)
            expected +=
                readLines("01", numbers({2 * ch + 40, 2 * ch + 41, 2 * ch + 8, 2 * ch + 9}));
        expected += writeLines("02", "01", "1");
        for (int ch = 1; ch <= shape.baseChannels; ++ch)
            expected += readLines("02", numbers({2 * ch + 8, 2 * ch + 9}));
        for (int ch = 1; ch <= shape.channels; ++ch)
            expected += readLines("02", numbers({ch + 41}));
        if (shape.leadwire)
            expected += writeLines("03", "01", "1") + readLines("03", {"40", "41", "42", "43"});
        if (limit) expected += readLines("00", {"56"});
        QTRY_COMPARE(rack.sent().mid(0, expected.size() + 2), expected + kNextRound);
        const CardRecord &record = CardTable(3);
        QCOMPARE(record.Param(shape.firstBaseCell + 3), QString("850.5"));
        QCOMPARE(record.Param(64), limitCell);
        if (limit) QVERIFY(temperatureView(rack)->chkLimit->isChecked());
        if (shape.leadwire) QCOMPARE(record.Param(49), QString("0.25"));

        const QStringList columns = {"txtZScale", "txtFScale", "txtBias", "txtGain",
                                     "txtZBase",  "txtFBase",  "txtLineR"};
        for (int c = 0; c < columns.size(); ++c)
            for (int ch = 1; ch <= shape.channels; ++ch)
                if (QLineEdit *box = rack.box(columns.at(c), ch)) box->setText(typed(c, ch));
        rack.box("txtEnable", 1)->setText("1");
        if (shape.leadwire) rack.box("txtLineR", 4)->clear(); // sent even so
        if (limit) temperatureView(rack)->chkLimit->setChecked(false);
        rack.runWorker(rack.view->cmdDown, kLongWorker);
        expected = preamble(3, "01");
        for (int ch = 1; ch <= shape.channels; ++ch)
            for (int c = 0; c < 4; ++c)
                expected += writeLines("01", QString::number(QList{40, 41, 8, 9}[c] + 2 * ch),
                                       typed(c, ch));
        expected += writeLines("02", "01", "1");
        for (int ch = 1; ch <= shape.baseChannels; ++ch)
            expected += writeLines("02", QString::number(2 * ch + 8), typed(4, ch)) +
                        writeLines("02", QString::number(2 * ch + 9), typed(5, ch));
        for (int ch = 1; ch <= shape.channels; ++ch)
            expected += writeLines("02", QString::number(ch + 41), ch == 1 ? "1" : "0");
        if (shape.leadwire) {
            expected += writeLines("03", "01", "1");
            for (int ch = 1; ch <= 3; ++ch)
                expected += writeLines("03", QString::number(ch + 39), typed(6, ch));
            // The echo of nothing is no answer, so the empty write goes out four times.
            for (int attempt = 0; attempt < 4; ++attempt)
                expected += writeLines("03", "43", "");
        }
        if (limit) expected += writeLines("00", "56", "0");
        QTRY_COMPARE(rack.sent().mid(0, expected.size() + 2), expected + kNextRound);
        QCOMPARE(record.Param(shape.firstBaseCell + 2), typed(4, 2));
        QCOMPARE(record.Param((shape.channels - 1) * 4 + 4), typed(3, shape.channels));
        QCOMPARE(record.ChParam(1), QString("1"));
        QCOMPARE(FieldColour(rack.box("txtEnable", 1)), kFlagOnColour);
        QCOMPARE(record.Param(64), QString(limit ? "0" : limitCell));
        if (shape.leadwire) QCOMPARE(record.Param(51), typed(6, 3));
        if (limit) QCOMPARE(card.groups["00"]["56"], QString("DDIS"));
    }

    // The four-channel view sends only what passes its syntax test.
    void acceptance() {
        CardDesk rack("QP4", 2, "0.8");
        rack.runWorker(rack.view->cmdUp, kLongWorker);
        rack.box("txtZScale", 1)->setText("1.5");
        rack.box("txtZBase", 2)->setText("-");
        rack.box("txtFBase", 2)->setText("x");
        rack.box("txtEnable", 3)->setText("2");
        rack.runWorker(rack.view->cmdDown, kLongWorker);
        const QString wire = rack.sent().join(' ');
        QVERIFY(!wire.contains("G01 I42 D"));
        QVERIFY(wire.contains("G02 I12 D- G02 I14 D0.0"));
        QVERIFY(!wire.contains("G02 I44 D"));
        QVERIFY(!wire.contains("G00 I56")); // no limit option below version 1.0
        QCOMPARE(rack.box("txtZScale", 1)->text(), QString("0"));
        QCOMPARE(rack.box("txtFBase", 2)->text(), QString("1200.0"));
        QCOMPARE(rack.box("txtEnable", 3)->text(), QString("0"));
        QCOMPARE(CardTable(2).Param(19), QString("-"));
    }

    // The dialog reads the offsets (an item that does not answer leaves its box empty and tells
    // nobody), measures one, clears them all, and the view does not poll while it is open.
    void zeroOffsetDialog() {
        CardDesk rack("QP8A", 4, "1.12");
        TemperatureView *view = temperatureView(rack);
        rack.sim.rack.slot(4).setItem("03", "55", "D-0.12");
        rack.sim.rack.addFault({SimFault::NoReply, "I53", 4, 0});
        QStringList inDialog;
        QString measured, measuredBox, kept, silent = "?";
        bool polling = true;
        vxtest::whenVisible([] { return LoadedView("frmQP8Azero"); },
                            [&, view](QWidget *window) {
                                auto *dialog = qobject_cast<FrmQP8Azero *>(window);
                                kept = dialog->ch_Text.at(5)->text();
                                silent = dialog->ch_Text.at(3)->text();
                                rack.sim.rack.clearTranscript();
                                dialog->ch.at(2)->click();
                                measuredBox = dialog->ch_Text.at(2)->text();
                                measured = rack.sim.rack.slot(4).groups["03"]["52"];
                                dialog->Clear->click();
                                inDialog = rack.sent();
                                polling = view->WaitForTimer->isActive();
                                dialog->cmdExit->click();
                            },
                            kDialogTurns);
        rack.sim.rack.clearTranscript();
        QVERIFY(vxtest::press(view->zeroDeg));
        QCOMPARE(kept, QString("-0.12"));
        QCOMPARE(silent, QString());
        QCOMPARE("D" + measuredBox, measured);
        QStringList expected =
            writeLines("03", "52", "1") + preamble(4) + writeLines("03", "01", "F");
        for (int index = 0; index < 8; ++index)
            expected += writeLines("03", QString::number(50 + index), "0.00");
        QCOMPARE(inDialog, expected);
        QVERIFY(!polling);
        auto *dialog = qobject_cast<FrmQP8Azero *>(LoadedView("frmQP8Azero"));
        for (int index = 0; index < 8; ++index)
            QCOMPARE(dialog->ch_Text.at(index)->text(), QString("0.00"));
        // Leaving the dialog brings the polling back.
        rack.sim.rack.clearTranscript();
        QTRY_VERIFY(rack.sent().contains("I17"));
        QVERIFY(rack.messages.messages.isEmpty());
    }

    // A click that comes while a round of the cycle is on the line opens the dialog only after
    // that round, so the two never share the line.
    void zeroOffsetClickDuringACycle() {
        CardDesk rack("QP8A", 4, "1.12");
        TemperatureView *view = temperatureView(rack);
        bool clicked = false;
        rack.sim.rack.slot(4).live = [view, &clicked](const QString &group, const QString &item,
                                                      qint64) -> std::optional<QString> {
            if (group != "00" || item.toInt() < 10 || item.toInt() > 17) return std::nullopt;
            if (item == "15" && !clicked) {
                clicked = true;
                view->zeroDeg->click();
            }
            return QString("D1:20.5");
        };
        QStringList atOpening;
        vxtest::whenVisible([] { return LoadedView("frmQP8Azero"); },
                            [&](QWidget *window) {
                                atOpening = rack.sent();
                                qobject_cast<FrmQP8Azero *>(window)->reject();
                            },
                            kDialogTurns);
        rack.sim.rack.clearTranscript();
        QTRY_VERIFY(!atOpening.isEmpty());
        const qsizetype click = atOpening.lastIndexOf("I15");
        QVERIFY(click > 0);
        QCOMPARE(atOpening.mid(click + 1),
                 readLines("00", {"16", "17"}) + preamble(4) + writeLines("03", "01", "F") +
                     readLines("03", {"50", "51", "52", "53", "54", "55", "56", "57"}));
    }
};

VX_TEST(TemperatureViewTest)
#include "tst_temperature.moc"
