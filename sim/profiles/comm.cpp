#include "profiles/comm.h"

#include "profiles/gateway.h"
#include "profiles/support.h"
#include "profiles/wireless.h"

#include <array>
#include <memory>

using namespace SimProfile;

namespace {

constexpr int kSlots = 16;

// What every comm card answers. The CC-Link IE cards keep their time and direct outputs in
// their own group "50"; the others keep the time in group 00 and the outputs in group 17.
void installCommon(SimCard &card, bool ownGroup) {
    const QString timeGroup = ownGroup ? QStringLiteral("50") : QStringLiteral("00");
    const QString outputGroup = ownGroup ? QStringLiteral("50") : QStringLiteral("17");
    card.setItem("01", "01", "D1");
    card.setItem("00", "03", "DSTS:01");
    card.setItem("00", "39", "DSW:00,01,00");
    card.setItem("00", "30", "D0");
    card.setItem(timeGroup, "09", "D30");
    card.setItem(outputGroup, "01", "D1");
    for (int slot = 1; slot <= kSlots; ++slot)
        card.setItem(outputGroup, item(9 + slot), "D0");
    // The comm card tells its name with a status behind a colon.
    card.live = [model = card.model](const QString &group, const QString &itemText,
                                     qint64) -> std::optional<QString> {
        if (group == QLatin1String("00") && itemText == QLatin1String("04"))
            return "D" + model + QStringLiteral(":00");
        return std::nullopt;
    };
    // An empty data field is accepted as it is; its echo alone would read as no answer.
    card.onData = [](SimCard &c, const QString &group, const QString &itemText,
                     const QString &data, qint64) -> std::optional<QString> {
        if (!data.isEmpty()) return std::nullopt;
        c.setItem(group, itemText, QStringLiteral("D"));
        return QStringLiteral("COK");
    };
}

void installEthernet(SimCard &card) {
    const bool ipFace = card.model.startsWith(QLatin1String("VX-ZTIP"));
    card.setItem("00", "59", "DIP:192.168.1.10");
    card.setItem("00", "60", "DSNM:255.255.255.0");
    card.setItem("00", "57", "DMAC1:00-0B-2F");
    card.setItem("00", "58", "DMAC2:41-7C-09");
    if (ipFace) {
        card.setItem("00", "78", "DGW:192.168.1.1");
        card.setItem("00", "77", "D0");
        return;
    }
    for (int n = 1; n <= 4; ++n) {
        card.setItem("00", item(60 + n), QStringLiteral("D%1").arg(501 + n));
        card.setItem("00", item(70 + n), "D50");
    }
}

QString ioName(int slot) {
    return QStringLiteral("IO%1").arg(slot, 2, 10, QLatin1Char('0'));
}

// The network-variable cards keep, for each slot, a name, sixteen scaling positions, an N2 address
// and a VND/AHU flag. The scaling of a slot is asked for by a write that names it ("3;") and
// answered "3:0,1,...;"; a write "3:0,1,...;" sets it.
void installNetworkVariable(SimCard &card) {
    card.setItem("00", "55", "D5");
    card.setItem("17", "00", "D1");
    for (const char *command : {"42", "43", "44"})
        card.setItem("17", command, "D0");
    auto scaling = std::make_shared<std::array<QString, kSlots>>();
    const auto factoryNames = [](SimCard &c) {
        for (int slot = 1; slot <= kSlots; ++slot)
            c.setItem("17", item(25 + slot), "D" + ioName(slot));
    };
    factoryNames(card);
    for (int slot = 1; slot <= kSlots; ++slot) {
        // Slot 1 shows every factor once, the others factor 1 throughout.
        QStringList positions;
        for (int ch = 0; ch < 16; ++ch)
            positions << QString::number(slot == 1 ? ch % 8 : 0);
        scaling->at(size_t(slot - 1)) = positions.join(QLatin1Char(','));
        card.setItem("17", item(44 + slot), QStringLiteral("D%1").arg(slot));
        card.setItem("17", item(60 + slot), "D0");
    }

    const auto common = card.onData;
    card.onData = [scaling, common](SimCard &c, const QString &group, const QString &itemText,
                                    const QString &data, qint64 ms) -> std::optional<QString> {
        if (group == QLatin1String("17") && itemText == QLatin1String("43")) {
            bool ok = false;
            const int index = QString(data).remove(QLatin1Char(';')).toInt(&ok);
            if (!ok || index < 0 || index >= kSlots) return QStringLiteral("CNG");
            return QStringLiteral("D%1:%2;").arg(index).arg(scaling->at(size_t(index)));
        }
        return common(c, group, itemText, data, ms);
    };
    card.onWrite = [scaling, factoryNames](SimCard &c, const QString &group,
                                           const QString &itemText, const QString &data) {
        if (group != QLatin1String("17")) return;
        // "Read Card": the card looks at its I/O cards again and names them afresh.
        if (itemText == QLatin1String("42")) factoryNames(c);
        if (itemText != QLatin1String("44")) return;
        bool ok = false;
        const int index = data.section(QLatin1Char(':'), 0, 0).toInt(&ok);
        if (!ok || index < 0 || index >= kSlots) return;
        QString factors = data.section(QLatin1Char(':'), 1);
        if (factors.endsWith(QLatin1Char(';'))) factors.chop(1);
        scaling->at(size_t(index)) = factors;
    };
}

void installCcLink(SimCard &card) {
    const bool redundant = card.model.startsWith(QLatin1String("VX-ZKFD1W"));
    card.setItem("50", "40", "DVER:1.02");
    card.setItem("50", "88", "D1");
    card.setItem("50", "90", "D1");
    card.setItem("50", "87", "D00-1A-2B-3C-4D-5E");
    card.setItem("50", "92", "DLINK:UP");
    card.setItem("50", "97", redundant ? "D100" : "D0");
}

struct CommRow {
    std::initializer_list<const char *> prefixes;
    bool ownGroup;
    void (*install)(SimCard &card);
};

// The first row whose prefix begins the model wins; a model no row knows is a plain comm card.
const CommRow kCommProfiles[] = {
    {{"VX-ZTKL"}, false, nullptr},
    {{"VX-ZT", "VX-HR", "ZOKAR"}, false, installEthernet},
    {{"VX-ZB1", "VX-ZB2"}, false, installNetworkVariable},
    {{"VX-ZKFD"}, true, installCcLink},
    {{"VX-ZRV", "VX-ZQ1"}, false, InstallWirelessCommProfile},
    {{"VX-HLINK"}, false, InstallGatewayCommProfile},
};

} // namespace

void InstallCommProfile(SimCard &card) {
    for (const CommRow &row : kCommProfiles) {
        if (!startsWithAny(card.model, row.prefixes)) continue;
        installCommon(card, row.ownGroup);
        if (row.install) row.install(card);
        return;
    }
    installCommon(card, false);
}
