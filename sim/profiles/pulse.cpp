#include "pulse.h"

#include "support.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <vector>

using namespace SimProfile;

namespace {

// Counters at steady rates. A write hook has no clock, so a value set by the program takes its
// moment from the next read; nothing but a read can tell the difference.
class CounterBank {
public:
    explicit CounterBank(std::vector<SimCounterStart> starts) {
        for (const SimCounterStart &start : starts)
            m_counters.push_back({start.value, start.perSecond, 0, std::nullopt});
    }

    quint64 value(int n, qint64 ms) {
        Counter &c = m_counters.at(static_cast<size_t>(n - 1));
        if (c.pending) {
            c.start = *c.pending;
            c.since = ms;
            c.pending.reset();
        }
        return c.start + quint64(std::max<qint64>(0, ms - c.since)) * quint64(c.perSecond) / 1000;
    }
    int rate(int n) const { return m_counters.at(static_cast<size_t>(n - 1)).perSecond; }
    int size() const { return static_cast<int>(m_counters.size()); }

    void set(int n, quint64 value) {
        if (n >= 1 && n <= size()) m_counters.at(static_cast<size_t>(n - 1)).pending = value;
    }
    void setAll(quint64 value) {
        for (int n = 1; n <= size(); ++n)
            set(n, value);
    }

private:
    struct Counter {
        quint64 start;
        int perSecond;
        qint64 since;
        std::optional<quint64> pending;
    };
    std::vector<Counter> m_counters;
};

// A setting as a number: the data the card was given, 0 for what is no number, and no more
// than 32 bits hold, so that a range of counts never runs over.
quint64 settingValue(const QString &data) {
    bool ok = false;
    const quint64 value = data.toULongLong(&ok);
    return ok ? std::min<quint64>(value, 0xFFFFFFFFu) : 0;
}

QString hexWord(quint64 word) {
    return QStringLiteral("%1").arg(word & 0xFFFF, 4, 16, QLatin1Char('0')).toUpper();
}

// ---------------------------------------------------------------------------------------------

struct DualPulseState {
    CounterBank counters{{{0, 50}, {40000, 120}}};
    // Per channel: the alarm modes (1 speed, 2 position), their first levels, the positions.
    struct Channel {
        quint64 mode[2] = {1, 2};
        quint64 level[2] = {600, 20000};
        quint64 resetPosition = 0;
        quint64 maxPosition = 99999;
    } channels[2];

    int speed(int e, qint64 ms) const {
        return static_cast<int>(driftingValue(e, ms, 500.0, 400.0));
    }
    quint64 position(int e, qint64 ms) {
        const Channel &c = channels[e - 1];
        const quint64 span = c.maxPosition > c.resetPosition ? c.maxPosition - c.resetPosition : 0;
        return c.resetPosition + counters.value(e, ms) % (span + 1);
    }
    // Bit 0: pulses are coming; bits 2 and 3: alarms 1 and 2 on.
    quint64 status(int e, qint64 ms) {
        quint64 word = 1;
        for (int a = 0; a < 2; ++a) {
            const Channel &c = channels[e - 1];
            const quint64 watched = c.mode[a] == 2 ? position(e, ms) : quint64(speed(e, ms));
            if (watched >= c.level[a]) word |= 1u << (2 + a);
        }
        return word;
    }
};

} // namespace

void InstallDualPulseProfile(SimCard &card) {
    card.setItem("01", "01", "D1");
    card.setItem("01", "07", "D5");
    card.setItem("01", "08", "D10");
    card.setItem("01", "09", "D0");
    card.setItem("02", "01", "D1");
    auto state = std::make_shared<DualPulseState>();
    for (int e = 1; e <= 2; ++e) {
        const DualPulseState::Channel &c = state->channels[e - 1];
        const int base = 10 * e + 40;
        card.setItem("01", item(base), QStringLiteral("D%1").arg(c.mode[0]));
        card.setItem("01", item(base + 5), QStringLiteral("D%1").arg(c.mode[1]));
        card.setItem("01", item(base + 1), QStringLiteral("D%1").arg(c.level[0]));
        card.setItem("01", item(base + 6), QStringLiteral("D%1").arg(c.level[1]));
        for (int offset : {3, 8})
            card.setItem("01", item(base + offset), "D0");
        for (int offset : {2, 4, 7, 9})
            card.setItem("01", item(base + offset), "D10");
        card.setItem("01", item(e + 9), "D0");
        card.setItem("01", item(2 * e + 40), "D0");
        card.setItem("01", item(2 * e + 41), "D1000");
        card.setItem("01", item(e + 13), QStringLiteral("D%1").arg(c.resetPosition));
        card.setItem("01", item(e + 17), QStringLiteral("D%1").arg(c.maxPosition));
        card.setItem("01", item(e + 29), "D1000");
    }
    card.live = [state](const QString &g, const QString &i, qint64 ms) -> std::optional<QString> {
        if (g != QLatin1String("00")) return std::nullopt;
        const int n = i.toInt();
        const int e = n >= 14 && n <= 17 ? 2 : 1;
        switch (n) {
        case 10:
        case 14:
            return QStringLiteral("D%1:%2").arg(e).arg(state->speed(e, ms));
        case 11:
        case 15:
            return QStringLiteral("D%1:%2").arg(e).arg(hexWord(state->status(e, ms)));
        case 12:
        case 16:
            return QStringLiteral("D%1:%2").arg(e).arg(state->counters.value(e, ms) & 0xFFFF);
        case 13:
        case 17:
            return QStringLiteral("D%1:%2").arg(e).arg((state->counters.value(e, ms) >> 16) &
                                                       0xFFFF);
        case 57:
        case 58:
            return QStringLiteral("D%1:%2").arg(n - 56).arg(state->position(n - 56, ms));
        }
        return std::nullopt;
    };
    card.onWrite = [state](SimCard &, const QString &g, const QString &i, const QString &data) {
        if (g != QLatin1String("01")) return;
        const int n = i.toInt();
        if (n == 9 && data == QLatin1String("1")) state->counters.setAll(0);
        for (int e = 1; e <= 2; ++e) {
            DualPulseState::Channel &c = state->channels[e - 1];
            const int base = 10 * e + 40;
            if (n == base) c.mode[0] = settingValue(data);
            if (n == base + 5) c.mode[1] = settingValue(data);
            if (n == base + 1) c.level[0] = settingValue(data);
            if (n == base + 6) c.level[1] = settingValue(data);
            if (n == e + 13) c.resetPosition = settingValue(data);
            if (n == e + 17) c.maxPosition = settingValue(data);
        }
    };
}

void InstallPulseInputProfile(SimCard &card) {
    card.setItem("01", "01", "D1");
    card.setItem("02", "01", "D1");
    for (int e = 1; e <= 4; ++e) {
        card.setItem("01", item(e + 9), "D0");
        card.setItem("01", item(e + 25), "D50");
        card.setItem("01", item(e + 29), "D0");
        card.setItem("01", item(e + 53), "D1.000");
        card.setItem("01", item(2 * e + 40), "D0");
        card.setItem("01", item(2 * e + 41), "D10000");
        card.setItem("01", item(e + 49), "D1000");
    }
    card.live = [](const QString &g, const QString &i, qint64 ms) -> std::optional<QString> {
        const int e = liveChannel(i, 4);
        if (g != QLatin1String("00") || e == 0) return std::nullopt;
        return QStringLiteral("D%1:%2").arg(e).arg(drifting(e, ms, 5000.0, 4500.0, 0));
    };
}

void InstallCounter32Profile(SimCard &card) {
    card.setItem("01", "01", "D1");
    card.setItem("01", "09", "D0");
    for (int e = 1; e <= 4; ++e) {
        card.setItem("01", item(2 * e + 12), "D0");
        card.setItem("01", item(2 * e + 13), "D4294967295");
        card.setItem("01", item(e + 29), "D0");
        card.setItem("01", item(e + 25), "D50");
        card.setItem("01", item(e + 57), "D1");
    }
    auto counters = std::make_shared<CounterBank>(
        std::vector<SimCounterStart>(std::begin(kCounter32Starts), std::end(kCounter32Starts)));
    card.live = [counters](const QString &g, const QString &i,
                           qint64 ms) -> std::optional<QString> {
        if (g != QLatin1String("00")) return std::nullopt;
        const int n = i.toInt();
        if (n >= 10 && n <= 17) {
            const int e = (n - 8) / 2;
            const quint64 count = counters->value(e, ms) & 0xFFFFFFFFu;
            return QStringLiteral("D%1:%2").arg(e).arg(hexWord(n % 2 == 0 ? count : count >> 16));
        }
        if (n >= 57 && n <= 60)
            return QStringLiteral("D%1:%2").arg(n - 56).arg(counters->rate(n - 56));
        return std::nullopt;
    };
    card.onWrite = [counters](SimCard &, const QString &g, const QString &i, const QString &data) {
        if (g == QLatin1String("01") && i == QLatin1String("09") && data == QLatin1String("1"))
            counters->setAll(0);
    };
}

void InstallCounterProfile(SimCard &card, int rows) {
    const bool eight = rows == 8;
    const quint64 max = eight ? 99999999 : 65535;
    std::vector<SimCounterStart> starts;
    for (int n = 1; n <= rows; ++n)
        starts.push_back({0, eight ? n * n * 40 : n * 15});
    auto counters = std::make_shared<CounterBank>(starts);
    auto maxima = std::make_shared<std::vector<quint64>>(size_t(rows), max);
    card.setItem("01", "01", "D1");
    for (int n = 1; n <= rows; ++n) {
        if (eight) card.setItem("01", item(2 * n + 24), "D0");
        card.setItem("01", item(2 * n + 25), QStringLiteral("D%1").arg(max));
    }
    // The card takes the Clear of all sixteen counters, whatever its size.
    card.setItem("02", "01", "D1");
    for (int n = 1; n <= 16; ++n)
        card.setItem("02", item(n + 9), "D0");
    card.live = [counters, maxima, rows](const QString &g, const QString &i,
                                         qint64 ms) -> std::optional<QString> {
        const int n = liveChannel(i, rows);
        if (g != QLatin1String("00") || n == 0) return std::nullopt;
        const quint64 top = maxima->at(size_t(n - 1));
        return QStringLiteral("D%1:%2").arg(n).arg(counters->value(n, ms) % (top + 1));
    };
    card.onWrite = [counters, maxima, rows](SimCard &, const QString &g, const QString &i,
                                            const QString &data) {
        const int n = i.toInt();
        if (g == QLatin1String("02") && n >= 10 && n <= 9 + rows)
            counters->set(n - 9, settingValue(data));
        if (g == QLatin1String("01") && n >= 27 && n % 2 == 1 && (n - 25) / 2 <= rows)
            maxima->at(size_t((n - 25) / 2 - 1)) = settingValue(data);
    };
}
