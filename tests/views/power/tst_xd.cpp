#include "app/desk.h"

#include "views/power/xd.h"

#include <QLabel>

using vxtest::CardDesk;
using vxtest::preamble;
using vxtest::readLines;
using vxtest::writeLines;

namespace {

// Where a field of the card record comes from: cell -> group 01 item (0: nothing is read).
using CellMap = QMap<int, int>;

QList<int> range(int first, int last) {
    QList<int> items;
    for (int n = first; n <= last; ++n)
        items << n;
    return items;
}

// The one-circuit card's items in the order of Upload; `sent` drops the read-only ratings.
QList<int> oneCircuitItems(bool other, bool sent) {
    QList<int> items = range(10, 17) + QList<int>{18, 42, 35, 50, 51};
    items += other ? QList<int>{83, 84} : sent ? QList<int>{61, 62} : QList<int>{61, 62, 63};
    items += sent ? QList<int>{58, 59, 82} : QList<int>{58, 59, 60, 82};
    return items + QList<int>{19, 44, 37};
}

CellMap oneCircuitCells(bool other) {
    CellMap cells;
    for (int k = 1; k <= 8; ++k)
        cells[k] = k + 9;
    const QList<QPair<int, int>> rest = {{9, 18},  {11, 42}, {12, 35}, {13, 50},
                                         {14, 51}, {18, 58}, {19, 59}, {20, 60},
                                         {21, 82}, {22, 19}, {24, 44}, {25, 37}};
    for (const auto &[cell, item] : rest)
        cells[cell] = item;
    cells[15] = other ? 83 : 61;
    cells[16] = other ? 84 : 62;
    cells[17] = other ? 0 : 63;
    return cells;
}

QList<int> fourCircuitItems(bool other) {
    QList<int> items;
    for (int e = 1; e <= 4; ++e) {
        items << 2 * e + 8 << 2 * e + 9 << e + 17 << 2 * e + 48 << 2 * e + 49;
        items += other ? QList<int>{2 * e + 81, 2 * e + 82}
                       : QList<int>{3 * e + 58, 3 * e + 59, 3 * e + 60};
    }
    return items + QList<int>{58, 59, 60, 82};
}

CellMap fourCircuitCells(bool other) {
    CellMap cells;
    for (int e = 1; e <= 4; ++e) {
        const QList<int> items = {2 * e + 8,
                                  2 * e + 9,
                                  e + 17,
                                  2 * e + 48,
                                  2 * e + 49,
                                  other ? 2 * e + 81 : 3 * e + 58,
                                  other ? 2 * e + 82 : 3 * e + 59,
                                  other ? 0 : 3 * e + 60};
        for (int k = 0; k < 8; ++k)
            cells[8 * (e - 1) + k + 1] = items.at(k);
    }
    cells[33] = 58;
    cells[34] = 59;
    cells[35] = 60;
    cells[36] = 82;
    return cells;
}

QString valueOf(int item) {
    return item ? QStringLiteral("v%1").arg(item) : QString();
}

QStringList readsOf(const QList<int> &items) {
    QStringList lines;
    for (int item : items)
        lines << "G01"
              << "I" + QString::number(item);
    return lines;
}

PowerTransducerView *xdView(const CardDesk &rack) {
    return qobject_cast<PowerTransducerView *>(rack.view);
}

QLineEdit *named(const CardDesk &rack, const QString &name) {
    return xdView(rack)->named(name);
}

void runClear(CardDesk &rack) {
    rack.sim.rack.clearTranscript();
    xdView(rack)->CmdClear->click();
    QTRY_VERIFY(!xdView(rack)->ClearPending && rack.sent().count("G00") >= 3);
}

} // namespace

class PowerTransducerViewTest : public QObject {
    Q_OBJECT
private slots:
    void parametersOnTheWire_data() {
        QTest::addColumn<QString>("model");
        QTest::addColumn<QList<int>>("uploaded");
        QTest::addColumn<QList<int>>("downloaded");
        QTest::addColumn<CellMap>("cells");
        // A record field spoilt after the Upload, and what the Download leaves in it.
        QTest::addColumn<int>("spoilt");
        QTest::addColumn<QString>("afterDownload");
        QTest::addColumn<QString>("ratingColumn");
        QTest::addColumn<bool>("secondaryShown");
        QTest::newRow("XD1") << "XD1" << oneCircuitItems(false, false)
                             << oneCircuitItems(false, true) << oneCircuitCells(false) << 17
                             << "v63"
                             << "U" << true;
        QTest::newRow("XD1A") << "XD1A" << oneCircuitItems(true, false)
                              << oneCircuitItems(true, true) << oneCircuitCells(true) << 17 << ""
                              << "U/T" << false;
        QTest::newRow("XD4") << "XD4-AC10" << fourCircuitItems(false) << fourCircuitItems(false)
                             << fourCircuitCells(false) << 16 << "v66"
                             << "U" << true;
        QTest::newRow("XD4B") << "XD4B-AC3" << fourCircuitItems(true) << fourCircuitItems(true)
                              << fourCircuitCells(true) << 16 << "spoilt"
                              << "U/T" << false;
    }
    void parametersOnTheWire() {
        QFETCH(QString, model);
        QFETCH(QList<int>, uploaded);
        QFETCH(QList<int>, downloaded);
        QFETCH(CellMap, cells);
        QFETCH(int, spoilt);
        QFETCH(QString, afterDownload);
        QFETCH(QString, ratingColumn);
        QFETCH(bool, secondaryShown);
        CardDesk rack(model, 4);
        QVERIFY(xdView(rack));
        SimCard &card = rack.sim.rack.slot(4);
        for (int item : uploaded)
            card.setItem("01", QString::number(item), "D" + valueOf(item));
        const QString secondary = model.startsWith("XD1") ? "txtCTScale3" : "txtCTScale3(4)";
        QCOMPARE(!named(rack, secondary)->isHidden(), secondaryShown);
        QCOMPARE(rack.view->findChild<QLabel *>("lblRatingU")->text(), ratingColumn);

        rack.runWorker(rack.view->cmdUp);
        QStringList expected = preamble(4, "01") + readsOf(uploaded);
        QCOMPARE(rack.sent().mid(0, expected.size()), expected);
        for (auto cell = cells.cbegin(); cell != cells.cend(); ++cell)
            QCOMPARE(CardTable(4).Param(cell.key()), valueOf(cell.value()));
        QVERIFY(CardTable(4).Param(10).isEmpty() || !model.startsWith("XD1"));

        // An empty field is not sent and shows its record field again.
        named(rack, "txtZeroScale")->clear();
        CardTable(4).Param(spoilt) = "spoilt";
        rack.runWorker(rack.view->cmdDown);
        expected = preamble(4, "01");
        for (int item : downloaded)
            if (item != 82) expected += writeLines("01", QString::number(item), valueOf(item));
        QCOMPARE(rack.sent().mid(0, expected.size()), expected);
        QCOMPARE(named(rack, "txtZeroScale")->text(), QString("v82"));
        QCOMPARE(CardTable(4).Param(spoilt), afterDownload);

        // "Wh Clear" asks nothing and writes one item.
        runClear(rack);
        expected = preamble(4, "01") + writeLines("01", "81", "1");
        QCOMPARE(rack.sent().mid(0, expected.size()), expected);
        QCOMPARE(rack.sent().at(expected.size()), QString("G00")); // the live pass again
        QVERIFY(rack.messages.messages.isEmpty());
    }

    // Which field shows which word, by the eighth character of a four-circuit model.
    void liveWordsByLayout_data() {
        QTest::addColumn<QString>("model");
        QTest::addColumn<QString>("labels"); // of the four rows, "-" hidden, "_" empty
        QTest::addColumn<QString>("rows");   // the rows shown
        QTest::addColumn<QStringList>("places");
        QTest::newRow("0") << "XD4-AC10"
                           << "W - Whi Who"
                           << "134" << QStringList{"01(1)=10", "01(4)=13", "03(1)=14",
                                                   "03(4)=17", "04(1)=18", "04(4)=21"};
        QTest::newRow("1") << "XD4-AC11"
                           << "W - Whi-L Whi-H"
                           << "134" << QStringList{"01(2)=11", "03(1)=14", "04(1)=15", "03(2)=16",
                                                   "04(2)=17", "03(4)=20", "04(4)=21"};
        QTest::newRow("2") << "XD4A-AC2"
                           << "- - Whi Who"
                           << "12" << QStringList{"01(1)=10", "01(4)=13", "02(1)=14", "02(4)=17"};
        QTest::newRow("3") << "XD4-AC13"
                           << "Whi-L Whi-H Who-L Who-H"
                           << "1234" << QStringList{"01(1)=10", "02(1)=11", "01(4)=16", "02(4)=17",
                                                    "03(1)=18", "04(1)=19", "03(4)=24", "04(4)=25"};
        QTest::newRow("unknown") << "XD4-AC1X"
                                 << "_ _ _ _"
                                 << "1234" << QStringList{};
    }
    void liveWordsByLayout() {
        QFETCH(QString, model);
        QFETCH(QString, labels);
        QFETCH(QString, rows);
        QFETCH(QStringList, places);
        CardDesk rack(model, 2);
        auto *view = qobject_cast<FrmXD40 *>(rack.view);
        QVERIFY(view);
        // Each word names its item, with a point the view takes out.
        rack.sim.rack.slot(2).live = [](const QString &g, const QString &i,
                                        qint64) -> std::optional<QString> {
            if (g != "00" || i.toInt() < 10 || i.toInt() > 25) return std::nullopt;
            return "D1:W." + i;
        };
        rack.sim.rack.clearTranscript();
        QTRY_VERIFY(rack.sent().count("I25") >= 2);
        QStringList items;
        for (int n = 10; n <= 25; ++n)
            items << QString::number(n);
        QCOMPARE(rack.sent().mid(0, 6 + 32), preamble(2) + readLines("00", items));

        const QStringList label = labels.split(' ');
        for (int row = 1; row <= 4; ++row) {
            QLabel *caption = view->liveRowLabel(row);
            QCOMPARE(caption->isHidden(), label.at(row - 1) == "-");
            if (!caption->isHidden())
                QCOMPARE(caption->text(), label.at(row - 1) == "_" ? "" : label.at(row - 1));
            for (int e = 1; e <= 4; ++e) {
                QLineEdit *box = view->named(QStringLiteral("txtParData0%1(%2)").arg(row).arg(e));
                QCOMPARE(!box->isHidden(), rows.contains(QString::number(row)));
            }
        }
        int filled = 0;
        for (const QString &place : places) {
            const QString field = "txtParData" + place.section('=', 0, 0);
            QCOMPARE(view->named(field)->text(), "W" + place.section('=', 1));
        }
        for (QLineEdit *box : view->findChildren<QLineEdit *>())
            filled += box->objectName().startsWith("txtParData") && !box->text().isEmpty();
        // Two or three words a circuit in the layouts that show them, none in an unknown one.
        QCOMPARE(filled, places.isEmpty() ? 0 : 4 * static_cast<int>(rows.size()));
    }

    void oneCircuitWordsAndTheirLoss() {
        CardDesk rack("XD1B", 5);
        rack.answerAll("AB.CD");
        QTRY_COMPARE(named(rack, "txtParData01(12)")->text(), QString("ABCD"));
        QCOMPARE(named(rack, "txtParData01(1)")->text(), QString("ABCD"));
        rack.answerAll("1234");
        // One word lost: the session ends and no field changes.
        rack.sim.rack.addFault({SimFault::NoReply, "I21", -1, 0});
        QTRY_COMPARE(rack.messages.messages.size(), 1);
        QCOMPARE(rack.messages.messages[0].text, QString("Uploading incomplete"));
        QCOMPARE(rack.messages.messages[0].icon, People::Icon::Stop);
        QVERIFY(!IsConnected);
        for (int n : {1, 8, 9, 12})
            QCOMPARE(named(rack, QStringLiteral("txtParData01(%1)").arg(n))->text(),
                     QString("ABCD"));
    }

    // The simulated counters grow with time and start again from zero after "Wh Clear".
    void clearZeroesTheEnergyCounters() {
        CardDesk rack("XD1", 3);
        rack.sim.rack.setTime(600000);
        QTRY_COMPARE(named(rack, "txtParData01(5)")->text(), QString("1068"));
        runClear(rack);
        rack.sim.rack.setTime(601000);
        QTRY_COMPARE(named(rack, "txtParData01(5)")->text(), QString("0007"));
    }
};

VX_TEST(PowerTransducerViewTest)
#include "tst_xd.moc"
