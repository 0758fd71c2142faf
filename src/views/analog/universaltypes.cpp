#include "views/analog/universaltypes.h"

#include <QList>

namespace UniversalTypes {

namespace {

struct Row {
    const char *text;
    int code;
    bool buildA; // the A build knows it too
};

// Every input type of the standard build in list order; the A build lists the marked ones in the
// same order.
const Row kInputTypes[] = {
    {"-12 to 12V", 0x00, true},
    {"- 6 to  6V", 0x01, true},
    {"- 3 to  3V", 0x02, true},
    {"-1000 to 1000mV", 0x03, true},
    {"-500 to 500mV", 0x04, true},
    {"-250 to 250mV", 0x05, true},
    {"-125 to 125mV", 0x06, true},
    {"-60 to 60mV", 0x07, true},
    {"(PR)", 0x10, false},
    {"K(CA)", 0x11, true},
    {"E(CRC)", 0x12, true},
    {"J(IC)", 0x13, true},
    {"T(CC)", 0x14, true},
    {"B(RH)", 0x15, false},
    {"R", 0x16, false},
    {"S", 0x17, false},
    {"C(WRe 5-26)", 0x18, false},
    {"N", 0x19, false},
    {"U", 0x1A, false},
    {"L", 0x1B, false},
    {"P(Platinel2)", 0x1C, false},
    {"Pt100(JIS'97 IEC)", 0x30, true},
    {"Pt1000", 0x35, false},
    {"Pt50ohm(JIS'81)", 0x36, true},
    {"Pt100(JIS'89)", 0x37, true},
    {"JPt100(JIS'89)", 0x38, true},
    {"Ni100", 0x39, false},
    {"Ni120", 0x3A, false},
    {"Ni508.4", 0x3B, false},
    {"Ni1000", 0x3C, false},
    {"Cu50", 0x3D, false},
    {"POT200", 0x50, true},
    {"POT500", 0x51, true},
    {"POT5k", 0x52, true},
};

const Row kUnits[] = {{"   C", 0, true}, {"   F", 1, true}, {"   K", 2, false}};
const Row kBurnOuts[] = {{"None", 0, true}, {"Up", 1, true}, {"Down", 2, true}};
const Row kAdcSpeeds[] = {{"Middle", 2, true}, {"Low", 3, true}};

template <size_t N> QList<const Row *> rowsOf(const Row (&table)[N], bool buildA) {
    QList<const Row *> rows;
    for (const Row &row : table)
        if (!buildA || row.buildA) rows.append(&row);
    return rows;
}

template <size_t N> QStringList textsOf(const Row (&table)[N], bool buildA) {
    QStringList texts;
    for (const Row *row : rowsOf(table, buildA))
        texts.append(QLatin1String(row->text));
    return texts;
}

template <size_t N>
QString codeOf(const Row (&table)[N], const QString &text, bool buildA, int hexDigits) {
    for (const Row *row : rowsOf(table, buildA))
        if (text == QLatin1String(row->text))
            return hexDigits ? QStringLiteral("%1")
                                   .arg(row->code, hexDigits, 16, QLatin1Char('0'))
                                   .toUpper()
                             : QString::number(row->code);
    return kNoCode;
}

// A code the card gave, in the base it gives it in; a text that is no number has no row.
template <size_t N>
QString textOf(const Row (&table)[N], const QString &codeValue, bool buildA, int base) {
    bool ok = false;
    const int code = codeValue.trimmed().toInt(&ok, base);
    if (!ok) return QString();
    for (const Row *row : rowsOf(table, buildA))
        if (row->code == code) return QLatin1String(row->text);
    return QString();
}

} // namespace

QStringList InputTypeTexts(bool buildA) {
    return textsOf(kInputTypes, buildA);
}

QString InputTypeCode(const QString &text, bool buildA) {
    return codeOf(kInputTypes, text, buildA, 2);
}

QString InputTypeText(const QString &codeValue, bool buildA) {
    return textOf(kInputTypes, codeValue, buildA, 16);
}

int InputTypeIndex(const QString &text, bool buildA) {
    return static_cast<int>(InputTypeTexts(buildA).indexOf(text));
}

QStringList UnitTexts(bool buildA) {
    return textsOf(kUnits, buildA);
}

QString UnitCode(const QString &text, bool buildA) {
    return codeOf(kUnits, text, buildA, 0);
}

QString UnitText(const QString &codeValue, bool buildA) {
    return textOf(kUnits, codeValue, buildA, 10);
}

QStringList BurnOutTexts() {
    return textsOf(kBurnOuts, false);
}

QString BurnOutCode(const QString &text) {
    return codeOf(kBurnOuts, text, false, 0);
}

QString BurnOutText(const QString &codeValue) {
    return textOf(kBurnOuts, codeValue, false, 10);
}

QStringList AdcSpeedTexts() {
    return textsOf(kAdcSpeeds, false);
}

QString AdcSpeedCode(const QString &text) {
    return codeOf(kAdcSpeeds, text, false, 0);
}

QString AdcSpeedText(const QString &codeValue) {
    return textOf(kAdcSpeeds, codeValue, false, 10);
}

} // namespace UniversalTypes
