#pragma once

#include "simrack.h"

#include <QString>
#include <QtMath>
#include <initializer_list>

// Small pieces every card profile uses: prefix tests, item numbers, values that move.
namespace SimProfile {

inline bool startsWithAny(const QString &name, std::initializer_list<const char *> prefixes) {
    for (const char *prefix : prefixes)
        if (name.startsWith(QLatin1String(prefix))) return true;
    return false;
}

// An item number as the program sends it in stores' keys: two digits at least ("07", "42").
inline QString item(int n) {
    return QStringLiteral("%1").arg(n, 2, 10, QLatin1Char('0'));
}

// A value that drifts slowly, different for every channel, so a watching user sees it live.
inline double driftingValue(int ch, qint64 ms, double centre, double swing) {
    return centre + swing * qSin(ms / 1500.0 + ch * 0.7);
}
inline QString drifting(int ch, qint64 ms, double centre, double swing, int decimals = 2) {
    return QString::number(driftingValue(ch, ms, centre, swing), 'f', decimals);
}

// The four fields of group 01 and the "Unused" flags of group 02 that every analog channel has,
// with the openings of both groups.
inline void setAnalogChannels(SimCard &card, int channels, const QString &zeroAdjust,
                              const QString &fullAdjust) {
    card.setItem("01", "01", "D1");
    card.setItem("02", "01", "D1");
    for (int ch = 1; ch <= channels; ++ch) {
        card.setItem("01", item(2 * ch + 40), "D0");
        card.setItem("01", item(2 * ch + 41), "D10000");
        card.setItem("01", item(2 * ch + 8), "D" + zeroAdjust);
        card.setItem("01", item(2 * ch + 9), "D" + fullAdjust);
        card.setItem("02", item(ch + 41), "D0");
    }
}

// The channel of a live item 9 + ch, or 0 when the item is none of `channels` channels.
inline int liveChannel(const QString &itemText, int channels, int firstItem = 10) {
    const int ch = itemText.toInt() - firstItem + 1;
    return ch >= 1 && ch <= channels ? ch : 0;
}

} // namespace SimProfile
