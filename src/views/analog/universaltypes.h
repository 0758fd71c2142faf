#pragma once

#include <QString>
#include <QStringList>

// The universal input card's lists and codes, for its two builds: the standard build and the A
// build, which answers "VX_XE4/A" at group 01 item 90 and knows fewer input types and units.
// Codes are texts as the wire carries them; "99" means that no entry matched. The list texts are
// what the card record and so the project file keep, so their wording and blanks matter.
namespace UniversalTypes {

// The code "99": no entry, nothing to send.
inline const QString kNoCode = QStringLiteral("99");

// Input types: list texts in list order, and the two-character code of each ("11" for
// "K(CA)"): the high digit as a decimal digit, the low one as "0"-"9" or "A"-"D".
QStringList InputTypeTexts(bool buildA);
QString InputTypeCode(const QString &text, bool buildA);
// The text of a code as the card answers it (a hexadecimal number); empty for a code without a
// row in the build's table, or a text that is no hexadecimal number.
QString InputTypeText(const QString &codeValue, bool buildA);
// The row of a text in the build's list, -1 when it has none.
int InputTypeIndex(const QString &text, bool buildA);

// Temperature units: "   C", "   F" and, on the standard build, "   K", codes "0" to "2".
QStringList UnitTexts(bool buildA);
QString UnitCode(const QString &text, bool buildA);
// The text of a unit code (a decimal number); empty for none.
QString UnitText(const QString &codeValue, bool buildA);

// Burnout: "None", "Up", "Down" for "0", "1", "2".
QStringList BurnOutTexts();
QString BurnOutCode(const QString &text);
QString BurnOutText(const QString &codeValue);

// ADC speed: "Middle" for "2", "Low" for "3".
QStringList AdcSpeedTexts();
QString AdcSpeedCode(const QString &text);
QString AdcSpeedText(const QString &codeValue);

} // namespace UniversalTypes
