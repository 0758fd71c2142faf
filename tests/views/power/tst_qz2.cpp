#include "app/desk.h"

#include "rack/overview.h"
#include "ui/widgets.h"
#include "views/power/qz2.h"

using vxtest::CardDesk;
using vxtest::preamble;
using vxtest::readLines;
using vxtest::writeLines;

namespace {

// The fields of a channel in the order the card is read, with their items on channels 1 and 2.
const QStringList kControls = {
    "txtAlarm1",      "txtAlarm2",      "txtAlarmLevel1", "txtAlarmLevel2",
    "txtAlarmLevel3", "txtAlarmLevel4", "txtHyst1",       "txtHyst2",
    "txtHyst3",       "txtHyst4",       "txtDropout",     "txtZScale",
    "txtFScale",      "txtMinPos",      "txtMaxPos",      "txtInputType"};
const QStringList kItems[2] = {
    {"50", "55", "51", "53", "56", "58", "52", "54", "57", "59", "10", "42", "43", "14", "18",
     "30"},
    {"60", "65", "61", "63", "66", "68", "62", "64", "67", "69", "11", "44", "45", "15", "19",
     "31"},
};

const QColor kGreen(0, 128, 0), kRed(255, 0, 0);

FrmQZ2 *qz2(const CardDesk &rack) {
    return qobject_cast<FrmQZ2 *>(rack.view);
}

QLineEdit *common(const CardDesk &rack, const char *control) {
    return rack.view->findChild<QLineEdit *>(control);
}

// Items of group 00 answer as given; the rest as the simulated card does.
void answer(CardDesk &rack, QMap<QString, QString> replies) {
    SimCard &card = rack.sim.rack.slot(rack.slot);
    auto plain = card.live;
    card.live = [replies, plain](const QString &g, const QString &i, qint64 ms) {
        return g == "00" && replies.contains(i) ? std::optional<QString>(replies.value(i))
                                                : plain(g, i, ms);
    };
}

// Waits for two whole live passes, so every box has been through the answers.
void twoPasses(CardDesk &rack) {
    rack.sim.rack.clearTranscript();
    QTRY_VERIFY(rack.sent().count("I15") >= 2);
}

} // namespace

class DualPulseViewTest : public QObject {
    Q_OBJECT
private slots:
    void uploadOnTheWire() {
        CardDesk rack("QZ2", 4, "1.04");
        SimCard &card = rack.sim.rack.slot(4);
        card.setItem("01", "07", "D7:250");
        card.setItem("01", "69", "D1234");
        card.setItem("01", "31", "D2000");
        rack.runWorker(rack.view->cmdUp);
        const QStringList expected =
            preamble(4, "01") + readLines("01", QStringList{"07", "08"} + kItems[0] + kItems[1]);
        QCOMPARE(rack.sent().mid(0, expected.size()), expected);
        // No commit after an Upload: the cycle follows.
        QCOMPARE(rack.sent().at(expected.size()), QString("G00"));
        QCOMPARE(common(rack, "txtDelayTime")->text(), QString("250"));
        QCOMPARE(CardTable(4).Param(2), QString("250"));
        QCOMPARE(CardTable(4).Param(3), QString("10"));
        QCOMPARE(rack.box("txtHyst4", 2)->text(), QString("1234"));
        QCOMPARE(CardTable(4).Param(33), QString("1234"));
        QCOMPARE(CardTable(4).Param(39), QString("2000"));
        QCOMPARE(CardTable(4).Param(4), QString("1"));
        QCOMPARE(CardTable(4).Param(19), QString("1000"));
        QCOMPARE(CardTable(4).VerNo, QString("1.04"));
    }

    void downloadEndsWithItsCommit() {
        CardDesk rack("QZ2", 4);
        rack.runWorker(rack.view->cmdUp);
        common(rack, "txtDelayTime")->setText("9");
        common(rack, "txtHoldTime")->clear();
        rack.box("txtAlarmLevel3", 1)->setText("777");
        rack.box("txtInputType", 2)->setText("5555"); // kept, never sent
        rack.runWorker(rack.view->cmdDown);

        QStringList expected = preamble(4, "01") + writeLines("01", "07", "9");
        for (int e = 1; e <= 2; ++e)
            for (int f = 0; f < kControls.size() - 1; ++f)
                expected +=
                    writeLines("01", kItems[e - 1].at(f), rack.box(kControls.at(f), e)->text());
        expected += writeLines("02", "01", "1");
        QCOMPARE(rack.sent().mid(0, expected.size()), expected);
        QVERIFY(rack.sent().join(' ').contains("G01 I56 D777"));
        QCOMPARE(rack.sim.rack.slot(4).groups["01"]["56"], QString("D777"));
        QCOMPARE(CardTable(4).Param(8), QString("777"));
        // The empty field comes back from the record.
        QCOMPARE(common(rack, "txtHoldTime")->text(), QString("10"));
        QCOMPARE(CardTable(4).Param(3), QString("10"));
        QCOMPARE(CardTable(4).Param(39), QString("5555"));
    }

    void clearZeroesTheCountersAfterAnUpload() {
        CardDesk rack("QZ2", 4);
        rack.sim.rack.setTime(100000); // the counters have counted for 100 s
        QTRY_COMPARE(qz2(rack)->liveBox("txtParData01(2)")->text(), QString("5000"));
        rack.sim.rack.clearTranscript();
        // Both in one tick's time: the Upload goes first, the Clear in the tick after it.
        qz2(rack)->CmdClear->click();
        rack.view->cmdUp->click();
        QTRY_VERIFY(!qz2(rack)->ClearPending && rack.sent().count("I09") == 1);
        const QStringList sent = rack.sent();
        const QStringList clear = preamble(4, "01") + writeLines("01", "09", "1");
        const qsizetype at = sent.lastIndexOf("I31") + 1;
        QCOMPARE(sent.mid(at, clear.size()), clear);
        QTRY_COMPARE(qz2(rack)->liveBox("txtParData01(2)")->text(), QString("0"));
        QCOMPARE(qz2(rack)->liveBox("txtParData02(2)")->text(), QString("0"));
        QVERIFY(rack.messages.messages.isEmpty());
    }

    void lampsFromStatusWords_data() {
        QTest::addColumn<QString>("first");
        QTest::addColumn<QString>("second");
        QTest::addColumn<QString>("lamps"); // channel 1 lamps 1, 2, then channel 2: Green or Red
        const char *rows[][3] = {
            {"0008", "0004", "GRRG"},                           // bit 3 lights lamp 2, bit 2 lamp 1
            {"0000", "000C", "GGRR"}, {"FFF3", "0003", "GGGG"}, // the other bits have no effect
            {"08", "CNG", "GGGG"},    // a short word is filled on the right: 0800, C000
            {"000c", "0004", "GGRG"}, // lower-case digits count as 0
        };
        for (const auto &row : rows)
            QTest::addRow("%s %s", row[0], row[1]) << row[0] << row[1] << row[2];
    }
    void lampsFromStatusWords() {
        QFETCH(QString, first);
        QFETCH(QString, second);
        QFETCH(QString, lamps);
        CardDesk rack("QZ2", 7);
        answer(rack, {{"11", "D1:" + first}, {"15", "D2:" + second}});
        twoPasses(rack);
        FrmQZ2 *view = qz2(rack);
        for (int i = 0; i < 4; ++i)
            QCOMPARE(BackColor(view->lamp(i / 2 + 1, i % 2 + 1)),
                     lamps.at(i) == 'R' ? kRed : kGreen);
    }

    void liveWordsAndTheirLoss() {
        CardDesk rack("QZ2", 4);
        QMap<QString, QString> words;
        for (int item : {10, 12, 13, 14, 16, 17, 57, 58})
            words.insert(QString::number(item), QString("D1:%1.5").arg(item));
        words.insert("11", "D1:000C");
        words.insert("15", "D2:0000");
        // The lamps are grey while their status word is on its way.
        QColor whileAsked;
        answer(rack, words);
        auto plain = rack.sim.rack.slot(4).live;
        rack.sim.rack.slot(4).live = [&, plain](const QString &g, const QString &i, qint64 ms) {
            if (i == "11") whileAsked = BackColor(qz2(rack)->lamp(1, 1));
            return plain(g, i, ms);
        };
        twoPasses(rack);
        QCOMPARE(whileAsked, NeutralLampColour());
        QCOMPARE(BackColor(qz2(rack)->lamp(1, 1)), kRed);
        const QStringList pass = preamble(4) + readLines("00", {"10", "12", "13", "14", "16", "17",
                                                                "57", "58", "11", "15"});
        const QStringList sent = rack.sent();
        QCOMPARE(sent.mid(sent.indexOf("G00"), pass.size()), pass);
        const char *boxes[][2] = {{"txtParData01(1)", "105"}, {"txtParData01(2)", "125"},
                                  {"txtParData01(3)", "135"}, {"txtParData01(4)", "575"},
                                  {"txtParData02(1)", "145"}, {"txtParData02(2)", "165"},
                                  {"txtParData02(3)", "175"}, {"txtParData02(4)", "585"}};
        for (const auto &[name, value] : boxes)
            QCOMPARE(qz2(rack)->liveBox(name)->text(), QString(value));

        // The second status word gets no answer: the link is given up, as for any live word.
        rack.sim.rack.addFault({SimFault::NoReply, "I15", -1, 0});
        QTRY_VERIFY(!IsConnected);
        QCOMPARE(rack.messages.messages.size(), 1);
        QCOMPARE(rack.messages.messages[0].text, QString("Uploading incomplete"));
        QCOMPARE(rack.messages.messages[0].icon, People::Icon::Stop);
    }
};

VX_TEST(DualPulseViewTest)
#include "tst_qz2.moc"
