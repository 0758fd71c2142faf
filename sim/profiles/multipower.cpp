#include "multipower.h"

#include "support.h"

#include <QStringList>
#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <optional>

using namespace SimProfile;

namespace {

constexpr int kWords = 16;
constexpr int kAddressBase = 40000;
const QString kFree = QStringLiteral("0;0;0;0");

enum class Quantity {
    Current,     // mA
    Voltage,     // V/100
    Active,      // W
    Reactive,    // var
    Apparent,    // VA
    PowerFactor, // %/100
    Frequency,   // Hz/100
    Direction,
    Energy, // a tenth of a kWh
    Hours,  // a tenth of an hour
    Distortion,
    Harmonic, // one word each
};

// The present values: totals at registers 1..16, phases at 33..82.
std::optional<Quantity> presentValue(int reg) {
    using enum Quantity;
    static const Quantity totals[] = {Current,  Voltage,     Active,    Reactive,
                                      Apparent, PowerFactor, Frequency, Direction};
    if (reg >= 1 && reg <= 16) return totals[(reg - 1) / 2];
    struct Band {
        int first;
        int last;
        Quantity quantity;
    };
    static const Band phases[] = {{33, 40, Current},  {41, 52, Voltage},  {53, 58, Active},
                                  {59, 64, Reactive}, {65, 70, Apparent}, {71, 76, PowerFactor},
                                  {77, 82, Direction}};
    for (const Band &band : phases)
        if (reg >= band.first && reg <= band.last) return band.quantity;
    return std::nullopt;
}

// The extremes repeat the layout of the present values, without the directions.
std::optional<Quantity> extremeOf(int reg) {
    const auto quantity = presentValue(reg);
    return quantity == Quantity::Direction ? std::nullopt : quantity;
}

// What the card keeps at a register, by the areas of its map; nothing for a gap.
std::optional<Quantity> quantityAt(int reg) {
    using enum Quantity;
    if (reg >= 1537) {
        const int offset = (reg - 1537) % 64;
        return (reg - 1537) / 64 < 10 && offset < 30 ? std::optional(Harmonic) : std::nullopt;
    }
    if (reg >= 1281) return reg <= 1300 ? std::optional(Distortion) : std::nullopt;
    if (reg >= 929) return extremeOf(reg - 928);
    if (reg >= 897) {
        if (reg > 916) return std::nullopt;
        return reg < 907 ? Current : reg < 911 ? Active : reg < 915 ? Reactive : Apparent;
    }
    if (reg >= 865) return reg <= 884 ? std::optional(Distortion) : std::nullopt;
    if (reg >= 769) return extremeOf(reg - 768);
    if (reg >= 513) {
        const int offset = reg - 513;
        static const Quantity powers[] = {Active, Reactive, Apparent};
        if (offset / 16 < 5 && offset % 16 < 6) return powers[offset % 16 / 2];
        return std::nullopt;
    }
    if (reg >= 257) {
        const int offset = reg - 257;
        return offset / 16 < 5 && offset % 16 < 10 ? std::optional(Current) : std::nullopt;
    }
    if (reg >= 129) {
        if (reg > 148) return std::nullopt;
        return reg >= 147 ? Hours : Energy;
    }
    return presentValue(reg);
}

struct Binding {
    int reg = 0;
    int words = 0;
    int system = 0;
    int scale = 0;
};

std::optional<Binding> parseBinding(const QString &text) {
    const QStringList fields = text.split(QLatin1Char(';'));
    if (fields.size() != 4) return std::nullopt;
    std::array<int, 4> numbers{};
    for (int i = 0; i < 4; ++i) {
        bool ok = false;
        numbers[size_t(i)] = fields.at(i).toInt(&ok);
        if (!ok) return std::nullopt;
    }
    return Binding{numbers[0] - kAddressBase, numbers[1], numbers[2], numbers[3]};
}

struct MultiPower {
    bool twoSystems = false;
    int sensors = 1;
    std::array<QString, kWords> active; // the bindings the card works with
    std::array<double, 3> energyOffset{0, 1234560, 345670};
    std::array<qint64, 3> energyFrom{};
    std::array<bool, 3> sumReset{};

    bool serves(const QString &text) const {
        if (text == kFree) return true;
        const auto b = parseBinding(text);
        if (!b || (b->words != 1 && b->words != 2) || b->scale < 0 || b->scale > 3) return false;
        if (b->system != 1 && !(b->system == 2 && twoSystems)) return false;
        const auto quantity = quantityAt(b->reg);
        if (!quantity) return false;
        if (*quantity == Quantity::Harmonic) return b->words == 1;
        return b->reg % 2 == 1;
    }

    double value(const Binding &b, qint64 ms) {
        const int s = b.system;
        if (sumReset[size_t(s)]) {
            sumReset[size_t(s)] = false;
            energyOffset[size_t(s)] = 0;
            energyFrom[size_t(s)] = ms;
        }
        // Every register and system drifts at its own phase.
        const int ch = b.reg + 7 * s;
        switch (*quantityAt(b.reg)) {
        case Quantity::Current:
            return driftingValue(ch, ms, s == 1 ? 52000 : 18500, 3000);
        case Quantity::Voltage:
            return driftingValue(ch, ms, 23000, 180);
        case Quantity::Active:
            return driftingValue(ch, ms, s == 1 ? 10500 : 3600, 1400);
        case Quantity::Reactive:
            return driftingValue(ch, ms, -2300, 900);
        case Quantity::Apparent:
            return driftingValue(ch, ms, s == 1 ? 11200 : 3900, 1400);
        case Quantity::PowerFactor:
            return driftingValue(ch, ms, 9650, 200);
        case Quantity::Frequency:
            return driftingValue(ch, ms, 5000, 6);
        case Quantity::Direction:
            return 1;
        case Quantity::Energy:
            return energyOffset[size_t(s)] + double(ms - energyFrom[size_t(s)]) / 1000.0;
        case Quantity::Hours:
            return energyOffset[size_t(s)] / 200 + double(ms - energyFrom[size_t(s)]) / 360000.0;
        case Quantity::Distortion:
            return driftingValue(ch, ms, 34, 6);
        case Quantity::Harmonic:
            return driftingValue(ch, ms, 240.0 / ((b.reg - 1537) % 64 + 2), 8);
        }
        return 0;
    }

    // The sixteen words the bindings fill, in order; a free binding ends the list.
    std::array<quint16, kWords> words(qint64 ms) {
        std::array<quint16, kWords> out{};
        int w = 0;
        for (const QString &text : active) {
            const auto b = parseBinding(text);
            if (text == kFree || !b || !serves(text) || w + b->words > kWords) break;
            const double scaled = std::trunc(value(*b, ms) / std::pow(10.0, b->scale));
            if (b->words == 1) {
                out[size_t(w++)] = quint16(qint16(std::clamp(scaled, -32768.0, 32767.0)));
            } else {
                const auto whole = quint32(qint32(std::clamp(scaled, -2147483648.0, 2147483647.0)));
                out[size_t(w++)] = quint16(whole & 0xFFFF);
                out[size_t(w++)] = quint16(whole >> 16);
            }
        }
        return out;
    }
};

bool isNumber(const QString &data) {
    bool ok = false;
    data.toDouble(&ok);
    return ok;
}

bool isIndexBelow(const QString &data, int count) {
    bool ok = false;
    const int index = data.toInt(&ok);
    return ok && index >= 0 && index < count;
}

// What the configuration of a system takes: list entries by index, numbers, resets.
bool takesConfiguration(const MultiPower &card, int item, const QString &data) {
    switch (item) {
    case 1:
        return true;
    case 10:
        return isIndexBelow(data, 6);
    case 12:
        return isIndexBelow(data, card.sensors);
    case 15:
    case 20:
    case 21:
    case 22:
        return isIndexBelow(data, 2);
    case 25:
    case 26:
    case 27:
    case 28:
        return data == QLatin1String("1");
    default:
        return isNumber(data);
    }
}

void setConfiguration(SimCard &card, const QString &group, int system) {
    const QList<std::pair<int, const char *>> items = {
        {1, "D1"},  {10, "D5"}, {11, "D100"}, {12, "D2"},  {13, "D6600"}, {14, "D0110"},
        {15, "D0"}, {16, "D1"}, {17, "D5"},   {18, "D15"}, {19, "D15"},   {20, "D0"},
        {21, "D0"}, {22, "D0"}, {25, "D0"},   {26, "D0"},  {27, "D0"},    {28, "D0"},
    };
    for (const auto &[number, reply] : items)
        card.setItem(group, item(number), QLatin1String(reply));
    if (system == 2) card.setItem(group, item(11), "D50");
}

QStringList defaultBindings(bool twoSystems) {
    QStringList bindings = {"40001;2;1;0", "40003;2;1;0", "40005;2;1;0",
                            "40011;1;1;0", "40013;1;1;0", "40129;2;1;0"};
    bindings += twoSystems ? QStringList{"40001;2;2;0", "40005;2;2;0", "41538;1;1;0", "40865;1;1;0"}
                           : QStringList{"40007;1;1;1", "41538;1;1;0"};
    while (bindings.size() < kWords)
        bindings << kFree;
    return bindings;
}

} // namespace

void InstallMultiPowerProfile(SimCard &card) {
    auto state = std::make_shared<MultiPower>();
    const QString &model = card.model;
    state->twoSystems = model.size() >= 5 && model.at(4) == QLatin1Char('2');
    const QChar series = model.size() >= 6 ? model.at(5) : QChar();
    const bool sixSensors = series == QLatin1Char('B') || series == QLatin1Char('E');
    state->sensors = series == QLatin1Char('A') ? 4 : sixSensors ? 6 : 1;

    card.setItem("01", "01", "D1");
    card.setItem("02", "01", "D1");
    card.setItem("02", "09", "D0");
    const QStringList bindings = defaultBindings(state->twoSystems);
    for (int n = 0; n < kWords; ++n) {
        card.setItem("02", item(10 + n), "D" + bindings.at(n));
        state->active[size_t(n)] = bindings.at(n);
    }
    setConfiguration(card, "03", 1);
    if (state->twoSystems) setConfiguration(card, "04", 2);

    // A value the card cannot take is refused and the item keeps what it had.
    card.onData = [state](SimCard &, const QString &group, const QString &itemText,
                          const QString &data, qint64) -> std::optional<QString> {
        const int number = itemText.toInt();
        bool takes = false;
        if (group == QLatin1String("01"))
            takes = number == 1;
        else if (group == QLatin1String("02"))
            takes = number >= 10 && number < 10 + kWords ? state->serves(data) : true;
        else
            takes = takesConfiguration(*state, number, data);
        if (takes) return std::nullopt;
        return QStringLiteral("CNG");
    };
    card.onWrite = [state](SimCard &self, const QString &group, const QString &itemText,
                           const QString &) {
        const int number = itemText.toInt();
        // The written bindings take effect when the program says so.
        if (group == QLatin1String("02") && number == 9) {
            for (int n = 0; n < kWords; ++n)
                state->active[size_t(n)] = self.groups["02"].value(item(10 + n)).mid(1);
        }
        if ((group == QLatin1String("03") || group == QLatin1String("04")) && number == 25)
            state->sumReset[group == QLatin1String("03") ? 1 : 2] = true;
    };
    card.live = [state](const QString &group, const QString &itemText,
                        qint64 ms) -> std::optional<QString> {
        const int w = liveChannel(itemText, kWords);
        if (group != QLatin1String("01") || w == 0) return std::nullopt;
        return QStringLiteral("D%1")
            .arg(state->words(ms)[size_t(w - 1)], 4, 16, QLatin1Char('0'))
            .toUpper();
    };
}
