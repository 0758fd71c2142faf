#include "comm/commrack.h"

#include "comm/frmether.h"

#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QTest>

using vxtest::CommRack;
using vxtest::readLines;
using vxtest::shown;
using vxtest::writeLines;

namespace {

QStringList items(int first, int last) {
    QStringList list;
    for (int n = first; n <= last; ++n)
        list << QString::number(n);
    return list;
}

} // namespace

class FrmEtherTest : public QObject {
    Q_OBJECT

private slots:
    // Each face reads and writes its own items and never touches the other's.
    void bothFacesOnTheWire_data() {
        QTest::addColumn<QString>("model");
        QTest::addColumn<bool>("ipFace");
        QTest::newRow("socket") << "VX-ZT1" << false;
        QTest::newRow("IP") << "VX-ZTIP2" << true;
        QTest::newRow("short name") << "VX-ZT" << false;
    }
    void bothFacesOnTheWire() {
        QFETCH(QString, model);
        QFETCH(bool, ipFace);
        CommRack rack(model, "1.00");
        FrmEther dialog;
        dialog.OpenView(model + ":00");
        QCOMPARE(dialog.ipFace(), ipFace);
        QCOMPARE(shown(dialog.Frame1), !ipFace);
        QCOMPARE(shown(dialog.txtIPsel), ipFace);
        QCOMPARE(shown(dialog.txtDGate.parts[3]), ipFace);

        const QStringList select = writeLines("00", "01", "F") + writeLines("00", "41", "00") +
                                   writeLines("01", "01", "1") + readLines("00", {"40"});
        QStringList upload = select + readLines("00", {"59"});
        if (ipFace) upload += readLines("00", {"78"});
        upload += readLines("00", {"60", "57"}) + writeLines("00", "1", "F") +
                  readLines("00", {"58"}) + writeLines("00", "1", "1");
        upload += ipFace ? readLines("00", {"77"}) : readLines("00", items(61, 64) + items(71, 74));
        QCOMPARE(rack.sent(), upload);
        QCOMPARE(dialog.txtIP.text(), QString("192.168.1.10"));
        QCOMPARE(dialog.txtSNM.parts[2]->text(), QString("255"));
        QCOMPARE(dialog.lblMac[1]->text(), QString("41-7C-09"));
        if (ipFace) QCOMPARE(dialog.txtDGate.text(), QString("192.168.1.1"));
        if (!ipFace) QCOMPARE(dialog.txtPort[4]->text(), QString("505"));

        rack.clear();
        dialog.txtIP.parts[3]->setText("77");
        dialog.txtIPsel->setText("7"); // sent as it stands
        dialog.txtTimeout[2]->clear(); // an empty linger is sent as an empty data field
        dialog.cmdDown->click();
        QStringList download = select;
        if (ipFace) download += writeLines("00", "77", "7");
        download += writeLines("00", "59", "192.168.1.77");
        if (ipFace) download += writeLines("00", "78", "192.168.1.1");
        download += writeLines("00", "60", "255.255.255.0");
        if (!ipFace) {
            for (int n = 1; n <= 4; ++n)
                download += writeLines("00", QString::number(60 + n), QString::number(501 + n));
            for (int n = 1; n <= 4; ++n)
                download += writeLines("00", QString::number(70 + n), n == 2 ? "" : "50");
        }
        QCOMPARE(rack.sent(), download);
        QCOMPARE(rack.card().groups["00"]["59"], QString("D192.168.1.77"));
        QVERIFY(rack.messages.messages.isEmpty());
        QVERIFY(dialog.cmdDown->isEnabled());
    }

    // A gap in an address or the ports stops the Download before anything is written.
    void incompleteAddressWritesNothing_data() {
        const QString ip = "Please enter number in IP Address.";
        vxtest::textTable(
            {"model", "box", "message"},
            {{"IP", "VX-ZT1", "txtIP(2)", ip},
             {"gateway", "VX-ZTIP1", "txtDGate(0)", ip},
             {"mask", "VX-ZT1", "txtSNM(3)", "Please enter number in Subnet Mask."},
             {"port", "VX-ZT1", "txtPort(3)", "Please enter number in TCP Port No."}});
    }
    void incompleteAddressWritesNothing() {
        QFETCH(QString, model);
        QFETCH(QString, box);
        QFETCH(QString, message);
        CommRack rack(model, "1.00");
        FrmEther dialog;
        dialog.OpenView(model);
        dialog.findChild<QLineEdit *>(box)->clear();
        rack.clear();
        dialog.cmdDown_Click();
        QCOMPARE(rack.messages.messages.size(), 1);
        QCOMPARE(rack.messages.messages[0].text, message);
        QCOMPARE(rack.messages.messages[0].icon, People::Icon::Information);
        QCOMPARE(rack.sent(), writeLines("00", "01", "F") + writeLines("00", "41", "00") +
                                  writeLines("01", "01", "1") + readLines("00", {"40"}));
        QVERIFY(dialog.cmdUp->isEnabled());
    }

    // What is typed into a part of an address is tested as it is typed.
    void addressPartsAreCheckedAsTyped_data() {
        vxtest::textTable({"typed", "kept", "message"},
                          {{"four digits", "1234", "123", ""},
                           {"256", "256", "256", "Please enter 0 to 255."},
                           {"letter", "1x", "1x", "Please enter number."}});
    }
    void addressPartsAreCheckedAsTyped() {
        QFETCH(QString, typed);
        QFETCH(QString, kept);
        QFETCH(QString, message);
        CommRack rack("VX-ZT1", "1.00");
        FrmEther dialog;
        QLineEdit *part = dialog.txtSNM.parts[1];
        QTest::keyClicks(part, typed);
        QCOMPARE(part->text(), kept);
        QCOMPARE(part->cursorPosition(), kept.size());
        QStringList said = rack.messages.texts();
        said.removeDuplicates();
        QCOMPARE(said, message.isEmpty() ? QStringList() : QStringList{message});
        QVERIFY(rack.sent().isEmpty());
    }
};

VX_TEST(FrmEtherTest)
#include "tst_frmether.moc"
