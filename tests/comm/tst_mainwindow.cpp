#include "app/desk.h"
#include "comm/commrack.h"

#include "comm/commdialog.h"
#include "profiles/comm.h"
#include "rackfile.h"

#include <QDir>

using vxtest::Desk;
using vxtest::press;

namespace {

void putCommCard(Desk &d, const QString &model, const QString &version) {
    SimCard &comm = d.sim.rack.comm();
    comm = SimCard();
    comm.model = model;
    comm.version = version;
    InstallCommProfile(comm);
    d.sim.rack.refreshDirectory();
}

} // namespace

// The main window's two ways to the comm card dialogs, on a connected rack.
class CommFromMainWindowTest : public QObject {
    Q_OBJECT

private slots:
    void dialogsOpenFromTheirCommand_data() {
        // "probe": a box, and "shows" what it shows once the dialog is up; "ownStart": "x" for
        // a dialog that takes the special button off while it is up.
        vxtest::textTable(
            {"model", "command", "form", "probe", "shows", "ownStart"},
            {{"settings", "VX-ZT1", "cmdComm", "frmComm", "txtName", "ZT1", ""},
             {"Ethernet", "VX-ZTIP1", "cmdSpecialSetting", "frmEther", "txtDGate(3)", "1", ""},
             {"network variable", "VX-ZB2", "cmdSpecialSetting", "frmZB", "txtCardList(1)",
              "BOILER", ""},
             {"CC-Link IE", "VX-ZKFD1W", "cmdSpecialSetting", "frmZKFD", "txbLinkStatus", "UP",
              "x"},
             {"ZRV", "VX-ZRV1", "cmdSpecialSetting", "frmZRV", "wirNetWork", "PLANT-A", "x"},
             {"ZRV1F", "VX-ZRV1F", "cmdSpecialSetting", "frmZRV1F", "wirPANID", "1A2B", "x"},
             {"ZQ1", "VX-ZQ1", "cmdSpecialSetting", "frmZQ", "wirShortAddress", "0001", "x"},
             {"HLINK", "VX-HLINK1", "cmdSpecialSetting", "frmHLINK", "PortNo", "5007", "x"}});
    }
    void dialogsOpenFromTheirCommand() {
        QFETCH(QString, model);
        QFETCH(QString, command);
        QFETCH(QString, form);
        QFETCH(QString, probe);
        QFETCH(QString, shows);
        QFETCH(QString, ownStart);
        Desk d;
        putCommCard(d, model, "2.04");
        QVERIFY(d.connect(1));
        CardTable(kCommRecord).ChParam(1) = "BOILER";

        QString shown;
        bool connectOff = false, specialOn = true;
        auto armed = vxtest::whenVisible(
            // Up, and done with the card: the probe shows what was read.
            [form, probe]() -> QWidget * {
                auto *dialog = qobject_cast<CommDialog *>(LoadedView(form));
                if (!dialog || dialog->isBusy()) return nullptr;
                return dialog->findChild<QLineEdit *>(probe)->text().isEmpty() ? nullptr : dialog;
            },
            [&](QWidget *dialog) {
                shown = dialog->findChild<QLineEdit *>(probe)->text();
                connectOff = !d.window->mnuConnect->menuAction()->isEnabled();
                specialOn = d.window->cmdSpecialSetting->isEnabled();
                dialog->findChild<QPushButton *>("cmdExit")->click();
            },
            100000);
        // Should the dialog never get there, it is closed rather than left waiting.
        QTimer watchdog;
        watchdog.setSingleShot(true);
        QObject::connect(&watchdog, &QTimer::timeout, [form] { LoadedView(form)->close(); });
        watchdog.start(30000);
        QVERIFY(press(d.window->findChild<QPushButton *>(command)));
        *armed = false;
        QCOMPARE(shown, shows);
        QVERIFY(connectOff);
        QCOMPARE(specialOn, ownStart.isEmpty());
        // Closing gives both back.
        QVERIFY(d.window->mnuConnect->menuAction()->isEnabled());
        QVERIFY(d.window->cmdSpecialSetting->isEnabled());
        QVERIFY(d.messages.messages.isEmpty());
    }

    // A card whose dialog the program does not have says so, and the button stays usable.
    void aMissingDialogSaysSo() {
        Desk d;
        RegisterView("frmZRV", [] { return nullptr; });
        putCommCard(d, "VX-ZRV2", "1.00");
        QVERIFY(d.connect(1));
        QCOMPARE(d.window->cmdSpecialSetting->text(), QString("ZRV Setting"));
        d.sim.rack.clearTranscript();
        QVERIFY(press(d.window->cmdSpecialSetting));
        QCOMPARE(d.messages.messages.size(), 1);
        QCOMPARE(d.messages.messages[0].text,
                 QString("ZRV Setting: this dialog is not available in this version of VXCFG."));
        QCOMPARE(d.messages.messages[0].icon, People::Icon::Information);
        QVERIFY(d.window->cmdSpecialSetting->isEnabled());
        QVERIFY(d.window->mnuConnect->menuAction()->isEnabled());
        QVERIFY(d.sim.rack.commands().isEmpty());
    }

    // Every example rack loads, and its comm card answers as the dialogs expect.
    void exampleRacksLoad() {
        const QDir racks(QFINDTESTDATA("../../sim/racks"));
        const QStringList files = racks.entryList({"*.rack"}, QDir::Files);
        QVERIFY(files.size() >= 5);
        for (const QString &file : files) {
            SimRack rack;
            QString error;
            QVERIFY2(RackFile::load(racks.filePath(file), rack, &error),
                     qPrintable(file + ": " + error));
            rack.answer("G00");
            QVERIFY2(rack.answer("I04").startsWith("D" + rack.comm().model + ":"),
                     qPrintable(file));
        }
    }
};

VX_TEST(CommFromMainWindowTest)
#include "tst_mainwindow.moc"
