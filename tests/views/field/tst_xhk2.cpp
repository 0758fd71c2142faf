#include "app/desk.h"

#include "views/field/xhk2.h"

#include <QComboBox>
#include <QRadioButton>

using vxtest::CardDesk;
using vxtest::pickCard;
using vxtest::preamble;
using vxtest::press;
using vxtest::readLines;
using vxtest::writeLines;

namespace {

constexpr int kSlot = 15;

// The lines sent, without the reads of the raw position that every setting tick makes: what is
// left does not depend on how many ticks a hold lasted.
QStringList withoutRawReads(const QStringList &sent) {
    QStringList out;
    for (qsizetype i = 0; i < sent.size(); ++i) {
        if (i + 1 < sent.size() && sent[i].startsWith("G0") && sent[i + 1] == "I28") {
            ++i;
            continue;
        }
        out << sent[i];
    }
    return out;
}

// Where `run` stands in `lines` as an unbroken run, or -1.
qsizetype findRun(const QStringList &lines, const QStringList &run, qsizetype from = 0) {
    for (qsizetype i = from; i + run.size() <= lines.size(); ++i)
        if (lines.mid(i, run.size()) == run) return i;
    return -1;
}

// The simulated card's raw position of an actuator, asked directly while the program is quiet.
QString cardRaw(SimRack &rack, const QString &group) {
    rack.answer("G" + group);
    return rack.answer("I28");
}

FrmXHK2 *openXhk2(CardDesk &rack) {
    return qobject_cast<FrmXHK2 *>(rack.view);
}

} // namespace

class Xhk2ViewTest : public QObject {
    Q_OBJECT
private slots:
    void uploadAndDownloadOnTheWire() {
        CardDesk rack("XHK2", kSlot);
        FrmXHK2 *v = openXhk2(rack);
        QVERIFY(v);
        SimCard &card = rack.sim.rack.slot(kSlot);
        card.setItem("03", "07", "D250");
        card.setItem("03", "06", "D4000");
        card.setItem("02", "43", "D1");
        card.setItem("03", "05", "D1.0"); // the entry's text
        card.setItem("04", "05", "D9");   // its position
        card.setItem("03", "50", "D01");
        card.setItem("03", "51", "D42.5");
        rack.runWorker(v->cmdUp);
        QStringList expected =
            preamble(kSlot, "02") + writeLines("03", "01", "1") + writeLines("04", "01", "1");
        for (const QString ch : {"3", "4"})
            expected += readLines(ch, {"07", "06"}) + readLines("02", {ch == "3" ? "42" : "43"}) +
                        readLines(ch, {"05"});
        expected += readLines("03", {"50", "51"});
        QCOMPARE(rack.sent().mid(0, expected.size()), expected);
        QCOMPARE(v->txtMotorLockTime[0]->text(), QString("250"));
        QCOMPARE(v->List_ChEnable[1]->currentText(), QString("Disable"));
        QCOMPARE(v->List_Deadband[0]->currentText(), QString("1.0"));
        QCOMPARE(v->List_Deadband[1]->currentText(), QString("8.0"));
        QVERIFY(v->optTestMode[1]->isChecked());
        QVERIFY(!v->butMode[1]->isEnabled()); // the test is on: no setting
        QCOMPARE(v->txtTestModePos->text(), QString("42.5"));
        QCOMPARE(CardTable(kSlot).Param(1), QString("250"));
        QCOMPARE(CardTable(kSlot).Param(13), QString("Disable"));
        QCOMPARE(CardTable(kSlot).Param(14), QString("8.0"));

        v->txtRestartTime[0]->clear(); // empty: nothing is sent, the cell keeps its text
        v->txtMotorLockTime[1]->setText("600");
        v->List_Deadband[0]->setCurrentIndex(0);
        rack.runWorker(v->cmdDown);
        expected = preamble(kSlot, "02") + writeLines("03", "01", "1") +
                   writeLines("04", "01", "1") + writeLines("3", "07", "250") +
                   writeLines("02", "42", "0") + writeLines("3", "05", "0") +
                   writeLines("4", "07", "600") + writeLines("4", "06", "3000") +
                   writeLines("02", "43", "1") + writeLines("4", "05", "9");
        QVERIFY2(findRun(rack.sent(), expected) >= 0, qPrintable(rack.sent().join(' ')));
        QCOMPARE(CardTable(kSlot).Param(2), QString("4000"));
        QCOMPARE(CardTable(kSlot).Param(4), QString("0.1"));
        QCOMPARE(card.groups["04"]["07"], QString("D600"));
    }

    // Close setting: a coarse jog held over ticks, a new fine level, a fine step tapped between
    // two ticks, the end. The end's tick sends "09" "00" and reads nothing.
    void settingOnTheWire() {
        CardDesk rack("XHK2", kSlot);
        FrmXHK2 *v = openXhk2(rack);
        rack.sim.rack.clearTranscript();
        QVERIFY(press(v->butMode[1]));
        QVERIFY(!v->cmdUp->isEnabled() && v->PosRawDat[0]->isVisible());
        QTRY_VERIFY(rack.sent().count("I28") >= 1);

        QTest::mousePress(v->CloseCoaseAdjBut, Qt::LeftButton);
        QTRY_COMPARE(v->closeCoarseState, 2);
        const int held = v->PosRawDat[0]->text().toInt();
        QTRY_VERIFY(v->PosRawDat[0]->text().toInt() < held); // moving towards close
        QTest::mouseRelease(v->CloseCoaseAdjBut, Qt::LeftButton);
        QTRY_COMPARE(v->closeCoarseState, 0);
        const QString stopped = v->PosRawDat[0]->text();
        const qsizetype reads = rack.sent().count("I28");
        QTRY_VERIFY(rack.sent().count("I28") >= reads + 3);
        QCOMPARE(v->PosRawDat[0]->text(), stopped);

        v->optAdjLevel[2]->click();
        QTest::mouseClick(v->OpenFineAdjBut, Qt::LeftButton);
        QTRY_VERIFY(v->fineLevelCommand == 0 && v->openFineState == 0);
        QVERIFY(press(v->butMode[0]));
        QVERIFY(v->cmdUp->isEnabled() && !v->PosRawDat[0]->isVisible());
        QTRY_VERIFY(v->normalRun && rack.sent().count("I15") >= 1);

        const QStringList modeClick = preamble(kSlot, "03") + writeLines("04", "01", "1");
        const QStringList expected = modeClick + writeLines("03", "09", "01") +
                                     writeLines("03", "08", "100") + writeLines("03", "10", "01") +
                                     writeLines("03", "10", "00") + writeLines("03", "08", "200") +
                                     writeLines("03", "11", "02") + modeClick +
                                     writeLines("03", "09", "00") + preamble(kSlot) +
                                     readLines("00", {"11", "12", "14", "15"});
        QCOMPARE(withoutRawReads(rack.sent()).mid(0, expected.size()), expected);
    }

    // A running open jog ends on the card in each way a user or the line can end it.
    void jogStopsOnTheCard_data() {
        QTest::addColumn<QString>("how");
        QTest::addColumn<QStringList>("stop");
        QTest::addColumn<QString>("message");
        const QStringList full =
            preamble(kSlot, "03") + writeLines("03", "11", "00") + writeLines("03", "09", "00");
        QTest::newRow("button released") << "release" << writeLines("03", "11", "00") << "";
        QTest::newRow("view left") << "leave" << full << "";
        QTest::newRow("line silent") << "line" << full << "Uploading incomplete";
    }
    void jogStopsOnTheCard() {
        QFETCH(QString, how);
        QFETCH(QStringList, stop);
        QFETCH(QString, message);
        CardDesk rack("XHK2", kSlot);
        FrmXHK2 *v = openXhk2(rack);
        QVERIFY(press(v->butMode[2]));
        QTest::mousePress(v->OpenCoaseAdjBut, Qt::LeftButton);
        QTRY_COMPARE(v->openCoarseState, 2);
        rack.sim.rack.clearTranscript();
        if (how == "release") {
            QTest::mouseRelease(v->OpenCoaseAdjBut, Qt::LeftButton);
            QTRY_COMPARE(v->openCoarseState, 0);
        } else if (how == "leave") {
            // The view is hidden as the overview comes up; the stop goes out at that moment.
            QVERIFY(pickCard(*rack.window, 0));
            QVERIFY(!v->isVisible() && v->normalRun);
        } else {
            // Every attempt of the next raw read goes unanswered; the line then answers again.
            rack.sim.rack.addFault({SimFault::NoReply, "G03", 4, 0});
            QTRY_VERIFY(!IsConnected);
            QVERIFY(v->normalRun && v->cmdUp->isEnabled());
        }
        QVERIFY2(findRun(rack.sent(), stop) >= 0, qPrintable(rack.sent().join(' ')));
        QCOMPARE(rack.messages.messages.size(), message.isEmpty() ? 0 : 1);
        if (!message.isEmpty()) QCOMPARE(rack.messages.messages[0].text, message);
        if (how != "release") return; // the setting has ended: the actuator follows its setpoint
        // The actuator stands: five seconds later it is where it was.
        const qint64 now = rack.sim.rack.now();
        rack.sim.rack.setTime(now);
        const QString raw = cardRaw(rack.sim.rack, "03");
        rack.sim.rack.setTime(now + 5000);
        QCOMPARE(cardRaw(rack.sim.rack, "03"), raw);
    }

    void testModeOnTheWire() {
        CardDesk rack("XHK2", kSlot);
        FrmXHK2 *v = openXhk2(rack);
        v->optCh[1]->click();
        v->optTestMode[1]->click();
        QVERIFY(!v->butMode[1]->isEnabled() && !v->butMode[2]->isEnabled());
        QVERIFY(!v->optCh[0]->isEnabled() && v->butTestMode->isEnabled());
        v->txtTestModePos->setText("37.5");
        QVERIFY(press(v->butTestMode));
        QTRY_COMPARE(v->txtsetpoint[1]->text(), QString("37.5"));
        v->optTestMode[0]->click();
        QVERIFY(v->butMode[1]->isEnabled() && !v->txtTestModePos->isEnabled());
        QTRY_VERIFY(findRun(rack.sent(), writeLines("04", "50", "00")) >= 0);
        const QStringList sent = rack.sent();
        const qsizetype on = findRun(sent, writeLines("04", "50", "01"));
        const qsizetype set = findRun(sent, writeLines("04", "51", "37.5"));
        QVERIFY(on >= 0 && set > on && findRun(sent, writeLines("04", "50", "00")) > set);
    }

    void fieldChecks_data() {
        QTest::addColumn<QString>("control");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("message");
        const QString lock = "Please enter value 60 - 1000";
        const QString position = "Please enter value -0.5 - 100.5";
        const struct {
            const char *row, *control, *typed, *shown;
            QString message;
        } rows[] = {
            {"59.6 rounds up", "txtMotorLockTime(0)", "59.6", "60", ""},
            {"59.4 too low", "txtMotorLockTime(0)", "59.4", "59.4", lock},
            {"1000.4 rounds down", "txtMotorLockTime(1)", "1000.4", "1000", ""},
            {"restart top", "txtRestartTime(1)", "10000", "10000", ""},
            {"restart above", "txtRestartTime(0)", "10001", "10001",
             "Please enter value 500 - 10000"},
            {"tenths", "txtTestModePos", "12.34", "12.3", ""},
            {"whole keeps point", "txtTestModePos", "5", "5.", ""},
            {"no leading zero", "txtTestModePos", "-0.5", "-.5", ""},
            {"above range", "txtTestModePos", "100.6", "100.6", position},
            {"no number", "txtTestModePos", "+", "+", position},
        };
        for (const auto &r : rows)
            QTest::newRow(r.row) << QString(r.control) << QString(r.typed) << QString(r.shown)
                                 << r.message;
    }
    void fieldChecks() {
        QFETCH(QString, control);
        QFETCH(QString, typed);
        QFETCH(QString, shown);
        QFETCH(QString, message);
        CardDesk rack("XHK2", kSlot);
        FrmXHK2 *v = openXhk2(rack);
        v->optTestMode[1]->click();
        auto *box = v->findChild<QLineEdit *>(control);
        box->setFocus(Qt::MouseFocusReason);
        box->setText(typed);
        // Leaving for "Upload" is no leaving.
        v->cmdUp->setFocus(Qt::MouseFocusReason);
        QCOMPARE(box->text(), typed);
        box->setFocus(Qt::MouseFocusReason);
        v->cmdDown->setFocus(Qt::MouseFocusReason);
        QCOMPARE(box->text(), shown);
        QCOMPARE(rack.messages.messages.size(), message.isEmpty() ? 0 : 1);
        if (message.isEmpty()) return;
        QCOMPARE(rack.messages.messages[0].text, message);
        QCOMPARE(rack.messages.messages[0].icon, People::Icon::Information);
        QTRY_VERIFY(box->hasFocus());
        // What was refused is not sent.
        v->cmdDown->click();
        QTRY_VERIFY(!v->DownloadPending);
        QVERIFY(!rack.sent().contains("D" + typed));
    }

    void rawPositionColour_data() {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("raw");
        QTest::addColumn<bool>("green");
        QTest::newRow("close at 4000") << 1 << "4000" << true;
        QTest::newRow("close at 4001") << 1 << "4001" << false;
        QTest::newRow("open at 6000") << 2 << "6000" << true;
        QTest::newRow("open at 5999") << 2 << "5999" << false;
    }
    void rawPositionColour() {
        QFETCH(int, mode);
        QFETCH(QString, raw);
        QFETCH(bool, green);
        CardDesk rack("XHK2", kSlot);
        FrmXHK2 *v = openXhk2(rack);
        SimCard &card = rack.sim.rack.slot(kSlot);
        card.live = [raw, live = card.live](const QString &g, const QString &i,
                                            qint64 ms) -> std::optional<QString> {
            if (i == "28") return "D" + raw;
            return live(g, i, ms);
        };
        QVERIFY(press(v->butMode[mode]));
        QTRY_COMPARE(v->PosRawDat[0]->text(), raw);
        QCOMPARE(v->PosRawDat[0]->palette().color(QPalette::Base) == QColor(128, 255, 128), green);
    }
};

VX_TEST(Xhk2ViewTest)
#include "tst_xhk2.moc"
