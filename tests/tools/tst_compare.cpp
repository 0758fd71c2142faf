#include "app/desk.h"

#include "views/common/cardcompare.h"

#include <QLabel>
#include <QTableWidget>

using vxtest::CardDesk;

namespace {

// The lines that carry data to the card.
QStringList dataLines(const QStringList &sent) {
    QStringList lines;
    for (const QString &line : sent)
        if (line.startsWith('D')) lines << line;
    return lines;
}

// Every text box and list choice of the view, by name, to see that nothing moved.
QStringList fieldTexts(const QWidget &view) {
    QStringList texts;
    for (const QLineEdit *box : view.findChildren<QLineEdit *>())
        texts << box->objectName() + "=" + box->text();
    for (const QComboBox *list : view.findChildren<QComboBox *>())
        texts << list->objectName() + "=" + list->currentText();
    return texts;
}

QString cardRecordText(int slot) {
    QStringList cells;
    for (int k = 1; k <= CardRecord::kParams; ++k)
        cells << CardTable(slot).Param(k);
    for (int ch = 1; ch <= CardRecord::kChParams; ++ch)
        cells << CardTable(slot).ChParam(ch);
    return cells.join('|');
}

// Clicks Compare and waits for its window; null when it did not come.
FrmCompare *compare(CardDesk &rack) {
    rack.sim.rack.clearTranscript();
    if (!vxtest::press(rack.view->cmdCompare)) return nullptr;
    if (!QTest::qWaitFor([] { return CompareDialog() && CompareDialog()->isVisible(); }, 10000))
        return nullptr;
    return CompareDialog();
}

// The rows of the window marked as differing: "name: on the card -> written".
QStringList markedRows(const FrmCompare &window) {
    QStringList rows;
    const QTableWidget &table = *window.tblCompare;
    for (int r = 0; r < table.rowCount(); ++r)
        if (!table.item(r, 0)->text().isEmpty())
            rows << QStringLiteral("%1: %2 -> %3")
                        .arg(table.item(r, 1)->text(), table.item(r, 2)->text(),
                             table.item(r, 3)->text());
    return rows;
}

} // namespace

class CompareTest : public QObject {
    Q_OBJECT
private slots:
    void threeEditsShowAsThreeDifferingRows() {
        CardDesk rack("QF4", 3);
        rack.runWorker(rack.view->cmdUp);
        const QStringList opening = dataLines(rack.sent()); // an Upload's own
        rack.box("txtZScale", 1)->setText("1500");
        rack.box("txtBias", 2)->setText("-12");
        rack.box("txtEnable", 4)->setText("1");
        rack.box("txtBias", 3)->setText("0.00"); // the card's "0.0", written another way
        const QStringList fields = fieldTexts(*rack.view);
        const QString record = cardRecordText(3);
        const auto stores = rack.sim.rack.slot(3).groups;

        FrmCompare *window = compare(rack);
        QVERIFY(window);
        QCOMPARE(markedRows(*window),
                 QStringList({"Ch 1 Scale Zero: 0 -> 1500", "Ch 2 Adjust Zero: 0.0 -> -12",
                              "Ch 4 Unused: 0 -> 1"}));
        QVERIFY(window->lblSummary->text().startsWith("3 of "));
        // Read, not written: the reads of an Upload went out, no data line did.
        const QStringList sent = rack.sent();
        QVERIFY(sent.contains("I42"));
        for (const QString &line : dataLines(sent))
            QVERIFY2(opening.contains(line), qPrintable(line));
        QCOMPARE(rack.sim.rack.slot(3).groups, stores);
        QCOMPARE(fieldTexts(*rack.view), fields);
        QCOMPARE(cardRecordText(3), record);
        QVERIFY(rack.messages.messages.isEmpty());

        // Close leaves it all; Download from the window writes what the rows said.
        window->cmdDownload->click();
        QVERIFY(!window->isVisible());
        QTRY_VERIFY(!rack.view->DownloadPending && rack.sent().count("G00") >= 3);
        QCOMPARE(rack.sim.rack.slot(3).groups["01"]["42"], QString("D1500"));
        QCOMPARE(rack.sim.rack.slot(3).groups["01"]["12"], QString("D-12"));
    }

    // Straight after an Upload nothing differs, in a view of each shape, and nothing is sent.
    void nothingDiffersAfterAnUpload_data() {
        QTest::addColumn<QString>("model");
        QTest::addColumn<QString>("version");
        const QList<std::pair<const char *, const char *>> cards = {
            {"QF4", "1.07"},      {"QF16", "1.07"}, {"QP8A", "1.12"},     {"QA4", "1.04"},
            {"XDU42B01", "2.01"}, {"QZ8", "1.10"},  {"XE4", "1.31"},      {"QL4", "1.12"},
            {"QS4", "1.04"},      {"QJS8", "1.20"}, {"XD4-AC10", "1.12"}, {"QY2", "1.04"},
            {"QZ2", "1.04"},      {"XHK2", "1.04"}, {"XG4", "1.12"}};
        for (const auto &[model, version] : cards)
            QTest::newRow(model) << QString(model) << QString(version);
    }
    void nothingDiffersAfterAnUpload() {
        QFETCH(QString, model);
        QFETCH(QString, version);
        CardDesk rack(model, 5, version);
        QVERIFY(rack.view && rack.view->cmdCompare);
        rack.runWorker(rack.view->cmdUp, 15000);
        const QStringList opening = dataLines(rack.sent());
        const auto stores = rack.sim.rack.slot(5).groups;
        const QString record = cardRecordText(5);
        const QStringList fields = fieldTexts(*rack.view);
        FrmCompare *window = compare(rack);
        QVERIFY(window);
        QCOMPARE(markedRows(*window), QStringList());
        QVERIFY(window->tblCompare->rowCount() > 0);
        for (int r = 0; r < window->tblCompare->rowCount(); ++r) {
            const QString name = window->tblCompare->item(r, 1)->text();
            QVERIFY2(!name.isEmpty() && !name.contains("Param("), qPrintable(name));
        }
        // The opening writes of the Upload go out as ever, and nothing else that carries data.
        for (const QString &line : dataLines(rack.sent()))
            QVERIFY2(opening.contains(line), qPrintable(line));
        QCOMPARE(rack.sim.rack.slot(5).groups, stores);
        QCOMPARE(cardRecordText(5), record);
        QCOMPARE(fieldTexts(*rack.view), fields);
        QVERIFY(rack.messages.messages.isEmpty());
        window->cmdClose->click();
    }

    // A card that falls silent, talks garbage or loses its line: the window says so, the user's
    // fields stay, nothing is written and the program goes on.
    void aCardThatFailsIsSaid_data() {
        QTest::addColumn<int>("fault");
        QTest::addColumn<QString>("summary");
        QTest::newRow("silence") << int(SimFault::NoReply) << "The card did not answer (";
        QTest::newRow("garbage") << int(SimFault::Garbage) << "The card did not answer (";
        QTest::newRow("line cut") << int(SimFault::CutLine) << "The card did not answer";
    }
    void aCardThatFailsIsSaid() {
        QFETCH(int, fault);
        QFETCH(QString, summary);
        CardDesk rack("QF4", 3);
        rack.runWorker(rack.view->cmdUp);
        rack.box("txtZScale", 1)->setText("1500");
        rack.sim.rack.addFault({SimFault(fault), QString(), -1});
        FrmCompare *window = compare(rack);
        QVERIFY(window);
        QVERIFY2(window->lblSummary->text().startsWith(summary),
                 qPrintable(window->lblSummary->text()));
        QCOMPARE(markedRows(*window), QStringList());
        QCOMPARE(rack.box("txtZScale", 1)->text(), QString("1500"));
        QVERIFY(!dataLines(rack.sent()).contains("D1500"));
        window->cmdClose->click();
        QTRY_VERIFY(!window->isVisible());
    }
};

VX_TEST(CompareTest)

#include "tst_compare.moc"
