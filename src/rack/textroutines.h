#pragma once

#include <QColor>
#include <QString>

class QLineEdit;

// The small toolbox every view uses on the rack's texts: taking replies apart, turning hexadecimal
// words into bit texts, and testing and filtering what the user types. The rack's values keep
// their own syntax end to end, so nothing here turns a value into a number unless asked.

// Reply texts. A data reply is often tag + ":" + value.
QString ValueAfterColon(const QString &text);  // behind the first ":"; no colon: the whole text
QString ValueBeforeColon(const QString &text); // in front of the first ":"; no colon: empty
QString DeleteDot(const QString &text);        // drops the first "." only: 1.2.3 gives 12.3

// Hexadecimal words. Only "0"-"9" and upper-case "A"-"F" count; anything else is worth 0.
int HexDigitValue(const QString &text); // value of the first character
// Sixteen "0"/"1" characters for the first four digits, most significant bit first. A short text
// counts as filled on the right with zero digits ("FF" is FF00, not 255).
QString HexToBits(const QString &text);

// Syntax tests. They test form, not value: "-" and "." alone pass IsRealText, "-" alone passes
// IsIntText. Empty texts fail all three.
bool IsRealText(const QString &text);  // first "-", "." or digit; then dots and digits; one dot
bool IsIntText(const QString &text);   // first "-" or digit; then digits
bool IsDigitText(const QString &text); // digits only

// The number a text that passed IsRealText or IsIntText stands for, for a range test: a lone "-"
// or "." (and "-.") count as 0. Any other text gives NaN, which no range test accepts.
double RealTextValue(const QString &text);

// Key filters. `key` is a character code; a filter sets it to 0 to drop the key. Backspace (8)
// passes every filter. A "-" passes only where it becomes the first character: at position 0 of
// a text that does not begin with "-" already.
constexpr int kBackspaceKey = 8;
void KeyReal(QLineEdit *box, int &key);    // "-", ".", digits
void KeyInt(QLineEdit *box, int &key);     // "-", digits
void KeyPosReal(QLineEdit *box, int &key); // ".", digits
void KeyFlag(QLineEdit *box, int &key);    // "0", "1"

// A flag field: "1" on red for the value "1", "0" on green for anything else.
void ShowFlag(QLineEdit *box, const QString &value);
QColor FieldColour(const QLineEdit *box); // the background a field shows
inline const QColor kFlagOnColour{255, 0, 0};
inline const QColor kFlagOffColour{0, 128, 0};

void SelectAllText(QLineEdit *box);

// Addresses a.b.c.d. A text with fewer than three dots leaves the missing parts empty; anything
// behind a third dot stays in d.
void SplitAddress(const QString &text, QString &a, QString &b, QString &c, QString &d);
// The number of one part of an address or a port: 0 for the empty text. A sign or a dot among
// the first three characters, a text that is no whole number, or one beyond 16 bits tells the
// user "Please enter number." and gives 0.
int AddressPartValue(const QString &text);

// Makes a key filter act on a line edit: every typed character goes through it (backspace as 8),
// and a key set to 0 is swallowed. Navigation and control keys (arrows, Delete, Tab, Home/End,
// Ctrl+C/V/A...) keep working. Pasting goes through the filter too, character by character as if
// typed, so nothing reaches the field that the keyboard could not have put there; dropping text
// on the field is switched off.
using KeyFilter = void (*)(QLineEdit *, int &);
void InstallKeyFilter(QLineEdit *box, KeyFilter filter);

// Makes a line edit select all its text when it gets the focus (SelectAllText on focus-in).
void InstallSelectAllOnFocus(QLineEdit *box);
