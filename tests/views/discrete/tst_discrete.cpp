#include "app/desk.h"

#include "link/exchange.h"
#include "rack/monitor.h"
#include "rack/overview.h"
#include "ui/widgets.h"
#include "views/discrete/discrete.h"
#include "views/discrete/frmqv32.h"

#include <QLabel>
#include <memory>

using vxtest::CardDesk;
using vxtest::preamble;
using vxtest::readLines;
using vxtest::writeLines;

namespace {

const QColor kOn(255, 0, 0), kOff(0, 128, 0);

void verifyIncomplete(const CardDesk &rack) {
    QCOMPARE(rack.messages.messages.size(), 1);
    QCOMPARE(rack.messages.messages[0].text, QString("Uploading incomplete"));
    QCOMPARE(rack.messages.messages[0].title, QString("Uploading"));
    QCOMPARE(rack.messages.messages[0].icon, People::Icon::Stop);
    QVERIFY(!IsConnected);
}

} // namespace

class DiscreteViewTest : public QObject {
    Q_OBJECT
private slots:
    void statesDecodePerLayout_data() {
        QTest::addColumn<QString>("model");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QStringList>("fields");
        QTest::addColumn<QStringList>("states");
        const QStringList one{"txtChData"};
        const QStringList two{"txtDICh", "txtDOCh"};
        const QStringList three{"txtDICh", "txtDOCh", "txtDOStatusCh"};
        const struct {
            const char *model, *value;
            QStringList fields, states;
        } rows[] = {
            {"QT8", "1", one, {"ON"}},
            {"QU16", "11", one, {"OFF"}},
            {"QT32", "0", one, {"OFF"}},
            {"XB16", "10", two, {"ON", "OFF"}},
            {"XC8", "10", two, {"OFF", "ON"}},
            {"QTC16", "1,0,1", three, {"ON", "OFF", "ON"}},
            {"QTC16", "1,1", three, {"", "", ""}},
            {"QTC16", "1,1,1,1", three, {"", "", ""}},
        };
        for (const auto &r : rows)
            QTest::addRow("%s %s", r.model, r.value)
                << QString(r.model) << QString(r.value) << r.fields << r.states;
    }
    void statesDecodePerLayout() {
        QFETCH(QString, model);
        QFETCH(QString, value);
        QFETCH(QStringList, fields);
        QFETCH(QStringList, states);
        CardDesk rack(model, 6);
        QVERIFY(rack.view);
        rack.answerAll(value);
        // Two whole passes after the change, so every field has been through the new value.
        const int channels = FindDiscreteSpec(rack.view->objectName())->channels;
        const QString last = "I" + QString::number(channels + 9);
        rack.sim.rack.clearTranscript();
        QTRY_VERIFY(rack.sent().count(last) >= 2);
        for (int ch : {1, channels})
            for (qsizetype f = 0; f < fields.size(); ++f) {
                QLineEdit *box = rack.box(fields.at(f), ch);
                QCOMPARE(box->text(), states.at(f));
                if (!states.at(f).isEmpty())
                    QCOMPARE(ForeColor(box), states.at(f) == "ON" ? kOn : kOff);
            }
        QVERIFY(rack.messages.messages.isEmpty());
    }

    void cycleOnTheWire() {
        {
            CardDesk rack("QT8", 2);
            QTRY_VERIFY(rack.sent().contains("I17"));
            rack.sim.rack.clearTranscript();
            QTRY_VERIFY(rack.sent().contains("I17"));
            const QStringList expected =
                preamble(2) + writeLines("00", "01", "0") +
                readLines("00", {"10", "11", "12", "13", "14", "15", "16", "17"});
            QCOMPARE(rack.sent().mid(0, expected.size()), expected);
        }
        // The large cards read their channels in group 01.
        CardDesk big("QU32", 3);
        QTRY_VERIFY(big.sent().contains("I41"));
        const QString wire = big.sent().join(' ');
        QVERIFY(wire.contains("G01 I10 G01 I11"));
        QVERIFY(!wire.contains("G00 I10"));
    }

    void selectorClickEndsTheSixtyFourChannelLoop() {
        CardDesk rack("QT64", 4);
        QTRY_VERIFY(rack.sent().contains("I73"));
        // The user clicks on the card selector while channel 21 is being read.
        SimCard &card = rack.sim.rack.slot(4);
        auto plain = card.live;
        auto clicked = std::make_shared<bool>(false);
        QComboBox *selector = rack.window->cboCardNo;
        card.live = [selector, plain, clicked](const QString &g, const QString &item, qint64 ms) {
            if (g == "01" && item == "30" && !*clicked && (*clicked = true))
                QTimer::singleShot(0, selector,
                                   [selector] { selector->setFocus(Qt::MouseFocusReason); });
            return plain(g, item, ms);
        };
        rack.sim.rack.clearTranscript();
        QTRY_VERIFY(CardSelFocus);
        // The pass ends at the next channel: at most one more read, never the rest.
        QTRY_VERIFY(rack.view->WaitForTimer->isActive());
        const QStringList sent = rack.sent();
        QVERIFY(sent.contains("I30"));
        QVERIFY(!sent.contains("I32"));
        QVERIFY(!sent.contains("I73"));
        QVERIFY(rack.messages.messages.isEmpty());
        // While the selector keeps the focus a tick does nothing.
        rack.sim.rack.clearTranscript();
        rack.view->WaitForTimer_Timer();
        QVERIFY(rack.sent().isEmpty());
        // Focus elsewhere: the cycle starts again from channel 1.
        rack.window->cmdOverView->setFocus(Qt::MouseFocusReason);
        QVERIFY(!CardSelFocus);
        QTRY_VERIFY(rack.sent().contains("I73"));
        QCOMPARE(rack.sent().at(rack.sent().indexOf("G01") + 1), QString("I10"));
    }
};

// The in/out cards draw and read their own overview rows.
class DiscreteOverviewTest : public QObject {
    Q_OBJECT

    static QColor lamp(int slot, int ch) { return BackColor(Overview()->lblDIDataCh(slot, ch)); }
    // The lamps from `first` on show the bits of a hexadecimal byte, lowest bit first.
    static void verifyByte(int slot, int first, const QString &byte) {
        for (int bit = 0; bit < 8; ++bit)
            QCOMPARE(lamp(slot, first + bit), (byte.toInt(nullptr, 16) >> bit) & 1 ? kOn : kOff);
    }

    // The monitor runs with the overview on show, and the view's cycle stopped.
    static void leaveForTheOverview(CardDesk &rack) {
        rack.window->cboCardNo->setCurrentIndex(0);
        rack.window->cboCardNo_Click();
        QTRY_VERIFY(!rack.view->CycleActive);
        rack.sim.rack.clearTranscript();
    }

private slots:
    void lampsFromHexadecimalBytes() {
        CardDesk rack("XC8", 3);
        ShowChData("XC8", 3);
        ShowChData("QTC16", 4);
        for (int ch = 1; ch <= 32; ++ch) {
            QCOMPARE(!Overview()->lblDIDataCh(3, ch)->isHidden(),
                     ch <= 8 || (ch >= 17 && ch <= 24));
            QCOMPARE(!Overview()->lblDIDataCh(4, ch)->isHidden(), ch <= 8 || ch >= 17);
        }
        leaveForTheOverview(rack);
        SimCard &qtc = rack.sim.rack.slot(4);
        qtc.model = "QTC16";
        InstallProfile(qtc);
        rack.sim.rack.refreshDirectory();
        CardTable(4).CardName = "QTC16";
        rack.sim.rack.slot(3).live = [](const QString &g, const QString &i, qint64) {
            return g == "00" && i == "26" ? std::optional<QString>("D26:A5C3") : std::nullopt;
        };
        qtc.live = [](const QString &g, const QString &i, qint64) {
            return g == "00" && i == "18" ? std::optional<QString>("D18:1F,80,0A") : std::nullopt;
        };
        QVERIFY(ReadOverview());
        verifyByte(3, 1, "A5");
        verifyByte(3, 17, "C3");
        verifyByte(4, 1, "1F");
        verifyByte(4, 17, "80");
        verifyByte(4, 25, "0A");
        QCOMPARE(rack.sent().count("I26"), 1);
        QCOMPARE(rack.sent().count("I18"), 1);
        QVERIFY(rack.messages.messages.isEmpty());
    }

    void malformedOrLostOverviewReads() {
        CardDesk rack("QTC16", 4);
        leaveForTheOverview(rack);
        auto *io = dynamic_cast<OverviewRowIO *>(rack.view);
        QVERIFY(io);
        WriteData(3, "00", "41", "4");
        rack.answerAll("FF,FF,FF");
        QVERIFY(io->setOverViewDataIO(4));
        QCOMPARE(lamp(4, 32), kOn);
        // Two parts: the row goes neutral and stays so, and the pass goes on.
        rack.answerAll("FF,FF");
        QVERIFY(io->setOverViewDataIO(4));
        for (int ch : {1, 8, 17, 32})
            QCOMPARE(lamp(4, ch), NeutralLampColour());
        // No reply: the overview is told, and its pass ends the session as for a discrete word.
        rack.sim.rack.addFault({SimFault::NoReply, "I18", -1, 0});
        QVERIFY(!io->setOverViewDataIO(4));
        QVERIFY(!ReadOverview());
        verifyIncomplete(rack);
    }
};

class BcdViewTest : public QObject {
    Q_OBJECT
private slots:
    void uploadAndDownloadOnTheWire() {
        CardDesk rack("QV32", 9);
        rack.sim.rack.slot(9).setItem("01", "16", "D16:1");
        rack.runWorker(rack.view->cmdUp);
        QStringList expected = preamble(9, "01") + readLines("01", {"15", "16", "17"});
        QCOMPARE(rack.sent().mid(0, expected.size()), expected);
        for (int n = 1; n <= 3; ++n) {
            QCOMPARE(rack.box("txtDataPara", n)->text(), QString("1"));
            QCOMPARE(CardTable(9).Param(n), QString("1"));
        }
        QCOMPARE(CardTable(9).VerNo, QString("1.07"));

        rack.box("txtDataPara", 1)->setText("0");
        rack.box("txtDataPara", 2)->clear(); // nothing sent; refilled from the record
        rack.box("txtDataPara", 3)->setText("0");
        rack.runWorker(rack.view->cmdDown);
        expected = preamble(9, "01") + writeLines("01", "15", "0") + writeLines("01", "17", "0");
        QCOMPARE(rack.sent().mid(0, expected.size()), expected);
        QVERIFY(!rack.sent().contains("I16"));
        QCOMPARE(rack.box("txtDataPara", 2)->text(), QString("1"));
        QCOMPARE(CardTable(9).Param(1), QString("0"));
        QCOMPARE(CardTable(9).Param(3), QString("0"));
        QCOMPARE(rack.sim.rack.slot(9).groups["01"]["15"], QString("D0"));
    }

    void liveWordsAndTheirLoss() {
        CardDesk rack("QW32", 9);
        auto *view = qobject_cast<FrmQV32 *>(rack.view);
        QVERIFY(view);
        rack.answerAll("12.50");
        QTRY_COMPARE(view->txtParData02->text(), QString("1250"));
        QCOMPARE(view->txtParData01->text(), QString("1250"));
        rack.sim.rack.clearTranscript();
        QTRY_VERIFY(rack.sent().contains("I11"));
        QCOMPARE(rack.sent().mid(0, 10), preamble(9) + readLines("00", {"10", "11"}));
        // The second word lost: the session ends, the first word was read alone.
        rack.sim.rack.addFault({SimFault::NoReply, "I11", -1, 0});
        QTRY_COMPARE(rack.messages.messages.size(), 1);
        verifyIncomplete(rack);
        QCOMPARE(view->txtParData01->text(), QString("1250"));
    }
};

VX_TEST(DiscreteViewTest)
VX_TEST(DiscreteOverviewTest)
VX_TEST(BcdViewTest)
#include "tst_discrete.moc"
