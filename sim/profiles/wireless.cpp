#include "profiles/wireless.h"

#include "profiles/support.h"

using namespace SimProfile;

namespace {

// The version as the dialogs take it: "3.00" is 300.
int versionNumber(const QString &version) {
    return QString(version).remove(QLatin1Char('.')).left(3).toInt();
}

bool isHex(const QString &text) {
    for (const QChar c : text)
        if (!((c >= QLatin1Char('0') && c <= QLatin1Char('9')) ||
              (c >= QLatin1Char('A') && c <= QLatin1Char('F')) ||
              (c >= QLatin1Char('a') && c <= QLatin1Char('f'))))
            return false;
    return !text.isEmpty();
}

bool numberUpTo(const QString &text, int high) {
    bool ok = false;
    const int n = text.toInt(&ok);
    return ok && n >= 0 && n <= high;
}

} // namespace

void InstallWirelessCommProfile(SimCard &card) {
    const bool zrv1f = card.model.startsWith(QLatin1String("VX-ZRV1F"));
    const bool zq = card.model.startsWith(QLatin1String("VX-ZQ1"));
    const int version = versionNumber(card.version);
    const bool mode = zrv1f || (!zq && version >= 214);
    const bool extras = zrv1f || version >= 300;
    const int channelMax = zrv1f ? 43 : 28;
    const QString rs485 = zrv1f ? QStringLiteral("5") : QStringLiteral("1");
    const QString wireless = zrv1f ? QStringLiteral("9") : QStringLiteral("3");

    card.setItem("00", "56", "D1");
    card.setItem("00", "62", "D30");
    card.setItem("00", "63", "D100");
    if (!zq) {
        card.setItem("00", "58", "D0");
        card.setItem("00", "57", "D2");
        card.setItem("00", "60", "D0");
        card.setItem("00", "61", "D" + rs485);
    }
    if (mode) card.setItem("00", "55", "DSLAVE");
    card.setItem("17", "30", "D1A2B");
    for (int i = 0; i < 10; ++i)
        card.setItem("17", item(31 + i), i < 2 ? QStringLiteral("D%1").arg(11 + 4 * i) : "D0");
    card.setItem("17", "41", "D0001");
    card.setItem("17", "42", "DPLANT-A");
    card.setItem("17", "43", "D0123456789ABCDEF0123456789ABCDEF");
    if (!zrv1f) card.setItem("17", "44", "D60");
    card.setItem("17", "45", "D2");
    card.setItem("17", "46", "D0");
    card.setItem("17", "47", "D1");
    card.setItem("17", "48", "D0");
    card.setItem("17", "49", "D0000");
    card.setItem("17", "50", "D0");
    card.setItem("17", "76", "DMAC:00-0B-2F-5A-13-7C");
    if (extras) {
        card.setItem("17", "26", "D0");
        card.setItem("17", "27", "D0");
        card.setItem("17", "28", "D0");
        card.setItem("17", "29", "D3");
    }

    const auto common = card.onData;
    card.onData = [=](SimCard &c, const QString &group, const QString &itemText,
                      const QString &data, qint64 ms) -> std::optional<QString> {
        const QString refused = QStringLiteral("CNG");
        const int n = itemText.toInt();
        if (group == QLatin1String("00") && n == 55) {
            // The card keeps the mode as its word.
            if (data != QLatin1String("1") && data != QLatin1String("2")) return refused;
            c.setItem(group, itemText, data == QLatin1String("1") ? "DSLAVE" : "DRELAY");
            return "D" + data;
        }
        if (group == QLatin1String("00") && n == 61 && data != rs485 && data != wireless)
            return refused;
        if (group == QLatin1String("17")) {
            if (n == 30 && (data.size() != 4 || !isHex(data) || data.toUpper() == "FFFF"))
                return refused;
            if (n >= 31 && n <= 40 && !numberUpTo(data, channelMax)) return refused;
            if (n == 43 && (data.size() != 32 || !isHex(data))) return refused;
            if (n == 46 && !numberUpTo(data, extras ? 3 : 2)) return refused;
            if (n == 76) return refused;
        }
        return common(c, group, itemText, data, ms);
    };
}
