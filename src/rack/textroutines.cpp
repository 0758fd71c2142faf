#include "rack/textroutines.h"

#include "ui/people.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QCoreApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMouseEvent>
#include <QPointer>
#include <QTimer>

#include <cmath>
#include <limits>

namespace {

// Only the ten ASCII digits count: the rack knows no other.
bool isDigit(QChar ch) {
    return ch >= QLatin1Char('0') && ch <= QLatin1Char('9');
}

bool allDigits(QStringView text) {
    for (QChar ch : text)
        if (!isDigit(ch)) return false;
    return true;
}

bool isDigitKey(int key) {
    return key >= '0' && key <= '9';
}

// Where a typed character lands: the start of the selection when there is one.
int typingPosition(const QLineEdit *box) {
    return box->hasSelectedText() ? box->selectionStart() : box->cursorPosition();
}

// A "-" may only become the first character, and only once.
bool minusAllowed(const QLineEdit *box) {
    return typingPosition(box) == 0 && !box->text().startsWith(QLatin1Char('-'));
}

} // namespace

QString ValueAfterColon(const QString &text) {
    const qsizetype colon = text.indexOf(QLatin1Char(':'));
    return colon < 0 ? text : text.mid(colon + 1);
}

QString ValueBeforeColon(const QString &text) {
    const qsizetype colon = text.indexOf(QLatin1Char(':'));
    return colon < 0 ? QString() : text.left(colon);
}

QString DeleteDot(const QString &text) {
    const qsizetype dot = text.indexOf(QLatin1Char('.'));
    if (dot < 0) return text;
    QString result = text;
    result.remove(dot, 1);
    return result;
}

int HexDigitValue(const QString &text) {
    if (text.isEmpty()) return 0;
    const char16_t ch = text.front().unicode();
    if (ch >= u'0' && ch <= u'9') return ch - u'0';
    if (ch >= u'A' && ch <= u'F') return ch - u'A' + 10;
    return 0;
}

QString HexToBits(const QString &text) {
    QString bits;
    bits.reserve(16);
    for (qsizetype i = 0; i < 4; ++i) {
        const int value = i < text.size() ? HexDigitValue(text.mid(i, 1)) : 0;
        for (int bit = 3; bit >= 0; --bit)
            bits.append((value >> bit) & 1 ? QLatin1Char('1') : QLatin1Char('0'));
    }
    return bits;
}

bool IsRealText(const QString &text) {
    if (text.isEmpty()) return false;
    const QChar first = text.front();
    if (first != QLatin1Char('-') && first != QLatin1Char('.') && !isDigit(first)) return false;
    for (qsizetype i = 1; i < text.size(); ++i)
        if (text[i] != QLatin1Char('.') && !isDigit(text[i])) return false;
    return text.count(QLatin1Char('.')) <= 1;
}

bool IsIntText(const QString &text) {
    if (text.isEmpty()) return false;
    const QChar first = text.front();
    if (first != QLatin1Char('-') && !isDigit(first)) return false;
    return allDigits(QStringView(text).mid(1));
}

bool IsDigitText(const QString &text) {
    return !text.isEmpty() && allDigits(text);
}

double RealTextValue(const QString &text) {
    const double invalid = std::numeric_limits<double>::quiet_NaN();
    if (!IsRealText(text)) return invalid;
    const bool negative = text.startsWith(QLatin1Char('-'));
    QString magnitude = negative ? text.mid(1) : text;
    // A lone sign or dot is a number being typed: it counts as nothing yet.
    if (magnitude.isEmpty() || magnitude == QLatin1String(".")) return 0.0;
    if (magnitude.startsWith(QLatin1Char('.'))) magnitude.prepend(QLatin1Char('0'));
    if (magnitude.endsWith(QLatin1Char('.'))) magnitude.chop(1);
    bool ok = false;
    const double value = magnitude.toDouble(&ok);
    if (!ok) return invalid;
    return negative ? -value : value;
}

void KeyReal(QLineEdit *box, int &key) {
    if (key == kBackspaceKey || key == '.' || isDigitKey(key)) return;
    if (key == '-' && minusAllowed(box)) return;
    key = 0;
}

void KeyInt(QLineEdit *box, int &key) {
    if (key == kBackspaceKey || isDigitKey(key)) return;
    if (key == '-' && minusAllowed(box)) return;
    key = 0;
}

void KeyPosReal(QLineEdit *, int &key) {
    if (key == kBackspaceKey || key == '.' || isDigitKey(key)) return;
    key = 0;
}

void KeyFlag(QLineEdit *, int &key) {
    if (key == kBackspaceKey || key == '0' || key == '1') return;
    key = 0;
}

void ShowFlag(QLineEdit *box, const QString &value) {
    const bool on = value == QLatin1String("1");
    QPalette palette = box->palette();
    palette.setColor(QPalette::Base, on ? kFlagOnColour : kFlagOffColour);
    box->setPalette(palette);
    box->setAutoFillBackground(true);
    box->setText(on ? QStringLiteral("1") : QStringLiteral("0"));
}

QColor FieldColour(const QLineEdit *box) {
    return box->palette().color(QPalette::Base);
}

void SelectAllText(QLineEdit *box) {
    box->selectAll();
}

void SplitAddress(const QString &text, QString &a, QString &b, QString &c, QString &d) {
    const QStringList parts = text.split(QLatin1Char('.'));
    auto part = [&parts](qsizetype i) { return i < parts.size() ? parts[i] : QString(); };
    a = part(0);
    b = part(1);
    c = part(2);
    d = parts.size() > 3 ? QStringList(parts.mid(3)).join(QLatin1Char('.')) : QString();
}

int AddressPartValue(const QString &text) {
    if (text.isEmpty()) return 0;
    auto refuse = [] {
        People::message(QStringLiteral("Please enter number."), QString(),
                        People::Icon::Information);
        return 0;
    };
    for (QChar ch : QStringView(text).left(3))
        if (ch == QLatin1Char('+') || ch == QLatin1Char('-') || ch == QLatin1Char('.'))
            return refuse();
    const QString number = text.trimmed();
    if (number.isEmpty() || !allDigits(number)) return refuse();
    int value = 0;
    for (QChar ch : number) {
        value = value * 10 + (ch.unicode() - u'0');
        if (value > std::numeric_limits<qint16>::max()) return refuse();
    }
    return value;
}

namespace {

// The characters of `text` that the filter lets through when typed one by one into `box` as it
// stands. The typing is tried on a scratch copy so the box itself changes only once, in one undo
// step, and not at all when nothing passes.
QString acceptedText(const QLineEdit *box, KeyFilter filter, const QString &text,
                     bool replaceSelection) {
    QLineEdit scratch;
    scratch.setText(box->text());
    if (box->hasSelectedText())
        scratch.setSelection(box->selectionStart(), box->selectedText().size());
    else
        scratch.setCursorPosition(box->cursorPosition());
    // A paste replaces the selection as a whole, so the rules see the text without it.
    if (replaceSelection) scratch.del();
    QString accepted;
    for (QChar ch : text) {
        // A backspace or any other control character in pasted text is no key the keyboard
        // types: it would pass as "backspace" and land in the field as a character.
        if (ch.unicode() < 0x20 || ch.unicode() == 0x7f) continue;
        int key = ch.unicode();
        filter(&scratch, key);
        if (key == 0) continue;
        const QString typed{QChar(static_cast<char16_t>(key))};
        scratch.insert(typed);
        accepted += typed;
    }
    return accepted;
}

bool isControlText(const QString &text) {
    return text.isEmpty() || text.front().unicode() < 0x20 || text.front().unicode() == 0x7f;
}

// Runs a key filter on the key presses, pastes and input of one line edit.
class KeyFilterGuard : public QObject {
public:
    KeyFilterGuard(QLineEdit *box, KeyFilter filter) : QObject(box), m_box(box), m_filter(filter) {
        box->setAcceptDrops(false);
    }

    // The box is asked only for the events filtered here: others come too while it is being
    // destroyed and no longer a line edit (the focus leaving it).
    bool eventFilter(QObject *watched, QEvent *event) override {
        if (watched != m_box) return false;
        switch (event->type()) {
        case QEvent::KeyPress:
            return editable() && keyPress(static_cast<QKeyEvent *>(event));
        case QEvent::InputMethod:
            return editable() && inputMethod(static_cast<QInputMethodEvent *>(event));
        case QEvent::ContextMenu:
            return editable() && contextMenu(static_cast<QContextMenuEvent *>(event));
        case QEvent::MouseButtonRelease:
            return editable() && middleClick(static_cast<QMouseEvent *>(event));
        default:
            return false;
        }
    }

private:
    bool editable() const { return !m_box->isReadOnly(); }

    bool keyPress(QKeyEvent *event) {
        if (event->matches(QKeySequence::Paste)) {
            paste(QClipboard::Clipboard);
            return true;
        }
        if (event->key() == Qt::Key_Backspace) {
            int key = kBackspaceKey;
            m_filter(m_box, key);
            return key == 0;
        }
        // Shortcuts (Ctrl+C, Ctrl+A, ...) are commands, not typing. Ctrl together with Alt is
        // how some keyboards type characters, so that still counts as typing.
        const Qt::KeyboardModifiers mods = event->modifiers();
        if ((mods & (Qt::ControlModifier | Qt::MetaModifier)) && !(mods & Qt::AltModifier))
            return false;
        const QString text = event->text();
        if (isControlText(text)) return false; // arrows, Delete, Tab, Return, Home/End, ...
        if (text.size() == 1) {
            int key = text.front().unicode();
            m_filter(m_box, key);
            if (key == 0) return true;
            if (key == text.front().unicode()) return false;
            m_box->insert(QString(QChar(static_cast<char16_t>(key))));
            return true;
        }
        return insertFiltered(text, false);
    }

    bool inputMethod(QInputMethodEvent *event) {
        const QString text = event->commitString();
        if (text.isEmpty()) return false;
        const QString accepted = acceptedText(m_box, m_filter, text, false);
        if (accepted == text) return false;
        if (!accepted.isEmpty()) m_box->insert(accepted);
        return true;
    }

    bool contextMenu(QContextMenuEvent *event) {
        QMenu *menu = m_box->createStandardContextMenu();
        for (QAction *action : menu->actions()) {
            if (!isPasteAction(action)) continue;
            action->disconnect();
            connect(action, &QAction::triggered, this, [this] { paste(QClipboard::Clipboard); });
        }
        QPointer<QMenu> guard(menu);
        menu->exec(event->globalPos());
        delete guard.data();
        return true;
    }

    // The standard menu names its paste action in later toolkit versions; before that only its
    // (translated) text tells it apart.
    static bool isPasteAction(const QAction *action) {
        if (action->objectName() == QLatin1String("edit-paste")) return true;
        const QString label = action->text().section(QLatin1Char('\t'), 0, 0);
        return label == QCoreApplication::translate("QLineEdit", "&Paste");
    }

    bool middleClick(QMouseEvent *event) {
        if (event->button() != Qt::MiddleButton) return false;
        if (!QGuiApplication::clipboard()->supportsSelection()) return false;
        m_box->deselect();
        paste(QClipboard::Selection);
        return true;
    }

    // What passes the filter unchanged is pasted the ordinary way; otherwise only the characters
    // that pass go in, as one step of undo of their own, as an ordinary paste would be.
    void paste(QClipboard::Mode mode) {
        const QString text = QGuiApplication::clipboard()->text(mode);
        const QString accepted = acceptedText(m_box, m_filter, text, true);
        if (accepted == text && mode == QClipboard::Clipboard) {
            m_box->paste();
            return;
        }
        if (accepted.isEmpty()) return;
        separateUndo();
        m_box->insert(accepted);
        separateUndo();
    }

    bool insertFiltered(const QString &text, bool replaceSelection) {
        const QString accepted = acceptedText(m_box, m_filter, text, replaceSelection);
        if (!accepted.isEmpty()) m_box->insert(accepted);
        return true;
    }

    // A line edit closes its current step of undo when the cursor moves; there is no other public
    // way to ask for it. A selection closes the step by itself when it is replaced.
    void separateUndo() {
        if (m_box->hasSelectedText() || m_box->text().isEmpty()) return;
        const int position = m_box->cursorPosition();
        m_box->setCursorPosition(position == 0 ? 1 : 0);
        m_box->setCursorPosition(position);
    }

    QLineEdit *m_box;
    KeyFilter m_filter;
};

// Selects the whole text when the field gets the focus. A mouse click would put the cursor at
// the click right after, so for that case the selection is made again once the click is done.
class SelectAllGuard : public QObject {
public:
    explicit SelectAllGuard(QLineEdit *box) : QObject(box), m_box(box) {}

    bool eventFilter(QObject *watched, QEvent *event) override {
        if (watched != m_box || event->type() != QEvent::FocusIn) return false;
        SelectAllText(m_box);
        if (static_cast<QFocusEvent *>(event)->reason() == Qt::MouseFocusReason) {
            QPointer<QLineEdit> box(m_box);
            QTimer::singleShot(0, m_box, [box] {
                if (box && box->hasFocus()) SelectAllText(box);
            });
        }
        return false;
    }

private:
    QLineEdit *m_box;
};

} // namespace

void InstallKeyFilter(QLineEdit *box, KeyFilter filter) {
    if (!box || !filter) return;
    box->installEventFilter(new KeyFilterGuard(box, filter));
}

void InstallSelectAllOnFocus(QLineEdit *box) {
    if (!box) return;
    box->installEventFilter(new SelectAllGuard(box));
}
