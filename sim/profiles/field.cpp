#include "profiles/field.h"

#include "profiles/support.h"

#include <array>
#include <memory>

using namespace SimProfile;

namespace {

// --- Motor actuator card ---------------------------------------------------------------------

constexpr double kRawMax = 10000.0;
constexpr double kCoarseCountsPerSecond = 800.0;
constexpr double kFollowPercentPerSecond = 8.0;
const double kDeadbands[] = {0.1, 0.3, 0.5, 0.7, 1.0, 1.5, 2.0, 3.0, 5.0, 8.0};

struct Actuator {
    double raw = 5000.0;
    double closeEnd = 2000.0;
    double openEnd = 8000.0;
    int setting = 0; // 0 none, 1 close end, 2 open end
    int jog = 0;     // -1 towards close, +1 towards open, while a coarse jog runs
    int fineStep = 100;
    bool test = false;
    double testPosition = 0.0;
    int deadband = 5; // position in the card's list of deadbands

    double percent() const { return (raw - closeEnd) * 100.0 / (openEnd - closeEnd); }
    void setPercent(double p) {
        raw = std::clamp(closeEnd + p * (openEnd - closeEnd) / 100.0, 0.0, kRawMax);
    }
    void moveRaw(double counts) { raw = std::clamp(raw + counts, 0.0, kRawMax); }
};

struct Motors {
    std::array<Actuator, 2> actuators;
    qint64 lastMs = -1;
};

int actuatorOfGroup(const QString &group) {
    if (group == QLatin1String("03")) return 0;
    if (group == QLatin1String("04")) return 1;
    return -1;
}

double setpoint(const Actuator &a, int index, qint64 ms) {
    return a.test ? a.testPosition : driftingValue(index + 1, ms / 4, 50.0, 25.0);
}

// Brings both actuators to the moment `ms`: a jog runs at its speed, a setting holds still
// otherwise, and outside a setting each actuator follows its setpoint up to its deadband.
void advance(Motors &m, qint64 ms) {
    const double seconds = m.lastMs < 0 ? 0.0 : std::max<qint64>(0, ms - m.lastMs) / 1000.0;
    m.lastMs = ms;
    for (int i = 0; i < 2; ++i) {
        Actuator &a = m.actuators[i];
        if (a.setting != 0) {
            a.moveRaw(a.jog * kCoarseCountsPerSecond * seconds);
            continue;
        }
        const double gap = setpoint(a, i, ms) - a.percent();
        if (std::abs(gap) <= kDeadbands[a.deadband]) continue;
        const double step = std::min(std::abs(gap), kFollowPercentPerSecond * seconds);
        a.setPercent(a.percent() + (gap > 0 ? step : -step));
    }
}

void endSetting(Actuator &a) {
    // An end that would leave less than a tenth of the travel between the two is not taken.
    if (a.setting == 1 && a.openEnd - a.raw >= 1000.0) a.closeEnd = a.raw;
    if (a.setting == 2 && a.raw - a.closeEnd >= 1000.0) a.openEnd = a.raw;
    a.setting = 0;
    a.jog = 0;
}

void actuatorCommand(Actuator &a, const QString &item, const QString &data) {
    if (item == QLatin1String("09")) {
        if (data == QLatin1String("01") || data == QLatin1String("02")) {
            a.setting = data.toInt();
            a.jog = 0;
        } else if (data == QLatin1String("00")) {
            endSetting(a);
        }
    } else if (item == QLatin1String("05")) {
        const int position = data.toInt();
        if (position >= 0 && position < 10) a.deadband = position;
    } else if (item == QLatin1String("08")) {
        const int step = data.toInt();
        if (step > 0 && step <= 1000) a.fineStep = step;
    } else if (item == QLatin1String("10") || item == QLatin1String("11")) {
        // Jogs move an actuator only while one of its ends is being set.
        const int direction = item == QLatin1String("10") ? -1 : 1;
        if (a.setting == 0) return;
        if (data == QLatin1String("01")) a.jog = direction;
        if (data == QLatin1String("00") && a.jog == direction) a.jog = 0;
        if (data == QLatin1String("02") && a.jog == 0) a.moveRaw(direction * a.fineStep);
    } else if (item == QLatin1String("50")) {
        a.test = data == QLatin1String("01");
    } else if (item == QLatin1String("51")) {
        bool ok = false;
        const double position = data.toDouble(&ok);
        a.testPosition = ok ? std::clamp(position, -0.5, 100.5) : 0.0;
    }
}

// --- HART input card -------------------------------------------------------------------------

struct BlockField {
    const char *item;
    int fullLength;
    int addressWidth;
    const char *padding;
};

const BlockField kBlockFields[] = {
    {"37", 32, 2, "FA"},    {"38", 8, 2, "FA"},   {"39", 184, 2, "0000"},
    {"40", 512, 3, "0000"}, {"41", 256, 2, "00"},
};

const BlockField *blockField(const QString &item) {
    for (const BlockField &field : kBlockFields)
        if (item == QLatin1String(field.item)) return &field;
    return nullptr;
}

QString padded(const QString &text, const BlockField &field) {
    QString out = text;
    while (out.size() < field.fullLength)
        out += QLatin1String(field.padding);
    return out;
}

bool isHex(const QString &text) {
    for (const QChar c : text)
        if (!c.isDigit() && (c < QLatin1Char('A') || c > QLatin1Char('F'))) return false;
    return true;
}

using HartStore = std::array<std::array<QString, 5>, 4>;

// A block request in the data of an item: "R" address length, "W" address length characters,
// or "C". The reply repeats the request and, for a read, continues with the block.
std::optional<QString> blockRequest(QString &content, const BlockField &field,
                                    const QString &data) {
    const QString refused = QStringLiteral("CNG");
    if (data == QLatin1String("C")) {
        content = padded(QString(), field);
        return "D" + data;
    }
    const int w = field.addressWidth;
    if (data.size() < 3 + w || (data.at(0) != QLatin1Char('R') && data.at(0) != QLatin1Char('W')))
        return refused;
    bool okAddress = false, okLength = false;
    const int address = data.mid(1, w).toInt(&okAddress, 16);
    const int length = data.mid(1 + w, 2).toInt(&okLength, 16);
    if (!okAddress || !okLength || address + length > field.fullLength) return refused;
    if (data.at(0) == QLatin1Char('R')) {
        if (data.size() != 3 + w) return refused;
        return "D" + data + content.mid(address, length);
    }
    const QString block = data.mid(3 + w);
    if (block.size() != length || !isHex(block)) return refused;
    content.replace(address, length, block);
    return "D" + data;
}

// What a configured channel 1 holds, so the demo has something to show.
void configureFirstChannel(HartStore &store) {
    store[0][0] = padded("00010203", kBlockFields[0]);
    store[0][1] = padded("0001", kBlockFields[1]);
    store[0][2] = padded("0003000100020000", kBlockFields[2]);
    store[0][3] = padded("00800021", kBlockFields[3]);
    store[0][4] = padded("3F8000004120000042C80000", kBlockFields[4]);
}

} // namespace

void InstallMotorActuatorProfile(SimCard &card) {
    card.setItem("02", "01", "D1");
    card.setItem("02", "42", "D0");
    card.setItem("02", "43", "D0");
    for (const char *group : {"03", "04"}) {
        card.setItem(group, "01", "D1");
        card.setItem(group, "05", "D5");
        card.setItem(group, "06", "D3000");
        card.setItem(group, "07", "D300");
        for (const char *item : {"08", "09", "10", "11", "50"})
            card.setItem(group, item, "D00");
        card.setItem(group, "51", "D0");
    }
    auto motors = std::make_shared<Motors>();
    motors->actuators[1].raw = 3500.0; // the two stand apart, as two valves in a plant would
    card.live = [motors](const QString &group, const QString &item,
                         qint64 ms) -> std::optional<QString> {
        advance(*motors, ms);
        if (group == QLatin1String("00")) {
            const int n = item.toInt();
            if (n == 11 || n == 12)
                return QStringLiteral("D%1:%2").arg(n - 10).arg(motors->actuators[n - 11].percent(),
                                                                0, 'f', 1);
            if (n == 14 || n == 15) {
                const int i = n - 14;
                return QStringLiteral("D%1:%2").arg(i + 1).arg(
                    setpoint(motors->actuators[i], i, ms), 0, 'f', 1);
            }
            return std::nullopt;
        }
        const int i = actuatorOfGroup(group);
        if (i < 0 || item != QLatin1String("28")) return std::nullopt;
        return QStringLiteral("D%1").arg(qRound(motors->actuators[i].raw));
    };
    card.onData = [motors](SimCard &, const QString &group, const QString &item,
                            const QString &data, qint64 ms) -> std::optional<QString> {
        advance(*motors, ms);
        const int i = actuatorOfGroup(group);
        if (i >= 0) actuatorCommand(motors->actuators[i], item, data);
        return std::nullopt;
    };
}

void InstallHartInputProfile(SimCard &card) {
    for (int ch = 1; ch <= 4; ++ch) {
        const QString group = item(ch);
        card.setItem(group, "01", "D1");
        card.setItem(group, "14", "D0.00");
        card.setItem(group, "15", "D0.0000");
        card.setItem(group, "17", "D0");
        card.setItem(group, "18", "D10000");
        card.setItem(group, "27", "D0");
        card.setItem(group, "30", "D0");
        card.setItem(group, "31", "D10");
        card.setItem(group, "32", "D6");
        card.setItem(group, "33", "D3");
        card.setItem(group, "34", "D0");
        for (const BlockField &field : kBlockFields)
            card.setItem(group, field.item, "D0");
        card.setItem(group, "50", "D0");
    }
    auto store = std::make_shared<HartStore>();
    for (auto &channel : *store)
        for (size_t f = 0; f < channel.size(); ++f)
            channel[f] = padded(QString(), kBlockFields[f]);
    configureFirstChannel(*store);

    card.live = [](const QString &group, const QString &item, qint64 ms) -> std::optional<QString> {
        const int ch = liveChannel(item, 4);
        if (group != QLatin1String("00") || ch == 0) return std::nullopt;
        return QStringLiteral("D%1:%2").arg(ch).arg(drifting(ch, ms, 5000.0, 3000.0, 0));
    };
    card.onData = [store](SimCard &, const QString &group, const QString &item,
                           const QString &data, qint64) -> std::optional<QString> {
        const int ch = group.toInt();
        const BlockField *field = blockField(item);
        if (ch < 1 || ch > 4 || !field) return std::nullopt;
        const auto index = static_cast<size_t>(field - kBlockFields);
        return blockRequest((*store)[static_cast<size_t>(ch - 1)][index], *field, data);
    };
}
