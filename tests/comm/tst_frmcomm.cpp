#include "comm/commrack.h"

#include "comm/frmcomm.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QTest>

using vxtest::CommRack;
using vxtest::readLines;
using vxtest::shown;
using vxtest::writeLines;

namespace {

QStringList outputLines(const QString &group, const QString &dataOf = {}) {
    QStringList lines;
    for (int slot = 1; slot <= 16; ++slot)
        lines += dataOf.isNull() ? readLines(group, {QString::number(9 + slot)})
                                 : writeLines(group, QString::number(9 + slot), dataOf);
    return lines;
}

} // namespace

class FrmCommTest : public QObject {
    Q_OBJECT

private slots:
    void presenceByNameAndVersion_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("version");
        QTest::addColumn<QString>("nameReply");
        QTest::addColumn<QString>("expected"); // time, direct output, delay switch: "x" or "-"
        const struct {
            const char *name, *version, *reply, *expected;
        } rows[] = {
            {"ZOKAR", "V0.10", "QV3:0", "xxx"},      {"ZT1", "V1.00", "VX-ZT1:0", "x--"},
            {"ZT1", "V1.01", "VX-ZT1:0", "xx-"},     {"ZT1", "V2.03", "VX-ZT1:0", "xx-"},
            {"ZT1", "V2.04", "VX-ZT1:0", "xxx"},     {"ZG1", "V2.05", "VX-ZG1:0", "xxx"},
            {"ZG4", "V2.01", "VX-ZG4:0", "xxx"},     {"ZTM1", "V1.00", "VX-ZTM1:0", "x-x"},
            {"ZG1", "V3.00", "QV3G1:0", "x-x"}, // a "QV3" card answers for it
            {"ZB1", "V2.00", "VX-ZB1:0", "x--"},     {"ZD3", "V2.00", "VX-ZD3:0", "---"},
            {"ZTKL1", "V2.00", "VX-ZTKL1:0", "-x-"}, {"HLINK1", "V2.00", "VX-HLINK1:0", "---"},
            {"ZQ1", "V1.1.0", "VX-ZQ1:0", "x--"}, // the second dot stays: 11.0
        };
        for (const auto &r : rows)
            QTest::newRow(QStringLiteral("%1 %2").arg(r.name, r.version).toLatin1())
                << QString(r.name) << QString(r.version) << QString(r.reply) << QString(r.expected);
    }
    void presenceByNameAndVersion() {
        QFETCH(QString, name);
        QFETCH(QString, version);
        QFETCH(QString, nameReply);
        QFETCH(QString, expected);
        const auto flag = [](bool on) { return on ? QLatin1Char('x') : QLatin1Char('-'); };
        const QString has = QString(flag(FrmComm::HasTimeout(name))) +
                            flag(FrmComm::HasDirectOutput(name, version, nameReply)) +
                            flag(FrmComm::HasActivateDelay(name, version));
        QCOMPARE(has, expected);
    }

    // The demo's Ethernet card at V2.04 has all three settings: what opening, Upload and
    // Download put on the wire, in the fields and in the record.
    void openUploadDownloadOnTheWire() {
        CommRack rack("VX-ZT1", "2.04");
        CardTable(kCommRecord).Param(1) = "45";
        CardTable(kCommRecord).Param(4) = "7";
        CardTable(kCommRecord).Param(18) = "1";
        FrmComm dialog;
        dialog.Form_Activate();
        QCOMPARE(rack.sent(), writeLines("00", "01", "F") + writeLines("00", "41", "0") +
                                  readLines("00", {"04", "03", "04", "40", "39", "04"}));
        QCOMPARE(dialog.txtName->text(), QString("ZT1"));
        QCOMPARE(dialog.txtVersion->text(), QString("V2.04"));
        QCOMPARE(dialog.txtSW->text(), QString("00,01,00"));
        QCOMPARE(dialog.txtStatus[0]->text(), QString("01"));
        QCOMPARE(dialog.txtStatus[1]->text(), QString("00"));
        // Opening shows what the record holds, not what the card holds.
        QCOMPARE(dialog.txtTimeout->text(), QString("45"));
        QCOMPARE(dialog.txtOutSlot[3]->text(), QString("7"));
        QVERIFY(dialog.ChkCJC->isChecked());
        QVERIFY(shown(dialog.fraOutput) && shown(dialog.ChkCJC) && !shown(dialog.txtVersion2));
        QVERIFY(dialog.cmdUp->isEnabled() && dialog.cmdExit->isEnabled());

        rack.clear();
        rack.card().setItem("17", "12", "D9");
        rack.card().setItem("00", "30", "D2");
        dialog.cmdUp->click();
        QCOMPARE(rack.sent(), writeLines("00", "01", "F") + writeLines("00", "41", "0") +
                                  readLines("00", {"40", "39", "04", "03", "04"}) +
                                  writeLines("0", "01", "F") + readLines("0", {"09"}) +
                                  readLines("00", {"04"}) + writeLines("17", "01", "1") +
                                  outputLines("17") + readLines("00", {"30"}));
        const CardRecord &record = CardTable(kCommRecord);
        QCOMPARE(record.CardName, QString("ZT1"));
        QCOMPARE(record.VerNo, QString("V2.04"));
        QCOMPARE(record.Param(1), QString("30"));
        QCOMPARE(record.Param(4), QString("9"));
        QCOMPARE(dialog.txtOutSlot[3]->text(), QString("9"));
        // Any value but "0" is on.
        QVERIFY(dialog.ChkCJC->isChecked());
        QCOMPARE(record.Param(18), QString("1"));

        rack.clear();
        dialog.ChkCJC->setChecked(false);
        for (int slot = 1; slot <= 16; ++slot)
            dialog.txtOutSlot[size_t(slot)]->setText("5");
        dialog.cmdDown->click();
        QCOMPARE(rack.sent(), writeLines("00", "01", "F") + writeLines("00", "41", "00") +
                                  writeLines("00", "01", "1") + writeLines("0", "01", "F") +
                                  writeLines("0", "09", "30") + readLines("00", {"04"}) +
                                  writeLines("17", "01", "1") + outputLines("17", "5") +
                                  writeLines("00", "30", "0"));
        QCOMPARE(record.Param(17), QString("5"));
        QCOMPARE(record.Param(18), QString("0"));
        QVERIFY(rack.messages.messages.isEmpty());
    }

    // Out of range values are replaced in the field, without a word, before they are sent.
    void downloadReplacesWhatIsOutOfRange_data() {
        vxtest::textTable({"time", "timeSent", "output", "outputSent"},
                          {{"low ends", "2", "2", "0", "0"},
                           {"high ends", "32000", "32000", "16", "16"},
                           {"just below", "1", "30", "-1", "0"},
                           {"just above", "32001", "30", "17", "0"},
                           {"no number", "abc", "30", "", "0"}});
    }
    void downloadReplacesWhatIsOutOfRange() {
        QFETCH(QString, time);
        QFETCH(QString, timeSent);
        QFETCH(QString, output);
        QFETCH(QString, outputSent);
        CommRack rack("VX-ZG1", "2.05");
        FrmComm dialog;
        dialog.Form_Activate();
        dialog.txtTimeout->setText(time);
        dialog.txtOutSlot[16]->setText(output);
        rack.clear();
        dialog.cmdDown_Click();
        QVERIFY(rack.wire().contains("G0 I09 D" + timeSent + " "));
        QVERIFY(rack.wire().contains("G17 I25 D" + outputSent + " "));
        QCOMPARE(dialog.txtTimeout->text(), timeSent);
        QCOMPARE(dialog.txtOutSlot[16]->text(), outputSent);
        QCOMPARE(CardTable(kCommRecord).Param(17), outputSent);
        QVERIFY(rack.messages.messages.isEmpty());
    }

    // The CC-Link IE cards keep time and outputs in group 50 and show a second version.
    void ccLinkCardUsesItsOwnGroup() {
        CommRack rack("VX-ZKFD1", "1.10");
        FrmComm dialog;
        dialog.Form_Activate();
        QCOMPARE(rack.sent().mid(rack.sent().size() - 2), readLines("50", {"40"}));
        QVERIFY(shown(dialog.txtVersion2));
        QCOMPARE(dialog.txtVersion2->text(), QString("V1.02"));
        rack.clear();
        dialog.cmdUp_Click();
        const QString wire = rack.wire();
        QVERIFY(wire.contains("G50 I01 DF G50 I09 G00 I04 G50 I01 D1 G50 I10"));
        QVERIFY(wire.endsWith("G50 I25"));
        QCOMPARE(CardTable(kCommRecord).CardName, QString("ZKFD1"));
    }

    // Cards that are asked less: a name from the version item, a gateway without transfers.
    void cardsThatAnswerDifferently() {
        {
            CommRack rack("VX-ZG1", "2.05");
            rack.card().live = [](const QString &g, const QString &i,
                                  qint64) -> std::optional<QString> {
                if (g == "00" && i == "04") return QString("CNG");
                if (g == "00" && i == "40") return QString("DVX-ZG4:2.01");
                return std::nullopt;
            };
            FrmComm dialog;
            dialog.Form_Activate();
            QCOMPARE(dialog.txtName->text(), QString("ZG4"));
            QCOMPARE(dialog.txtVersion->text(), QString("V2.01"));
            QVERIFY(shown(dialog.ChkCJC));
            QVERIFY(rack.messages.messages.isEmpty());
        }
        CommRack rack("VX-HLINK1", "1.00");
        FrmComm dialog;
        dialog.Form_Activate();
        QCOMPARE(dialog.txtName->text(), QString("HLINK1"));
        for (QWidget *gone :
             {static_cast<QWidget *>(dialog.cmdUp), static_cast<QWidget *>(dialog.cmdDown),
              static_cast<QWidget *>(dialog.txtStatus[0]),
              static_cast<QWidget *>(dialog.txtStatus[1]), static_cast<QWidget *>(dialog.lblStatus),
              static_cast<QWidget *>(dialog.txtTimeout)})
            QVERIFY(!shown(gone));
        QVERIFY(shown(dialog.cmdExit) && dialog.cmdExit->isEnabled());
        // No second status; item 04 is asked again only for the direct outputs.
        QCOMPARE(rack.sent(), writeLines("00", "01", "F") + writeLines("00", "41", "0") +
                                  readLines("00", {"04", "03", "40", "39", "04"}));
    }

    void silentCardEndsTheSession() {
        CommRack rack("VX-ZT1", "2.04");
        FrmComm dialog;
        dialog.Form_Activate();
        rack.sim.rack.addFault({SimFault::NoReply, "I03", -1, 0});
        dialog.cmdUp_Click();
        QCOMPARE(rack.messages.messages.size(), 1);
        QCOMPARE(rack.messages.messages[0].text, QString("Uploading incomplete"));
        QCOMPARE(rack.messages.messages[0].title, QString("Uploading"));
        QCOMPARE(rack.messages.messages[0].icon, People::Icon::Stop);
        QVERIFY(!IsConnected);
        QVERIFY(dialog.cmdUp->isEnabled() && dialog.cmdDown->isEnabled());
        // What was read before the silence is in the record; nothing after it.
        QCOMPARE(CardTable(kCommRecord).CardName, QString("ZT1"));
        QVERIFY(CardTable(kCommRecord).Param(1).isEmpty());

        // With the port closed the Download's opening writes fail at once.
        rack.messages.messages.clear();
        dialog.cmdDown_Click();
        QCOMPARE(rack.messages.messages.size(), 1);
        QCOMPARE(rack.messages.messages[0].text, QString("Downloading incomplete"));
        QCOMPARE(rack.messages.messages[0].title, QString("Downloading"));
    }
};

VX_TEST(FrmCommTest)
#include "tst_frmcomm.moc"
