#include "profiles/universal.h"

#include "profiles/support.h"

#include <QSet>
#include <memory>

using namespace SimProfile;

namespace {

const QString kGroup = QStringLiteral("01");
const QString kBuildA = QStringLiteral("DVX_XE4/A");

// The input type codes each build accepts.
const QSet<int> &codesOf(bool buildA) {
    static const QSet<int> standard = {0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x10,
                                       0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0x18, 0x19,
                                       0x1A, 0x1B, 0x1C, 0x30, 0x35, 0x36, 0x37, 0x38, 0x39,
                                       0x3A, 0x3B, 0x3C, 0x3D, 0x50, 0x51, 0x52};
    static const QSet<int> a = {0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x11, 0x12,
                                0x13, 0x14, 0x30, 0x36, 0x37, 0x38, 0x50, 0x51, 0x52};
    return buildA ? a : standard;
}

bool isBuildA(const SimCard &card) {
    return card.groups.value(kGroup).value("90") == kBuildA;
}

bool isWhole(const QString &text) {
    bool ok = false;
    text.toInt(&ok);
    return ok;
}

bool isReal(const QString &text) {
    bool ok = false;
    text.toDouble(&ok);
    return ok;
}

bool oneOf(const QString &value, std::initializer_list<const char *> allowed) {
    for (const char *a : allowed)
        if (value == QLatin1String(a)) return true;
    return false;
}

// Whether the card takes `value` for a card-wide item.
bool cardValueValid(const SimCard &card, const QString &item, const QString &value) {
    const bool a = isBuildA(card);
    if (item == QLatin1String("87"))
        return a ? oneOf(value, {"0", "1"}) : oneOf(value, {"0", "1", "2"});
    if (item == QLatin1String("13"))
        return a ? value == QLatin1String("3") : oneOf(value, {"2", "3"});
    if (item == QLatin1String("57")) return oneOf(value, {"0", "1"});
    return false; // 90 and 92 only tell
}

// Whether the card takes `value` for a channel item.
bool channelValueValid(const SimCard &card, const QString &item, const QString &value) {
    if (item == QLatin1String("05")) {
        bool ok = false;
        const int code = value.toInt(&ok, 16);
        return ok && value.size() == 2 && codesOf(isBuildA(card)).contains(code);
    }
    if (item == QLatin1String("50") || item == QLatin1String("25")) return oneOf(value, {"0", "1"});
    if (item == QLatin1String("20")) return oneOf(value, {"0", "1", "2"});
    if (oneOf(item, {"55", "56", "51", "52"})) return isWhole(value);
    return isReal(value); // 53, 54
}

const QStringList kCardItems = {"87", "13", "57", "90", "92"};
const QStringList kChannelItems = {"05", "50", "20", "25", "55", "56", "53", "54", "51", "52"};

std::optional<QString> answerData(SimCard &card, const QString &group, const QString &item,
                                  const QString &data, qint64) {
    if (group != kGroup) return std::nullopt;
    QString &stored = card.groups[kGroup][item];
    if (kCardItems.contains(item)) {
        if (data.isEmpty()) return stored;
        if (!cardValueValid(card, item, data)) return QStringLiteral("CNG");
        stored = "D" + data;
        return stored;
    }
    if (!kChannelItems.contains(item)) return std::nullopt;
    if (data.size() < 2 || data.at(0) != QLatin1Char('0') || data.at(1) < QLatin1Char('1') ||
        data.at(1) > QLatin1Char('4'))
        return QStringLiteral("CNG");
    const int ch = data.at(1).digitValue();
    QStringList values = stored.mid(1).split(QLatin1Char(','));
    while (values.size() < 4)
        values.append(QString());
    if (data.size() == 2) {
        const QString value = values.at(ch - 1);
        return value.isEmpty() ? QStringLiteral("CNG") : "D" + value;
    }
    const QString value = data.mid(2);
    if (!channelValueValid(card, item, value)) return QStringLiteral("CNG");
    values[ch - 1] = value;
    stored = "D" + values.mid(0, 4).join(QLatin1Char(','));
    return "D" + data;
}

// Live values that look like what the default input types measure: degrees of a thermocouple
// and of a resistance thermometer, volts, and the percent of a potentiometer.
QString liveValue(int ch, qint64 ms) {
    switch (ch) {
    case 1:
        return drifting(ch, ms, 250.0, 40.0, 1);
    case 2:
        return drifting(ch, ms, 25.0, 5.0, 1);
    case 3:
        return drifting(ch, ms, 0.0, 4.5, 3);
    default:
        return drifting(ch, ms, 50.0, 40.0, 1);
    }
}

} // namespace

void InstallUniversalProfile(SimCard &card) {
    const bool a = card.model.startsWith(QLatin1String("XE4A"));
    card.setItem(kGroup, "01", "D1");
    card.setItem(kGroup, "87", "D0");
    card.setItem(kGroup, "13", a ? "D3" : "D2");
    card.setItem(kGroup, "57", "D0");
    card.setItem(kGroup, "90", a ? kBuildA : QStringLiteral("DVX_XE4"));
    card.setItem(kGroup, "92", "DVER " + card.version.rightJustified(6, QLatin1Char('0')));
    // K thermocouple, Pt100, a voltage and a potentiometer; channel 4 unused.
    card.setItem(kGroup, "05", "D11,30,00,50");
    card.setItem(kGroup, "50", "D1,1,1,0");
    card.setItem(kGroup, "20", "D1,1,0,0");
    card.setItem(kGroup, "25", "D1,0,0,0");
    card.setItem(kGroup, "55", "D0,0,0,0");
    card.setItem(kGroup, "56", "D10000,10000,10000,10000");
    card.setItem(kGroup, "53", "D0.00,0.00,0.00,0.00");
    card.setItem(kGroup, "54", "D1.0000,1.0000,1.0000,1.0000");
    card.setItem(kGroup, "51", "D0,-200,-10,0");
    card.setItem(kGroup, "52", "D1370,850,10,100");
    card.onData = answerData;
    // Now and then a channel is still measuring and says so; the next read has the value.
    auto reads = std::make_shared<int>(0);
    card.live = [reads](const QString &group, const QString &item,
                        qint64 ms) -> std::optional<QString> {
        const int ch = liveChannel(item, 4);
        if (group != QLatin1String("00") || ch == 0) return std::nullopt;
        if (++*reads % 7 == 0) return QStringLiteral("D%1:TMOUT").arg(ch);
        return QStringLiteral("D%1:%2").arg(ch).arg(liveValue(ch, ms));
    };
}
