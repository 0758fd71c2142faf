#include "support/testsupport.h"

#include "app/frmvxcfg.h"
#include "cardprofiles.h"
#include "rack/projectfile.h"
#include "rack/registry.h"
#include "rack/textroutines.h"
#include "views/allviews.h"
#include "views/analog/voltage.h"
#include "views/common/viewregistry.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <QTemporaryDir>
#include <QTest>

using vxtest::MessageRecorder;
using vxtest::SimSession;

namespace {

#define QVERIFY_ACTIVE(w) (void)QTest::qWaitForWindowActive(&(w))

// A connected rack with one plain signal card, its view opened from the main window.
struct VoltageRack {
    SimSession session;
    MessageRecorder messages;
    FrmVxCfg window;
    CardView *view = nullptr;

    VoltageRack(const QString &model, int slot, int channels) {
        RegisterAllViews();
        SimCard &card = session.rack.slot(slot);
        card.model = model;
        card.version = "2.10";
        InstallVoltageProfile(card, channels);
        session.rack.refreshDirectory();
        window.show();
        QVERIFY_ACTIVE(window);
        IsConnected = true;
        CardTable(slot).CardName = model;
        // Picked in the card selector, as a user does.
        window.cboCardNo->setCurrentIndex(slot);
        window.cboCardNo_Click();
        view = qobject_cast<CardView *>(LoadedView(FormNameOfTag(SelFormName)));
        session.rack.clearTranscript();
    }
    ~VoltageRack() { ClearViewRegistry(); }

    QLineEdit *box(const QString &control, int ch) { return view->field(control, ch); }
    QStringList sent() const { return session.rack.commands(); }
    // Waits until the worker started by a click has run and the cycle is back.
    void runWorker(QPushButton *button) {
        session.rack.clearTranscript();
        button->click();
        QTRY_VERIFY(!view->UploadPending && !view->DownloadPending &&
                    sent().count("G00") >= 3);
    }
};

QStringList writeLines(const QString &group, const QString &item, const QString &data) {
    return {"G" + group, "I" + item, "D" + data};
}

} // namespace

class VoltageViewTest : public QObject {
    Q_OBJECT
private slots:
    void openingReadsTheVersionAndPolls() {
        VoltageRack rack("QF4", 3, 4);
        QVERIFY(rack.view);
        QCOMPARE(rack.view->objectName(), QString("frmQF4"));
        QCOMPARE(rack.view->txtVerNo->text(), QString("VER:2.10").mid(4));
        QCOMPARE(rack.view->txtCardNo->text(), QString("3"));
        QTRY_VERIFY(!rack.view->valueBox(4)->text().isEmpty());
        // Values lose their decimal point: "50.25" shows as "5025".
        QVERIFY(!rack.view->valueBox(1)->text().contains('.'));
    }

    void uploadOfAFourChannelCardOnTheWire() {
        VoltageRack rack("QF4", 3, 4);
        rack.session.rack.slot(3).setItem("01", "44", "D42:-1200");
        rack.runWorker(rack.view->cmdUp);
        QStringList expected = writeLines("00", "01", "F") + writeLines("00", "41", "3") +
                               writeLines("01", "01", "1");
        for (int ch = 1; ch <= 4; ++ch)
            for (int item : {2 * ch + 40, 2 * ch + 41, 2 * ch + 8, 2 * ch + 9})
                expected << "G01" << "I" + QString::number(item);
        expected += writeLines("02", "01", "1");
        for (int ch = 1; ch <= 4; ++ch) expected << "G02" << "I" + QString::number(ch + 41);
        QCOMPARE(rack.sent().mid(0, expected.size()), expected);
        // Fields and record both take the value behind the tag.
        QCOMPARE(rack.box("txtZScale", 2)->text(), QString("-1200"));
        QCOMPARE(CardTable(3).Param(5), QString("-1200"));
        QCOMPARE(CardTable(3).Param(4), QString("0.000"));
        QCOMPARE(CardTable(3).ChParam(4), QString("0"));
        QCOMPARE(CardTable(3).VerNo, QString("2.10"));
    }

    void downloadWritesAcceptedFieldsOnly() {
        VoltageRack rack("QF4", 3, 4);
        rack.runWorker(rack.view->cmdUp);
        rack.box("txtZScale", 1)->setText("32000");
        rack.box("txtFScale", 1)->clear();  // empty: refilled from its cell, nothing sent
        rack.box("txtBias", 2)->setText("-320");
        rack.box("txtGain", 2)->setText("3.2");
        rack.box("txtEnable", 3)->setText("1");
        rack.box("txtEnable", 4)->setText("2"); // no flag: the record's flag comes back
        rack.runWorker(rack.view->cmdDown);
        const QStringList sent = rack.sent();
        QCOMPARE(sent.mid(0, 9), writeLines("00", "01", "F") + writeLines("00", "41", "3") +
                                     writeLines("01", "01", "1"));
        QCOMPARE(sent.mid(9, 3), writeLines("01", "42", "32000"));
        QVERIFY(!sent.join(' ').contains("G01 I43"));
        QVERIFY(sent.join(' ').contains("G01 I12 D-320 G01 I13 D3.2"));
        QVERIFY(sent.join(' ').contains("G02 I44 D1"));
        QVERIFY(!sent.contains("D2"));
        QVERIFY(!sent.join(' ').contains("G02 I45"));
        QCOMPARE(rack.box("txtFScale", 1)->text(), QString("10000"));
        QCOMPARE(CardTable(3).Param(1), QString("32000"));
        QCOMPARE(rack.box("txtEnable", 4)->text(), QString("0"));
        QCOMPARE(FieldColour(rack.box("txtEnable", 3)), kFlagOnColour);
        QCOMPARE(CardTable(3).ChParam(3), QString("1"));
        QCOMPARE(rack.session.rack.slot(3).groups["01"]["42"], QString("D32000"));
    }

    void rangeFailureSendsNothing_data() {
        QTest::addColumn<QString>("control");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("message");
        QTest::newRow("zero scale") << "txtZScale" << "32001" << "Zero Scale:Incorrect settings";
        QTest::newRow("full scale") << "txtFScale" << "-32000.5" << "Full Scale:Incorrect settings";
        QTest::newRow("zero adjust") << "txtBias" << "320.1" << "Zero Adjust:Incorrect settings";
        QTest::newRow("full adjust") << "txtGain" << "3.3" << "Full Adjust:Incorrect settings";
    }
    void rangeFailureSendsNothing() {
        QFETCH(QString, control);
        QFETCH(QString, text);
        QFETCH(QString, message);
        VoltageRack rack("QF8", 5, 8);
        rack.box(control, 8)->setText(text);
        rack.runWorker(rack.view->cmdDown);
        QCOMPARE(rack.messages.messages.size(), 1);
        QCOMPARE(rack.messages.messages[0].text, message);
        QCOMPARE(rack.messages.messages[0].title, QString("VXCFG"));
        QCOMPARE(rack.messages.messages[0].icon, People::Icon::Information);
        QVERIFY(!rack.sent().contains("G01"));
    }

    void flagShowsTheCardsEcho() {
        VoltageRack rack("QF4", 3, 4);
        rack.box("txtEnable", 1)->setText("1");
        rack.session.rack.addFault({SimFault::Refuse, "D1", -1, 0});
        rack.view->cmdDown->click();
        QTRY_VERIFY(rack.sent().contains("I42") && rack.sent().count("G00") >= 3);
        // The write was refused every time: the field shows what came back, which is nothing.
        QCOMPARE(rack.box("txtEnable", 1)->text(), QString("0"));
        QCOMPARE(FieldColour(rack.box("txtEnable", 1)), kFlagOffColour);
    }

    void refusedUploadIsNotSentBack() {
        VoltageRack rack("QF4", 3, 4);
        rack.session.rack.addFault({SimFault::Refuse, "I42", 1, 0});
        rack.runWorker(rack.view->cmdUp);
        QCOMPARE(rack.box("txtZScale", 1)->text(), QString("CNG"));
        rack.runWorker(rack.view->cmdDown);
        QVERIFY(!rack.sent().contains("DCNG"));
        QVERIFY(rack.messages.messages.isEmpty());
    }

    void downloadRunsBeforeUpload() {
        VoltageRack rack("QF4", 3, 4);
        rack.box("txtZScale", 1)->setText("7");
        rack.view->cmdUp->click();
        rack.view->cmdDown->click();
        QTRY_VERIFY(!rack.view->UploadPending && rack.sent().count("I45") >= 2);
        const QString sent = rack.sent().join(' ');
        const qsizetype write = sent.indexOf("G01 I42 D7");
        const qsizetype read = sent.indexOf("G01 I42 G01 I43"); // the Upload's reads
        QVERIFY(write > 0);
        QVERIFY(read > write);
    }

    void selectorFocusAndLeavingStopThePolling() {
        VoltageRack rack("QF4", 3, 4);
        CardSelFocus = true;
        QTest::qWait(30); // several ticks on the shortened clock
        rack.session.rack.clearTranscript();
        QTest::qWait(30);
        QVERIFY(rack.sent().isEmpty());
        CardSelFocus = false;
        QTRY_VERIFY(rack.sent().contains("I13"));
        // Leave for the overview: the cycle ends at its next tick.
        SelFormName = "Over";
        ShowView("frmOverview");
        QTRY_VERIFY(!rack.view->CycleActive);
        rack.session.rack.clearTranscript();
        QTest::qWait(30);
        QVERIFY(rack.sent().isEmpty());
    }

    void lostLinkDuringTheCycleDisconnects() {
        VoltageRack rack("QF4", 3, 4);
        rack.session.rack.addFault({SimFault::NoReply, "I11", -1, 0});
        QTRY_COMPARE(rack.messages.messages.size(), 1);
        QCOMPARE(rack.messages.messages[0].text, QString("Uploading incomplete"));
        QCOMPARE(rack.messages.messages[0].title, QString("Uploading"));
        QCOMPARE(rack.messages.messages[0].icon, People::Icon::Stop);
        QVERIFY(!IsConnected);
    }

    void sixteenChannelPages() {
        VoltageRack rack("QF16A", 2, 16);
        auto *view = qobject_cast<FrmQF16 *>(rack.view);
        QVERIFY(view);
        rack.runWorker(view->cmdUp);
        QCOMPARE(rack.box("txtFScale", 16)->text(), QString("10000"));
        QCOMPARE(view->changeButton->text(), QString("Adjust"));
        rack.box("txtZScale", 1)->setText("-5");
        view->changeButton->click();
        QVERIFY(view->adjustPage());
        QCOMPARE(view->changeButton->text(), QString("Scale"));
        QCOMPARE(view->findChild<QLabel *>("lblZeroHeader")->text(), QString("Z-Adjust"));
        QCOMPARE(rack.box("txtFScale", 16)->text(), QString("0.000"));
        // Typed on the adjust page and not switched away: sent as an adjust.
        rack.box("txtZScale", 16)->setText("1.5");
        rack.runWorker(view->cmdDown);
        QVERIFY(rack.sent().join(' ').contains("G01 I42 D-5"));
        QVERIFY(rack.sent().join(' ').contains("G01 I40 D1.5"));
        QCOMPARE(CardTable(2).Param(63), QString("1.5"));
        // Out of range on the hidden scale page still stops the Download.
        view->changeButton->click();
        rack.box("txtFScale", 3)->setText("40000");
        view->changeButton->click();
        rack.runWorker(view->cmdDown);
        QCOMPARE(rack.messages.messages.size(), 1);
        QCOMPARE(rack.messages.messages[0].text, QString("Full Scale:Incorrect settings"));
        QVERIFY(!rack.sent().contains("G01"));
    }

    // Values read from a card, kept in a project file and opened again reach the card unchanged.
    void projectFileRoundTrip() {
        VoltageRack rack("QF8", 4, 8);
        SimCard &card = rack.session.rack.slot(4);
        for (int ch = 1; ch <= 8; ++ch) {
            card.setItem("01", QString::number(2 * ch + 40), QString("D%1").arg(-100 * ch));
            card.setItem("01", QString::number(2 * ch + 41), QString("D%1").arg(1000 * ch));
            card.setItem("01", QString::number(2 * ch + 8), QString("D%1.5").arg(ch));
            card.setItem("01", QString::number(2 * ch + 9), QString("D0.%1").arg(ch));
            card.setItem("02", QString::number(ch + 41), QString("D%1").arg(ch % 2));
        }
        const auto original = card.groups;
        rack.runWorker(rack.view->cmdUp);

        QTemporaryDir dir;
        const QString path = dir.filePath("rack.uJx");
        People::setFileHandler([&](const People::FileRequest &) { return path; });
        SaveProjectFile();
        InstallVoltageProfile(card, 8); // the card forgets everything
        for (int k = 1; k <= 64; ++k) CardTable(4).Param(k).clear();
        OpenProjectFile();
        People::setFileHandler({});
        QVERIFY(rack.messages.messages.isEmpty());

        rack.window.cboCardNo->setCurrentIndex(0);
        rack.window.cboCardNo_Click();
        rack.window.cboCardNo->setCurrentIndex(4);
        rack.window.cboCardNo_Click();
        rack.runWorker(rack.view->cmdDown);
        QCOMPARE(card.groups["01"], original["01"]);
        QCOMPARE(card.groups["02"], original["02"]);
    }

    void sixteenChannelCycleKeepsTimeoutValues() {
        VoltageRack rack("QG1", 2, 16);
        QTRY_VERIFY(!rack.view->valueBox(5)->text().isEmpty());
        rack.session.rack.slot(2).live = [](const QString &g, const QString &i,
                                            qint64) -> std::optional<QString> {
            if (g == "00" && i == "14") return QString("D5:TMOUT");
            if (g == "00" && i.toInt() >= 10 && i.toInt() <= 25) return QString("D1:1.5");
            return std::nullopt;
        };
        const QString before = rack.view->valueBox(5)->text();
        QTRY_COMPARE(rack.view->valueBox(6)->text(), QString("15"));
        QCOMPARE(rack.view->valueBox(5)->text(), before);
        QVERIFY(rack.messages.messages.isEmpty());
    }
};

VX_TEST(VoltageViewTest)
#include "tst_voltage.moc"
