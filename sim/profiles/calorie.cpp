#include "profiles/calorie.h"

#include "profiles/support.h"

#include <QMap>
#include <memory>

using namespace SimProfile;

namespace {

// A total that grows at its pace from the value it last took. A preset is noted when it is
// written and starts to run at the card's next read, which is the first moment it knows the time.
struct Total {
    double base = 0.0;
    qint64 since = 0;
    bool started = true;
    double perSecond = 0.0;

    double at(qint64 ms) {
        if (!started) {
            since = ms;
            started = true;
        }
        return base + perSecond * static_cast<double>(ms - since) / 1000.0;
    }
};

// The live item of the total that a preset item sets: cooling flow, cooling calories, heating
// flow and heating calories of each channel.
int totalOfPreset(int preset) {
    const int e = ((preset - 26) / 2) % 2 + 1;
    const bool calories = preset >= 30;
    const bool heating = preset % 2 == 1;
    return 8 * (e - 1) + 14 + (calories ? 1 : 0) + (heating ? 2 : 0);
}

void setSettingItems(SimCard &card) {
    card.setItem("01", "01", "D1");
    card.setItem("02", "01", "D1");
    for (int e = 1; e <= 2; ++e) {
        card.setItem("01", item(2 * e + 14), "D0.00");
        card.setItem("01", item(2 * e + 15), "D100.00");
        card.setItem("01", item(2 * e + 8), "D0.00");
        card.setItem("01", item(2 * e + 9), "D1.0000");
        card.setItem("02", item(2 * e + 8), "D1.0000");
        card.setItem("02", item(2 * e + 9), "D1.0000");
        card.setItem("02", item(e + 13), "D0.50");
        card.setItem("02", item(e + 15), "D0.20");
        card.setItem("02", item(e + 17), "D0.50");
        card.setItem("02", item(2 * e + 18), "D0.00");
        card.setItem("02", item(2 * e + 19), "D0.00");
    }
    card.setItem("02", "43", "D0");
    for (int preset = 26; preset <= 33; ++preset)
        card.setItem("02", item(preset), "D0.00");
    card.setItem("00", "56", "D1.000");
    card.setItem("00", "69", "D0");
    card.setItem("00", "70", "D1");
    card.setItem("00", "71", "D24.8");
}

// Channel 1 cools water at 7 degrees, channel 2 heats it at 45.
std::optional<QString> liveValue(int n, qint64 ms, QMap<int, Total> &totals) {
    const int e = n >= 18 && n <= 25 ? 2 : 1;
    const double supply = e == 1 ? 7.0 : 45.0;
    switch (n) {
    case 10:
    case 18:
        return drifting(n, ms, supply, 0.4, 1);
    case 11:
    case 19:
        return drifting(n, ms, e == 1 ? 12.0 : 38.0, 0.3, 1);
    case 12:
    case 20:
        return drifting(n, ms, e == 1 ? 12.5 : 4.2, 0.8);
    case 13:
    case 21:
        return drifting(n, ms, e == 1 ? 260.0 : 1.2, e == 1 ? 15.0 : 0.1);
    case 27:
    case 29:
        return QStringLiteral("1");
    case 28:
        return QStringLiteral("1");
    case 30:
        return QStringLiteral("2");
    case 61:
    case 62:
        return QStringLiteral("m3/h");
    case 63:
        return QStringLiteral("MJ/h");
    case 64:
        return QStringLiteral("GJ/h");
    case 65:
    case 66:
        return QStringLiteral("Pt100");
    default:
        break;
    }
    if (totals.contains(n)) return QString::number(totals[n].at(ms), 'f', 2);
    return std::nullopt;
}

} // namespace

void InstallCalorieMeterProfile(SimCard &card) {
    setSettingItems(card);
    auto totals = std::make_shared<QMap<int, Total>>();
    for (int preset = 26; preset <= 33; ++preset) {
        const int n = totalOfPreset(preset);
        // Only the running mode of a channel counts: cooling on 1, heating on 2.
        const bool running = n == 14 || n == 15 || n == 24 || n == 25;
        const bool calories = n % 2 == 1;
        (*totals)[n] = {100.0 * (n - 13) + 0.25, 0, true, running ? (calories ? 0.12 : 0.05) : 0.0};
    }
    card.live = [totals](const QString &group, const QString &itemText,
                         qint64 ms) -> std::optional<QString> {
        if (group != QLatin1String("00")) return std::nullopt;
        const int n = itemText.toInt();
        if (const auto value = liveValue(n, ms, *totals))
            return QStringLiteral("D%1:%2").arg(n).arg(*value);
        return std::nullopt;
    };
    card.onWrite = [totals](SimCard &, const QString &group, const QString &itemText,
                            const QString &data) {
        const int preset = itemText.toInt();
        if (group != QLatin1String("02") || preset < 26 || preset > 33) return;
        bool ok = false;
        const double value = data.toDouble(&ok);
        if (!ok) return;
        Total &total = (*totals)[totalOfPreset(preset)];
        total.base = value;
        total.started = false;
    };
}
