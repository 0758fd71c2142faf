#include "app/desk.h"

#include "cardprofiles.h"
#include "rack/monitor.h"
#include "rack/overview.h"
#include "ui/viewregistry.h"
#include "ui/widgets.h"

#include <QLabel>
#include <QTest>
#include <memory>

using vxtest::Desk;
using vxtest::MessageRecorder;
using vxtest::press;
using vxtest::SimSession;

namespace {

// A card the monitor can address, named in the card table as a scan leaves it.
SimCard &putCard(SimRack &rack, int slot, const QString &model) {
    CardTable(slot).CardName = model;
    return vxtest::putCard(rack, slot, model);
}

// Every slot of the card table empty, as a scan of an empty rack leaves it.
void emptyTable() {
    for (int slot = 1; slot <= kSlots; ++slot)
        CardTable(slot).CardName = "NONE";
}

QStringList preamble(int slot) {
    return vxtest::preamble(slot, "01");
}

// The lamps first..last of a row as "1" red, "0" green, "." neutral, "?" anything else.
QString lamps(int slot, int first, int last) {
    QString text;
    for (int ch = first; ch <= last; ++ch) {
        const QColor c = BackColor(Overview()->lblDIDataCh(slot, ch));
        text += c == kLampBitOn            ? '1'
                : c == kLampBitOff         ? '0'
                : c == NeutralLampColour() ? '.'
                                           : '?';
    }
    return text;
}

QStringList values(int slot, int count = 8) {
    QStringList texts;
    for (int ch = 1; ch <= count; ++ch)
        texts << Overview()->lblInputDataCh(slot, ch)->text();
    return texts;
}

// Which controls of a row are on: lamps as a count, value fields and wide fields as counts.
struct Layout {
    int lamps = 0, values = 0, wide = 0;
    bool operator==(const Layout &) const = default;
};
Layout layoutOf(int slot) {
    Layout l;
    for (int ch = 1; ch <= FrmOverview::kLamps; ++ch)
        l.lamps += Overview()->lblDIDataCh(slot, ch)->isHidden() ? 0 : 1;
    for (int ch = 1; ch <= FrmOverview::kValues; ++ch)
        l.values += Overview()->lblInputDataCh(slot, ch)->isHidden() ? 0 : 1;
    for (int ch = 1; ch <= FrmOverview::kWideValues; ++ch)
        l.wide += Overview()->lblInputDataLCh(slot, ch)->isHidden() ? 0 : 1;
    return l;
}

} // namespace

// One pass of the monitor, against the simulated rack, without the main window.
class MonitorPassTest : public QObject {
    Q_OBJECT

private slots:
    void init() {
        ClearViewRegistry();
        IsMonitoring = false;
    }
    void cleanup() { ClearViewRegistry(); }

    void discreteRowsReadTheirWordsOntoTheLamps() {
        SimSession s;
        MessageRecorder m;
        emptyTable();
        putCard(s.rack, 1, "QT8").setItem("00", "27", "D1:00A5");
        SimCard &wide = putCard(s.rack, 2, "QT32");
        wide.setItem("01", "06", "D1:8001");
        wide.setItem("01", "07", "D2:0003");
        SimCard &xb = putCard(s.rack, 3, "XB16");
        xb.setItem("00", "27", "D:FFFF");
        xb.setItem("00", "26", "D:0001F000");
        putCard(s.rack, 4, "QA4").setItem("00", "10", "D0:0004");
        SimCard &alarm8 = putCard(s.rack, 5, "QC8");
        alarm8.setItem("00", "10", "D0:FFFF");
        alarm8.setItem("00", "11", "CNG");
        // A lamp lit by an earlier pass goes neutral while its word is read.
        SetSlotLamp(1, 1, "0");
        QString lampDuringRead;
        const int watch = Link::addTrafficObserver([&](Link::Traffic kind, const QString &text) {
            if (kind == Link::Traffic::Sent && text == "I27\r" && lampDuringRead.isEmpty())
                lampDuringRead = lamps(1, 1, 8);
        });

        QVERIFY(ReadOverview());
        Link::removeTrafficObserver(watch);

        QCOMPARE(s.rack.commands(), preamble(1) + vxtest::readLines("00", {"27"}) + preamble(2) +
                                        vxtest::readLines("01", {"06", "07"}) + preamble(3) +
                                        vxtest::readLines("00", {"27", "26", "26"}) + preamble(4) +
                                        vxtest::readLines("00", {"10"}) + preamble(5) +
                                        vxtest::readLines("00", {"10", "11"}));
        QCOMPARE(lampDuringRead, QString("........"));
        // Channel 1 is the word's lowest bit.
        QCOMPARE(lamps(1, 1, 8), QString("10100101"));
        QCOMPARE(lamps(2, 1, 32), QString("1000000000000001"
                                          "1100000000000000"));
        // XB16: the second row's word is what lamps 1 to 16 are left with.
        QCOMPARE(lamps(3, 1, 16), QString("1000000000000000"));
        QCOMPARE(lamps(3, 17, 32), QString("0000000000001111"));
        QCOMPARE(lamps(4, 1, 16), QString("0010000000000000"));
        // A refusal decodes as the bits of its letters: "C" is 12, the rest nothing.
        QCOMPARE(lamps(5, 17, 32), QString("0000000000000011"));
        // Discrete cards have no value reads and keep their value fields empty.
        QCOMPARE(values(1), QStringList(8, QString()));
        QVERIFY(m.messages.isEmpty());
    }

    void valueRowsByFamily() {
        SimSession s;
        MessageRecorder m;
        emptyTable();
        SimCard &h = putCard(s.rack, 1, "HA12");
        h.setItem("00", "10", "D1:1.5,20");
        h.setItem("00", "11", "CNG");
        h.setItem("00", "12", "D3:7.25");
        SimCard &xhk = putCard(s.rack, 2, "XHK2");
        for (const char *item : {"11", "12", "14", "15"})
            xhk.setItem("00", item, QString("DT:%1.5").arg(item));
        SimCard &xdu = putCard(s.rack, 3, "XDU4AC01");
        for (int item = 10; item <= 17; ++item)
            xdu.setItem("01", QString::number(item), QString("D%1:1.%1").arg(item));
        SimCard &qf8 = putCard(s.rack, 4, "QF8");
        qf8.setItem("00", "17", "D8:99.9");
        putCard(s.rack, 5, "QZ4A");
        putCard(s.rack, 6, "QF4").setItem("00", "10", "D1:0.123");
        // A slot whose name a broken scan left empty still gets read as a plain card.
        putCard(s.rack, 7, "QF4");
        CardTable(7).CardName.clear();
        s.rack.addFault({SimFault::Timeout, "I11", 1, 0}); // HA12's second item, the first time

        QVERIFY(ReadOverview());

        const QStringList items8 = {"10", "11", "12", "13", "14", "15", "16", "17"};
        const QStringList items4 = {"10", "11", "12", "13"};
        // A DTMOUT costs a retry of the read, as any failed attempt.
        QCOMPARE(
            s.rack.commands(),
            preamble(1) +
                vxtest::readLines("00", {"10", "11", "11", "12", "13", "14", "15", "16", "17"}) +
                preamble(2) + vxtest::readLines("00", {"11", "12", "14", "15"}) + preamble(3) +
                vxtest::readLines("01", items8) + preamble(4) + vxtest::readLines("00", items8) +
                preamble(5) + vxtest::readLines("00", items8) + preamble(6) +
                vxtest::readLines("00", items4) + preamble(7) + vxtest::readLines("00", items4));
        // "H": the dot goes, then only the part in front of a comma shows; a refusal shows.
        QCOMPARE(values(1, 4), QStringList({"15", "CNG", "725", "NEEDLESS"}));
        // XHK2 keeps the dot.
        QCOMPARE(values(2, 4), QStringList({"11.5", "12.5", "14.5", "15.5"}));
        QCOMPARE(values(3), QStringList({"110", "111", "112", "113", "114", "115", "116", "117"}));
        QCOMPARE(values(4).last(), QString("999"));
        QCOMPARE(values(6, 1), QStringList({"0123"}));
        QVERIFY(m.messages.isEmpty());
    }

    void busyCardIsAskedAgainButNotForEver() {
        SimSession s;
        MessageRecorder m;
        emptyTable();
        auto asked = std::make_shared<QMap<QString, int>>();
        const auto busyFor = [asked](QMap<QString, int> busy) {
            return [asked, busy](const QString &group, const QString &item,
                                 qint64) -> std::optional<QString> {
                if (group != "00" || item.toInt() < 10 || item.toInt() > 13) return std::nullopt;
                const int n = ++(*asked)[item];
                if (n <= busy.value(item)) return QString("D1:TMOUT");
                return QString("D1:4.2");
            };
        };
        // Item 10 is busy twice, item 12 never stops being busy.
        putCard(s.rack, 1, "XE4").live = busyFor({{"10", 2}, {"12", 1000}});

        QVERIFY(ReadOverview());
        QCOMPARE(asked->value("10"), 3);
        QCOMPARE(asked->value("11"), 1);
        QCOMPARE(asked->value("12"), 1 + kTimeoutRepeats);
        QCOMPARE(values(1, 4), QStringList({"42", "42", "TMOUT", "42"}));

        // While monitoring, a stop ends the asking at once; the pass still goes to its end.
        asked->clear();
        IsMonitoring = true;
        s.rack.slot(1).live = [asked](const QString &group, const QString &item,
                                      qint64) -> std::optional<QString> {
            if (group != "00" || item.toInt() < 10 || item.toInt() > 13) return std::nullopt;
            ++(*asked)[item];
            IsMonitoring = false; // the user's "Stop" arrives during the read
            return QString("D1:TMOUT");
        };
        QVERIFY(ReadOverview());
        QCOMPARE(*asked, (QMap<QString, int>{{"10", 1}, {"11", 1}, {"12", 1}, {"13", 1}}));
    }
};
VX_TEST(MonitorPassTest)

// The overview's rows: names, the layout of lamps and fields, and the lamp colours.
class OverviewRowTest : public QObject {
    Q_OBJECT

private slots:
    void init() { ClearViewRegistry(); }
    void cleanup() { ClearViewRegistry(); }

    void layoutsByName() {
        ResetModuleData();
        const QList<QPair<QString, Layout>> cases = {
            {"QT8", {8, 0, 0}},      {"QU8", {8, 0, 0}},   {"QT16", {16, 0, 0}},
            {"QA4", {16, 0, 0}},     {"XB16", {32, 0, 0}}, {"XB8", {16, 0, 0}},
            {"QT64", {32, 0, 0}},    {"QE8", {32, 0, 0}},  {"QF4", {0, 8, 0}},
            {"XDU4AC01", {0, 8, 0}}, {"NONE", {0, 8, 0}},  {"QZ8", {0, 0, 0}},
        };
        for (const auto &[name, expected] : cases) {
            // Each from a row that showed something else before.
            ShowChData("QT64", 3);
            ShowChData(name, 3);
            QVERIFY2(layoutOf(3) == expected, qPrintable(name));
        }
        // The controls carry their array names.
        QVERIFY(Overview()->findChild<QLabel *>("lblDIDataCh17(3)"));
        QVERIFY(Overview()->findChild<QLabel *>("lblInputDataCh8(16)"));
        QVERIFY(Overview()->findChild<QLabel *>("lblInputDataLCh4(1)"));
    }
};
VX_TEST(OverviewRowTest)

// "Start" and "Stop" on the main window: the monitor runs inside the click.
class MonitorCommandTest : public QObject {
    Q_OBJECT

    // Connects and scans; the rack as set up by `rack`.
    static void scanned(Desk &d) {
        QVERIFY(d.connect(1));
        QVERIFY(press(d.window->CmdUpload));
        d.sim.rack.clearTranscript();
    }

    // Runs `act` once `passes` more passes have begun, from the event loop.
    static void afterPasses(quint64 passes, std::function<void()> act) {
        const quint64 until = MonitorPasses() + passes;
        auto *timer = new QTimer(qApp);
        auto turns = std::make_shared<int>(0);
        QObject::connect(timer, &QTimer::timeout, timer, [=] {
            // Bounded, so a test that goes wrong cannot leave it polling for ever.
            if (MonitorPasses() < until && ++*turns < 100000) return;
            timer->stop();
            timer->deleteLater();
            if (MonitorPasses() >= until) act();
        });
        timer->start(0);
    }

private slots:
    void startAndStop() {
        Desk d;
        d.sim.rack.slot(2).model = "QF4";
        InstallProfile(d.sim.rack.slot(2));
        d.sim.rack.refreshDirectory();
        scanned(d);
        QCOMPARE(d.commands(), QString("xxxx-xxxxx-x"));
        QString during;
        afterPasses(3, [&] {
            during = d.commands();
            QVERIFY(press(d.window->cmdStop));
        });
        const quint64 before = MonitorPasses();
        QVERIFY(press(d.window->cmdStart));
        // The click returned once "Stop" was seen between passes.
        QVERIFY(MonitorPasses() - before >= 3);
        QCOMPARE(during, QString("----x------x"));
        QCOMPARE(d.window->cboCardNo->currentIndex(), 0);
        QCOMPARE(CardNo, 0);
        QVERIFY(!IsMonitoring);
        // As on the overview after a scan, but the DIP switch check waits for the next scan.
        QCOMPARE(d.commands(), QString("xxxx-xx-xx-x"));
        QVERIFY(d.sim.rack.commands().count("I13") >= 3);
        QVERIFY(!Overview()->lblInputDataCh(2, 1)->text().isEmpty());
        QVERIFY(d.messages.messages.isEmpty());
    }

    void emptyRackIdles() {
        Desk d;
        scanned(d);
        const quint64 before = MonitorPasses();
        // The stop comes from a timer, as from a user some time later.
        QTimer::singleShot(Clock::ms(2000), d.window.get(), [&] { d.window->cmdStop->click(); });
        QVERIFY(press(d.window->cmdStart));
        const quint64 passes = MonitorPasses() - before;
        QVERIFY(!IsMonitoring);
        QVERIFY(d.sim.rack.commands().isEmpty());
        // A spinning loop would run thousands of empty passes in this time.
        QVERIFY2(passes < 50, qPrintable(QString::number(passes)));
    }
};
VX_TEST(MonitorCommandTest)

#include "tst_monitor.moc"
