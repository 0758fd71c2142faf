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

using vxtest::MessageRecorder;

namespace {

struct NamedFilter {
    const char *name;
    KeyFilter filter;
};

const NamedFilter kFilters[] = {
    {"KeyReal", KeyReal}, {"KeyInt", KeyInt}, {"KeyPosReal", KeyPosReal}, {"KeyFlag", KeyFlag}};

KeyFilter filterNamed(const QString &name) {
    for (const NamedFilter &f : kFilters)
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

} // namespace

// The pure routines on the rack's reply texts and on typed numbers.
class TextRoutinesTest : public QObject {
    Q_OBJECT

private slots:
    void replyTexts_data() {
        QTest::addColumn<QString>("text");
        // ValueAfterColon, ValueBeforeColon, DeleteDot
        QTest::addColumn<QStringList>("results");
        QTest::newRow("tagged") << QString("0:12.5") << QStringList{"12.5", "0", "0:125"};
        QTest::newRow("untagged") << QString("12.5") << QStringList{"12.5", "", "125"};
        QTest::newRow("second colon kept")
            << QString("T:10:30") << QStringList{"10:30", "T", "T:10:30"};
        QTest::newRow("empty") << QString("") << QStringList{"", "", ""};
        QTest::newRow("colon only") << QString(":") << QStringList{"", "", ":"};
        QTest::newRow("value empty") << QString("A:") << QStringList{"", "A", "A:"};
        QTest::newRow("first dot only") << QString("1.2.3") << QStringList{"1.2.3", "", "12.3"};
        QTest::newRow("dot at end") << QString("V2.") << QStringList{"V2.", "", "V2"};
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

    void hexDigits_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("value");
        QTest::newRow("0") << QString("0") << 0;
        QTest::newRow("A") << QString("A") << 10;
        QTest::newRow("F") << QString("F") << 15;
        QTest::newRow("only first counts") << QString("F0") << 15;
        QTest::newRow("lower case") << QString("f") << 0;
        QTest::newRow("colon after 9") << QString(":") << 0;
        QTest::newRow("at before A") << QString("@") << 0;
        QTest::newRow("empty") << QString("") << 0;
        QTest::newRow("arabic-indic nine") << QString(QChar(0x0669)) << 0;
    }
    void hexDigits() {
        QFETCH(QString, text);
        QFETCH(int, value);
        QCOMPARE(HexDigitValue(text), value);
    }

    void hexToBits_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("bits");
        QTest::newRow("both ends") << QString("8001") << "1000000000000001";
        QTest::newRow("lower case is zero") << QString("abcd") << "0000000000000000";
        QTest::newRow("short fills right") << QString("FF") << "1111111100000000";
        QTest::newRow("one digit") << QString("1") << "0001000000000000";
        QTest::newRow("empty") << QString("") << "0000000000000000";
        QTest::newRow("first four only") << QString("0001F") << "0000000000000001";
        QTest::newRow("bad digit inside") << QString("1G01") << "0001000000000001";
    }
    void hexToBits() {
        QFETCH(QString, text);
        QFETCH(QString, bits);
        QCOMPARE(HexToBits(text), bits);
    }

    // Every word the rack can send: bit k of the word stands at position 16 - k (1-based).
    void hexToBitsAgreesWithTheWordValue() {
        for (int word = 0; word <= 0xFFFF; ++word) {
            const QString hex = QString("%1").arg(word, 4, 16, QChar('0')).toUpper();
            const QString bits = HexToBits(hex);
            QCOMPARE(bits.size(), 16);
            for (int k = 0; k < 16; ++k) {
                const QChar expected = (word >> k) & 1 ? QChar('1') : QChar('0');
                if (bits.at(15 - k) != expected)
                    QFAIL(qPrintable(QString("%1 bit %2 gives %3").arg(hex).arg(k).arg(bits)));
            }
        }
    }

    void syntaxTests_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("real");
        QTest::addColumn<bool>("whole");
        QTest::addColumn<bool>("digits");
        QTest::newRow("empty") << QString("") << false << false << false;
        QTest::newRow("digits") << QString("0123") << true << true << true;
        QTest::newRow("negative") << QString("-12") << true << true << false;
        QTest::newRow("minus alone") << QString("-") << true << true << false;
        QTest::newRow("dot alone") << QString(".") << true << false << false;
        QTest::newRow("minus dot") << QString("-.") << true << false << false;
        QTest::newRow("minus point five") << QString("-.5") << true << false << false;
        QTest::newRow("trailing dot") << QString("5.") << true << false << false;
        QTest::newRow("decimal") << QString("12.5") << true << false << false;
        QTest::newRow("two dots") << QString("1.2.3") << false << false << false;
        QTest::newRow("inner minus") << QString("1-2") << false << false << false;
        QTest::newRow("plus") << QString("+1") << false << false << false;
        QTest::newRow("blank") << QString(" 1") << false << false << false;
        QTest::newRow("exponent") << QString("1e3") << false << false << false;
        QTest::newRow("rack refusal") << QString("CNG") << false << false << false;
        QTest::newRow("full-width digit") << QString(QChar(0xFF11)) << false << false << false;
    }
    void syntaxTests() {
        QFETCH(QString, text);
        QFETCH(bool, real);
        QFETCH(bool, whole);
        QFETCH(bool, digits);
        QCOMPARE(IsRealText(text), real);
        QCOMPARE(IsIntText(text), whole);
        QCOMPARE(IsDigitText(text), digits);
    }

    void numberOfAText_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<double>("value");
        QTest::newRow("whole") << QString("32000") << 32000.0;
        QTest::newRow("negative") << QString("-32000") << -32000.0;
        QTest::newRow("minus alone") << QString("-") << 0.0;
        QTest::newRow("dot alone") << QString(".") << 0.0;
        QTest::newRow("minus dot") << QString("-.") << 0.0;
        QTest::newRow("leading dot") << QString("-.5") << -0.5;
        QTest::newRow("trailing dot") << QString("7.") << 7.0;
        QTest::newRow("adjust edge") << QString("3.2") << 3.2;
    }
    void numberOfAText() {
        QFETCH(QString, text);
        QFETCH(double, value);
        QCOMPARE(RealTextValue(text), value);
    }

    void numberOfABadTextIsNaN() {
        for (const char *bad : {"", "1.2.3", "1-2", "1e3", "CNG", " 1"})
            QVERIFY2(std::isnan(RealTextValue(bad)), bad);
    }

    void addressSplit_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("parts");
        QTest::newRow("address") << QString("192.168.0.10") << QStringList{"192", "168", "0", "10"};
        QTest::newRow("too few dots") << QString("10.1") << QStringList{"10", "1", "", ""};
        QTest::newRow("no dot") << QString("CNG") << QStringList{"CNG", "", "", ""};
        QTest::newRow("empty") << QString("") << QStringList{"", "", "", ""};
        QTest::newRow("too many dots") << QString("1.2.3.4.5") << QStringList{"1", "2", "3", "4.5"};
    }
    void addressSplit() {
        QFETCH(QString, text);
        QFETCH(QStringList, parts);
        QString a = "x", b = "x", c = "x", d = "x";
        SplitAddress(text, a, b, c, d);
        QCOMPARE(QStringList({a, b, c, d}), parts);
    }

    void addressPart_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("value");
        QTest::addColumn<bool>("complains");
        QTest::newRow("empty") << QString("") << 0 << false;
        QTest::newRow("byte") << QString("255") << 255 << false;
        QTest::newRow("beyond a byte") << QString("256") << 256 << false;
        QTest::newRow("leading zeros") << QString("007") << 7 << false;
        QTest::newRow("port") << QString("5020") << 5020 << false;
        QTest::newRow("largest") << QString("32767") << 32767 << false;
        QTest::newRow("too large") << QString("32768") << 0 << true;
        QTest::newRow("far too large") << QString("99999999999999999999") << 0 << true;
        QTest::newRow("minus") << QString("-1") << 0 << true;
        QTest::newRow("plus") << QString("+1") << 0 << true;
        QTest::newRow("dot third") << QString("12.") << 0 << true;
        QTest::newRow("letter behind digits") << QString("12a") << 0 << true;
        QTest::newRow("dot behind three") << QString("1234.5") << 0 << true;
        QTest::newRow("blanks only") << QString("  ") << 0 << true;
    }
    void addressPart() {
        QFETCH(QString, text);
        QFETCH(int, value);
        QFETCH(bool, complains);
        MessageRecorder recorder;
        QCOMPARE(AddressPartValue(text), value);
        QCOMPARE(recorder.messages.size(), complains ? 1 : 0);
        if (complains) {
            const People::Message &m = recorder.messages.first();
            QCOMPARE(m.text, QString("Please enter number."));
            QCOMPARE(m.icon, People::Icon::Information);
            QCOMPARE(m.title, People::kProgramName);
        }
    }
};

// The key filters as the views call them, and as they act on a real field's keyboard and pastes.
class KeyFilterTest : public QObject {
    Q_OBJECT

private slots:
    void cleanup() { QApplication::clipboard()->clear(); }

    void filterRules_data() {
        QTest::addColumn<QString>("filter");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("cursor");
        QTest::addColumn<int>("key");
        QTest::addColumn<bool>("passes");
        for (const NamedFilter &f : kFilters) {
            const QString name = f.name;
            const QByteArray n = f.name;
            QTest::newRow(n + " backspace") << name << "-1" << 1 << 8 << true;
            QTest::newRow(n + " digit 0") << name << "" << 0 << int('0') << true;
            QTest::newRow(n + " letter") << name << "" << 0 << int('a') << false;
            QTest::newRow(n + " plus") << name << "" << 0 << int('+') << false;
            QTest::newRow(n + " carriage return") << name << "1" << 1 << 13 << false;
        }
        const bool digitsPass[] = {true, true, true, false};
        for (int i = 0; i < 4; ++i) {
            const QByteArray n = kFilters[i].name;
            for (char digit : {'2', '9'})
                QTest::newRow(n + " digit " + digit)
                    << QString(n) << "1" << 0 << int(digit) << digitsPass[i];
        }
        QTest::newRow("KeyReal dot") << QString("KeyReal") << "1" << 1 << int('.') << true;
        QTest::newRow("KeyReal second dot") << QString("KeyReal") << "1.5" << 3 << int('.') << true;
        QTest::newRow("KeyPosReal dot") << QString("KeyPosReal") << "" << 0 << int('.') << true;
        QTest::newRow("KeyInt dot") << QString("KeyInt") << "1" << 1 << int('.') << false;
        for (const char *name : {"KeyReal", "KeyInt"}) {
            const QByteArray n = name;
            QTest::newRow(n + " minus before digits")
                << QString(name) << "12" << 0 << int('-') << true;
            QTest::newRow(n + " minus at 1") << QString(name) << "12" << 1 << int('-') << false;
            QTest::newRow(n + " minus at end") << QString(name) << "12" << 2 << int('-') << false;
            QTest::newRow(n + " second minus") << QString(name) << "-12" << 0 << int('-') << false;
        }
        QTest::newRow("KeyPosReal minus") << QString("KeyPosReal") << "" << 0 << int('-') << false;
        QTest::newRow("KeyFlag minus") << QString("KeyFlag") << "" << 0 << int('-') << false;
    }
    void filterRules() {
        QFETCH(QString, filter);
        QFETCH(QString, text);
        QFETCH(int, cursor);
        QFETCH(int, key);
        QFETCH(bool, passes);
        QLineEdit box;
        box.setText(text);
        box.setCursorPosition(cursor);
        int code = key;
        filterNamed(filter)(&box, code);
        QCOMPARE(code, passes ? key : 0);
        QCOMPARE(box.text(), text); // a filter only judges; it never edits
    }

    // With a selection the character lands at its start, which is where the minus rule looks.
    void minusOverASelection() {
        QLineEdit box;
        box.setText("12");
        box.setSelection(2, -2); // selected from the end back to 0: the cursor stands at 0
        int key = '-';
        KeyInt(&box, key);
        QCOMPARE(key, int('-'));
        box.selectAll(); // the cursor stands at the end, the selection starts at 0
        key = '-';
        KeyReal(&box, key);
        QCOMPARE(key, int('-'));
        box.setSelection(1, 1);
        key = '-';
        KeyReal(&box, key);
        QCOMPARE(key, 0);
        box.setText("-5");
        box.selectAll();
        key = '-';
        KeyReal(&box, key);
        QCOMPARE(key, 0);
    }

    void typedKeysAreFiltered() {
        Field f;
        InstallKeyFilter(f.box, KeyInt);
        QTest::keyClicks(f.box, "1a2.-3 ");
        QCOMPARE(f.box->text(), QString("123"));
        QTest::keyClick(f.box, Qt::Key_Home);
        QTest::keyClick(f.box, Qt::Key_Minus);
        QCOMPARE(f.box->text(), QString("-123"));
        QTest::keyClick(f.box, Qt::Key_Minus); // now at position 1
        QTest::keyClick(f.box, Qt::Key_Home);
        QTest::keyClick(f.box, Qt::Key_Minus); // text already begins with "-"
        QCOMPARE(f.box->text(), QString("-123"));
        QTest::keyClick(f.box, Qt::Key_End);
        QTest::keyClick(f.box, Qt::Key_Backspace);
        QCOMPARE(f.box->text(), QString("-12"));
    }

    void flagFieldTakesOnlyZeroAndOne() {
        Field f;
        InstallKeyFilter(f.box, KeyFlag);
        QTest::keyClicks(f.box, "2-1.0x");
        QCOMPARE(f.box->text(), QString("10"));
    }

    void editingKeysStillWork() {
        Field f;
        InstallKeyFilter(f.box, KeyFlag);
        f.box->setText("1010");
        QTest::keyClick(f.box, Qt::Key_Home);
        QTest::keyClick(f.box, Qt::Key_Delete);
        QCOMPARE(f.box->text(), QString("010"));
        QTest::keyClick(f.box, Qt::Key_Right);
        QCOMPARE(f.box->cursorPosition(), 1);
        QTest::keyClick(f.box, Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(f.box->selectedText(), QString("010"));
        QTest::keyClick(f.box, Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QApplication::clipboard()->text(), QString("010"));
        QTest::keyClick(f.box, Qt::Key_Tab);
        QVERIFY(f.other->hasFocus());
    }

    void pasteGoesThroughTheFilter_data() {
        QTest::addColumn<QString>("filter");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("selStart");
        QTest::addColumn<int>("selLength"); // 0: the cursor stands at selStart
        QTest::addColumn<QStringList>("pastedAndResult");
        QTest::newRow("mixed into empty")
            << QString("KeyInt") << "" << 0 << 0 << QStringList{"x-12.5y", "-125"};
        QTest::newRow("minus not first")
            << QString("KeyInt") << "7" << 1 << 0 << QStringList{"-12", "712"};
        QTest::newRow("minus before text")
            << QString("KeyReal") << "7" << 0 << 0 << QStringList{"-0.", "-0.7"};
        QTest::newRow("over a signed selection")
            << QString("KeyInt") << "-3" << 0 << 2 << QStringList{"-5", "-5"};
        QTest::newRow("over part of the text")
            << QString("KeyReal") << "1234" << 1 << 2 << QStringList{"9.9", "19.94"};
        QTest::newRow("nothing passes keeps the selection")
            << QString("KeyFlag") << "101" << 0 << 3 << QStringList{"abc", "101"};
        QTest::newRow("positive real")
            << QString("KeyPosReal") << "" << 0 << 0 << QStringList{"-1.5e3", "1.53"};
        QTest::newRow("flag") << QString("KeyFlag") << "" << 0 << 0 << QStringList{"1 0\n1", "101"};
    }
    void pasteGoesThroughTheFilter() {
        QFETCH(QString, filter);
        QFETCH(QString, text);
        QFETCH(int, selStart);
        QFETCH(int, selLength);
        QFETCH(QStringList, pastedAndResult);
        const QString clipboard = pastedAndResult[0];
        const QString result = pastedAndResult[1];
        Field f;
        InstallKeyFilter(f.box, filterNamed(filter));
        f.box->setText(text);
        if (selLength > 0)
            f.box->setSelection(selStart, selLength);
        else
            f.box->setCursorPosition(selStart);
        QApplication::clipboard()->setText(clipboard);
        QTest::keyClick(f.box, Qt::Key_V, Qt::ControlModifier);
        QCOMPARE(f.box->text(), result);
    }

    // Undo takes back the paste alone: neither the typing before it nor after it.
    void pasteIsOneUndoStep_data() {
        QTest::addColumn<QString>("clipboard");
        QTest::newRow("filtered") << QString("3a4");
        QTest::newRow("clean") << QString("34");
    }
    void pasteIsOneUndoStep() {
        QFETCH(QString, clipboard);
        Field f;
        InstallKeyFilter(f.box, KeyInt);
        QTest::keyClicks(f.box, "12");
        QApplication::clipboard()->setText(clipboard);
        QTest::keyClick(f.box, Qt::Key_V, Qt::ControlModifier);
        QTest::keyClicks(f.box, "5");
        QCOMPARE(f.box->text(), QString("12345"));
        f.box->undo();
        QCOMPARE(f.box->text(), QString("1234"));
        f.box->undo();
        QCOMPARE(f.box->text(), QString("12"));
    }

    void readOnlyFieldTakesNoPaste() {
        Field f;
        InstallKeyFilter(f.box, KeyInt);
        f.box->setText("12");
        f.box->setReadOnly(true);
        QApplication::clipboard()->setText("3");
        QTest::keyClick(f.box, Qt::Key_V, Qt::ControlModifier);
        QTest::keyClick(f.box, Qt::Key_4);
        QCOMPARE(f.box->text(), QString("12"));
    }

    void contextMenuPasteIsFiltered() {
        Field f;
        InstallKeyFilter(f.box, KeyFlag);
        QApplication::clipboard()->setText("1x2y0");
        bool triggered = false;
        QTimer::singleShot(0, [&] {
            auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
            if (!menu) return;
            for (QAction *action : menu->actions())
                if (action->text().startsWith("&Paste")) {
                    action->trigger();
                    triggered = true;
                }
            menu->close();
        });
        QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(2, 2),
                                f.box->mapToGlobal(QPoint(2, 2)));
        QApplication::sendEvent(f.box, &event);
        QVERIFY(triggered);
        QCOMPARE(f.box->text(), QString("10"));
    }

    void inputMethodTextIsFiltered() {
        Field f;
        InstallKeyFilter(f.box, KeyInt);
        QInputMethodEvent event;
        event.setCommitString("4x-2");
        QApplication::sendEvent(f.box, &event);
        QCOMPARE(f.box->text(), QString("42"));
        QInputMethodEvent clean;
        clean.setCommitString("7");
        QApplication::sendEvent(f.box, &clean);
        QCOMPARE(f.box->text(), QString("427"));
    }

    void focusSelectsAll() {
        Field f;
        InstallSelectAllOnFocus(f.other);
        f.other->setText("-12.5");
        f.other->setCursorPosition(2);
        f.other->setFocus(Qt::OtherFocusReason);
        QVERIFY(f.other->hasFocus());
        QCOMPARE(f.other->selectedText(), QString("-12.5"));
        // A click puts the cursor where it lands; the selection comes back once the click is done.
        f.box->setFocus();
        QTest::mouseClick(f.other, Qt::LeftButton, {}, QPoint(3, 5));
        QCOMPARE(f.other->selectedText(), QString());
        QCoreApplication::processEvents();
        QCOMPARE(f.other->selectedText(), QString("-12.5"));
    }

    void flagField_data() {
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("shown");
        QTest::newRow("one") << QString("1") << "1";
        QTest::newRow("zero") << QString("0") << "0";
        QTest::newRow("empty") << QString("") << "0";
        QTest::newRow("refusal") << QString("CNG") << "0";
        QTest::newRow("blank one") << QString(" 1") << "0";
    }
    void flagField() {
        QFETCH(QString, value);
        QFETCH(QString, shown);
        QLineEdit box;
        ShowFlag(&box, shown == "1" ? QString("0") : QString("1")); // start from the other state
        ShowFlag(&box, value);
        QCOMPARE(box.text(), shown);
        QCOMPARE(FieldColour(&box), shown == "1" ? QColor(255, 0, 0) : QColor(0, 128, 0));
    }
};

VX_TEST(TextRoutinesTest)
VX_TEST(KeyFilterTest)
#include "tst_textroutines.moc"
