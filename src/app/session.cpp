#include "app/session.h"

#include "app/frmvxcfg.h"
#include "link/exchange.h"
#include "link/link.h"
#include "rack/cardtable.h"
#include "rack/monitor.h"
#include "rack/registry.h"
#include "rack/scan.h"
#include "ui/people.h"
#include "ui/widgets.h"

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QList>
#include <QPushButton>
#include <QTimer>

namespace {

const QColor kLampOff(0, 0, 128);
const QColor kLampOn(0, 240, 0);

bool beginsWithAny(const QString &text, const QStringList &prefixes) {
    for (const QString &prefix : prefixes)
        if (text.startsWith(prefix)) return true;
    return false;
}

const QList<SpecialSetting> &specialSettings() {
    static const QList<SpecialSetting> rows = {
        // A "ZTKL" card has none, though its tail also begins with "ZT".
        {{"ZTKL"}, {}, {}, QString(), QString(), false},
        {{"ZT"}, {}, {"VX-HR", "ZOKAR"}, "Ethernet Setting", "frmEther", false},
        {{"ZB1", "ZB2"}, {}, {}, "ZBx Setting", "frmZB", false},
        {{"ZRV1F"}, {}, {}, "ZRV Setting", "frmZRV1F", true},
        {{"ZRV"}, {}, {}, "ZRV Setting", "frmZRV", true},
        {{"ZQ1"}, {}, {}, "ZQ1 Setting", "frmZQ", true},
        {{"ZKFD1"}, {"ZKFD"}, {}, "ZKFD1 Setting", "frmZKFD", true},
        {{"HLINK"}, {}, {}, "HLINK Setting", "frmHLINK", true},
    };
    return rows;
}

void setIndicators(bool connected) {
    FrmVxCfg *w = MainWindow();
    if (!w) return;
    SetLampColor(w->shpLamp, connected ? kLampOn : kLampOff);
    w->lblComPortNo->setText(connected ? QStringLiteral("COM%1").arg(ComPortNo) : QString());
    w->lblConStatus->setText(connected ? kConnectedText : kDisconnectedText);
    w->mnuConnectConnect->setEnabled(!connected);
    w->mnuConnectDisconnect->setEnabled(connected);
}

QMetaObject::Connection g_lineWatch;

// A port that closes under the program (an adapter pulled, the far end gone) ends the session.
// The call is queued: the command that was running fails first with its own message, and the
// lamp then stops claiming a link that is not there.
void watchLine() {
    QObject::disconnect(g_lineWatch);
    SerialLine *line = Link::port();
    if (!line) return;
    g_lineWatch = QObject::connect(
        line, &SerialLine::lineLost, line,
        [line] {
            if (IsConnected && Link::port() == line && !line->isOpen()) DisconnectRack();
        },
        Qt::QueuedConnection);
}

} // namespace

const SpecialSetting *FindSpecialSetting(const QString &name, bool forClick) {
    const QString tail = name.mid(3);
    for (const SpecialSetting &row : specialSettings()) {
        const QStringList &tails =
            forClick && !row.clickTails.isEmpty() ? row.clickTails : row.tails;
        if (beginsWithAny(tail, tails) || beginsWithAny(name, row.heads)) return &row;
    }
    return nullptr;
}

void ShowCommError() {
    People::message(QStringLiteral("Communication error. Check the signal conditioner, cable "
                                   "and/or COM port setting."),
                    QStringLiteral("Test of communication"), People::Icon::Exclamation);
}

bool ConnectRack() {
    // Any reply will do, even a refusal: it proves that a rack answers on this port.
    if (ReadData(3, "00", "40").isEmpty()) {
        ShowCommError();
        return false;
    }
    setIndicators(true);
    IsConnected = true;
    watchLine();

    // Select the comm card; what these writes answer is of no interest.
    WriteData(3, "00", "01", "F");
    WriteData(3, "00", "41", "00");
    WriteData(3, "01", "01", "1");
    CommCardName = ReadData(3, "00", "04");
    IsMasterComm = CommCardName.startsWith(QLatin1String("MASTER")) ||
                   CommCardName.startsWith(QLatin1String("VX-HJP"));
    SetSpecialButton(CommCardName);

    if (FrmVxCfg *w = MainWindow()) {
        w->CmdUpload->setEnabled(true);
        // A master comm card has no settings dialog.
        w->cmdComm->setEnabled(!IsMasterComm);
        w->cmdSpecialSetting->setEnabled(true);
        w->cmdStart->setEnabled(true);
    }
    return true;
}

void ShowDisconnected() {
    if (FrmVxCfg *w = MainWindow()) w->WaitForTimer->stop();
    setIndicators(false);
    CommandsOff();
}

void UploadRack() {
    FrmVxCfg *w = MainWindow();
    CommandsOff();
    if (w) w->SelectOverview();
    WriteData(3, "00", "01", "F");
    WriteData(3, "00", "41", "00");
    WriteData(3, "01", "01", "1");
    SetSpecialButton(ReadData(3, "00", "04"));
    ScanRack();
    if (w) w->FillCardSelector();
    ReadOverview();
    // The port went away during the scan: the session has ended, its commands stay off.
    if (!IsConnected) return;
    CommandsOn();
    if (w) {
        w->cmdSWcheck->setEnabled(true);
        w->mnuFilesOpen->setEnabled(true);
        w->mnuFilesSave->setEnabled(true);
    }
}

void CommandsOff() {
    FrmVxCfg *w = MainWindow();
    if (!w) return;
    const QList<QWidget *> commands = {w->cmdComm,          w->CmdUpload, w->cmdStart,
                                       w->cmdOverView,      w->cboCardNo, w->cmdSWcheck,
                                       w->cmdSpecialSetting};
    for (QWidget *command : commands)
        command->setEnabled(false);
    w->mnuFilesOpen->setEnabled(false);
    w->mnuFilesSave->setEnabled(false);
}

// The same set on again, but for the file menu, which the caller decides on.
void CommandsOn() {
    FrmVxCfg *w = MainWindow();
    if (!w) return;
    const QList<QWidget *> commands = {w->CmdUpload, w->cmdStart,   w->cmdOverView,
                                       w->cboCardNo, w->cmdSWcheck, w->cmdSpecialSetting};
    for (QWidget *command : commands)
        command->setEnabled(true);
    w->cmdComm->setEnabled(!IsMasterComm);
}

void RefreshCommands() {
    FrmVxCfg *w = MainWindow();
    // Without a link there is nothing these commands could talk to.
    if (w && IsConnected) {
        if (!IsMasterComm) w->cmdComm->setEnabled(true);
        w->cmdStart->setEnabled(true);
        w->CmdUpload->setEnabled(true);
    }
    for (int slot = 1; slot <= kSlots; ++slot)
        ShowCardClass(slot, CardTable(slot).CardName);
}

void SetSpecialButton(const QString &name) {
    FrmVxCfg *w = MainWindow();
    if (!w) return;
    const SpecialSetting *row = FindSpecialSetting(name);
    if (!row || row->caption.isEmpty()) {
        w->fraCmd->hide();
        return;
    }
    w->cmdSpecialSetting->setText(row->caption);
    w->fraCmd->show();
}
