#include "app/desk.h"

#include "rack/overview.h"
#include "rack/textroutines.h"
#include "ui/widgets.h"
#include "views/analog/alarm.h"

#include <QLabel>

using vxtest::CardDesk;
using vxtest::preamble;
using vxtest::readLines;
using vxtest::writeLines;

namespace {

// Time for a worker of eight channels, on a machine that may be busy.
constexpr int kLongWorker = 20000;

int channelsOf(const QString &model) {
    return model.at(2) == '8' ? 8 : 4;
}

QString groupOf(const QString &model) {
    return model.startsWith("QC") || model.startsWith("QD") ? "12" : "04";
}

// The items of channel ch in the order the view walks them: alarms 1-4, hysteresis, levels 1-4.
QStringList channelItems(int ch) {
    QStringList items;
    for (int n = 0; n <= 8; ++n)
        items << QString::number(ch * 10 + n);
    return items;
}

// The lamps as letters: R red, G green, N neutral, ? anything else.
QString lampColours(const AlarmView *view) {
    QString text;
    for (int i = 1; i <= view->lamps(); ++i) {
        const QColor colour = BackColor(view->lamp(i));
        text += colour == kAlarmOnColour        ? 'R'
                : colour == kAlarmOffColour     ? 'G'
                : colour == NeutralLampColour() ? 'N'
                                                : '?';
    }
    return text;
}

// The cell that holds level `a` of channel `ch` and, on the eight-channel view, where in it.
QString levelInRecord(const QString &model, int ch, int a) {
    if (channelsOf(model) == 4) return CardTable(CardNo).Param((ch - 1) * 9 + 8 + a);
    return CardTable(CardNo).Param((ch - 1) * 6 + 9).mid(4 - a, 1);
}

// The first lines of the cycle's round after a worker: nothing more was sent in between.
const QStringList kNextRound = {"G00", "I01"};

} // namespace

class AlarmViewTest : public QObject {
    Q_OBJECT
private slots:
    void wireOfUploadAndDownload_data() {
        QTest::addColumn<QString>("model");
        QTest::newRow("four channels, group 04") << QString("QB4");
        QTest::newRow("eight channels, group 12") << QString("QD8");
    }
    void wireOfUploadAndDownload() {
        QFETCH(QString, model);
        const int channels = channelsOf(model);
        const QString group = groupOf(model);
        CardDesk rack(model, 6);
        SimCard &card = rack.sim.rack.slot(6);
        card.setItem(group, "08", "D3.5");
        card.setItem(group, "23", "D-4.25"); // alarm 4 of channel 2
        card.setItem(group, "46", "D1");     // level 2 of channel 4
        rack.runWorker(rack.view->cmdUp, kLongWorker);
        QStringList expected = preamble(6, group) + readLines(group, {"7", "8", "9"});
        for (int ch = 1; ch <= channels; ++ch)
            expected += readLines(group, channelItems(ch));
        expected += writeLines("02", "01", "1");
        for (int ch = 1; ch <= channels; ++ch)
            expected += readLines("02", {QString::number(ch + 41)});
        QTRY_COMPARE(rack.sent().mid(0, expected.size() + 2), expected + kNextRound);
        const int stride = channels == 4 ? 9 : 6;
        QCOMPARE(CardTable(6).Param(2), QString("3.5"));
        QCOMPARE(CardTable(6).Param(stride + 7), QString("-4.25"));
        QCOMPARE(CardTable(6).Param(stride + 8), QString("1.0")); // hysteresis of channel 2
        // Levels 1 and 2 low, 3 and 4 high; level 2 of channel 4 was set high.
        for (int a = 1; a <= 4; ++a)
            QCOMPARE(levelInRecord(model, 4, a), QString(a == 1 ? "0" : "1"));

        const QStringList controls = {"txtAlarm1",      "txtAlarm2",      "txtAlarm3",
                                      "txtAlarm4",      "txtHyst",        "txtAlarmLevel1",
                                      "txtAlarmLevel2", "txtAlarmLevel3", "txtAlarmLevel4"};
        const auto typed = [](int n, int ch) {
            return n < 5 ? QString("%1.%2").arg(ch).arg(n) : QString::number((ch + n) % 2);
        };
        for (int ch = 1; ch <= channels; ++ch)
            for (int n = 0; n < controls.size(); ++n)
                rack.box(controls.at(n), ch)->setText(typed(n, ch));
        rack.box("txtEnable", 2)->setText("1");
        rack.view->findChild<QLineEdit *>("txtHoldTime")->clear(); // refilled, not sent
        rack.runWorker(rack.view->cmdDown, kLongWorker);
        expected = preamble(6, group) + writeLines(group, "7", "5") + writeLines(group, "8", "3.5");
        for (int ch = 1; ch <= channels; ++ch)
            for (int n = 0; n < controls.size(); ++n)
                expected += writeLines(group, QString::number(ch * 10 + n), typed(n, ch));
        expected += writeLines("02", "01", "1");
        for (int ch = 1; ch <= channels; ++ch)
            expected += writeLines("02", QString::number(ch + 41), ch == 2 ? "1" : "0");
        QTRY_COMPARE(rack.sent().mid(0, expected.size() + 2), expected + kNextRound);
        QCOMPARE(rack.view->findChild<QLineEdit *>("txtHoldTime")->text(), QString("0"));
        for (int a = 1; a <= 4; ++a)
            QCOMPARE(levelInRecord(model, 3, a), typed(4 + a, 3));
        QCOMPARE(CardTable(6).ChParam(2), QString("1"));
        QCOMPARE(FieldColour(rack.box("txtEnable", 2)), kFlagOnColour);
    }

    // Every level position of the packed cell: read from the card into the cell, shown from the
    // cell after the view is opened again, and written back from the fields.
    void packedLevels_data() {
        QTest::addColumn<int>("ch");
        QTest::addColumn<QString>("cell");
        for (const auto &[ch, cell] : QList<std::pair<int, const char *>>{
                 {1, "0001"}, {4, "0010"}, {5, "0100"}, {8, "1000"}, {2, "0101"}})
            QTest::addRow("channel %d %s", ch, cell) << ch << QString(cell);
    }
    void packedLevels() {
        QFETCH(int, ch);
        QFETCH(QString, cell);
        CardDesk rack("QA8", 3);
        SimCard &card = rack.sim.rack.slot(3);
        for (int a = 1; a <= 4; ++a)
            card.setItem("04", QString::number(ch * 10 + 4 + a), "D" + cell.mid(4 - a, 1));
        rack.runWorker(rack.view->cmdUp, kLongWorker);
        const int packed = (ch - 1) * 6 + 9;
        QCOMPARE(CardTable(3).Param(packed), cell);

        for (int a = 1; a <= 4; ++a) {
            card.setItem("04", QString::number(ch * 10 + 4 + a), "D9");
            rack.box(QString("txtAlarmLevel%1").arg(a), ch)->setText("9");
        }
        rack.reopen();
        for (int a = 1; a <= 4; ++a)
            QCOMPARE(rack.box(QString("txtAlarmLevel%1").arg(a), ch)->text(), cell.mid(4 - a, 1));
        rack.runWorker(rack.view->cmdDown, kLongWorker);
        for (int a = 1; a <= 4; ++a)
            QCOMPARE(card.groups["04"][QString::number(ch * 10 + 4 + a)], "D" + cell.mid(4 - a, 1));
        QCOMPARE(CardTable(3).Param(packed), cell);
    }

    // A cell of any other length holds no levels; a Download over it that leaves some levels
    // empty makes a short cell, which holds none either.
    void cellsWithoutLevels() {
        CardDesk rack("QA8", 3);
        CardTable(3).Param(9) = "10101";
        rack.box("txtAlarmLevel3", 1)->setText("x");
        rack.reopen();
        QCOMPARE(rack.box("txtAlarmLevel3", 1)->text(), QString());
        rack.box("txtAlarmLevel2", 1)->setText("1");
        rack.runWorker(rack.view->cmdDown, kLongWorker);
        const QString wire = rack.sent().join(' ');
        QVERIFY(wire.contains("G04 I01 D1 G04 I16 D1 G02 I01 D1")); // nothing else was typed
        QCOMPARE(CardTable(3).Param(9), QString("1"));
        rack.reopen();
        QCOMPARE(rack.box("txtAlarmLevel2", 1)->text(), QString());
    }

    void lampsFollowTheAlarmWord_data() {
        QTest::addColumn<QString>("model");
        QTest::addColumn<QString>("low");
        QTest::addColumn<QString>("high");
        QTest::addColumn<QList<int>>("red");
        for (const auto &[model, low, high, red] :
             QList<std::tuple<const char *, const char *, const char *, QList<int>>>{
                 {"QA4", "0001", "", {1}},
                 {"QA8", "0000", "8000", {32}},
                 {"QA8", "0010", "0001", {5, 17}}})
            QTest::addRow("%s %s %s", model, low, high)
                << QString(model) << QString(low) << QString(high) << red;
    }
    void lampsFollowTheAlarmWord() {
        QFETCH(QString, model);
        QFETCH(QString, low);
        QFETCH(QString, high);
        QFETCH(QList<int>, red);
        CardDesk rack(model, 5);
        auto *view = qobject_cast<AlarmView *>(rack.view);
        QVERIFY(view);
        rack.sim.rack.slot(5).live = [=](const QString &, const QString &item,
                                         qint64) -> std::optional<QString> {
            if (item == "10") return "D" + low;
            if (item == "11" && !high.isEmpty()) return "D" + high;
            if (item.toInt() >= 14) return QString("D%1:12.34").arg(item.toInt() - 13);
            return std::nullopt;
        };
        QString expected(view->lamps(), 'G');
        for (int i : red)
            expected[i - 1] = 'R';
        QTRY_COMPARE(lampColours(view), expected);
        QCOMPARE(rack.view->valueBox(channelsOf(model))->text(), QString("12.34"));
        QVERIFY(rack.messages.messages.isEmpty());
    }

    // The values are on the screen when the alarm word does not come: the lamps stay neutral,
    // the user is told, and the view stops polling the line it lost.
    void lostAlarmWord() {
        CardDesk rack("QA8", 5);
        auto *view = qobject_cast<AlarmView *>(rack.view);
        rack.answerAll("7.5");
        rack.sim.rack.addFault({SimFault::NoReply, "I11", -1, 0});
        QTRY_COMPARE(rack.messages.messages.size(), 1);
        QCOMPARE(rack.messages.messages[0].text, QString("Uploading incomplete"));
        QCOMPARE(rack.messages.messages[0].title, QString("Uploading"));
        QCOMPARE(rack.messages.messages[0].icon, People::Icon::Stop);
        QVERIFY(!IsConnected);
        QCOMPARE(view->valueBox(8)->text(), QString("7.5"));
        QCOMPARE(lampColours(view), QString(32, 'N'));
        QVERIFY(!view->WaitForTimer->isActive());
        QVERIFY(!view->CycleActive);
    }
};

VX_TEST(AlarmViewTest)
#include "tst_alarm.moc"
