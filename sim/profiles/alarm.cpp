#include "alarm.h"

#include "support.h"

#include <array>
#include <memory>

using namespace SimProfile;

namespace {

constexpr int kMaxChannels = 8;

// The set points and levels as the card holds them, so its alarm words follow what was written.
struct AlarmSettings {
    std::array<std::array<double, 4>, kMaxChannels + 1> setPoint{};
    std::array<std::array<bool, 4>, kMaxChannels + 1> high{};
};

// Two low alarms and two high ones a channel, around a value that swings from 5 to 95.
const double kSetPoints[] = {10.0, 25.0, 75.0, 90.0};
const bool kHigh[] = {false, false, true, true};

double channelValue(int ch, qint64 ms) {
    return driftingValue(ch, ms, 50.0, 45.0);
}

// The alarm word of channels first..first+3: alarm a of a channel is bit (ch-first)*4 + a-1.
QString alarmWord(const AlarmSettings &s, int first, int channels, qint64 ms) {
    uint word = 0;
    for (int ch = first; ch < first + 4 && ch <= channels; ++ch) {
        const double value = channelValue(ch, ms);
        for (int a = 0; a < 4; ++a) {
            const double point = s.setPoint.at(ch).at(a);
            const bool tripped = s.high.at(ch).at(a) ? value > point : value < point;
            if (tripped) word |= 1u << ((ch - first) * 4 + a);
        }
    }
    return QStringLiteral("D%1").arg(word, 4, 16, QLatin1Char('0')).toUpper();
}

} // namespace

void InstallAlarmProfile(SimCard &card) {
    const QString &m = card.model;
    const int channels = m.mid(2, 1) == QLatin1String("8") ? 8 : 4;
    const bool otherGroup = m.startsWith(QLatin1String("QC")) || m.startsWith(QLatin1String("QD"));
    const QString group = otherGroup ? QStringLiteral("12") : QStringLiteral("04");
    auto settings = std::make_shared<AlarmSettings>();

    card.setItem(group, "01", "D1");
    card.setItem("02", "01", "D1");
    card.setItem(group, "07", "D5");
    card.setItem(group, "08", "D2");
    card.setItem(group, "09", "D0");
    for (int ch = 1; ch <= channels; ++ch) {
        for (int a = 0; a < 4; ++a) {
            settings->setPoint.at(ch).at(a) = kSetPoints[a];
            settings->high.at(ch).at(a) = kHigh[a];
            card.setItem(group, item(ch * 10 + a), "D" + QString::number(kSetPoints[a], 'f', 1));
            card.setItem(group, item(ch * 10 + 5 + a), kHigh[a] ? "D1" : "D0");
        }
        card.setItem(group, item(ch * 10 + 4), "D1.0");
        card.setItem("02", item(ch + 41), "D0");
    }

    card.onWrite = [settings, group, channels](SimCard &, const QString &g, const QString &it,
                                               const QString &data) {
        const int n = it.toInt();
        const int ch = n / 10;
        const int field = n % 10;
        if (g != group || ch < 1 || ch > channels) return;
        bool ok = false;
        const double value = data.toDouble(&ok);
        if (field < 4 && ok) settings->setPoint.at(ch).at(field) = value;
        if (field >= 5 && field <= 8) settings->high.at(ch).at(field - 5) = data == "1";
    };
    card.live = [settings, channels](const QString &g, const QString &it,
                                     qint64 ms) -> std::optional<QString> {
        if (g != QLatin1String("00")) return std::nullopt;
        if (const int ch = liveChannel(it, channels, 14))
            return QStringLiteral("D%1:%2").arg(ch).arg(channelValue(ch, ms), 0, 'f', 2);
        if (it == QLatin1String("10")) return alarmWord(*settings, 1, channels, ms);
        if (it == QLatin1String("11") && channels > 4) return alarmWord(*settings, 5, channels, ms);
        return std::nullopt;
    };
}
