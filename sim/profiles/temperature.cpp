#include "temperature.h"

#include "support.h"

using namespace SimProfile;

namespace {

// The version as a number once its first dot is gone ("1.20" is 120), from its leading digits.
int versionNumber(const QString &version) {
    QString digits = version;
    digits.remove(digits.indexOf(QLatin1Char('.')), 1);
    int value = 0;
    for (QChar c : digits) {
        if (!c.isDigit() || value > 100000) break;
        value = value * 10 + c.digitValue();
    }
    return value;
}

// What a thermocouple card says of its channels' sensors.
const char *const kThermocouples[] = {"K", "K", "J", "T", "K", "E", "R", "K"};

} // namespace

void InstallTemperatureProfile(SimCard &card) {
    const QString &m = card.model;
    const bool mixed = m.startsWith(QLatin1String("QFR"));
    const bool resistance = m.startsWith(QLatin1String("QR"));
    const bool zeroOffsets = m.startsWith(QLatin1String("QP8A"));
    const int channels = mixed || m.mid(2, 1) == QLatin1String("8") ? 8 : 4;
    // The mixed card has resistance sensors on channels 1 and 2; its bases serve channels 1-4.
    const int baseChannels = mixed ? 4 : channels;

    setAnalogChannels(card, channels, "0.00", "1.0000");
    for (int ch = 1; ch <= baseChannels; ++ch) {
        const bool rtd = resistance || mixed;
        card.setItem("02", item(2 * ch + 8), rtd ? "D-200.0" : "D0.0");
        card.setItem("02", item(2 * ch + 9), rtd ? "D600.0" : "D1200.0");
    }
    if (mixed) {
        for (int ch = 1; ch <= 4; ++ch)
            card.setItem("00", item(54 + ch), ch <= 2 ? "DQR" : "DQF");
        card.setItem("00", "59", "DUP");
        card.setItem("00", "60", "Ddeg.C");
        card.setItem("03", "01", "D1");
        for (int ch = 1; ch <= 4; ++ch)
            card.setItem("03", item(ch + 39), ch <= 2 ? "D0.25" : "D0.00");
    } else {
        for (int ch = 1; ch <= channels; ++ch)
            card.setItem("00", item(24 + ch),
                         resistance ? QStringLiteral("DPt100")
                                    : "D" + QLatin1String(kThermocouples[ch - 1]));
        card.setItem("00", "20", "DUP");
        card.setItem("00", "19", "Ddeg.C");
    }
    // The limit option: the card answers "ENA" or "DIS" for what was written as "1" or "0".
    if (m.startsWith(QLatin1String("QP")) && (versionNumber(card.version) >= 10 || zeroOffsets))
        card.setItem("00", "56", "DDIS");
    if (zeroOffsets) {
        card.setItem("03", "01", "D1");
        for (int index = 0; index < 8; ++index)
            card.setItem("03", item(50 + index), "D0.00");
    }

    card.onWrite = [](SimCard &c, const QString &group, const QString &it, const QString &data) {
        if (group == QLatin1String("00") && it == QLatin1String("56") &&
            c.groups["00"].contains("56"))
            c.setItem("00", "56", data == QLatin1String("1") ? "DENA" : "DDIS");
    };
    // A "1" to a channel's offset item measures the channel now and stores its offset; the
    // offset items answer a write with what they then hold.
    card.onData = [zeroOffsets](SimCard &c, const QString &group, const QString &it,
                                const QString &data, qint64) -> std::optional<QString> {
        const int index = it.toInt() - 50;
        if (!zeroOffsets || group != QLatin1String("03") || index < 0 || index >= 8)
            return std::nullopt;
        QString held = "D" + data;
        if (data == QLatin1String("1"))
            held = "D" + QString::number(driftingValue(index + 1, index * 977 + 400, 0.0, 0.6),
                                         'f', 2);
        c.setItem("03", it, held);
        return held;
    };
    card.live = [channels](const QString &group, const QString &it,
                           qint64 ms) -> std::optional<QString> {
        const int ch = liveChannel(it, channels);
        if (group != QLatin1String("00") || ch == 0) return std::nullopt;
        return QStringLiteral("D%1:%2").arg(ch).arg(drifting(ch, ms, 20.0 + 5 * ch, 3.0, 1));
    };
}
