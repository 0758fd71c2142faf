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

// The channel of a live item 9 + ch, or 0 when the item is none of `channels` channels.
inline int liveChannel(const QString &itemText, int channels, int firstItem = 10) {
    const int ch = itemText.toInt() - firstItem + 1;
    return ch >= 1 && ch <= channels ? ch : 0;
}

} // namespace SimProfile
