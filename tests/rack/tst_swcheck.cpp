#include "support/testsupport.h"

#include "rack/swcheck.h"
#include "ui/widgets.h"

#include <QLineEdit>
#include <QPushButton>
#include <QSet>
#include <QTest>
#include <QTimer>

using vxtest::SimSession;

namespace {

FrmSWcheck *form() {
    return SWcheckDialog();
}

QLineEdit *box(const QString &name) {
    return form()->findChild<QLineEdit *>(name);
}
QPushButton *button(const QString &name) {
    return form()->findChild<QPushButton *>(name);
}

// The cells of slot index `i` (0..23 within the slot) that show a 1, or -1 for a cell in neither
// colour.
QSet<int> onCells(int i) {
    QSet<int> on;
    for (int c = 0; c < 24; ++c) {
        const QColor colour = BackColor(box(QString("txtCData(%1)").arg(i * 24 + c)));
        if (colour == QColor(0, 0, 0))
            on << c;
        else if (colour != QColor(255, 255, 255))
            on << -1;
    }
    return on;
}

QList<int> everyCell() {
    QList<int> all;
    for (int c = 0; c < 24; ++c)
        all << c;
    return all;
}

void putCard(SimRack &rack, int slot, const QString &model, const QString &version,
             const QString &dip) {
    rack.slot(slot).version = version;
    rack.slot(slot).dip = dip;
    vxtest::putCard(rack, slot, model);
}

// Shows the dialog as the main window does and leaves it by "Exit" once `runs` reading runs are
// over. A watchdog ends a dialog that never finishes reading, so a fault cannot hang the suite.
void showAndLeaveAfter(int runs, const std::function<void()> &afterRun = {}) {
    int seen = 0;
    const QMetaObject::Connection done = QObject::connect(form(), &FrmSWcheck::readingDone, [&] {
        if (afterRun) afterRun();
        if (++seen == runs)
            button("cmdExit")->click();
        else
            button("cmdUp")->click();
    });
    QTimer watchdog;
    watchdog.setSingleShot(true);
    QObject::connect(&watchdog, &QTimer::timeout, form(), [] { form()->done(QDialog::Rejected); });
    watchdog.start(20000);
    ShowSWcheck();
    QObject::disconnect(done);
    QVERIFY2(watchdog.isActive(), "the dialog did not finish its reading");
    QCOMPARE(seen, runs);
}

// The commands of one reading run, for the rack's slots that hold a card.
QStringList expectedRun(const QList<int> &cardSlots) {
    QStringList items;
    for (int item = 10; item <= 25; ++item)
        items << QString::number(item);
    QStringList wire =
        vxtest::preamble(0) + vxtest::writeLines("00", "01", "F") + vxtest::readLines("00", items);
    for (int slot : cardSlots)
        wire += vxtest::writeLines("00", "41", QString::number(slot)) +
                vxtest::writeLines("00", "01", "F") + vxtest::readLines("00", {"40", "39"});
    return wire;
}

} // namespace

// frmSWcheck read from a simulated rack, and its cells painted from switch texts.
class SWcheckTest : public QObject {
    Q_OBJECT

private slots:
    void init() { Clock::setDivisor(100); }

    void readingRunOnTheWire() {
        SimSession s;
        putCard(s.rack, 1, "QF4", "1.10", "01,00,80");
        putCard(s.rack, 3, "QT8", "2.00", "FF,0F,A5");
        putCard(s.rack, 16, "QR8", "0.99", "10,20,3C");
        showAndLeaveAfter(1);
        QVERIFY(!form()->isVisible());
        QCOMPARE(s.rack.commands(), expectedRun({1, 3, 16}));

        QCOMPARE(box("txtName(0)")->text(), QString("QF4"));
        QCOMPARE(box("txtVersion(0)")->text(), QString("1.10"));
        QCOMPARE(box("txtSW(0)")->text(), QString("01,00,80"));
        QCOMPARE(onCells(0), QSet<int>({0, 23})); // bit 0 of SW1, bit 7 of SW3
        QCOMPARE(box("txtName(2)")->text(), QString("QT8"));
        QCOMPARE(onCells(2), QSet<int>({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 16, 18, 21, 23}));
        QCOMPARE(box("txtVersion(15)")->text(), QString("0.99"));
        QCOMPARE(onCells(15), QSet<int>({4, 13, 18, 19, 20, 21}));
        for (int i : {1, 3, 14}) {
            for (const char *name : {"txtName(%1)", "txtVersion(%1)", "txtSW(%1)"})
                QCOMPARE(box(QString(name).arg(i))->text(), QString("-"));
            QVERIFY(onCells(i).isEmpty());
        }
    }

    // Every show reads anew; "Upload" reads again; a card taken out turns its row to dashes.
    void eachShowAndUploadReadsAgain() {
        SimSession s;
        putCard(s.rack, 2, "QV4", "1.00", "FF,FF,FF");
        putCard(s.rack, 5, "QF4", "1.00", "00,00,00");
        showAndLeaveAfter(1);
        const QList<int> all = everyCell();
        QCOMPARE(onCells(1), QSet<int>(all.begin(), all.end()));
        s.rack.clearTranscript();

        int run = 0;
        showAndLeaveAfter(2, [&] {
            if (++run == 1) s.rack.vanish(2);
        });
        QCOMPARE(s.rack.commands(), expectedRun({2, 5}) + expectedRun({5}));
        QCOMPARE(box("txtName(1)")->text(), QString("-"));
        QCOMPARE(box("txtSW(1)")->text(), QString("-"));
        QVERIFY(onCells(1).isEmpty());
    }

    void drawFromASwitchText_data() {
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QList<int>>("on");
        const struct {
            const char *name, *before, *text;
            QList<int> on;
        } rows[] = {
            {"high digit only", "00,00,00", "F", {4, 5, 6, 7}},
            {"lower case leaves its cells", "FF,FF,FF", "0a,00,00", {0, 1, 2, 3}},
            {"empty text leaves all", "FF,FF,FF", "", everyCell()},
            {"positions, not commas", "00,00,00", "12345678", {1, 4, 8, 10, 14, 19, 20, 21, 22}},
            {"only hex digits count", "00,00,00", "SW: 8,C ", {11, 22, 23}},
        };
        for (const auto &r : rows)
            QTest::newRow(r.name) << QString(r.before) << QString(r.text) << r.on;
    }
    void drawFromASwitchText() {
        QFETCH(QString, before);
        QFETCH(QString, text);
        QFETCH(QList<int>, on);
        for (int i : {0, 9, 15}) {
            form()->txtCDataDraw(i, before);
            form()->txtCDataDraw(i, text);
            QCOMPARE(onCells(i), QSet<int>(on.begin(), on.end()));
        }
    }
};

VX_TEST(SWcheckTest)
#include "tst_swcheck.moc"
