#include "profiles/current.h"

#include "cardprofiles.h"
#include "profiles/support.h"

using namespace SimProfile;

void InstallCurrentProfile(SimCard &card) {
    const QString &m = card.model;
    const int channels = m.startsWith(QLatin1String("QL8")) ? 8 : 4;
    InstallVoltageProfile(card, channels);
    // The QL4A, QL4B and QL8 keep their bases above the adjusts' numbers.
    const bool high = channels == 8 || startsWithAny(m, {"QL4A", "QL4B"});
    const int offset = high ? 24 : 8;
    if (!m.startsWith(QLatin1String("QM"))) {
        for (int ch = 1; ch <= channels; ++ch) {
            card.setItem("02", item(2 * ch + offset), "D0");
            card.setItem("02", item(2 * ch + offset + 1), "D5000");
        }
    }
    card.live = [channels](const QString &group, const QString &itemText,
                           qint64 ms) -> std::optional<QString> {
        const int ch = liveChannel(itemText, channels);
        if (group != QLatin1String("00") || ch == 0) return std::nullopt;
        return QStringLiteral("D%1:%2").arg(ch).arg(drifting(ch, ms, 2500.0, 2000.0, 0));
    };
}
