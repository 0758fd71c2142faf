// Feeds arbitrary texts to the text routines every view uses on replies and typing, and checks
// what each one promises about its result.
#include "fuzzsupport.h"
#include "rack/textroutines.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QString>
#include <cmath>
#include <fuzzer/FuzzedDataProvider.h>

namespace {

QString takeText(FuzzedDataProvider &in, size_t maxBytes) {
    const std::string raw = in.ConsumeRandomLengthString(maxBytes);
    // Both forms a text reaches the program in: Latin-1 from the line, UTF-8 from files and keys.
    return in.ConsumeBool() ? QString::fromLatin1(raw.data(), qsizetype(raw.size()))
                            : QString::fromUtf8(raw.data(), qsizetype(raw.size()));
}

void checkReplyRoutines(const QString &text) {
    const QString after = ValueAfterColon(text);
    const QString before = ValueBeforeColon(text);
    if (text.contains(QLatin1Char(':')))
        fuzz::check(before + QLatin1Char(':') + after == text, "colon split loses text",
                    text.toUtf8());
    else
        fuzz::check(after == text && before.isEmpty(), "text without colon changed", text.toUtf8());

    const QString undotted = DeleteDot(text);
    fuzz::check(undotted.size() == text.size() - (text.contains(QLatin1Char('.')) ? 1 : 0),
                "DeleteDot removed the wrong amount", text.toUtf8());

    const QString bits = HexToBits(text);
    fuzz::check(bits.size() == 16, "HexToBits length", text.toUtf8());
    for (QChar ch : bits)
        fuzz::check(ch == QLatin1Char('0') || ch == QLatin1Char('1'), "HexToBits digit",
                    text.toUtf8());
    const int digit = HexDigitValue(text);
    fuzz::check(digit >= 0 && digit <= 15, "HexDigitValue range", text.toUtf8());
}

void checkSyntaxTests(const QString &text) {
    const bool real = IsRealText(text);
    const bool integer = IsIntText(text);
    const bool digits = IsDigitText(text);
    fuzz::check(!digits || integer, "digits that are no integer", text.toUtf8());
    fuzz::check(!integer || real, "integer that is no real", text.toUtf8());
    const double value = RealTextValue(text);
    fuzz::check(real || std::isnan(value), "a number from a text that is none", text.toUtf8());
    if (real && !std::isnan(value) && text.startsWith(QLatin1Char('-')))
        fuzz::check(value <= 0.0, "negative text gives a positive value", text.toUtf8());
}

void checkAddress(const QString &text) {
    QString a, b, c, d;
    SplitAddress(text, a, b, c, d);
    if (text.count(QLatin1Char('.')) >= 3)
        fuzz::check(a + '.' + b + '.' + c + '.' + d == text, "address parts lose text",
                    text.toUtf8());
    const int value = AddressPartValue(text);
    fuzz::check(value >= 0 && value <= 32767, "address part out of range", text.toUtf8());
}

// Typing and pasting through a key filter can only ever leave characters the filter allows.
void checkKeyFilter(FuzzedDataProvider &in) {
    static const KeyFilter filters[] = {KeyReal, KeyInt, KeyPosReal, KeyFlag};
    static const char *allowed[] = {"-.0123456789", "-0123456789", ".0123456789", "01"};
    const size_t which = in.ConsumeIntegralInRange<size_t>(0, 3);

    QLineEdit box;
    InstallKeyFilter(&box, filters[which]);
    const QString start = takeText(in, 8);
    box.setText(start);
    int steps = in.ConsumeIntegralInRange(0, 12);
    while (steps-- > 0 && in.remaining_bytes() > 0) {
        switch (in.ConsumeIntegralInRange(0, 3)) {
        case 0: { // a key press with the text it types
            const QString text = takeText(in, 3);
            const int key = text.isEmpty() ? Qt::Key_Backspace : Qt::Key_unknown;
            QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, text);
            QCoreApplication::sendEvent(&box, &press);
            break;
        }
        case 1: // a paste
            QGuiApplication::clipboard()->setText(takeText(in, 16));
            {
                QKeyEvent paste(QEvent::KeyPress, Qt::Key_V, Qt::ControlModifier);
                QCoreApplication::sendEvent(&box, &paste);
            }
            break;
        case 2:
            box.setCursorPosition(in.ConsumeIntegralInRange(0, int(box.text().size())));
            break;
        default:
            box.setSelection(in.ConsumeIntegralInRange(0, int(box.text().size())),
                             in.ConsumeIntegralInRange(-4, 4));
            break;
        }
    }
    // Only what was typed is checked: the starting text came from the program, not the user.
    const QString text = box.text();
    const QString allowedChars = QString::fromLatin1(allowed[which]);
    QString typed = text;
    for (QChar ch : start) {
        const qsizetype at = typed.indexOf(ch);
        if (at >= 0) typed.remove(at, 1);
    }
    for (QChar ch : typed)
        fuzz::check(allowedChars.contains(ch), "a key filter let a character through",
                    (start + " -> " + text).toUtf8());
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    fuzz::startApplication();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    FuzzedDataProvider in(data, size);
    if (in.ConsumeBool()) {
        checkKeyFilter(in);
        return 0;
    }
    const QString text = takeText(in, 256);
    checkReplyRoutines(text);
    checkSyntaxTests(text);
    checkAddress(text);
    return 0;
}
