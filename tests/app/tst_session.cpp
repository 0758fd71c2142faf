#include "app/desk.h"

#include "app/session.h"
#include "link/exchange.h"
#include "rack/cardtable.h"
#include "ui/widgets.h"

#include <QElapsedTimer>
#include <QLabel>
#include <QTest>

using vxtest::choose;
using vxtest::Desk;
using vxtest::press;

namespace {
const QString kCommError = "Communication error. Check the signal conditioner, cable and/or COM "
                           "port setting.";
const QColor kDarkBlue(0, 0, 128);
const QColor kGreen(0, 240, 0);
} // namespace

// The connect command, the port dialog and the handshake, against the simulated rack.
class SessionTest : public QObject {
    Q_OBJECT

private slots:
    void handshakeOnTheWire() {
        Desk d;
        QVERIFY(d.connect(3));
        QCOMPARE(d.sim.rack.commands(),
                 QStringList({"G00", "I40",                        // link test
                              "G00", "I01", "DF",                  // address anew
                              "G00", "I41", "D00",                 // the comm card
                              "G01", "I01", "D1", "G00", "I04"})); // its name
        QCOMPARE(d.sim.line->openedPort(), 3);
        QCOMPARE(ComSpeed, QString("9600"));
        QVERIFY(IsConnected);
        QCOMPARE(CommCardName, QString("VX-ZT1"));
        QVERIFY(!IsMasterComm);
        QCOMPARE(d.window->lblComPortNo->text(), QString("COM3"));
        QCOMPARE(d.window->lblConStatus->text(), QString("Connected"));
        QCOMPARE(BackColor(d.window->shpLamp), kGreen);
        QVERIFY(d.messages.messages.isEmpty());
        // The scan is the user's to start: nothing was read of the slots.
        QVERIFY(CardTable(1).CardName.isEmpty());
    }

    void silentRackFailsTheLinkTest() {
        Desk d;
        d.sim.rack.addFault({SimFault::NoReply, "", -1, 0});
        QVERIFY(d.connect(1));
        QCOMPARE(d.messages.messages.size(), 1);
        const People::Message &m = d.messages.messages.first();
        QCOMPARE(m.text, kCommError);
        QCOMPARE(m.title, QString("Test of communication"));
        QCOMPARE(m.icon, People::Icon::Exclamation);
        QCOMPARE(m.buttons, People::Buttons::Ok);
        // Only the link test went out, four times; then the port was closed again.
        QCOMPARE(d.sim.rack.commands(), QStringList({"G00", "G00", "G00", "G00"}));
        QVERIFY(!d.sim.line->isOpen());
        QVERIFY(!IsConnected);
        QCOMPARE(d.window->lblConStatus->text(), QString("Disconnected"));
        QCOMPARE(d.window->lblComPortNo->text(), QString());
        QCOMPARE(BackColor(d.window->shpLamp), kDarkBlue);
        QCOMPARE(d.commands(), QString("----------x-"));
    }

    void invalidPortKeepsTheDialogOpen() {
        Desk d;
        d.sim.line->setAvailablePorts({4});
        bool stayedOpen = false;
        QString shownDevice;
        QVERIFY(d.connect(4, "OK", [&](FrmComPort *dialog) {
            dialog->combBPS->setCurrentIndex(1);
            dialog->cmdOK->click();
            stayedOpen = dialog->isVisible();
            shownDevice = dialog->lblDevice->text();
        }));
        QVERIFY(stayedOpen);
        QVERIFY(!shownDevice.isEmpty());
        QCOMPARE(d.messages.messages.size(), 1);
        const People::Message &m = d.messages.messages.first();
        QCOMPARE(m.text, QString("invalid port"));
        QCOMPARE(m.title, People::kProgramName);
        QCOMPARE(m.icon, People::Icon::None);
        // The second choice went through.
        QVERIFY(IsConnected);
        QCOMPARE(d.sim.line->openedPort(), 4);
        QCOMPARE(d.window->lblComPortNo->text(), QString("COM4"));
        QCOMPARE(d.sim.rack.commands().first(), QString("G00"));
    }

    void masterCommCard_data() {
        QTest::addColumn<QString>("model");
        QTest::addColumn<bool>("master");
        QTest::newRow("MASTER") << "MASTER1" << true;
        QTest::newRow("VX-HJP") << "VX-HJP2" << true;
        QTest::newRow("lower case") << "master1" << false;
        QTest::newRow("VX-HJ") << "VX-HJ" << false;
    }
    void masterCommCard() {
        QFETCH(QString, model);
        QFETCH(bool, master);
        Desk d;
        d.sim.rack.comm().model = model;
        d.sim.rack.refreshDirectory();
        QVERIFY(d.connect(1));
        QCOMPARE(IsMasterComm, master);
        QCOMPARE(d.window->cmdComm->isEnabled(), !master);
        QCOMPARE(d.commands(), master ? QString("x-xx-xx----x") : QString("xxxx-xx----x"));
        // Every later switch-on keeps the settings button of a master card off.
        CommandsOff();
        CommandsOn();
        QCOMPARE(d.window->cmdComm->isEnabled(), !master);
        QVERIFY(press(d.window->cmdOverView));
        QCOMPARE(d.window->cmdComm->isEnabled(), !master);
    }

    void reconnectClearsTheCardTable() {
        Desk d;
        QVERIFY(d.connect(5));
        CardTable(3).CardName = "QF4";
        CardTable(3).VerNo = "1.20";
        CardTable(3).Param(7) = "500";
        CardTable(17).ChParam(2) = "1";
        d.window->FillCardSelector();
        QVERIFY(choose(d.window->mnuConnectDisconnect));
        // A disconnect leaves the table alone.
        QCOMPARE(CardTable(3).CardName, QString("QF4"));
        // The port dialog starts at the first port again, with "Connect" off while it is up.
        int selected = -1;
        bool connectMenuOff = false;
        QVERIFY(d.connect(2, "OK", [&](FrmComPort *dialog) {
            selected = dialog->combBPS->currentIndex();
            connectMenuOff = !d.window->mnuConnect->menuAction()->isEnabled();
        }));
        QCOMPARE(selected, 0);
        QVERIFY(connectMenuOff);
        QCOMPARE(ComPortNo, 2);
        QCOMPARE(CardTable(3).CardName, QString());
        QCOMPARE(CardTable(3).Param(7), QString());
        QCOMPARE(CardTable(17).ChParam(2), QString());
        QCOMPARE(CardTable(3).VerNo, QString("1.20"));
        QCOMPARE(d.window->cboCardNo->itemText(3), QString("03:"));
        QCOMPARE(d.window->cboCardNo->itemText(0), QString("00:OverView"));
    }

    void disconnectEndsAWaitingStep() {
        Desk d;
        QVERIFY(d.connect(1));
        d.window->WaitForTimer->start(500);
        // On the production clock the reply would come after 2.5 s, inside the 3 s limit; the
        // disconnect must end the step long before either.
        Clock::setDivisor(1);
        d.sim.rack.addFault({SimFault::Delay, "G", 1, 2500});
        QTimer::singleShot(0, [] { DisconnectRack(); });
        QElapsedTimer clock;
        clock.start();
        QCOMPARE(ReadDataOnce("00", "40"), QString());
        QVERIFY2(clock.elapsed() < 1500, qPrintable(QString::number(clock.elapsed())));
        QVERIFY(!d.sim.line->isOpen());
        QVERIFY(!IntervalTimerEnabled());
        QVERIFY(!d.window->WaitForTimer->isActive());
    }
};

VX_TEST(SessionTest)
#include "tst_session.moc"
