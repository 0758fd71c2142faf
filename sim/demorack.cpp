#include "demorack.h"

#include "cardprofiles.h"
#include "profiles/comm.h"

namespace {

struct DemoCard {
    int slot;
    const char *model;
    const char *listName; // "" when the slot list gives the model
    const char *version;
    const char *dip;
};

// Slots not named here are empty. A new family gets a row here once it has its profile.
const DemoCard kDemoCards[] = {
    {1, "QP8A", "", "1.12", "02,00,00"},
    {2, "QT8", "", "1.05", "00,00,00"},
    // The multi-power card lists its family only; its own item 04 gives the full name.
    {3, "XDU42B01", "XDU", "2.01", "00,40,00"},
    {4, "QA4", "", "1.04", "00,10,00"},
    {5, "QZ8", "", "1.10", "10,02,00"},
    {6, "XE4", "", "1.31", "00,00,01"},
    {7, "QTC16", "", "1.00", "00,00,00"},
    {8, "QF8", "", "1.22", "00,00,00"},
    {9, "QL4", "", "1.12", "00,00,00"},
    {10, "QS4", "", "1.04", "00,10,00"},
    {11, "QJS8", "", "1.20", "00,00,00"},
    // The eighth character of a four-circuit card's name is its word layout: W, Whi, Who.
    {12, "XD4-AC10", "", "1.12", "00,00,04"},
    {13, "QY2", "", "1.04", "02,00,00"},
    {14, "QZ2", "", "1.04", "00,01,00"},
    {15, "XHK2", "", "1.04", "00,03,00"},
    {16, "XG4", "", "1.12", "00,00,20"},
};

} // namespace

void LoadDemoRack(SimRack &rack) {
    SimRack fresh;
    rack.comm() = fresh.comm();
    rack.comm().model = QStringLiteral("VX-ZT1");
    rack.comm().version = QStringLiteral("1.00");
    InstallCommProfile(rack.comm());
    for (int n = 1; n <= 16; ++n)
        rack.slot(n) = SimCard();
    for (const DemoCard &demo : kDemoCards) {
        SimCard &card = rack.slot(demo.slot);
        card.model = QLatin1String(demo.model);
        card.listName = QLatin1String(demo.listName);
        card.version = QLatin1String(demo.version);
        card.dip = QLatin1String(demo.dip);
        InstallProfile(card);
    }
    rack.refreshDirectory();
}
