#include "profiles/gateway.h"

#include "profiles/support.h"

using namespace SimProfile;

namespace {

constexpr int kEntries = 16;

struct Entry {
    const char *text; // as the comm card keeps it
    int kind;         // 1 AI, 2 AO, 3 DI, 4 DO
    int channels;
};

// The gateway's entries as it leaves the factory: four in use, the rest single analog inputs.
Entry defaultEntry(int n) {
    switch (n) {
    case 1:
        return {"A8,100,AI8", 1, 8};
    case 2:
        return {"9C,0x20,DI16", 3, 16};
    case 3:
        return {"B4,0x1F0,AO4", 2, 4};
    case 4:
        return {"90,200,DO16", 4, 16};
    default:
        return {"A8,0,AI1", 1, 1};
    }
}

// The entry number of a slot's name: its last character, "1" to "9" or "A" to "G".
int entryOfName(const QString &model) {
    if (model.isEmpty()) return 1;
    const QChar c = model.back();
    if (c >= QLatin1Char('1') && c <= QLatin1Char('9')) return c.digitValue();
    if (c >= QLatin1Char('A') && c <= QLatin1Char('G')) return c.unicode() - u'A' + 10;
    return 1;
}

} // namespace

void InstallGatewayCommProfile(SimCard &card) {
    card.setItem("00", "09", "D100");
    card.setItem("00", "59", "DIP:192.168.3.20");
    card.setItem("00", "60", "DSNM:255.255.255.0");
    card.setItem("00", "61", "DGW:192.168.3.1");
    card.setItem("00", "63", "D32");
    card.setItem("00", "64", "D3FF");
    card.setItem("00", "65", "D5");
    card.setItem("00", "66", "D0");
    card.setItem("00", "67", "D255");
    card.setItem("00", "68", "DSVR:192.168.3.39");
    card.setItem("00", "69", "D5007");
    card.setItem("00", "57", "DMAC1:00-0B-2F");
    card.setItem("00", "58", "DMAC2:6A-11-02");
    card.setItem("17", "09", "D4");
    for (int n = 1; n <= kEntries; ++n)
        card.setItem("17", item(9 + n), QStringLiteral("D") + QLatin1String(defaultEntry(n).text));

    const auto common = card.onData;
    card.onData = [common](SimCard &c, const QString &group, const QString &itemText,
                           const QString &data, qint64 ms) -> std::optional<QString> {
        const QString refused = QStringLiteral("CNG");
        const int n = itemText.toInt();
        if (group == QLatin1String("17") && n == 9) {
            bool ok = false;
            const int count = data.toInt(&ok);
            if (!ok || count < 0 || count > kEntries) return refused;
        }
        if (group == QLatin1String("17") && n >= 10 && n <= 25 && data.count(QLatin1Char(',')) != 2)
            return refused;
        if (group == QLatin1String("00") && n == 63 && data != QLatin1String("16") &&
            data != QLatin1String("32"))
            return refused;
        return common(c, group, itemText, data, ms);
    };
}

void InstallGatewayEntryProfile(SimCard &card) {
    card.setItem("17", "01", "D1");
    for (int n = 1; n <= kEntries; ++n) {
        const Entry entry = defaultEntry(n);
        card.setItem("17", item(59 + n),
                     QStringLiteral("D%1:%2,%3").arg(n).arg(entry.kind).arg(entry.channels));
    }
    const Entry own = defaultEntry(entryOfName(card.model));
    card.live = [own](const QString &group, const QString &itemText,
                      qint64 ms) -> std::optional<QString> {
        const int ch = liveChannel(itemText, kEntries);
        if (group != QLatin1String("00") || ch == 0) return std::nullopt;
        if (own.kind <= 2)
            return QStringLiteral("D%1:%2").arg(ch).arg(qRound(driftingValue(ch, ms, 2000, 1500)));
        return QStringLiteral("D%1:%2").arg(ch).arg((ms / (700 + 130 * ch) + ch) % 2);
    };
}

void InstallGatewaySlotProfile(SimCard &card) {
    card.live = [](const QString &group, const QString &itemText,
                   qint64 ms) -> std::optional<QString> {
        const int ch = liveChannel(itemText, kEntries);
        if (group != QLatin1String("00") || ch == 0) return std::nullopt;
        return QStringLiteral("D%1:%2,%3")
            .arg(ch)
            .arg(drifting(ch, ms, 50.0, 40.0))
            .arg(qRound(driftingValue(ch + 5, ms, 500, 400)));
    };
}
