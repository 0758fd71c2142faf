#include "support/testsupport.h"

#include "rack/textroutines.h"

#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTest>

// What the key filters do with text no keyboard types: control characters arriving in a paste
// or in the text of a single key event. Found by feeding the filters random typing and pastes.
class HostileInputTest : public QObject {
    Q_OBJECT

    static KeyFilter filter(int index) {
        static const KeyFilter filters[] = {KeyReal, KeyInt, KeyPosReal, KeyFlag};
        return filters[index];
    }

private slots:
    void cleanup() { QApplication::clipboard()->clear(); }

    void controlCharactersNeverReachTheField_data() {
        QTest::addColumn<int>("filter");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        // Backspace passes every filter as a key; as a character it must not be inserted.
        QTest::newRow("real: backspace") << 0 << QString("1\b2") << QString("12");
        QTest::newRow("int: backspace alone") << 1 << QString("\b") << QString();
        QTest::newRow("positive real: tab, escape, delete") << 2
                                                            << QString("1\t.\x1b"
                                                                       "5\x7f")
                                                            << QString("1.5");
        QTest::newRow("flag: NUL and CR") << 3 << QString(QChar(0)) + "1\r0" << QString("10");
    }
    void controlCharactersNeverReachTheField() {
        QFETCH(int, filter);
        QFETCH(QString, text);
        QFETCH(QString, expected);

        QLineEdit pasted;
        InstallKeyFilter(&pasted, HostileInputTest::filter(filter));
        QApplication::clipboard()->setText(text);
        QKeyEvent paste(QEvent::KeyPress, Qt::Key_V, Qt::ControlModifier);
        QApplication::sendEvent(&pasted, &paste);
        QCOMPARE(pasted.text(), expected);

        // The same characters as the text of one key event (a dead key, a composing keyboard).
        QLineEdit typed;
        InstallKeyFilter(&typed, HostileInputTest::filter(filter));
        QKeyEvent press(QEvent::KeyPress, Qt::Key_unknown, Qt::NoModifier, "7" + text);
        QApplication::sendEvent(&typed, &press);
        QCOMPARE(typed.text(), filter == 3 ? expected : "7" + expected);
    }

    // The input that first showed it: a field with foreign text, a paste ending in a backspace.
    void pasteAfterForeignTextKeepsOnlyWhatPasses() {
        QLineEdit box;
        InstallKeyFilter(&box, KeyReal);
        box.setText(QString::fromUtf8("2\xc3\xbf>"));
        box.setCursorPosition(1);
        QApplication::clipboard()->setText(QString::fromLatin1("9\\\\\xfd\x0bm\b"));
        QKeyEvent paste(QEvent::KeyPress, Qt::Key_V, Qt::ControlModifier);
        QApplication::sendEvent(&box, &paste);
        QCOMPARE(box.text(), QString::fromUtf8("29\xc3\xbf>"));
    }
};

VX_TEST(HostileInputTest)
#include "tst_hostileinput.moc"
