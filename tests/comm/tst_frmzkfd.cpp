#include "comm/commrack.h"

#include "comm/frmzkfd.h"

#include <QPushButton>
#include <QTest>

using vxtest::CommRack;
using vxtest::readLines;
using vxtest::writeLines;

namespace {

const QStringList kDownloadStart =
    writeLines("00", "01", "F") + writeLines("00", "41", "00") + writeLines("50", "01", "F");

} // namespace

class FrmZKFDTest : public QObject {
    Q_OBJECT

private slots:
    void bothModels_data() {
        QTest::addColumn<QString>("model");
        QTest::addColumn<bool>("delayEditable");
        QTest::addColumn<QString>("delay");
        QTest::newRow("ZKFD1") << "VX-ZKFD1" << false << "0";
        QTest::newRow("ZKFD1W") << "VX-ZKFD1W" << true << "100";
    }
    void bothModels() {
        QFETCH(QString, model);
        QFETCH(bool, delayEditable);
        QFETCH(QString, delay);
        CommRack rack(model, "1.00");
        rack.card().setItem("50", "88", "D7");
        FrmZKFD dialog;
        dialog.OpenView(model);
        QCOMPARE(rack.sent(), writeLines("00", "01", "F") + writeLines("00", "41", "00") +
                                  writeLines("50", "01", "1") +
                                  readLines("50", {"88", "90", "87", "92", "97"}));
        QCOMPARE(dialog.txbRedundant->isEnabled(), delayEditable);
        QCOMPARE(dialog.txbNetWorkNo->text(), QString("7"));
        QCOMPARE(dialog.txbStationID->text(), QString("1"));
        QCOMPARE(dialog.txbMACAdd->text(), QString("00-1A-2B-3C-4D-5E"));
        QCOMPARE(dialog.txbLinkStatus->text(), QString("UP"));
        QCOMPARE(dialog.txbRedundant->text(), delay);

        rack.clear();
        dialog.txbNetWorkNo->setText("239");
        dialog.cmdDown->click();
        QCOMPARE(rack.sent(),
                 kDownloadStart + writeLines("50", "88", "239") + writeLines("50", "97", delay));
        QCOMPARE(CardTable(kCommRecord).Param(20), QString("239"));
        QCOMPARE(CardTable(kCommRecord).Param(21), delay);

        // What the record keeps outranks what the card says when the dialog opens again.
        rack.card().setItem("50", "88", "D5");
        CardTable(kCommRecord).Param(20) = "12";
        dialog.OpenView(model);
        QCOMPARE(dialog.txbNetWorkNo->text(), QString("12"));
        QCOMPARE(dialog.txbRedundant->text(), delay);

        // The settings themselves go out with ten retries.
        rack.sim.rack.addFault({SimFault::NoReply, "I97", -1, 0});
        rack.clear();
        dialog.cmdDown_Click();
        QCOMPARE(rack.sent().count("I97"), 11);
        QVERIFY(rack.messages.messages.isEmpty());
    }

    // A bad value stops the Download at its field, after what went before.
    void rangeChecksAtDownload_data() {
        // "writes": how many of the two settings went out.
        const QString network = "Please enter number 1 - 239";
        const QString delay = "Please enter number 0 - 5000";
        vxtest::textTable({"network", "delay", "message", "writesText"},
                          {{"both at the top", "239", "5000", "", "2"},
                           {"lowest", "1", "0", "", "2"},
                           {"network 240", "240", "0", network, "0"},
                           {"network 0", "0", "0", network, "0"},
                           {"network empty", "", "0", network, "0"},
                           {"delay 5001", "5", "5001", delay, "1"},
                           {"delay empty", "5", "", delay, "1"}});
    }
    void rangeChecksAtDownload() {
        QFETCH(QString, network);
        QFETCH(QString, delay);
        QFETCH(QString, message);
        QFETCH(QString, writesText);
        const int writes = writesText.toInt();
        CommRack rack("VX-ZKFD1W", "1.00");
        FrmZKFD dialog;
        dialog.OpenView("VX-ZKFD1W");
        dialog.txbNetWorkNo->setText(network);
        dialog.txbRedundant->setText(delay);
        rack.clear();
        dialog.cmdDown_Click();
        QStringList expected = kDownloadStart;
        if (writes > 0) expected += writeLines("50", "88", network);
        if (writes > 1) expected += writeLines("50", "97", delay);
        QCOMPARE(rack.sent(), expected);
        QCOMPARE(rack.messages.messages.size(), message.isEmpty() ? 0 : 1);
        if (!message.isEmpty()) {
            QCOMPARE(rack.messages.messages[0].text, message);
            QCOMPARE(rack.messages.messages[0].title, People::kProgramName);
            QCOMPARE(rack.messages.messages[0].icon, People::Icon::Information);
        }
        // The record keeps only what passed.
        QCOMPARE(CardTable(kCommRecord).Param(20), writes > 0 ? network : QString());
        QCOMPARE(CardTable(kCommRecord).Param(21), writes > 1 ? delay : QString());
        QVERIFY(dialog.cmdDown->isEnabled());
    }

    // Leaving a box checks it, unless the way out is Exit; keys other than digits are dropped.
    void leavingABox() {
        CommRack rack("VX-ZKFD1W", "1.00");
        FrmZKFD dialog;
        dialog.OpenView("VX-ZKFD1W");
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        dialog.txbNetWorkNo->setFocus();
        QTRY_VERIFY(dialog.txbNetWorkNo->hasFocus());
        dialog.txbNetWorkNo->clear();
        QTest::keyClicks(dialog.txbNetWorkNo, "2-4a0");
        QCOMPARE(dialog.txbNetWorkNo->text(), QString("240"));

        dialog.txbRedundant->setFocus();
        QCOMPARE(rack.messages.messages.size(), 1);
        QCOMPARE(rack.messages.messages[0].text, QString("Please enter number 1 - 239"));
        QTRY_VERIFY(dialog.txbNetWorkNo->hasFocus());

        dialog.cmdExit->setFocus();
        QTRY_VERIFY(dialog.cmdExit->hasFocus());
        QCOMPARE(rack.messages.messages.size(), 1);
        dialog.cmdExit->click();
        QVERIFY(!dialog.isVisible());
        QVERIFY(CardTable(kCommRecord).Param(20).isEmpty());
    }
};

VX_TEST(FrmZKFDTest)
#include "tst_frmzkfd.moc"
