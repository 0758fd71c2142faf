#include "cardprofiles.h"

#include <QtMath>
#include <memory>

namespace {

bool startsWithAny(const QString &name, std::initializer_list<const char *> prefixes) {
    for (const char *prefix : prefixes)
        if (name.startsWith(QLatin1String(prefix))) return true;
    return false;
}

// A value that drifts slowly, different for every channel, so a watching user sees it live.
QString drifting(int ch, qint64 ms, double centre, double swing) {
    const double v = centre + swing * qSin(ms / 1500.0 + ch * 0.7);
    return QString::number(v, 'f', 2);
}

} // namespace

void InstallVoltageProfile(SimCard &card, int channels) {
    card.setItem("01", "01", "D1");
    card.setItem("02", "01", "D1");
    for (int ch = 1; ch <= channels; ++ch) {
        const auto item = [](int n) { return QStringLiteral("%1").arg(n, 2, 10, QLatin1Char('0')); };
        card.setItem("01", item(2 * ch + 40), "D0");
        card.setItem("01", item(2 * ch + 41), "D10000");
        card.setItem("01", item(2 * ch + 8), "D0.0");
        card.setItem("01", item(2 * ch + 9), "D0.000");
        card.setItem("02", item(ch + 41), "D0");
    }
    card.live = [channels](const QString &group, const QString &item,
                           qint64 ms) -> std::optional<QString> {
        const int ch = item.toInt() - 9;
        if (group != QLatin1String("00") || ch < 1 || ch > channels) return std::nullopt;
        return QStringLiteral("D%1:%2").arg(ch).arg(drifting(ch, ms, 50.0, 45.0));
    };
}

void InstallMultiPowerProfile(SimCard &card) {
    card.setItem("01", "01", "D1");
    for (int item = 10; item <= 17; ++item)
        card.setItem("01", QString::number(item), "D0.0");
    card.live = [](const QString &group, const QString &item, qint64 ms) -> std::optional<QString> {
        const int ch = item.toInt() - 9;
        if (group != QLatin1String("01") || ch < 1 || ch > 8) return std::nullopt;
        return QStringLiteral("D%1:%2").arg(ch).arg(drifting(ch, ms, 200.0, 20.0));
    };
}

void InstallCalorieProfile(SimCard &card) {
    card.setItem("01", "01", "D1");
    // Now and then a channel is still measuring and says so; the next read has the value.
    auto reads = std::make_shared<int>(0);
    card.live = [reads](const QString &group, const QString &item,
                        qint64 ms) -> std::optional<QString> {
        const int ch = item.toInt() - 9;
        if (group != QLatin1String("00") || ch < 1 || ch > 4) return std::nullopt;
        if (++*reads % 7 == 0) return QStringLiteral("D%1:TMOUT").arg(ch);
        return QStringLiteral("D%1:%2").arg(ch).arg(drifting(ch, ms, 1200.0, 300.0));
    };
}

void InstallPulseProfile(SimCard &card) {
    card.setItem("01", "01", "D1");
    card.live = [](const QString &group, const QString &item, qint64 ms) -> std::optional<QString> {
        const int ch = item.toInt() - 9;
        if (group != QLatin1String("00") || ch < 1 || ch > 4) return std::nullopt;
        return QStringLiteral("D%1:%2").arg(ch).arg((ms / 100 + ch * 1000) % 100000);
    };
}

bool InstallProfile(SimCard &card) {
    const QString &m = card.model;
    if (startsWithAny(m, {"QF4", "QG4", "QH4", "QJ4", "QK4"})) {
        InstallVoltageProfile(card, 4);
    } else if (startsWithAny(m, {"QF8", "QG8", "QH8", "QJ8", "QK8"})) {
        InstallVoltageProfile(card, 8);
    } else if (startsWithAny(m, {"QF1", "QG1"})) {
        InstallVoltageProfile(card, 16);
    } else if (startsWithAny(m, {"XDU"})) {
        InstallMultiPowerProfile(card);
    } else if (startsWithAny(m, {"XE"})) {
        InstallCalorieProfile(card);
    } else if (startsWithAny(m, {"QZ8"})) {
        InstallPulseProfile(card);
    } else {
        return false;
    }
    return true;
}
