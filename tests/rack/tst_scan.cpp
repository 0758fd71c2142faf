#include "app/desk.h"

#include "link/exchange.h"
#include "rack/overview.h"
#include "ui/frmloading.h"
#include "ui/widgets.h"

#include <QLabel>
#include <QProgressBar>
#include <QTest>

using vxtest::Desk;
using vxtest::press;
using vxtest::putCard;

namespace {

// Every slot item of the comm card's list from `first` to `last`, as the scan reads them.
QStringList listReads(int first, int last) {
    QStringList lines;
    for (int slot = first; slot <= last; ++slot)
        lines << "G00"
              << "I" + QString::number(slot + 9);
    return lines;
}

const QStringList kCommPreamble = {"G00", "I01", "DF", "G00", "I41", "D00",
                                   "G01", "I01", "D1", "G00", "I04"};
const QStringList kScanHead = {"G99", "G99", "G99", "G99", "G00", "I01", "DF", "G00", "I41", "D0"};

} // namespace

// "Upload" on the main window: the rack scan, the selector and the first monitor pass.
class ScanTest : public QObject {
    Q_OBJECT

private slots:
    void fullScanOnTheWire() {
        Desk d;
        putCard(d.sim.rack, 1, "QF4").setItem("00", "10", "D1:2.5");
        SimCard &xdu = putCard(d.sim.rack, 3, "XDU4AC02");
        xdu.listName = "XDU";
        for (int item = 10; item <= 17; ++item)
            xdu.setItem("01", QString::number(item), "D:0.5");
        d.sim.rack.refreshDirectory();
        QVERIFY(d.connect(1));
        // Another slot selected in the rack before: the scan selects the comm card itself.
        QVERIFY(!WriteData(3, "00", "41", "3").isEmpty());
        QCOMPARE(d.sim.rack.selectedSlot(), 3);
        d.sim.rack.clearTranscript();

        // The progress window, each time the scan asks for a slot.
        QList<int> progress;
        bool progressShown = true;
        const int watch = Link::addTrafficObserver([&](Link::Traffic kind, const QString &text) {
            const int item = text.mid(1).trimmed().toInt();
            if (kind == Link::Traffic::Sent && text.startsWith('I') && item >= 10 && item <= 25 &&
                LoadingDialog()->isVisible()) {
                progress << LoadingDialog()->pgBarLoading->value();
                progressShown = progressShown && !LoadingDialog()->isModal();
            }
        });
        QVERIFY(press(d.window->CmdUpload));
        Link::removeTrafficObserver(watch);

        const QStringList xduName = {"G00", "I41", "D3", "G00", "I04", "G00", "I41", "D0"};
        const QStringList scan =
            kCommPreamble + kScanHead + listReads(1, 3) + xduName + listReads(4, 16);
        const QStringList pass =
            vxtest::preamble(1, "01") + vxtest::readLines("00", {"10", "11", "12", "13"}) +
            vxtest::preamble(3, "01") +
            vxtest::readLines("01", {"10", "11", "12", "13", "14", "15", "16", "17"});
        QCOMPARE(d.sim.rack.commands(), scan + pass);

        QCOMPARE(CardTable(1).CardName, QString("QF4"));
        QCOMPARE(CardTable(2).CardName, QString("NONE"));
        QCOMPARE(CardTable(3).CardName, QString("XDU4AC02"));
        QCOMPARE(CardTable(16).CardName, QString("NONE"));
        QCOMPARE(d.window->cboCardNo->itemText(1), QString("01:QF4"));
        QCOMPARE(d.window->cboCardNo->itemText(2), QString("02:NONE"));
        QCOMPARE(d.window->cboCardNo->itemText(3), QString("03:XDU4AC0/D(2)"));
        QCOMPARE(d.window->cboCardNo->currentIndex(), 0);
        QVERIFY(Overview()->isVisible());
        FrmOverview *o = Overview();
        QCOMPARE(o->lblCardType(3)->text(), QString("XDU4AC0/D(2)"));
        QCOMPARE(o->lblCardStatus(1)->text(), QString("IN"));
        QCOMPARE(o->lblInputDataCh(1, 1)->text(), QString("25"));
        QCOMPARE(o->lblInputDataCh(3, 8)->text(), QString("05"));
        // The progress bar counted the slots, and never blocked the window.
        QCOMPARE(progress.size(), 16);
        QCOMPARE(progress.first(), 0);
        QCOMPARE(progress.last(), 15);
        QVERIFY(progressShown);
        QVERIFY(!LoadingDialog()->isVisible());
        QVERIFY(d.messages.messages.isEmpty());
        QCOMPARE(d.commands(), QString("xxxx-xxxxx-x"));
    }
};
VX_TEST(ScanTest)

#include "tst_scan.moc"
