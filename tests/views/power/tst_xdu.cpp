#include "app/desk.h"

#include "views/power/xdu.h"
#include "views/power/xduwords.h"

#include <QComboBox>
#include <QLabel>
#include <QRegularExpression>
#include <QSignalSpy>

using vxtest::CardDesk;
using vxtest::preamble;
using vxtest::readLines;
using vxtest::writeLines;

namespace {

// Models: the fifth character "2" gives two systems, the sixth the sensor series, an eighth
// character 1 to 3 the word page.
const QString kTwoSystems = QStringLiteral("XDU42B01");
const QString kOneSystem = QStringLiteral("XDU41B01");

FrmXDU *xdu(const CardDesk &rack) {
    return qobject_cast<FrmXDU *>(rack.view);
}

// As a person picks an entry of a list.
void pick(QComboBox *box, int index) {
    box->setCurrentIndex(index);
    emit box->activated(index);
}

QStringList items(int first, int last) {
    QStringList list;
    for (int item = first; item <= last; ++item)
        list << QStringLiteral("%1").arg(item, 2, 10, QLatin1Char('0'));
    return list;
}

// Writes of one group, given as "item=data item=data".
QStringList writes(const QString &group, const QString &pairs) {
    QStringList lines;
    for (const QString &pair : pairs.split(' '))
        lines += writeLines(group, pair.section('=', 0, 0), pair.section('=', 1));
    return lines;
}

// The word rows as the user sees them: "x" a hidden row, "_" the free row, otherwise the
// measurement and its word count, "!" when the count is locked.
QString rowsShown(FrmXDU *view) {
    QStringList rows;
    for (int n = 0; n < FrmXDU::kRows; ++n) {
        if (!view->cbItem[n]->isVisibleTo(view))
            rows << "x";
        else if (view->cbItem[n]->currentIndex() < 1)
            rows << "_";
        else
            rows << view->cbItem[n]->currentText() + "/" + view->cbWordNum[n]->currentText() +
                        (view->cbWordNum[n]->isEnabled() ? "" : "!");
    }
    return rows.join(' ');
}

// The rows shown, padded with hidden rows to sixteen.
QString rowsOf(QStringList shown) {
    while (shown.size() < FrmXDU::kRows)
        shown << "x";
    return shown.join(' ');
}

void storeBindings(SimCard &card, const QStringList &bindings) {
    for (int n = 0; n < FrmXDU::kRows; ++n)
        card.setItem("02", QString::number(10 + n),
                     "D" + (n < bindings.size() ? bindings.at(n) : QString("0;0;0;0")));
}

// The card's live words: word n answers words[n], the others 0000.
void liveWords(SimCard &card, const QStringList &words) {
    card.live = [words](const QString &group, const QString &item,
                        qint64) -> std::optional<QString> {
        const int n = item.toInt() - 10;
        if (group != "01" || n < 0 || n > 15) return std::nullopt;
        return "D" + (n < words.size() ? words.at(n) : QString("0000"));
    };
}

} // namespace

class XduViewTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { QVERIFY(WordRunsInPlace()); }

    void uploadOnTheWire_data() {
        QTest::addColumn<QString>("model");
        QTest::newRow("one system") << kOneSystem;
        QTest::newRow("two systems") << kTwoSystems;
    }
    void uploadOnTheWire() {
        QFETCH(QString, model);
        const bool two = model == kTwoSystems;
        CardDesk rack(model, 3, "2.01");
        SimCard &card = rack.sim.rack.slot(3);
        card.setItem("03", "14", "D0110");
        card.setItem("03", "12", "D0"); // PSNB-R5: the card's primary stands, not the sensor's 5
        card.setItem("03", "11", "D250");
        card.setItem("03", "20", "DCNG"); // no index: no selection
        rack.runWorker(rack.view->cmdUp);

        QStringList expected = preamble(3) + readLines("00", {"04"}) + writeLines("02", "01", "F") +
                               readLines("02", items(10, 25)) + writeLines("03", "01", "F");
        if (two) expected += writeLines("04", "01", "F");
        expected += readLines("03", {"10", "13", "14", "12", "11", "17", "16", "15"});
        if (two) expected += readLines("04", {"12", "11", "17", "16", "15"});
        expected += readLines("03", {"20", "21", "22", "18", "19"});
        QCOMPARE(rack.sent().mid(0, expected.size()), expected);

        FrmXDU *view = xdu(rack);
        const CardRecord &record = CardTable(3);
        QCOMPARE(record.VerNo, QString("2.01"));
        QCOMPARE(record.Param(1), QString("40001;2;1;0"));
        QCOMPARE(view->txtVT2->text(), QString("110"));
        QCOMPARE(record.Param(19), QString("110"));
        QCOMPARE(view->txtCur1[0]->text(), QString("250"));
        QCOMPARE(record.Param(20), QString("250"));
        QCOMPARE(record.Param(21), QString("0"));
        QCOMPARE(view->cbPF->currentIndex(), -1);
        QCOMPARE(record.Param(30), QString("-1"));
        const QStringList second = {record.Param(22), record.Param(23), record.Param(26),
                                    record.Param(27), record.Param(29)};
        if (two) {
            QCOMPARE(second, QStringList({"50", "2", "5", "1", "0"}));
            QVERIFY(view->cbPsna[1]->isVisibleTo(view));
        } else {
            QCOMPARE(second, QStringList(5, "-1"));
            QVERIFY(!view->cbPsna[1]->isVisibleTo(view));
        }
    }

    void downloadOfTwoSystemsOnTheWire() {
        CardDesk rack(kTwoSystems, 3);
        FrmXDU *view = xdu(rack);
        rack.runWorker(view->cmdUp);
        view->txtVT1->clear(); // empty: nothing sent, the field shows the record's value again
        view->txtVT2->setText("100");
        pick(view->cbPsna[0], 0);
        view->txtCur1[0]->setText("400");
        view->txtVCut[1]->setText("7");
        view->cbInpSig[0]->setCurrentIndex(1);
        view->cbS->setCurrentIndex(1);
        view->txtIIT->setText("30");
        pick(view->cbItem[12], 0); // drops the last two measurements
        rack.runWorker(view->cmdDown);

        QStringList expected = preamble(3) + readLines("00", {"04"}) + writeLines("02", "01", "F");
        const QStringList bindings = {"40001;2;1;0", "40003;2;1;0", "40005;2;1;0", "40011;1;1;0",
                                      "40013;1;1;0", "40129;2;1;0", "40001;2;2;0"};
        for (int n = 0; n < 16; ++n)
            expected += writeLines("02", QString::number(10 + n),
                                   n < bindings.size() ? bindings.at(n) : QString("0;0;0;0"));
        expected += writes("03", "01=F 10=5") + writeLines("04", "10", "5");
        expected += writes("03", "14=100 11=400 12=0 17=5 16=1 15=1 20=0 21=0 22=1 18=30 19=15");
        expected += writeLines("04", "01", "F");
        // The first write refilled the empty field from the record: the second group gets that.
        expected += writes(
            "04", "10=5 13=6600 14=100 11=50 12=2 17=7 16=1 15=0 20=0 21=0 22=1 18=30 19=15");
        expected += writeLines("02", "09", "1");
        QCOMPARE(rack.sent().mid(0, expected.size()), expected);
        QCOMPARE(view->txtVT1->text(), QString("6600"));
        QCOMPARE(CardTable(3).Param(18), QString("6600"));
        QCOMPARE(CardTable(3).Param(26), QString("7"));
        QCOMPARE(CardTable(3).Param(7), QString("40001;2;2;0"));
        QCOMPARE(CardTable(3).Param(8), QString("0;0;0;0"));
        QVERIFY(rack.messages.messages.isEmpty());
    }

    // What the page and the number of systems change: the labels of the rows, what can be
    // edited, and which groups a Download writes.
    void modelsAndPages_data() {
        QTest::addColumn<QString>("model");
        QTest::addColumn<QString>("labels");
        QTest::addColumn<bool>("editable");
        QTest::addColumn<QStringList>("groups");
        QTest::addColumn<QString>("secondRow");
        const QStringList all = {"G00", "G02", "G03", "G04"};
        const QStringList bindingsOnly = {"G00", "G02"};
        const struct {
            const char *tag, *model, *labels;
            bool editable;
            QStringList groups;
            const char *secondRow;
        } rows[] = {
            {"short name", "XDU42B0", "+0 +15", true, all, "50"},
            {"page 1, one system", "XDU41B01", "+0 +15", true, {"G00", "G02", "G03"}, "-1"},
            {"page 2", "XDU42B02", "+16 +31", false, bindingsOnly, "50"},
            {"page 3, one system", "XDU41A03", "+32 +47", false, bindingsOnly, "-1"},
            {"nine characters", "XDU42B013", "+0 +15", true, all, "50"},
        };
        for (const auto &r : rows)
            QTest::newRow(r.tag) << QString(r.model) << QString(r.labels) << r.editable << r.groups
                                 << QString(r.secondRow);
    }
    void modelsAndPages() {
        QFETCH(QString, model);
        QFETCH(QString, labels);
        QFETCH(bool, editable);
        QFETCH(QStringList, groups);
        QFETCH(QString, secondRow);
        CardDesk rack(model, 6);
        FrmXDU *view = xdu(rack);
        QCOMPARE(view->hexIdx[0]->text() + " " + view->hexIdx[15]->text(), labels);
        rack.runWorker(view->cmdUp);
        const QList<QWidget *> fields = {view->cbWiring,   view->txtVT1,      view->cbPF,
                                         view->txtVCut[0], view->cbInpSig[0], view->txtVLTIT};
        for (QWidget *field : fields)
            QCOMPARE(field->isEnabled(), editable);
        view->txtVT1->setText("3300");
        rack.runWorker(view->cmdDown);
        QStringList sentGroups;
        for (const QString &line : rack.sent())
            if (line.startsWith('G') && !sentGroups.contains(line)) sentGroups << line;
        sentGroups.sort();
        // The live words of group 01 follow the Download.
        sentGroups.removeAll("G01");
        QCOMPARE(sentGroups, groups);
        // Pages 2 and 3 keep what the fields show; the others what was sent.
        QCOMPARE(CardTable(6).Param(18), QString("3300"));
        QCOMPARE(CardTable(6).Param(22), secondRow);
    }

    // A spread of measurements: what the row sends, how the card's binding reads back into the
    // row, and how its live words show.
    void measurementsOnTheWireAndScreen_data() {
        QTest::addColumn<int>("row");
        QTest::addColumn<QString>("asked"); // word count, system and scale the user picks
        QTest::addColumn<QString>("binding");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("unit");
        QTest::addColumn<QStringList>("live");
        QTest::addColumn<QString>("value");
        const struct {
            const char *tag;
            int row;
            const char *asked, *binding, *name, *unit;
            QStringList live;
            const char *value;
        } rows[] = {
            // clang-format off
            {"first", 1, "2;1;0", "40001;2;1;0", "I", "mA", {"0001", "0002"}, "131073"},
            {"no unit", 8, "1;1;0", "40015;1;1;0", "DIR", "", {"0001", "FFFF"}, "1"},
            {"end of a run", 33, "2;2;0", "40081;2;2;0", "DIR3", "", {"FFFF", "7FFF"}, "2147483647"},
            {"energy", 34, "2;1;3", "40129;2;1;3", "EP", "kWh/10", {"0000", "8000"}, "-2147483648"},
            {"hours as one word", 43, "1;1;0", "40147;1;1;0", "TIMER", "hour/10", {"8000"}, "-32768"},
            {"suffixed name", 53, "2;2;1", "40281;2;2;1", "IN AVG 1", "mA", {"C350", "0000"}, "50000"},
            {"last power average", 83, "2;1;2", "40581;2;1;2", "S AVG 4", "VA", {"0010"}, "16"},
            {"maximum average", 129, "1;2;0", "40909;1;2;0", "P MAX AVG-", "W", {"ff9c"}, "-100"},
            {"last two-word row", 171, "2;1;0", "41299;2;1;0", "THD U3N", "%/10", {"0022"}, "34"},
            {"harmonic asked for two words", 172, "2;1;0", "41537;1;1;0", "HD I1 2", "%/10",
             {"FFFF", "0001"}, "-1"},
            {"end of a harmonic block", 201, "1;2;3", "41566;1;2;3", "HD I1 31", "%/10", {"7FFF"},
             "32767"},
            {"next harmonic block", 202, "1;1;0", "41601;1;1;0", "HD I2 2", "%/10", {"12"}, "18"},
            {"last row", 471, "1;1;1", "42142;1;1;1", "HD U3N 31", "%/10", {"0005"}, "5"},
            // clang-format on
        };
        for (const auto &r : rows)
            QTest::newRow(r.tag) << r.row << QString(r.asked) << QString(r.binding)
                                 << QString(r.name) << QString(r.unit) << r.live
                                 << QString(r.value);
    }
    void measurementsOnTheWireAndScreen() {
        QFETCH(int, row);
        QFETCH(QString, asked);
        QFETCH(QString, binding);
        QFETCH(QString, name);
        QFETCH(QString, unit);
        QFETCH(QStringList, live);
        QFETCH(QString, value);
        CardDesk rack(kTwoSystems, 4);
        FrmXDU *view = xdu(rack);
        SimCard &card = rack.sim.rack.slot(4);
        liveWords(card, live);

        pick(view->cbItem[0], row);
        pick(view->cbWordNum[0], asked.section(';', 0, 0).toInt() - 1);
        view->cbCh[0]->setCurrentIndex(asked.section(';', 1, 1).toInt() - 1);
        view->cbScale[0]->setCurrentIndex(asked.section(';', 2, 2).toInt());
        QCOMPARE(view->cbItem[0]->currentText(), name);
        QCOMPARE(view->txtUnit[0]->text(), unit);
        rack.runWorker(view->cmdDown);
        QVERIFY(rack.sent().join(' ').contains(writeLines("02", "10", binding).join(' ')));
        QCOMPARE(card.groups["02"]["10"], "D" + binding); // the card took it

        // A fresh record shows nothing; an Upload brings the row back from the card.
        CardTable(4).Param(1).clear();
        rack.reopen();
        QCOMPARE(view->cbItem[0]->currentIndex(), -1);
        rack.runWorker(view->cmdUp);
        QCOMPARE(view->cbItem[0]->currentIndex(), row);
        QCOMPARE(view->cbWordNum[0]->currentText(), binding.section(';', 1, 1) + "W");
        QCOMPARE(view->cbCh[0]->currentText(), "#" + binding.section(';', 2, 2));
        QCOMPARE(view->cbScale[0]->currentText(), binding.section(';', 3, 3));
        QCOMPARE(view->txtUnit[0]->text(), unit);
        QTRY_COMPARE(view->txtValue[0]->text(), value);
        QCOMPARE(view->txtParData[0]->text(), live.at(0));
    }

    // How stored binding texts land in the sixteen rows.
    void bindingsIntoRows_data() {
        QTest::addColumn<QStringList>("bindings");
        QTest::addColumn<QString>("rows");
        QTest::addColumn<QStringList>("compacted");
        QTest::newRow("free") << QStringList{"0;0;0;0", "40001;2;1;0"} << rowsOf({"_"})
                              << QStringList();
        QTest::newRow("three fields")
            << QStringList{"40001;2;1", "40003;2;1;0"} << rowsOf({"_"}) << QStringList();
        QTest::newRow("harmonic locked to one word") << QStringList{"41538;2;1;0", "40003;2;2;1"}
                                                     << rowsOf({"HD I1 3/1W!", "U/2W", "x", "_"})
                                                     << QStringList{"41538;1;1;0", "40003;2;2;1"};
        QTest::newRow("unknown address ends the list")
            << QStringList{"40017;2;1;0", "40003;2;1;0"} << rowsOf({"_"}) << QStringList();
        QTest::newRow("odd scale and system")
            << QStringList{"40003;1;3;7"} << rowsOf({"U/1W", "_"}) << QStringList{"40003;1;0;0"};
        QTest::newRow("two measurements") << QStringList{"40129;2;1;0", "41538;1;2;1"}
                                          << rowsOf({"EP/2W", "x", "HD I1 3/1W!", "_"})
                                          << QStringList{"40129;2;1;0", "41538;1;2;1"};
        const QStringList ones(15, "40011;1;1;0");
        QTest::newRow("two words on the last row")
            << ones + QStringList{"40001;2;1;0"}
            << rowsOf(QStringList(15, "PF/1W") + QStringList{"I/1W"})
            << ones + QStringList{"40001;1;1;0"};
        QTest::newRow("sixteen single words, no free row")
            << QStringList(16, "40011;1;1;0") << rowsOf(QStringList(16, "PF/1W"))
            << QStringList(16, "40011;1;1;0");
    }
    void bindingsIntoRows() {
        QFETCH(QStringList, bindings);
        QFETCH(QString, rows);
        QFETCH(QStringList, compacted);
        CardDesk rack(kTwoSystems, 2);
        FrmXDU *view = xdu(rack);
        storeBindings(rack.sim.rack.slot(2), bindings);
        rack.runWorker(view->cmdUp);
        QCOMPARE(rowsShown(view), rows);
        view->setBindInfo();
        while (compacted.size() < FrmXDU::kRows)
            compacted << "0;0;0;0";
        QCOMPARE(view->bindings(), compacted);
    }

    // Each edit compacts the list again: one free row below the measurements, nothing else.
    void editingRows() {
        CardDesk rack(kOneSystem, 5);
        FrmXDU *view = xdu(rack);
        rack.runWorker(view->cmdUp);
        QCOMPARE(rowsShown(view),
                 "I/2W x U/2W x P/2W x PF/1W F/1W EP/2W x Q/1W HD I1 3/1W! _ x x x");
        pick(view->cbItem[12], 5);
        QCOMPARE(rowsShown(view),
                 "I/2W x U/2W x P/2W x PF/1W F/1W EP/2W x Q/1W HD I1 3/1W! S/1W _ x x");
        QVERIFY(view->txtValue[12]->isVisibleTo(view));
        QCOMPARE(view->txtUnit[12]->text(), QString("VA"));
        // A changed word count moves every word below it: those measurements go.
        pick(view->cbWordNum[4], 0);
        QCOMPARE(rowsShown(view), "I/2W x U/2W x P/1W _ x x x x x x x x x x");
        pick(view->cbWordNum[4], 1);
        QCOMPARE(rowsShown(view), "I/2W x U/2W x P/2W x _ x x x x x x x x x");
        // The empty entry clears the row and the rows below.
        pick(view->cbItem[2], 0);
        QCOMPARE(rowsShown(view), "I/2W x _ x x x x x x x x x x x x x");
        // A one-word measurement on a two-word row locks the row to one word.
        pick(view->cbItem[0], 173);
        QCOMPARE(rowsShown(view), "HD I1 3/1W! _ x x x x x x x x x x x x x x");
        rack.runWorker(view->cmdDown);
        const QString wire = rack.sent().join(' ');
        QVERIFY(wire.contains("G02 I10 D41538;1;1;0 G02 I11 D0;0;0;0"));
    }

    // While the user opens a word's list, the live words rest until the next Download.
    void openingAListStopsTheLiveWords() {
        CardDesk rack(kOneSystem, 5);
        FrmXDU *view = xdu(rack);
        QTRY_VERIFY(rack.sent().contains("G01"));
        view->cbItem[0]->showPopup();
        view->cbItem[0]->hidePopup();
        QCOMPARE(view->CycleReadOn, qint16(0));
        rack.sim.rack.clearTranscript();
        QSignalSpy ticks(view->WaitForTimer, &QTimer::timeout);
        QTRY_VERIFY(ticks.count() >= 3);
        QVERIFY(rack.sent().isEmpty());
        rack.runWorker(view->cmdDown);
        QCOMPARE(view->CycleReadOn, qint16(-1));
        QTRY_VERIFY(rack.sent().contains("G01"));
    }

    void liveWordsKeepATimedOutWordAndStopOnSilence() {
        CardDesk rack(kOneSystem, 5);
        FrmXDU *view = xdu(rack);
        SimCard &card = rack.sim.rack.slot(5);
        storeBindings(card, {"40011;1;1;0"});
        rack.runWorker(view->cmdUp);
        liveWords(card, {"1234", "0001"});
        QTRY_COMPARE(view->txtParData[1]->text(), QString("0001"));
        QCOMPARE(view->txtValue[0]->text(), QString("4660"));
        QVERIFY(view->txtValue[1]->text().isEmpty()); // the free row shows only its word
        card.live = [](const QString &group, const QString &item,
                       qint64) -> std::optional<QString> {
            if (group != "01") return std::nullopt;
            return QString(item == "10" ? "D10:TMOUT" : "D0002");
        };
        QTRY_COMPARE(view->txtParData[1]->text(), QString("0002"));
        QCOMPARE(view->txtParData[0]->text(), QString("1234"));
        QCOMPARE(view->txtValue[0]->text(), QString("4660"));

        rack.sim.rack.addFault({SimFault::NoReply, "I12", -1, 0});
        QTRY_VERIFY(!IsConnected);
        QCOMPARE(rack.messages.messages.size(), 1);
        QCOMPARE(rack.messages.messages[0].text, QString("Uploading incomplete"));
        QCOMPARE(rack.messages.messages[0].title, QString("Uploading"));
        QCOMPARE(rack.messages.messages[0].icon, People::Icon::Stop);
        QVERIFY(!view->WaitForTimer->isActive());
    }

    void sensorsAndNumberFields() {
        CardDesk rack(kOneSystem, 5);
        FrmXDU *view = xdu(rack);
        pick(view->cbPsna[0], 0);
        QCOMPARE(view->txtCur1[0]->text(), QString("5"));
        QCOMPARE(view->txtCur2[0]->text(), QString("5"));
        QVERIFY(view->txtCur1[0]->isEnabled());
        QVERIFY(view->txtCur2[0]->isVisibleTo(view));
        view->txtCur1[0]->clear();
        QTest::keyClicks(view->txtCur1[0], "abc1.2.3");
        QCOMPARE(view->txtCur1[0]->text(), QString("1.23"));
        view->txtCur1[0]->clear();
        QTest::keyClicks(view->txtCur1[0], "--1");
        QCOMPARE(view->txtCur1[0]->text(), QString("-1"));
        view->txtVT1->setText("x-6.6.0");
        QCOMPARE(view->txtVT1->text(), QString("6.60"));
        pick(view->cbPsna[0], 1);
        QCOMPARE(view->txtCur1[0]->text(), QString("50"));
        QVERIFY(!view->txtCur1[0]->isEnabled());
        QVERIFY(!view->txtCur2[0]->isVisibleTo(view));

        // A series the view does not know has one entry of no rating.
        CardDesk other("XDU41C01", 7);
        FrmXDU *unknown = xdu(other);
        QCOMPARE(unknown->cbPsna[0]->count(), 1);
        QCOMPARE(unknown->cbPsna[0]->itemText(0), QString("nodata"));
        pick(unknown->cbPsna[0], 0);
        QCOMPARE(unknown->txtCur1[0]->text(), QString("0"));
        QVERIFY(!unknown->txtCur1[0]->isEnabled());
    }

    void resets_data() {
        QTest::addColumn<int>("entry");
        QTest::addColumn<bool>("confirmed");
        QTest::addColumn<QStringList>("lines");
        QTest::newRow("#1Sum") << 1 << true << writeLines("03", "25", "1");
        QTest::newRow("#1Average(Demand)") << 4 << true << writeLines("03", "28", "1");
        QTest::newRow("#2Sum") << 5 << true << writeLines("04", "25", "1");
        QTest::newRow("#2MaxMin(ExceptCurrent)") << 7 << true << writeLines("04", "27", "1");
        QTest::newRow("declined") << 2 << false << QStringList();
        QTest::newRow("empty entry") << 0 << true << QStringList();
    }
    void resets() {
        QFETCH(int, entry);
        QFETCH(bool, confirmed);
        QFETCH(QStringList, lines);
        CardDesk rack(kTwoSystems, 3);
        FrmXDU *view = xdu(rack);
        rack.messages.answers << (confirmed ? People::Answer::Yes : People::Answer::No);
        view->cbResetVal->setCurrentIndex(entry);
        QTRY_VERIFY(rack.sent().contains("G01"));
        rack.sim.rack.clearTranscript();
        view->CmdReset->click();
        QSignalSpy ticks(view->WaitForTimer, &QTimer::timeout);
        QTRY_VERIFY(!view->ResetPending && ticks.count() >= 2);
        QCOMPARE(rack.messages.messages.size(), entry == 0 ? 0 : 1);
        // The reset writes its item with no addressing of its own.
        const QString wire = rack.sent().join(' ');
        if (lines.isEmpty()) {
            QVERIFY(!wire.contains(QRegularExpression("G0[34] I2[5-8]")));
        } else {
            QVERIFY(wire.contains(lines.join(' ')));
            QVERIFY(!wire.contains(writeLines("00", "41", "3").join(' ') + ' ' + lines.join(' ')));
        }
        QVERIFY(view->CmdReset->isEnabled());
    }

    // A binding the card cannot serve is refused, and the card keeps the one it had.
    void theCardRefusesASecondSystemItDoesNotHave() {
        CardDesk rack(kOneSystem, 8);
        FrmXDU *view = xdu(rack);
        SimCard &card = rack.sim.rack.slot(8);
        storeBindings(card, {"40003;2;2;0"});
        rack.runWorker(view->cmdUp);
        QCOMPARE(view->cbCh[0]->currentIndex(), -1);
        rack.runWorker(view->cmdDown);
        QVERIFY(rack.sent().contains("D40003;2;0;0"));
        QCOMPARE(card.groups["02"]["10"], QString("D40003;2;2;0"));
        bool refused = false;
        for (const SimTranscriptEntry &entry : rack.sim.rack.transcript())
            refused = refused || (!entry.fromProgram && entry.text == "CNG");
        QVERIFY(refused);
    }

    // What an Upload read, kept in a project file and opened again, reaches the card unchanged.
    void projectFileRoundTrip() {
        CardDesk rack(kTwoSystems, 9);
        FrmXDU *view = xdu(rack);
        SimCard &card = rack.sim.rack.slot(9);
        storeBindings(card, {"40769;2;2;1", "40999;1;1;3", "42113;1;2;0"});
        const QList<std::pair<const char *, const char *>> config = {
            {"10", "D2"}, {"11", "D5"}, {"12", "D0"}, {"13", "D440"}, {"14", "D100"},
            {"15", "D1"}, {"16", "D2"}, {"17", "D9"}, {"18", "D30"},  {"19", "D45"},
            {"20", "D1"}, {"21", "D1"}, {"22", "D1"}};
        for (const auto &[item, reply] : config) {
            card.setItem("03", item, reply);
            card.setItem("04", item, reply);
        }
        card.setItem("04", "11", "D75");
        const auto original = card.groups;
        rack.runWorker(view->cmdUp);

        rack.throughProjectFile();
        QVERIFY(rack.messages.messages.isEmpty());
        rack.runWorker(view->cmdDown);
        for (const char *group : {"03", "04"})
            for (const QString &item : items(10, 22))
                QCOMPARE(card.groups[group][item], original[group][item]);
        for (const QString &item : items(10, 25))
            QCOMPARE(card.groups["02"][item], original["02"][item]);
    }
};

VX_TEST(XduViewTest)
#include "tst_xdu.moc"
