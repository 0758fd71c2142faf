#include "rack/scan.h"

#include "app/frmloading.h"
#include "app/frmvxcfg.h"
#include "app/people.h"
#include "link/exchange.h"
#include "link/session.h"
#include "rack/cardtable.h"
#include "rack/monitor.h"
#include "rack/overview.h"
#include "rack/registry.h"
#include "rack/textroutines.h"

#include <QAction>
#include <QPushButton>

namespace {
constexpr int kFirstSlotItem = 10; // item of slot n in the comm card's list is 9 + n
} // namespace

void ScanRack() {
    // Group 99 prepares the rack for the list; as a read without an item it never answers data.
    ReadData(3, "99", QString());
    WriteData(3, "00", "01", "F");
    WriteData(3, "00", "41", "0");
    OpenProgress(kSlots, QStringLiteral("Uploading"));
    for (int slot = 1; slot <= kSlots; ++slot) {
        ClearOverviewSlot(slot);
        const QString reply = ReadData(3, "00", QString::number(slot + kFirstSlotItem - 1));
        if (reply.isEmpty()) {
            CloseProgress();
            People::message(QStringLiteral("Uploading incomplete"), QStringLiteral("Uploading"),
                            People::Icon::Stop);
            return;
        }
        QString name = ValueAfterColon(reply);
        if (name == QLatin1String("UNKNOWN")) {
            name = QStringLiteral("NONE");
        } else if (name.startsWith(QLatin1String("XDU"))) {
            // The list gives only the family; the card itself knows its full name.
            WriteData(3, "00", "41", QString::number(slot));
            name = ValueAfterColon(ReadData(3, "00", "04"));
            WriteData(3, "00", "41", "0");
        }
        CardTable(slot).CardName = name;
        ShowCardClass(slot, name);
        ShowChData(name, slot);
        AdvanceProgress();
    }
    CloseProgress();
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
