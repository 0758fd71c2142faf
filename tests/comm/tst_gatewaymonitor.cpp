#include "app/desk.h"
#include "comm/commrack.h"

#include "comm/gatewaymonitor.h"
#include "rack/monitor.h"
#include "rack/overview.h"
#include "ui/widgets.h"

#include <QGroupBox>
#include <QLabel>

using vxtest::CardDesk;
using vxtest::preamble;
using vxtest::readLines;
using vxtest::writeLines;

namespace {

// Every live item of the slot answers through `reply`, by channel.
void answerLive(CardDesk &d, std::function<QString(int ch)> reply) {
    d.sim.rack.slot(d.slot).live = [reply](const QString &group, const QString &item,
                                           qint64) -> std::optional<QString> {
        if (group != "00") return std::nullopt;
        return reply(item.toInt() - 9);
    };
}

} // namespace

class GatewayMonitorTest : public QObject {
    Q_OBJECT

private slots:
    // The entry's number comes from the display name; its kind and count from the slot; each
    // round reads the entry's channels only.
    void entryViewOpens_data() {
        vxtest::textTable({"model", "shows", "entryItem", "kind", "count"},
                          {{"entry 3", "HLINK103", "HLINK1(3)", "62", "AO Output Value", "4"},
                           {"entry 2", "HLINK102", "HLINK1(2)", "61", "DI Input Value", "16"},
                           {"entry 10", "HLINK10A", "HLINK1(10)", "69", "AI Input Value", "1"},
                           {"a short name", "HLINK1", "HLIN(1)", "60", "AI Input Value", "8"}});
    }
    void entryViewOpens() {
        QFETCH(QString, model);
        QFETCH(QString, shows);
        QFETCH(QString, entryItem);
        QFETCH(QString, kind);
        QFETCH(QString, count);
        CardDesk d(model, 5, "1.02");
        d.reopen();
        auto *view = qobject_cast<FrmHLINKdata *>(d.view);
        QVERIFY(view && view->isVisible());
        QCOMPARE(view->fraSetModel->title(), shows);
        QCOMPARE(view->txtCardType->text(), shows);
        QCOMPARE(view->txtVerNo->text(), QString("1.02"));
        QCOMPARE(view->cardType->text() + " " + view->txtTitle->text(), kind);
        QCOMPARE(view->ChNo->text(), count);
        const int n = count.toInt();
        QStringList items;
        for (int ch = 1; ch <= n; ++ch)
            items << QString::number(9 + ch);
        const QStringList opening = preamble(5) + readLines("00", {"40"}) + preamble(5, "17") +
                                    readLines("17", {entryItem}) + preamble(5) +
                                    readLines("00", items);
        QTRY_VERIFY(d.sent().size() >= opening.size() + 6);
        QCOMPARE(d.sent().mid(0, opening.size()), opening);
        // The next round reads the same channels again.
        QCOMPARE(d.sent().mid(opening.size(), 6), preamble(5));
        QVERIFY(!d.sent().contains("I" + QString::number(10 + n)));
        const QPalette &palette = QApplication::palette();
        for (int ch = 1; ch <= 16; ++ch)
            QCOMPARE(BackColor(view->txtData[ch]),
                     palette.color(ch <= n ? QPalette::Base : QPalette::Button));
        QTRY_VERIFY(!view->txtData[n]->text().isEmpty());
        QCOMPARE(view->txtData[n + 1 <= 16 ? n + 1 : n]->text().isEmpty(), n < 16);
    }

    void entryValues() {
        CardDesk d("HLINK101", 2, "1.02");
        auto *view = qobject_cast<FrmHLINKdata *>(d.view);
        answerLive(d, [](int ch) {
            return ch == 2   ? QString("CNG")
                   : ch == 3 ? QString("DTMO")
                             : QString("D%1:-7.5").arg(ch);
        });
        QTRY_COMPARE(view->txtData[3]->text(), QString("TMO"));
        QCOMPARE(view->txtData[1]->text(), QString("-7.5"));
        QCOMPARE(view->txtData[2]->text(), QString("CNG"));
        QVERIFY(d.messages.messages.isEmpty());
    }

    // Input and output of a slot in one reply: the dot goes, the comma parts them; a refusal
    // stands in both.
    void slotValues_data() {
        vxtest::textTable({"reply", "in", "out"}, {{"pair", "D4:12.34,56", "1234", "56"},
                                                   {"second dot kept", "D4:1.5,2.5", "15", "2.5"},
                                                   {"no comma", "D4:7", "7", ""},
                                                   {"refused", "CNG", "CNG", "CNG"},
                                                   {"timed out", "DTMO", "TMO", "TMO"}});
    }
    void slotValues() {
        QFETCH(QString, reply);
        QFETCH(QString, in);
        QFETCH(QString, out);
        CardDesk d("HX1603", 4);
        auto *view = qobject_cast<FrmHx *>(d.view);
        QVERIFY(view);
        answerLive(d, [reply](int ch) { return ch == 16 ? reply : QString("D%1:0,0").arg(ch); });
        QTRY_COMPARE(view->txtParInData[16]->text(), in);
        QCOMPARE(view->txtParOutData[16]->text(), out);
        QCOMPARE(view->txtParInData[15]->text(), QString("0"));
        QVERIFY(d.messages.messages.isEmpty());
    }

    // The rows are numbered from the slot's place in the gateway: the last digit 1 to 8.
    void slotLabels_data() {
        vxtest::textTable({"model", "first", "last"}, {{"third place", "HX1603", "+32", "+47"},
                                                       {"eighth place", "HX1608", "+112", "+127"},
                                                       {"digit 9", "HX1609", "+0", "+15"},
                                                       {"digit 0", "HX1600", "+0", "+15"},
                                                       {"a letter", "HX160B", "+0", "+15"}});
    }
    void slotLabels() {
        QFETCH(QString, model);
        QFETCH(QString, first);
        QFETCH(QString, last);
        CardDesk d(model, 7);
        auto *view = qobject_cast<FrmHx *>(d.view);
        QVERIFY(view && view->isVisible());
        QCOMPARE(view->hexIdx[0]->text(), first);
        QCOMPARE(view->hexIdx[15]->text(), last);
        QTRY_VERIFY(d.sent().contains("I25"));
    }

    // On the overview an "HLINK1" entry keeps its value as it comes; other gateway slots lose
    // the dot and show only the input.
    void overviewRows() {
        vxtest::SimSession s;
        vxtest::MessageRecorder m;
        for (int slot = 1; slot <= kSlots; ++slot)
            CardTable(slot).CardName = "NONE";
        const char *models[] = {"HLINK101", "HLINK201", "HX1603"};
        for (int slot = 1; slot <= 3; ++slot) {
            CardTable(slot).CardName = models[slot - 1];
            vxtest::putCard(s.rack, slot, models[slot - 1]).live =
                [](const QString &, const QString &item, qint64) -> std::optional<QString> {
                return "D" + item + ":-7.5,3";
            };
        }
        QVERIFY(ReadOverview());
        QCOMPARE(Overview()->lblInputDataCh(1, 8)->text(), QString("-7.5,3"));
        QCOMPARE(Overview()->lblInputDataCh(2, 8)->text(), QString("-75"));
        QCOMPARE(Overview()->lblInputDataCh(3, 1)->text(), QString("-75"));
        QVERIFY(m.messages.isEmpty());
    }

    // A view that is left stops at its next tick and does not arm its timer again.
    void leftViewStops() {
        CardDesk d("HX1601", 1);
        QTRY_VERIFY(d.sent().contains("I25"));
        d.window->cboCardNo->setCurrentIndex(0);
        d.window->cboCardNo_Click();
        QTRY_VERIFY(!d.view->CycleActive);
        QVERIFY(!d.view->WaitForTimer->isActive());
    }

    // A slot that falls silent is told once, and the session ends.
    void silentSlotEndsTheSession() {
        CardDesk d("HLINK104", 2);
        d.sim.rack.addFault({SimFault::NoReply, "I12", -1, 0});
        QTRY_VERIFY(!IsConnected);
        QCOMPARE(d.messages.messages.size(), 1);
        QCOMPARE(d.messages.messages[0].text, QString("Uploading incomplete"));
        QCOMPARE(d.messages.messages[0].title, QString("Uploading"));
    }
};

VX_TEST(GatewayMonitorTest)
#include "tst_gatewaymonitor.moc"
