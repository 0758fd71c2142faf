#include "link/traffictext.h"

#include <QDateTime>
#include <QTime>

namespace TrafficText {

namespace {

constexpr qint64 kDayMs = 24 * 60 * 60 * 1000;
const QString kNoReplyText = QStringLiteral("(no reply)");
const QString kLineLostText = QStringLiteral("(line lost)");
const QString kTimeFormat = QStringLiteral("HH:mm:ss.zzz");

// Where the fields of a plain row stand: "HH:mm:ss.zzz M SS text".
constexpr int kMarkAt = 13;
constexpr int kSlotAt = 15;
constexpr int kTextAt = 18;

bool isFailureWord(const QString &reply) {
    return reply == QLatin1String("CNG") || reply == QLatin1String("CNU") ||
           reply == QLatin1String("DTMOUT");
}

// The body of a command: its text after the letter, without the CR and outer blanks.
QString commandBody(const QString &raw) {
    return raw.mid(1).trimmed();
}

} // namespace

QString normalisedNumber(const QString &text) {
    bool ok = false;
    const int n = text.toInt(&ok);
    return ok && n >= 0 ? QStringLiteral("%1").arg(n, 2, 10, QLatin1Char('0')) : text;
}

QString visible(const QString &raw) {
    QString text;
    text.reserve(raw.size() + 4);
    for (const QChar c : raw) {
        const char16_t code = c.unicode();
        if (code == u'\\') {
            text += QLatin1String("\\\\");
        } else if (code == u'\r') {
            text += QLatin1String("\\r");
        } else if (code == u'\n') {
            text += QLatin1String("\\n");
        } else if (code == u'\t') {
            text += QLatin1String("\\t");
        } else if (code > 0xff) {
            // The line carries Latin-1 only; such a character went out as '?'.
            text += QLatin1Char('?');
        } else if (code < 0x20 || code >= 0x7f) {
            text += QLatin1String("\\x") +
                    QStringLiteral("%1").arg(int(code), 2, 16, QLatin1Char('0')).toUpper();
        } else {
            text += c;
        }
    }
    return text;
}

std::optional<QString> fromVisible(const QString &text) {
    QString raw;
    raw.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c != QLatin1Char('\\')) {
            raw += c;
            continue;
        }
        if (++i >= text.size()) return std::nullopt;
        switch (text.at(i).unicode()) {
        case u'\\':
            raw += QLatin1Char('\\');
            break;
        case u'r':
            raw += QLatin1Char('\r');
            break;
        case u'n':
            raw += QLatin1Char('\n');
            break;
        case u't':
            raw += QLatin1Char('\t');
            break;
        case u'x': {
            const QString hex = text.mid(i + 1, 2);
            bool ok = false;
            const int code = hex.toInt(&ok, 16);
            if (!ok || hex.size() != 2 || hex.startsWith(QLatin1Char('+')) ||
                hex.startsWith(QLatin1Char('-')))
                return std::nullopt;
            raw += QChar(code);
            i += 2;
            break;
        }
        default:
            return std::nullopt;
        }
    }
    return raw;
}

QChar mark(const Row &row) {
    switch (row.kind) {
    case Link::Traffic::Sent:
        return QLatin1Char('>');
    case Link::Traffic::Received:
        return QLatin1Char('<');
    case Link::Traffic::NoReply:
        break;
    }
    return row.raw.isEmpty() ? QLatin1Char('!') : QLatin1Char('?');
}

QString timeText(qint64 msecs) {
    // A row read from a file knows only its time of day.
    if (msecs >= 0 && msecs < kDayMs)
        return QTime::fromMSecsSinceStartOfDay(int(msecs)).toString(kTimeFormat);
    return QDateTime::fromMSecsSinceEpoch(msecs).toString(kTimeFormat);
}

QString slotText(int slot) {
    if (slot < 0) return QStringLiteral("--");
    return QStringLiteral("%1").arg(slot, 2, 10, QLatin1Char('0'));
}

QString lineText(const Row &row) {
    switch (row.kind) {
    case Link::Traffic::Sent:
        return visible(row.raw);
    case Link::Traffic::Received:
        return visible(row.raw + QLatin1Char('\r'));
    case Link::Traffic::NoReply:
        break;
    }
    if (row.raw.isEmpty()) return row.lineLost ? kLineLostText : kNoReplyText;
    return visible(row.raw);
}

QString plainRow(const Row &row) {
    return timeText(row.msecs) + QLatin1Char(' ') + mark(row) + QLatin1Char(' ') +
           slotText(row.slot) + QLatin1Char(' ') + lineText(row);
}

QString csvHeader() {
    return QStringLiteral("time,direction,slot,line");
}

QString csvRow(const Row &row) {
    QString line = lineText(row);
    line.replace(QLatin1Char('"'), QLatin1String("\"\""));
    return timeText(row.msecs) + QLatin1Char(',') + mark(row) + QLatin1Char(',') +
           slotText(row.slot) + QLatin1String(",\"") + line + QLatin1Char('"');
}

std::optional<Row> parsePlainRow(const QString &line, QString *why) {
    const auto fail = [why](const char *reason) {
        if (why) *why = QString::fromLatin1(reason);
        return std::nullopt;
    };
    if (line.size() <= kTextAt || line.at(kMarkAt - 1) != QLatin1Char(' ') ||
        line.at(kSlotAt - 1) != QLatin1Char(' ') || line.at(kTextAt - 1) != QLatin1Char(' '))
        return fail("not a row of a traffic log (time, mark, slot, line)");
    const QTime time = QTime::fromString(line.left(kMarkAt - 1), kTimeFormat);
    if (!time.isValid()) return fail("the time is not HH:MM:SS.mmm");

    Row row;
    row.msecs = time.msecsSinceStartOfDay();
    const QString slot = line.mid(kSlotAt, 2);
    if (slot != QLatin1String("--")) {
        bool ok = false;
        row.slot = slot.toInt(&ok);
        if (!ok || !slot.at(0).isDigit() || !slot.at(1).isDigit() || row.slot > 16)
            return fail("the slot is not 00 to 16 or --");
    }
    const QString text = line.mid(kTextAt);
    const QChar markChar = line.at(kMarkAt);
    if (markChar == QLatin1Char('!')) {
        row.kind = Link::Traffic::NoReply;
        row.lineLost = text == kLineLostText;
        return row;
    }
    const std::optional<QString> raw = fromVisible(text);
    if (!raw) return fail("a broken escape in the line (\\r \\n \\t \\\\ or \\xNN)");
    row.raw = *raw;
    if (markChar == QLatin1Char('>')) {
        row.kind = Link::Traffic::Sent;
    } else if (markChar == QLatin1Char('<')) {
        row.kind = Link::Traffic::Received;
        if (row.raw.endsWith(QLatin1Char('\r'))) row.raw.chop(1);
    } else if (markChar == QLatin1Char('?')) {
        row.kind = Link::Traffic::NoReply;
        if (row.raw.isEmpty()) return fail("a row marked ? shows no bytes");
    } else {
        return fail("the mark is not >, <, ! or ?");
    }
    return row;
}

int SlotFollower::see(Link::Traffic kind, const QString &raw) {
    switch (kind) {
    case Link::Traffic::Sent: {
        const QChar letter = raw.isEmpty() ? QChar() : raw.at(0);
        m_selecting = false;
        if (letter == QLatin1Char('G')) {
            m_last = Step::Group;
            m_group = normalisedNumber(commandBody(raw));
            m_groupTaken = false;
            m_item.clear();
        } else if (letter == QLatin1Char('I')) {
            m_last = Step::Item;
            m_item = normalisedNumber(commandBody(raw));
        } else if (letter == QLatin1Char('D')) {
            m_last = Step::Data;
            bool ok = false;
            const int slot = commandBody(raw).toInt(&ok);
            if (ok && slot >= 0 && slot <= 16 && m_groupTaken && m_group == QLatin1String("00") &&
                m_item == QLatin1String("41")) {
                m_before = m_slot;
                m_slot = slot;
                m_selecting = true;
            }
        } else {
            m_last = Step::None;
        }
        break;
    }
    case Link::Traffic::Received:
        if (m_last == Step::Group) m_groupTaken = raw.trimmed() == QLatin1String("COK");
        if (m_selecting && isFailureWord(raw.trimmed())) m_slot = m_before;
        m_selecting = false;
        break;
    case Link::Traffic::NoReply:
        if (m_last == Step::Group) m_groupTaken = false;
        m_selecting = false;
        break;
    }
    return m_slot;
}

} // namespace TrafficText
