#include "profiles/power.h"

#include "profiles/support.h"

#include <memory>

using namespace SimProfile;

namespace {

// When the counters last stood at zero. A clear is only noted when it is written and takes
// effect at the card's next read, which is the first moment the card knows the time.
struct Counters {
    qint64 zeroAt = 0;
    bool clearAsked = false;
};

QString hexWord(qint64 value) {
    return QStringLiteral("%1").arg(value & 0xFFFF, 4, 16, QLatin1Char('0')).toUpper();
}

// An energy counter in units since the last clear; each counter runs at its own pace.
qint64 energy(int counter, qint64 elapsedMs) {
    return elapsedMs * (7 + 5 * counter) / 1000;
}

// A power word: a drifting reading around a third of the word's range.
qint64 power(int circuit, qint64 ms) {
    return static_cast<qint64>(driftingValue(circuit, ms, 12000.0, 3000.0));
}

// The one-circuit card: W, var, cos, Hz, then four counters of two words each (low, high).
QString oneCircuitWord(int index, qint64 ms, qint64 elapsed) {
    switch (index) {
    case 0:
        return hexWord(power(1, ms));
    case 1:
        return hexWord(power(2, ms) / 4);
    case 2:
        return hexWord(static_cast<qint64>(driftingValue(3, ms, 960.0, 20.0)));
    case 3:
        return hexWord(static_cast<qint64>(driftingValue(4, ms, 5000.0, 5.0)));
    default:
        break;
    }
    const qint64 count = energy((index - 4) / 2, elapsed);
    return hexWord(index % 2 == 0 ? count : count >> 16);
}

// The four-circuit card by its word layout: counter 2(e-1) is circuit e's Whi, the next its Who.
QString fourCircuitWord(QChar layout, int index, qint64 ms, qint64 elapsed) {
    const auto single = [&](int counter) { return hexWord(energy(counter, elapsed)); };
    const auto split = [&](int counter, bool high) {
        const qint64 count = energy(counter, elapsed);
        return hexWord(high ? count >> 16 : count);
    };
    switch (layout.toLatin1()) {
    case '0':
        if (index < 4) return hexWord(power(index + 1, ms));
        if (index < 12) return single(2 * ((index - 4) % 4) + (index < 8 ? 0 : 1));
        return hexWord(0);
    case '1':
        if (index < 4) return hexWord(power(index + 1, ms));
        if (index < 12) return split(2 * ((index - 4) / 2), index % 2 == 1);
        return hexWord(0);
    case '2':
        if (index < 8) return single(2 * (index % 4) + (index < 4 ? 0 : 1));
        return hexWord(0);
    case '3':
        return split(2 * ((index % 8) / 2) + (index < 8 ? 0 : 1), index % 2 == 1);
    default:
        return hexWord(power(index % 4 + 1, ms));
    }
}

void setScalingItems(SimCard &card, int circuits, bool otherCurrentItems) {
    card.setItem("01", "01", "D1");
    for (int e = 1; e <= 4; ++e) {
        card.setItem("01", item(2 * e + 8), "D0.000");
        card.setItem("01", item(2 * e + 9), "D1.0000");
    }
    card.setItem("01", "58", "D110");
    card.setItem("01", "59", "D1");
    card.setItem("01", "60", "D110");
    card.setItem("01", "81", "D0");
    card.setItem("01", "82", "D0.5");
    for (int e = 1; e <= circuits; ++e) {
        if (otherCurrentItems) {
            card.setItem("01", item(2 * e + 81), "D5");
            card.setItem("01", item(2 * e + 82), "D1");
        } else {
            card.setItem("01", item(3 * e + 58), "D5");
            card.setItem("01", item(3 * e + 59), "D1");
            card.setItem("01", item(3 * e + 60), "D5");
        }
    }
    if (circuits == 1) {
        for (const auto &[n, value] : {std::pair{18, "D3"},
                                       {19, "D3"},
                                       {42, "D0"},
                                       {35, "D999999"},
                                       {44, "D0"},
                                       {37, "D999999"},
                                       {50, "D1000"},
                                       {51, "D2"}})
            card.setItem("01", item(n), value);
        return;
    }
    for (int e = 1; e <= 4; ++e) {
        card.setItem("01", item(e + 17), "D3");
        card.setItem("01", item(2 * e + 48), "D1000");
        card.setItem("01", item(2 * e + 49), "D2");
    }
}

} // namespace

void InstallPowerTransducerProfile(SimCard &card) {
    const QString model = card.model;
    const bool four = model.startsWith(QLatin1String("XD4"));
    const QChar variant = model.size() > 3 ? model.at(3) : QChar();
    setScalingItems(card, four ? 4 : 1, variant == QLatin1Char('A') || variant == QLatin1Char('B'));

    auto counters = std::make_shared<Counters>();
    const int words = four ? 16 : 12;
    const QChar layout = model.size() > 7 ? model.at(7) : QChar();
    card.live = [counters, four, words, layout](const QString &group, const QString &itemText,
                                                qint64 ms) -> std::optional<QString> {
        const int index = liveChannel(itemText, words) - 1;
        if (group != QLatin1String("00") || index < 0) return std::nullopt;
        if (counters->clearAsked) {
            counters->zeroAt = ms;
            counters->clearAsked = false;
        }
        const qint64 elapsed = ms - counters->zeroAt;
        const QString word =
            four ? fourCircuitWord(layout, index, ms, elapsed) : oneCircuitWord(index, ms, elapsed);
        return QStringLiteral("D%1:%2").arg(index + 1).arg(word);
    };
    card.onWrite = [counters](SimCard &, const QString &group, const QString &itemText,
                              const QString &data) {
        if (group == QLatin1String("01") && itemText == QLatin1String("81") &&
            data == QLatin1String("1"))
            counters->clearAsked = true;
    };
}
