#include "profiles/millivolt.h"

#include "cardprofiles.h"
#include "profiles/support.h"

#include <memory>

using namespace SimProfile;

void InstallMillivoltProfile(SimCard &card) {
    const int channels = card.model.startsWith(QLatin1String("QS8")) ? 8 : 4;
    InstallVoltageProfile(card, channels);
    for (int ch = 1; ch <= channels; ++ch) {
        card.setItem("02", item(2 * ch + 8), "D0");
        card.setItem("02", item(2 * ch + 9), "D50");
    }
    // The bases as the card last had them written, so the percentage follows a Download.
    auto bases = std::make_shared<QMap<QString, double>>();
    card.onWrite = [bases](SimCard &, const QString &group, const QString &itemText,
                           const QString &data) {
        if (group == QLatin1String("02")) (*bases)[itemText] = data.toDouble();
    };
    card.live = [channels, bases](const QString &group, const QString &itemText,
                                  qint64 ms) -> std::optional<QString> {
        if (group == QLatin1String("00"))
            if (const int ch = liveChannel(itemText, channels))
                return QStringLiteral("D%1:%2").arg(ch).arg(drifting(ch, ms, 25.0, 20.0));
        if (group == QLatin1String("02"))
            if (const int ch = liveChannel(itemText, channels, 60)) {
                const double zero = bases->value(item(2 * ch + 8), 0.0);
                const double full = bases->value(item(2 * ch + 9), 50.0);
                const double value = driftingValue(ch, ms, 25.0, 20.0);
                const double percent = full == zero ? 0.0 : (value - zero) / (full - zero) * 100;
                return QStringLiteral("D%1:%2").arg(ch).arg(percent, 0, 'f', 1);
            }
        return std::nullopt;
    };
}

void InstallLoadCellProfile(SimCard &card) {
    InstallVoltageProfile(card, 2);
    for (int ch = 1; ch <= 2; ++ch) {
        card.setItem("01", item(ch + 7), "D1.000"); // tare ratio
        card.setItem("01", item(ch + 5), "D2.000"); // load ratio
        card.setItem("01", item(ch + 3), "D0");     // threshold adjust
    }
    card.live = [](const QString &group, const QString &itemText,
                   qint64 ms) -> std::optional<QString> {
        const int ch = liveChannel(itemText, 2);
        if (group != QLatin1String("00") || ch == 0) return std::nullopt;
        return QStringLiteral("D%1:%2").arg(ch).arg(drifting(ch, ms, 500.0, 120.0, 1));
    };
}
