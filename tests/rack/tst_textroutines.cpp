#include "support/testsupport.h"

#include "rack/textroutines.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QMenu>
#include <QTest>
#include <QTimer>

#include <cmath>
#include <limits>

using vxtest::MessageRecorder;

namespace {

const struct {
    const char *name;
    KeyFilter filter;
} kFilters[] = {
    {"KeyReal", KeyReal}, {"KeyInt", KeyInt}, {"KeyPosReal", KeyPosReal}, {"KeyFlag", KeyFlag}};

KeyFilter filterNamed(const QString &name) {
    for (const auto &f : kFilters)
        if (name == QLatin1String(f.name)) return f.filter;
    return nullptr;
}

// A field on a shown, active window, so that it can have the focus and take keys.
struct Field {
    QWidget window;
    QLineEdit *box;
    QLineEdit *other;

    Field() : box(new QLineEdit(&window)), other(new QLineEdit(&window)) {
        other->move(0, 40);
        window.show();
        QApplication::setActiveWindow(&window);
        box->setFocus();
    }
};

// Puts `input` into the field by one of the ways a user (or a keyboard driver) has.
void enter(const QString &route, QLineEdit *box, const QString &input) {
    if (route == "typed") {
        QTest::keyClicks(box, input);
    } else if (route == "key text") { // a dead key or a composing keyboard: one event, many chars
        QKeyEvent press(QEvent::KeyPress, Qt::Key_unknown, Qt::NoModifier, input);
        QApplication::sendEvent(box, &press);
    } else if (route == "input method") {
        QInputMethodEvent event;
        event.setCommitString(input);
        QApplication::sendEvent(box, &event);
    } else if (route == "paste") {
        QApplication::clipboard()->setText(input);
        QTest::keyClick(box, Qt::Key_V, Qt::ControlModifier);
    } else { // the field's own context menu
        QApplication::clipboard()->setText(input);
        QTimer::singleShot(0, [] {
            auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
            if (!menu) return;
            for (QAction *action : menu->actions())
                if (action->text().startsWith("&Paste")) action->trigger();
            menu->close();
        });
        QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(2, 2),
                                box->mapToGlobal(QPoint(2, 2)));
        QApplication::sendEvent(box, &event);
    }
}

} // namespace

// The pure routines on the rack's reply texts and on typed numbers.
class TextRoutinesTest : public QObject {
    Q_OBJECT

private slots:
    void replyTexts_data() {
        QTest::addColumn<QString>("text");
        // ValueAfterColon, ValueBeforeColon, DeleteDot
        QTest::addColumn<QStringList>("results");
        QTest::newRow("untagged") << QString("12.5") << QStringList{"12.5", "", "125"};
        QTest::newRow("second colon kept")
            << QString("T:10:30") << QStringList{"10:30", "T", "T:10:30"};
        QTest::newRow("first dot only") << QString("1.2.3") << QStringList{"1.2.3", "", "12.3"};
        QTest::newRow("dot in tag")
            << QString("V1.01:3.5") << QStringList{"3.5", "V1.01", "V101:3.5"};
    }
    void replyTexts() {
        QFETCH(QString, text);
        QFETCH(QStringList, results);
        QCOMPARE(ValueAfterColon(text), results[0]);
        QCOMPARE(ValueBeforeColon(text), results[1]);
        QCOMPARE(DeleteDot(text), results[2]);
    }

    void hexToBits_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("bits");
        QTest::newRow("short fills right") << QString("FF") << "1111111100000000";
        QTest::newRow("empty") << QString("") << "0000000000000000";
        QTest::newRow("first four only") << QString("0001F") << "0000000000000001";
        // Only "0"-"9" and "A"-"F" count: not lower case, not the neighbours of the ranges.
        QTest::newRow("lower case is zero") << QString("abcd") << "0000000000000000";
        QTest::newRow("range edges") << QString("9:@A") << "1001000000001010";
        QTest::newRow("other digits") << QString(QChar(0x0669)) + "G1"
                                      << "0000000000010000";
    }
    void hexToBits() {
        QFETCH(QString, text);
        QFETCH(QString, bits);
        QCOMPARE(HexToBits(text), bits);
    }

    // The syntax tests, and the number a text stands for (NaN: none).
    void numbers_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("realIntDigits");
        QTest::addColumn<double>("value");
        const double nan = std::numeric_limits<double>::quiet_NaN();
        const struct {
            const char *text, *syntax;
            double value;
        } rows[] = {
            {"", "---", nan},     {"0123", "xxx", 123},
            {"-12", "xx-", -12},  {"-", "xx-", 0},
            {".", "x--", 0},      {"-.", "x--", 0},
            {"-.5", "x--", -0.5}, {"7.", "x--", 7},
            {"3.2", "x--", 3.2},  {"1.2.3", "---", nan},
            {"1-2", "---", nan},  {"+1", "---", nan},
            {" 1", "---", nan},   {"1e3", "---", nan},
            {"CNG", "---", nan},  {"\xef\xbc\x91", "---", nan}, // a full-width digit
        };
        for (const auto &r : rows)
            QTest::newRow(*r.text ? r.text : "empty")
                << QString::fromUtf8(r.text) << QString(r.syntax) << r.value;
    }
    void numbers() {
        QFETCH(QString, text);
        QFETCH(QString, realIntDigits);
        QFETCH(double, value);
        QCOMPARE(IsRealText(text), realIntDigits[0] == 'x');
        QCOMPARE(IsIntText(text), realIntDigits[1] == 'x');
        QCOMPARE(IsDigitText(text), realIntDigits[2] == 'x');
        if (std::isnan(value))
            QVERIFY(std::isnan(RealTextValue(text)));
        else
            QCOMPARE(RealTextValue(text), value);
    }

    void addressPart_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("value"); // -1: the user is told, and the value is 0
        const struct {
            const char *text;
            int value;
        } rows[] = {
            {"", 0},    {"007", 7},  {"32767", 32767}, {"32768", -1}, {"99999999999999999999", -1},
            {"-1", -1}, {"12.", -1}, {"12a", -1},      {"  ", -1}};
        for (const auto &r : rows)
            QTest::newRow(*r.text ? r.text : "empty") << QString(r.text) << r.value;
    }
    void addressPart() {
        QFETCH(QString, text);
        QFETCH(int, value);
        MessageRecorder recorder;
        QCOMPARE(AddressPartValue(text), qMax(value, 0));
        QCOMPARE(recorder.messages.size(), value < 0 ? 1 : 0);
        if (value >= 0) return;
        const People::Message &m = recorder.messages.first();
        QCOMPARE(m.text, QString("Please enter number."));
        QCOMPARE(m.icon, People::Icon::Information);
        QCOMPARE(m.title, People::kProgramName);
    }
};

// The key filters as the views call them, and as they act on a real field's every way in.
class KeyFilterTest : public QObject {
    Q_OBJECT

private slots:
    void cleanup() { QApplication::clipboard()->clear(); }

    // A single key over a selection: the "-" lands at the selection's start, which is where the
    // rule looks, and a text that begins with "-" takes no second one.
    void minusOverASelection() {
        QLineEdit box("12");
        box.selectAll(); // the cursor stands at the end, the selection starts at 0
        int key = '-';
        KeyInt(&box, key);
        QCOMPARE(key, int('-'));
        box.setSelection(1, 1);
        KeyReal(&box, key);
        QCOMPARE(key, 0);
        box.setText("-5");
        box.selectAll();
        key = '-';
        KeyReal(&box, key);
        QCOMPARE(key, 0);
    }

    void everyWayIntoTheField_data() {
        QTest::addColumn<QString>("route");
        QTest::addColumn<QString>("filter");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("selStart");
        QTest::addColumn<int>("selLength"); // 0: the cursor stands at selStart
        QTest::addColumn<QString>("input");
        QTest::addColumn<QString>("result");
        const struct {
            const char *name, *route, *filter, *text;
            int selStart, selLength;
            QString input;
            const char *result;
        } rows[] = {
            {"typed int", "typed", "KeyInt", "", 0, 0, "1a2.-3 ", "123"},
            {"typed flag", "typed", "KeyFlag", "", 0, 0, "2-1.0x", "10"},
            {"mixed paste", "paste", "KeyInt", "", 0, 0, "x-12.5y", "-125"},
            {"minus not first", "paste", "KeyInt", "7", 1, 0, "-12", "712"},
            {"minus before text", "paste", "KeyReal", "7", 0, 0, "-0.", "-0.7"},
            {"over a signed selection", "paste", "KeyInt", "-3", 0, 2, "-5", "-5"},
            {"over part of the text", "paste", "KeyReal", "1234", 1, 2, "9.9", "19.94"},
            {"nothing passes keeps all", "paste", "KeyFlag", "101", 0, 3, "abc", "101"},
            {"positive real", "paste", "KeyPosReal", "", 0, 0, "-1.5e3", "1.53"},
            {"second dot left to the syntax test", "paste", "KeyReal", "", 0, 0, "1.2.3", "1.2.3"},
            {"flag lines", "paste", "KeyFlag", "", 0, 0, "1 0\n1", "101"},
            // Control characters pass no filter as text, though backspace passes as a key.
            {"pasted backspace", "paste", "KeyReal", "", 0, 0, "1\b2", "12"},
            {"pasted backspace alone", "paste", "KeyInt", "", 0, 0, "\b", ""},
            {"pasted controls", "paste", "KeyPosReal", "", 0, 0,
             "1\t.\x1b"
             "5\x7f",
             "1.5"},
            {"pasted NUL and CR", "paste", "KeyFlag", "", 0, 0, QChar(0) + QString("1\r0"), "10"},
            {"backspace in a key", "key text", "KeyReal", "", 0, 0, "71\b2", "712"},
            {"controls in a key", "key text", "KeyPosReal", "", 0, 0,
             "71\t.\x1b"
             "5\x7f",
             "71.5"},
            {"NUL in a key", "key text", "KeyFlag", "", 0, 0, "7" + QString(QChar(0)) + "1\r0",
             "10"},
            // Found by random pastes: foreign text in the field, a paste ending in a backspace.
            {"after foreign text", "paste", "KeyReal", "2\xc3\xbf>", 1, 0,
             QString::fromLatin1("9\\\\\xfd\x0bm\b"), "29\xc3\xbf>"},
            {"context menu", "menu", "KeyFlag", "", 0, 0, "1x2y0", "10"},
            {"input method", "input method", "KeyInt", "", 0, 0, "4x-2", "42"},
            {"clean input method", "input method", "KeyInt", "42", 2, 0, "7", "427"},
        };
        for (const auto &r : rows)
            QTest::newRow(r.name) << QString(r.route) << QString(r.filter)
                                  << QString::fromUtf8(r.text) << r.selStart << r.selLength
                                  << r.input << QString::fromUtf8(r.result);
    }
    void everyWayIntoTheField() {
        QFETCH(QString, route);
        QFETCH(QString, filter);
        QFETCH(QString, text);
        QFETCH(int, selStart);
        QFETCH(int, selLength);
        QFETCH(QString, input);
        QFETCH(QString, result);
        Field f;
        InstallKeyFilter(f.box, filterNamed(filter));
        f.box->setText(text);
        if (selLength > 0)
            f.box->setSelection(selStart, selLength);
        else
            f.box->setCursorPosition(selStart);
        enter(route, f.box, input);
        QCOMPARE(f.box->text(), result);
    }
};

VX_TEST(TextRoutinesTest)
VX_TEST(KeyFilterTest)
#include "tst_textroutines.moc"
