// What the rack can do wrong, in the middle of each long operation: it falls silent, sends
// garbage, answers after the step gave up, forgets the CR, or the line is pulled. Each operation
// must end within the step limits it ran into, show the message its failure path gives, keep what
// it should keep, and leave a program that can connect again.
#include "app/desk.h"

#include "app/session.h"
#include "app/trafficlog.h"
#include "demorack.h"
#include "link/exchange.h"
#include "views/common/cardview.h"

#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QTimer>

using vxtest::Desk;
using vxtest::pickCard;
using vxtest::press;

namespace {

enum class Fault { Silence, Garbage, NoCR, Cut, Stale };

// The rule that makes the rack misbehave from the command it is armed at on.
SimFaultRule ruleFor(Fault fault) {
    switch (fault) {
    case Fault::Silence:
        return {SimFault::NoReply, QString(), -1};
    case Fault::Garbage:
        return {SimFault::Garbage, QString(), -1};
    case Fault::NoCR:
        return {SimFault::NoCR, QString(), -1};
    case Fault::Cut:
        return {SimFault::CutLine, QString(), 1};
    case Fault::Stale:
        break;
    }
    return {SimFault::NoReply, QString(), 0};
}

void addFaultRows() {
    QTest::addColumn<Fault>("fault");
    QTest::newRow("silence") << Fault::Silence;
    QTest::newRow("garbage") << Fault::Garbage;
    QTest::newRow("no CR") << Fault::NoCR;
    QTest::newRow("line cut") << Fault::Cut;
    QTest::newRow("late reply waiting") << Fault::Stale;
}

// The demo rack in its slots, as a scan finds it.
const QStringList kDemoNames = {"QP8A",  "QT8", "XDU42B01", "QA4",  "QZ8",  "XE4",
                                "QTC16", "QF8", "QL4",      "QS4",  "QJS8", "XD4-AC10",
                                "QY2",   "QZ2", "XHK2",     "XG4"};

// Watches the line while an operation runs: the commands sent, the steps that timed out, and
// the moment the fault goes live.
class LineWatch {
public:
    LineWatch(SimRack &rack, std::function<bool(const QStringList &sent)> armAt, Fault fault)
        : m_rack(rack), m_armAt(std::move(armAt)), m_fault(fault) {
        m_id = Link::addTrafficObserver([this](Link::Traffic kind, const QString &text) {
            if (kind == Link::Traffic::NoReply) ++silentSteps;
            if (kind != Link::Traffic::Sent) return;
            QString line = text;
            line.chop(1);
            sent << line;
            if (!armed && m_fault != Fault::Stale && m_armAt(sent)) {
                armed = true;
                m_rack.addFault(ruleFor(m_fault));
            }
        });
        clock.start();
    }
    ~LineWatch() { Link::removeTrafficObserver(m_id); }
    LineWatch(const LineWatch &) = delete;
    LineWatch &operator=(const LineWatch &) = delete;

    // The operation took no longer than its timed-out steps allow, with room for a slow machine.
    bool endedInTime() const {
        return clock.elapsed() <= (silentSteps + 1) * qint64(Clock::ms(3000)) + 2000;
    }

    QStringList sent;
    int silentSteps = 0;
    bool armed = false;
    QElapsedTimer clock;

private:
    SimRack &m_rack;
    std::function<bool(const QStringList &)> m_armAt;
    Fault m_fault;
    int m_id;
};

// Arms when the `n`th command equal to `line` is about to go out.
std::function<bool(const QStringList &)> atNth(const QString &line, int n = 1) {
    return
        [line, n](const QStringList &sent) { return sent.count(line) == n && sent.last() == line; };
}

// What the traffic log shows after the first item 14 sent since row `first`: its mark and its
// line, or nothing when no such command went out.
QString loggedAfterI14(TrafficLogModel *log, int first) {
    log->flush();
    for (int n = first; n + 1 < log->rowCount(); ++n)
        if (log->row(n).raw == "I14\r")
            return QString(TrafficText::mark(log->row(n + 1))) + ' ' +
                   TrafficText::lineText(log->row(n + 1));
    return QString();
}

// The demo rack, connected and scanned, every message so far forgotten; the traffic log is open
// and watches whatever comes.
struct ScannedRack : Desk {
    ScannedRack() {
        LoadDemoRack(sim.rack);
        if (!connect(1) || !vxtest::choose(window->mnuToolsTrafficLog) || !press(window->CmdUpload))
            QTest::qFail("no scan", __FILE__, __LINE__);
        messages.messages.clear();
        sim.rack.clearTranscript();
    }

    // A reply that comes after its step gave up, now waiting in the receive buffer.
    bool leaveLateReply() {
        sim.rack.addFault({SimFault::Late, QString(), 1, 2000});
        if (!ReadDataOnce("00", "40").isEmpty()) return false;
        return QTest::qWaitFor([this] { return sim.line->bytesAvailable() > 0; }, 10000);
    }

    bool incompleteShown(int times = 1) const {
        int shown = 0;
        for (const People::Message &m : messages.messages)
            if (m.text == "Uploading incomplete" && m.title == "Uploading" &&
                m.icon == People::Icon::Stop)
                ++shown;
        return shown == times && messages.messages.size() == times;
    }

    bool disconnected() const {
        return !IsConnected && window->lblConStatus->text() == kDisconnectedText &&
               !window->CmdUpload->isEnabled() && !window->cmdStart->isEnabled();
    }

    // Nothing is stuck: the user disconnects if need be, connects again, and the rack answers.
    bool reconnects() {
        sim.rack.clearFaults();
        if (IsConnected && !vxtest::choose(window->mnuConnectDisconnect)) return false;
        return connect(1) && IsConnected && window->lblConStatus->text() == kConnectedText &&
               !ReadData(3, "00", "40").isEmpty();
    }
};

CardView *openQF8(ScannedRack &rack) {
    if (!pickCard(*rack.window, 8)) return nullptr;
    auto *view = qobject_cast<CardView *>(LoadedView(QStringLiteral("frmQF8")));
    // The cycle runs before anything else is asked of the view.
    if (view && !QTest::qWaitFor([&] { return rack.sim.rack.commands().count("I10") >= 2; }, 10000))
        return nullptr;
    return view;
}

// Asks the view for an Upload or a Download (`pending`) with the fault armed at the first
// `armLine`, and waits for it to be done. The tick rests while the late reply is made and the
// request set, as it does while the selector has the focus. Null when the request did not end
// within its step limits.
std::unique_ptr<LineWatch> runRequest(ScannedRack &rack, CardView *view, Fault fault,
                                      bool CardView::*pending, const QString &armLine) {
    CardSelFocus = true;
    if (fault == Fault::Stale && !rack.leaveLateReply()) return nullptr;
    rack.sim.rack.clearTranscript();
    auto watch = std::make_unique<LineWatch>(rack.sim.rack, atNth(armLine), fault);
    (pending == &CardView::UploadPending ? view->cmdUp : view->cmdDown)->click();
    CardSelFocus = false;
    if (!QTest::qWaitFor([&] { return !(view->*pending); }, 5000) || !watch->endedInTime())
        return nullptr;
    return watch;
}

// After a request cut short the view's next cyclic read finds the rack gone, says so and ends
// the session; a pulled line has ended it already, and then nothing more is said.
bool cycleEndsTheSession(ScannedRack &rack, Fault fault) {
    if (!QTest::qWaitFor([] { return !IsConnected; }, 5000) || !rack.disconnected()) return false;
    const bool said =
        fault == Fault::Cut ? rack.messages.messages.isEmpty() : rack.incompleteShown();
    return said && rack.reconnects();
}

} // namespace

class FaultTest : public QObject {
    Q_OBJECT

private slots:
    // A scan stopped at slot 5: the four slots read keep their names, the rest what they had.
    void scan_data() { addFaultRows(); }
    void scan() {
        QFETCH(Fault, fault);
        ScannedRack rack;
        for (int slot = 1; slot <= kSlots; ++slot)
            CardTable(slot).CardName = "OLD";
        if (fault == Fault::Stale) QVERIFY(rack.leaveLateReply());
        rack.sim.rack.clearTranscript();
        TrafficLogModel *log = rack.window->trafficLog();
        log->flush();
        const int logged = log->rowCount();

        LineWatch watch(rack.sim.rack, atNth("I14"), fault);
        QVERIFY(press(rack.window->CmdUpload));
        QVERIFY(watch.endedInTime());
        QCoreApplication::processEvents();
        // The log shows what came instead of slot 5's name.
        const QMap<Fault, QString> shown = {{Fault::Silence, "! (no reply)"},
                                            {Fault::Garbage, "? \\x01\\xFE#?\\x7F\\r"},
                                            {Fault::NoCR, "? D5:QZ8"},
                                            {Fault::Cut, "! (line lost)"},
                                            {Fault::Stale, ""}};
        QCOMPARE(loggedAfterI14(log, logged), shown.value(fault));

        QVERIFY(rack.incompleteShown());
        const int read = fault == Fault::Stale ? 0 : 4;
        for (int slot = 1; slot <= kSlots; ++slot)
            QCOMPARE(CardTable(slot).CardName, slot <= read ? kDemoNames.at(slot - 1) : "OLD");
        if (fault == Fault::Stale) {
            // The waiting bytes keep every read and write off the wire.
            QVERIFY(rack.sim.rack.commands().isEmpty());
        }
        if (fault == Fault::Cut) QVERIFY(rack.disconnected());
        QVERIFY(rack.reconnects());
    }

    // A monitor pass that loses the rack at a card's first write ends quietly; one that loses it
    // at a discrete read says so and ends the session. Either way "Stop" is left to the user.
    void monitor_data() { addFaultRows(); }
    void monitor() {
        QFETCH(Fault, fault);
        for (const bool atDiscreteRead : {false, true}) {
            ScannedRack rack;
            if (fault == Fault::Stale) QVERIFY(rack.leaveLateReply());
            rack.sim.rack.clearTranscript();
            // Slot 3's first write, or slot 2's (QT8) discrete word.
            LineWatch watch(rack.sim.rack, atDiscreteRead ? atNth("I27") : atNth("DF", 3), fault);
            QVERIFY(press(rack.window->cmdStart));
            QVERIFY(watch.endedInTime());
            QCoreApplication::processEvents();

            QVERIFY(IsMonitoring);
            QVERIFY(rack.window->cmdStop->isEnabled());
            const bool loud = atDiscreteRead && fault != Fault::Stale;
            QVERIFY(loud ? rack.incompleteShown() : rack.messages.messages.isEmpty());
            if (loud || fault == Fault::Cut) QVERIFY(rack.disconnected());
            if (fault == Fault::Stale) QVERIFY(rack.sim.rack.commands().isEmpty());
            const bool ended = loud || fault == Fault::Cut;
            QCOMPARE(rack.commands(), QString(ended ? "----x-----x-" : "----x------x"));
            QVERIFY(press(rack.window->cmdStop));
            QVERIFY(!IsMonitoring);
            // "Stop" turns the commands on as ever; only the session's own items tell it ended.
            QCOMPARE(rack.commands(), QString(ended ? "xxxx-xx-xxx-" : "xxxx-xx-xx-x"));
            QVERIFY(rack.reconnects());
        }
    }

    // An Upload cut short says nothing; the cyclic read after it finds the rack gone.
    void upload_data() { addFaultRows(); }
    void upload() {
        QFETCH(Fault, fault);
        ScannedRack rack;
        CardView *view = openQF8(rack);
        QVERIFY(view);
        rack.sim.rack.slot(8).setItem("01", "42", "D1234");
        // Channel 4's zero scale: channels 1 to 3 are read before the fault.
        const auto watch = runRequest(rack, view, fault, &CardView::UploadPending, "I48");
        QVERIFY(watch);

        if (fault == Fault::Stale) {
            QVERIFY(!watch->sent.contains("I42"));
            QVERIFY(view->field("txtZScale", 1)->text().isEmpty());
        } else {
            QCOMPARE(view->field("txtZScale", 1)->text(), QString("1234"));
            QCOMPARE(CardTable(8).Param(1), QString("1234"));
            QVERIFY(view->field("txtZScale", 8)->text().isEmpty());
        }
        QVERIFY(cycleEndsTheSession(rack, fault));
    }

    // A Download cut short writes what it reached and leaves the rest of the card as it was.
    void download_data() { addFaultRows(); }
    void download() {
        QFETCH(Fault, fault);
        ScannedRack rack;
        CardView *view = openQF8(rack);
        QVERIFY(view);
        for (int ch = 1; ch <= 8; ++ch)
            view->field("txtZScale", ch)->setText("777");
        // Channel 3's zero scale: channels 1 and 2 are written before the fault.
        QVERIFY(runRequest(rack, view, fault, &CardView::DownloadPending, "I46"));

        const SimCard &card = rack.sim.rack.slot(8);
        QCOMPARE(card.groups["01"]["42"], fault == Fault::Stale ? QString("D0") : QString("D777"));
        QCOMPARE(card.groups["01"]["56"], QString("D0"));
        // The fields keep what the user typed.
        QCOMPARE(view->field("txtZScale", 8)->text(), QString("777"));
        QVERIFY(cycleEndsTheSession(rack, fault));
    }

    // An adapter pulled while nothing runs, or between two polls of a view: the lamp goes out at
    // once, and the view does not then report a failure for a session that has already ended.
    void pulledWhileIdle() {
        for (const bool inView : {false, true}) {
            ScannedRack rack;
            CardView *view = inView ? openQF8(rack) : nullptr;
            QVERIFY(!inView || view);
            rack.sim.line->cut();
            QVERIFY(QTest::qWaitFor([] { return !IsConnected; }, 10000));
            QVERIFY(rack.disconnected());
            QTest::qWait(50);
            QVERIFY(rack.messages.messages.isEmpty());
            QVERIFY(rack.reconnects());
        }
    }

    // A line that never stops chattering without a CR: each chunk wakes the step, none ends it,
    // and the step limit still does.
    void endlessChatterEndsAtTheStepLimit() {
        vxtest::SimSession session(10); // a 300 ms limit
        session.rack.addFault({SimFault::NoReply, QString(), -1});
        QTimer chatter;
        QObject::connect(&chatter, &QTimer::timeout, [&] { session.line->inject("x"); });
        chatter.start(1);
        QElapsedTimer clock;
        clock.start();
        QCOMPARE(SendLine("G00\r"), QString());
        QVERIFY2(clock.elapsed() >= 290 && clock.elapsed() < 1500,
                 qPrintable(QString::number(clock.elapsed())));
    }

    // On a slow rack (every reply two ticks late) a tick that falls while the opening's
    // exchanges wait keeps off the line instead of talking over them.
    void slowRackIsNotTalkedOver() {
        ScannedRack rack;
        rack.sim.rack.addFault({SimFault::Delay, QString(), -1, 1000});
        QVERIFY(openQF8(rack));
        QVERIFY(IsConnected);
        QVERIFY(rack.messages.messages.isEmpty());
    }

    void cleanup() { CardSelFocus = false; }
};

VX_TEST(FaultTest)
#include "tst_faults.moc"
