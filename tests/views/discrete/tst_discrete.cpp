#include "support/testsupport.h"

#include "app/frmvxcfg.h"
#include "app/widgets.h"
#include "cardprofiles.h"
#include "link/exchange.h"
#include "rack/monitor.h"
#include "rack/overview.h"
#include "rack/registry.h"
#include "views/allviews.h"
#include "views/common/viewregistry.h"
#include "views/discrete/discrete.h"
#include "views/discrete/frmqv32.h"

#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <memory>

using vxtest::MessageRecorder;
using vxtest::SimSession;

namespace {

// A connected rack with one discrete card, its view opened from the card selector.
struct DiscreteRack {
    SimSession session;
    MessageRecorder messages;
    FrmVxCfg window;
    CardView *view = nullptr;
    int slot;

    DiscreteRack(const QString &model, int slot) : slot(slot) {
        RegisterAllViews();
        SimCard &card = session.rack.slot(slot);
        card.model = model;
        card.version = "1.07";
        InstallProfile(card);
        session.rack.refreshDirectory();
        window.show();
        (void)QTest::qWaitForWindowActive(&window);
        IsConnected = true;
        for (int n = 1; n <= kSlots; ++n)
            CardTable(n).CardName = "NONE";
        CardTable(slot).CardName = model;
        window.cboCardNo->setCurrentIndex(slot);
        window.cboCardNo_Click();
        view = qobject_cast<CardView *>(LoadedView(FormNameOfTag(SelFormName)));
        session.rack.clearTranscript();
    }
    ~DiscreteRack() { ClearViewRegistry(); }

    // Every live item of the card answers `value` (tagged, as the card gives it).
    void answerAll(const QString &value) {
        session.rack.slot(slot).live = [value](const QString &, const QString &item,
                                               qint64) -> std::optional<QString> {
            return QStringLiteral("D%1:%2").arg(item.toInt() - 9).arg(value);
        };
    }
    QLineEdit *box(const QString &control, int ch) { return view->field(control, ch); }
    QStringList sent() const { return session.rack.commands(); }
};

QStringList writeLines(const QString &group, const QString &item, const QString &data) {
    return {"G" + group, "I" + item, "D" + data};
}

// What a state field should show for "ON"/"OFF"/"" and its colour.
void verifyState(QLineEdit *box, const QString &expected) {
    QCOMPARE(box->text(), expected);
    if (expected == "ON") QCOMPARE(ForeColor(box), QColor(255, 0, 0));
    if (expected == "OFF") QCOMPARE(ForeColor(box), QColor(0, 128, 0));
}

// Bit `bit` of a hexadecimal byte, worked out independently of the program's routines.
QString bitOf(const QString &byte, int bit) {
    return QString::number((byte.toInt(nullptr, 16) >> bit) & 1);
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
        QTest::newRow("QT8 one") << "QT8"
                                 << "1" << one << QStringList{"ON"};
        QTest::newRow("QT8 zero") << "QT8"
                                  << "0" << one << QStringList{"OFF"};
        QTest::newRow("QU1 other") << "QU16"
                                   << "11" << one << QStringList{"OFF"};
        QTest::newRow("QT32 one") << "QT32"
                                  << "1" << one << QStringList{"ON"};
        QTest::newRow("XB16 10") << "XB16"
                                 << "10" << two << QStringList{"ON", "OFF"};
        QTest::newRow("XC8 10") << "XC8"
                                << "10" << two << QStringList{"OFF", "ON"};
        QTest::newRow("QTC16 1,0,1") << "QTC16"
                                     << "1,0,1" << three << QStringList{"ON", "OFF", "ON"};
        QTest::newRow("QTC16 two parts") << "QTC16"
                                         << "1,1" << three << QStringList{"", "", ""};
        QTest::newRow("QTC16 four parts") << "QTC16"
                                          << "1,1,1,1" << three << QStringList{"", "", ""};
    }
    void statesDecodePerLayout() {
        QFETCH(QString, model);
        QFETCH(QString, value);
        QFETCH(QStringList, fields);
        QFETCH(QStringList, states);
        DiscreteRack rack(model, 6);
        QVERIFY(rack.view);
        rack.answerAll(value);
        // Two whole passes after the change, so every field has been through the new value.
        const int channels = FindDiscreteSpec(rack.view->objectName())->channels;
        const QString last = "I" + QString::number(channels + 9);
        rack.session.rack.clearTranscript();
        QTRY_VERIFY(rack.sent().count(last) >= 2);
        for (int ch : {1, channels})
            for (qsizetype f = 0; f < fields.size(); ++f)
                verifyState(rack.box(fields.at(f), ch), states.at(f));
        QVERIFY(rack.messages.messages.isEmpty());
    }

    void cycleOnTheWire() {
        {
            DiscreteRack rack("QT8", 2);
            QTRY_VERIFY(rack.sent().contains("I17"));
            rack.session.rack.clearTranscript();
            QTRY_VERIFY(rack.sent().contains("I17"));
            QStringList expected = writeLines("00", "01", "F") + writeLines("00", "41", "2") +
                                   writeLines("00", "01", "0");
            for (int ch = 1; ch <= 8; ++ch)
                expected << "G00"
                         << "I" + QString::number(ch + 9);
            QCOMPARE(rack.sent().mid(0, expected.size()), expected);
        }
        // The large cards read their channels in group 01.
        DiscreteRack big("QU32", 3);
        QTRY_VERIFY(big.sent().contains("I41"));
        const QString wire = big.sent().join(' ');
        QVERIFY(wire.contains("G01 I10 G01 I11"));
        QVERIFY(!wire.contains("G00 I10"));
    }

    void headerAndRecordOfAWatchingView() {
        DiscreteRack rack("XB16", 5);
        QVERIFY(rack.view->findChild<QGroupBox *>("fraShowModel"));
        QVERIFY(!rack.view->findChild<QGroupBox *>("fraSetModel"));
        QVERIFY(!rack.view->findChild<QPushButton *>("cmdUp"));
        QVERIFY(!rack.view->findChild<QPushButton *>("cmdDown"));
        QCOMPARE(rack.view->txtVerNo->text(), QString("1.07"));
        QCOMPARE(CardTable(5).CardName, QString("XB16"));
        // Coming back copies the version the view showed to the record.
        rack.window.cboCardNo->setCurrentIndex(5);
        rack.window.cboCardNo_Click();
        QCOMPARE(CardTable(5).VerNo, QString("1.07"));
    }

    void sixtyFourChannelsFitTheWorkArea() {
        DiscreteRack rack("QT64", 4);
        QTRY_VERIFY(!rack.box("txtChData", 64)->text().isEmpty());
        const QRect area(0, 0, kViewWidth, kViewHeight);
        for (int ch = 1; ch <= 64; ++ch) {
            QLineEdit *box = rack.box("txtChData", ch);
            const QRect place(box->mapTo(rack.view, QPoint(0, 0)), box->size());
            QVERIFY2(area.contains(place), qPrintable(QString("channel %1").arg(ch)));
            QVERIFY(box->isVisible());
        }
    }

    void selectorClickEndsTheSixtyFourChannelLoop() {
        DiscreteRack rack("QT64", 4);
        QTRY_VERIFY(rack.sent().contains("I73"));
        // The user clicks on the card selector while channel 21 is being read.
        SimCard &card = rack.session.rack.slot(4);
        auto plain = card.live;
        auto clicked = std::make_shared<bool>(false);
        card.live = [&rack, plain, clicked](const QString &g, const QString &item, qint64 ms) {
            if (g == "01" && item == "30" && !*clicked && (*clicked = true))
                QTimer::singleShot(0, rack.window.cboCardNo, [&rack] {
                    rack.window.cboCardNo->setFocus(Qt::MouseFocusReason);
                });
            return plain(g, item, ms);
        };
        rack.session.rack.clearTranscript();
        QTRY_VERIFY(CardSelFocus);
        // The pass ends at the next channel: at most one more read, never the rest.
        QTRY_VERIFY(rack.view->WaitForTimer->isActive());
        const QStringList sent = rack.sent();
        QVERIFY(sent.contains("I30"));
        QVERIFY(!sent.contains("I32"));
        QVERIFY(!sent.contains("I73"));
        QVERIFY(rack.messages.messages.isEmpty());
        // While the selector keeps the focus a tick does nothing.
        rack.session.rack.clearTranscript();
        rack.view->WaitForTimer_Timer();
        QVERIFY(rack.sent().isEmpty());
        // Focus elsewhere: the cycle starts again from channel 1.
        rack.window.cmdOverView->setFocus(Qt::MouseFocusReason);
        QVERIFY(!CardSelFocus);
        QTRY_VERIFY(rack.sent().contains("I73"));
        QCOMPARE(rack.sent().at(rack.sent().indexOf("G01") + 1), QString("I10"));
    }

    void lostReplyDuringTheCycle() {
        DiscreteRack rack("QTC16", 7);
        rack.session.rack.addFault({SimFault::NoReply, "I13", -1, 0});
        QTRY_COMPARE(rack.messages.messages.size(), 1);
        QCOMPARE(rack.messages.messages[0].text, QString("Uploading incomplete"));
        QCOMPARE(rack.messages.messages[0].title, QString("Uploading"));
        QCOMPARE(rack.messages.messages[0].icon, People::Icon::Stop);
        QVERIFY(!IsConnected);

        // Without a session the same loss stays silent, and the read stops at the lost channel.
        DiscreteRack quiet("XC8", 2);
        IsConnected = false;
        quiet.session.rack.addFault({SimFault::NoReply, "I12", -1, 0});
        quiet.session.rack.clearTranscript();
        quiet.view->WaitForTimer_Timer();
        QVERIFY(quiet.sent().contains("I12"));
        QVERIFY(!quiet.sent().contains("I13"));
        QVERIFY(quiet.messages.messages.isEmpty());
    }

    void emptySlotWordsReadNothing() {
        DiscreteRack rack("QT16", 3);
        rack.view->txtCardType->setText("UNKNOWN");
        rack.session.rack.clearTranscript();
        rack.view->WaitForTimer_Timer();
        QVERIFY(rack.sent().isEmpty());
    }
};

class DiscreteOverviewTest : public QObject {
    Q_OBJECT
private:
    static QColor lamp(int slot, int ch) { return BackColor(Overview()->lblDIDataCh(slot, ch)); }
    static QColor bitColour(const QString &bit) {
        return bit == "1" ? QColor(255, 0, 0) : QColor(0, 128, 0);
    }
    static void verifyByte(int slot, int firstLamp, const QString &byte) {
        for (int bit = 0; bit < 8; ++bit)
            QCOMPARE(lamp(slot, firstLamp + bit), bitColour(bitOf(byte, bit)));
    }

    // The monitor runs with the overview on show, and the view's cycle stopped.
    static void leaveForTheOverview(DiscreteRack &rack) {
        rack.window.cboCardNo->setCurrentIndex(0);
        rack.window.cboCardNo_Click();
        QTRY_VERIFY(!rack.view->CycleActive);
        rack.session.rack.clearTranscript();
    }

private slots:
    void rowsShowTheirLamps() {
        DiscreteRack rack("XC8", 3);
        ShowChData("XC8", 3);
        ShowChData("QTC16", 4);
        for (int ch = 1; ch <= 32; ++ch) {
            const bool xc8 = ch <= 8 || (ch >= 17 && ch <= 24);
            const bool qtc = ch <= 8 || ch >= 17;
            QCOMPARE(!Overview()->lblDIDataCh(3, ch)->isHidden(), xc8);
            QCOMPARE(!Overview()->lblDIDataCh(4, ch)->isHidden(), qtc);
        }
    }

    void lampsFromHexadecimalBytes() {
        DiscreteRack rack("XC8", 3);
        leaveForTheOverview(rack);
        SimCard &qtc = rack.session.rack.slot(4);
        qtc.model = "QTC16";
        InstallProfile(qtc);
        rack.session.rack.refreshDirectory();
        CardTable(4).CardName = "QTC16";
        rack.session.rack.slot(3).live = [](const QString &g, const QString &i, qint64) {
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
        DiscreteRack rack("QTC16", 4);
        leaveForTheOverview(rack);
        auto *io = dynamic_cast<OverviewRowIO *>(rack.view);
        QVERIFY(io);
        WriteData(3, "00", "41", "4");
        rack.answerAll("FF,FF,FF");
        QVERIFY(io->setOverViewDataIO(4));
        QCOMPARE(lamp(4, 32), QColor(255, 0, 0));
        // Two parts: the row goes neutral and stays so, and the pass goes on.
        rack.answerAll("FF,FF");
        QVERIFY(io->setOverViewDataIO(4));
        for (int ch : {1, 8, 17, 32})
            QCOMPARE(lamp(4, ch), NeutralLampColour());
        // No reply: the overview is told, so it can end its pass.
        rack.session.rack.addFault({SimFault::NoReply, "I18", -1, 0});
        QVERIFY(!io->setOverViewDataIO(4));
    }
};

class BcdViewTest : public QObject {
    Q_OBJECT
private:
    static void runWorker(DiscreteRack &rack, QPushButton *button) {
        rack.session.rack.clearTranscript();
        button->click();
        QTRY_VERIFY(!rack.view->UploadPending && !rack.view->DownloadPending &&
                    rack.sent().count("G00") >= 3);
    }

private slots:
    void uploadAndDownloadOnTheWire() {
        DiscreteRack rack("QV32", 9);
        rack.session.rack.slot(9).setItem("01", "16", "D16:1");
        runWorker(rack, rack.view->cmdUp);
        QStringList expected = writeLines("00", "01", "F") + writeLines("00", "41", "9") +
                               writeLines("01", "01", "1") +
                               QStringList{"G01", "I15", "G01", "I16", "G01", "I17"};
        QCOMPARE(rack.sent().mid(0, expected.size()), expected);
        const QStringList uploaded{"1", "1", "1"};
        for (int n = 1; n <= 3; ++n) {
            QCOMPARE(rack.box("txtDataPara", n)->text(), uploaded.at(n - 1));
            QCOMPARE(CardTable(9).Param(n), uploaded.at(n - 1));
        }
        QCOMPARE(CardTable(9).VerNo, QString("1.07"));

        rack.box("txtDataPara", 1)->setText("0");
        rack.box("txtDataPara", 2)->clear(); // nothing sent; refilled from the record
        rack.box("txtDataPara", 3)->setText("0");
        runWorker(rack, rack.view->cmdDown);
        expected = writeLines("00", "01", "F") + writeLines("00", "41", "9") +
                   writeLines("01", "01", "1") + writeLines("01", "15", "0") +
                   writeLines("01", "17", "0");
        QCOMPARE(rack.sent().mid(0, expected.size()), expected);
        QVERIFY(!rack.sent().contains("I16"));
        QCOMPARE(rack.box("txtDataPara", 2)->text(), QString("1"));
        QCOMPARE(CardTable(9).Param(1), QString("0"));
        QCOMPARE(CardTable(9).Param(3), QString("0"));
        QCOMPARE(rack.session.rack.slot(9).groups["01"]["15"], QString("D0"));
    }

    void liveWordsAndTheirLoss() {
        DiscreteRack rack("QW32", 9);
        auto *view = qobject_cast<FrmQV32 *>(rack.view);
        QVERIFY(view);
        rack.answerAll("12.50");
        QTRY_COMPARE(view->txtParData02->text(), QString("1250"));
        QCOMPARE(view->txtParData01->text(), QString("1250"));
        rack.session.rack.clearTranscript();
        QTRY_VERIFY(rack.sent().contains("I11"));
        const QStringList cycle = writeLines("00", "01", "F") + writeLines("00", "41", "9") +
                                  QStringList{"G00", "I10", "G00", "I11"};
        QCOMPARE(rack.sent().mid(0, 10), cycle);
        // The second word lost: the session ends, the first word was read alone.
        rack.session.rack.addFault({SimFault::NoReply, "I11", -1, 0});
        QTRY_COMPARE(rack.messages.messages.size(), 1);
        QCOMPARE(rack.messages.messages[0].text, QString("Uploading incomplete"));
        QVERIFY(!IsConnected);
        QCOMPARE(view->txtParData01->text(), QString("1250"));
    }
};

VX_TEST(DiscreteViewTest)
VX_TEST(DiscreteOverviewTest)
VX_TEST(BcdViewTest)
#include "tst_discrete.moc"
