#include "rack/scan.h"

#include "link/exchange.h"
#include "rack/cardtable.h"
#include "rack/overview.h"
#include "rack/registry.h"
#include "rack/textroutines.h"
#include "ui/frmloading.h"
#include "ui/people.h"

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
