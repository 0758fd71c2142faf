#include "cardprofiles.h"

#include "profiles/alarm.h"
#include "profiles/calorie.h"
#include "profiles/current.h"
#include "profiles/field.h"
#include "profiles/gateway.h"
#include "profiles/millivolt.h"
#include "profiles/multipower.h"
#include "profiles/power.h"
#include "profiles/pulse.h"
#include "profiles/qjs8.h"
#include "profiles/support.h"
#include "profiles/temperature.h"
#include "profiles/universal.h"

#include <memory>

using namespace SimProfile;

void InstallVoltageProfile(SimCard &card, int channels) {
    setAnalogChannels(card, channels, "0.0", "0.000");
    card.live = [channels](const QString &group, const QString &item,
                           qint64 ms) -> std::optional<QString> {
        const int ch = item.toInt() - 9;
        if (group != QLatin1String("00") || ch < 1 || ch > channels) return std::nullopt;
        return QStringLiteral("D%1:%2").arg(ch).arg(drifting(ch, ms, 50.0, 45.0));
    };
}

namespace {

// A discrete channel's state at a moment: each channel toggles at its own pace, so a watching
// user sees the fields and lamps change.
int discreteBit(int ch, qint64 ms) {
    return static_cast<int>((ms / (400 + 90 * (ch % 7)) + ch) % 2);
}

// The states of channels first..first+count-1 as hexadecimal digits, channel `first` in bit 0.
QString discreteHex(int first, int count, qint64 ms, int digits) {
    uint word = 0;
    for (int n = 0; n < count; ++n)
        if (discreteBit(first + n, ms)) word |= 1u << n;
    return QStringLiteral("%1").arg(word, digits, 16, QLatin1Char('0')).toUpper();
}

// Outputs follow their own pattern, different from the inputs of the same channel.
int outputBit(int ch, qint64 ms) {
    return discreteBit(ch + 11, ms);
}

QString outputHex(int count, qint64 ms, int digits) {
    uint word = 0;
    for (int n = 0; n < count; ++n)
        if (outputBit(n + 1, ms)) word |= 1u << n;
    return QStringLiteral("%1").arg(word, digits, 16, QLatin1Char('0')).toUpper();
}

} // namespace

void InstallDiscreteProfile(SimCard &card, int channels) {
    const QString group = channels > 16 ? QStringLiteral("01") : QStringLiteral("00");
    card.setItem("01", "01", "D1");
    card.live = [channels, group](const QString &g, const QString &item,
                                  qint64 ms) -> std::optional<QString> {
        if (g == group)
            if (const int ch = liveChannel(item, channels))
                return "D" + QString::number(discreteBit(ch, ms));
        // The overview's words: channels 1-16 and 17-32.
        if (channels <= 16 && g == QLatin1String("00") && item == QLatin1String("27"))
            return "D" + discreteHex(1, channels, ms, 4);
        if (channels > 16 && g == QLatin1String("01") && item == QLatin1String("06"))
            return "D" + discreteHex(1, 16, ms, 4);
        if (channels > 16 && g == QLatin1String("01") && item == QLatin1String("07"))
            return "D" + discreteHex(17, 16, ms, 4);
        return std::nullopt;
    };
}

void InstallInOutProfile(SimCard &card) {
    const QString &m = card.model;
    const bool xb16 = m.startsWith(QLatin1String("XB1"));
    const bool xc8 = m.startsWith(QLatin1String("XC8"));
    const int channels = xb16 ? 16 : 8;
    card.setItem("01", "01", "D1");
    card.live = [xb16, xc8, channels](const QString &g, const QString &item,
                                      qint64 ms) -> std::optional<QString> {
        if (g != QLatin1String("00")) return std::nullopt;
        if (const int ch = liveChannel(item, channels)) {
            const QString in = QString::number(discreteBit(ch, ms));
            const QString out = QString::number(outputBit(ch, ms));
            if (xb16) return "D" + in + out;
            if (xc8) return "D" + out + in;
            return QStringLiteral("D%1,%2,%2").arg(in, out);
        }
        if (xb16 && item == QLatin1String("27")) return "D" + discreteHex(1, 16, ms, 4);
        if (xb16 && item == QLatin1String("26"))
            return "D" + discreteHex(1, 16, ms, 4) + outputHex(16, ms, 4);
        if (xc8 && item == QLatin1String("26"))
            return "D" + discreteHex(1, 8, ms, 2) + outputHex(8, ms, 2);
        if (!xb16 && !xc8 && item == QLatin1String("18")) {
            const QString out = outputHex(8, ms, 2);
            return QStringLiteral("D%1,%2,%2").arg(discreteHex(1, 8, ms, 2), out);
        }
        return std::nullopt;
    };
}

void InstallBcdProfile(SimCard &card) {
    card.setItem("01", "01", "D1");
    card.setItem("01", "15", "D1");
    card.setItem("01", "16", "D0");
    card.setItem("01", "17", "D1");
    card.live = [](const QString &g, const QString &item, qint64 ms) -> std::optional<QString> {
        if (g != QLatin1String("00")) return std::nullopt;
        if (item == QLatin1String("10")) return QStringLiteral("D%1").arg((ms / 1000) % 10000);
        if (item == QLatin1String("11")) return QStringLiteral("D%1").arg((ms / 100) % 10000);
        return std::nullopt;
    };
}

void InstallXF2Profile(SimCard &card) {
    card.live = [](const QString &g, const QString &item, qint64 ms) -> std::optional<QString> {
        const int ch = liveChannel(item, 8);
        if (g != QLatin1String("00") || ch == 0) return std::nullopt;
        return QStringLiteral("D%1:%2").arg(ch).arg(drifting(ch, ms, 20.0, 5.0));
    };
}

namespace {

struct ProfileRow {
    std::initializer_list<const char *> prefixes;
    void (*install)(SimCard &card);
};

// The first row whose prefix begins the model wins, so a longer prefix stands before a shorter
// one that would also fit. A new family adds its rows here.
const ProfileRow kProfiles[] = {
    {{"QF4", "QG4", "QH4", "QJ4", "QK4"}, [](SimCard &c) { InstallVoltageProfile(c, 4); }},
    {{"QF8", "QG8", "QH8", "QJ8", "QK8"}, [](SimCard &c) { InstallVoltageProfile(c, 8); }},
    {{"QF1", "QG1"}, [](SimCard &c) { InstallVoltageProfile(c, 16); }},
    {{"QP4", "QR4", "QP8", "QR8", "QFR"}, InstallTemperatureProfile},
    {{"QA4", "QB4", "QC4", "QD4", "QE4", "QA8", "QB8", "QC8", "QD8", "QE8"}, InstallAlarmProfile},
    {{"XDU"}, InstallMultiPowerProfile},
    {{"XD1", "XD4"}, InstallPowerTransducerProfile},
    {{"QY2"}, InstallCalorieMeterProfile},
    {{"QZ1", "XA1"}, [](SimCard &c) { InstallCounterProfile(c, 16); }},
    {{"QZ2"}, InstallDualPulseProfile},
    {{"QZ4A", "QZ4B"}, InstallCounter32Profile},
    {{"QZ4"}, InstallPulseInputProfile},
    {{"QZ8"}, [](SimCard &c) { InstallCounterProfile(c, 8); }},
    {{"XE4"}, InstallUniversalProfile},
    {{"QL4", "QM4", "QN4", "QL8"}, InstallCurrentProfile},
    {{"QS4", "QS8"}, InstallMillivoltProfile},
    {{"QX2"}, InstallLoadCellProfile},
    {{"QJS"}, InstallOutputTypeProfile},
    {{"QT8", "QU8"}, [](SimCard &c) { InstallDiscreteProfile(c, 8); }},
    {{"QTC", "XB1", "XC8"}, InstallInOutProfile},
    {{"QT1", "QU1"}, [](SimCard &c) { InstallDiscreteProfile(c, 16); }},
    {{"QT3", "QU3"}, [](SimCard &c) { InstallDiscreteProfile(c, 32); }},
    {{"QT6", "QU6"}, [](SimCard &c) { InstallDiscreteProfile(c, 64); }},
    {{"QV3", "QW3"}, InstallBcdProfile},
    {{"XF2"}, InstallXF2Profile},
    {{"XHK"}, InstallMotorActuatorProfile},
    {{"XG4"}, InstallHartInputProfile},
    {{"HLINK"}, InstallGatewayEntryProfile},
    {{"H"}, InstallGatewaySlotProfile},
};

} // namespace

bool InstallProfile(SimCard &card) {
    for (const ProfileRow &row : kProfiles) {
        if (startsWithAny(card.model, row.prefixes)) {
            row.install(card);
            return true;
        }
    }
    return false;
}
