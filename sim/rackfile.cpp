#include "rackfile.h"

#include "cardprofiles.h"
#include "profiles/comm.h"

#include <QFile>
#include <QMap>
#include <QRegularExpression>
#include <QSaveFile>
#include <QSet>
#include <array>
#include <optional>

namespace {

const QString kGroupZero = QStringLiteral("00");

struct Item {
    QString group;
    QString item;
    QString value;
};

struct Section {
    int slot = -1; // 0: the comm card
    int line = 0;  // where its header stands
    QMap<QString, QString> fields;
    QList<Item> items;
    QSet<QString> itemKeys;
};

QString twoDigits(int n) {
    return QStringLiteral("%1").arg(n, 2, 10, QLatin1Char('0'));
}

bool isBlank(QChar c) {
    return c == QLatin1Char(' ') || c == QLatin1Char('\t');
}

QString trimBlanks(QStringView text) {
    qsizetype first = 0;
    qsizetype last = text.size();
    while (first < last && isBlank(text.at(first)))
        ++first;
    while (last > first && (isBlank(text.at(last - 1)) || text.at(last - 1) == QLatin1Char('\r')))
        --last;
    return text.mid(first, last - first).toString();
}

// Cuts a comment: a '#' at the start or after a blank. A '#' inside a word is text.
QStringView withoutComment(QStringView text) {
    for (qsizetype i = 0; i < text.size(); ++i)
        if (text.at(i) == QLatin1Char('#') && (i == 0 || isBlank(text.at(i - 1))))
            return text.left(i);
    return text;
}

// A value: plain text up to a comment, or a quoted text that keeps its blanks and '#', with
// \" \\ and \xNN escapes.
std::optional<QString> parseValue(QStringView raw, QString *why) {
    const QString text = trimBlanks(raw);
    if (!text.startsWith(QLatin1Char('"'))) return trimBlanks(withoutComment(text));
    QString value;
    qsizetype i = 1;
    for (; i < text.size() && text.at(i) != QLatin1Char('"'); ++i) {
        if (text.at(i) != QLatin1Char('\\')) {
            value += text.at(i);
            continue;
        }
        const QChar next = i + 1 < text.size() ? text.at(i + 1) : QChar();
        if (next == QLatin1Char('"') || next == QLatin1Char('\\')) {
            value += next;
            ++i;
        } else if (next == QLatin1Char('x')) {
            bool ok = false;
            const int code = text.mid(i + 2, 2).toInt(&ok, 16);
            if (!ok || text.mid(i + 2, 2).size() != 2) {
                *why = QStringLiteral("\\x needs two hex digits");
                return std::nullopt;
            }
            value += QChar(code);
            i += 3;
        } else {
            *why = QStringLiteral("unknown escape in quotes (use \\\", \\\\ or \\xNN)");
            return std::nullopt;
        }
    }
    if (i >= text.size()) {
        *why = QStringLiteral("the quoted text has no closing quote");
        return std::nullopt;
    }
    if (!trimBlanks(withoutComment(QStringView(text).mid(i + 1))).isEmpty()) {
        *why = QStringLiteral("text after the closing quote");
        return std::nullopt;
    }
    return value;
}

// "7" and "07" name the same group or item, as the rack takes them.
std::optional<QString> parseNumber(const QString &text) {
    static const QRegularExpression digits(QStringLiteral("^[0-9]{1,3}$"));
    if (!digits.match(text).hasMatch()) return std::nullopt;
    return twoDigits(text.toInt());
}

// Group 00 items the rack makes from the card fields; a file that set them would be overwritten.
QString reservedReason(int slot, const QString &group, const QString &item) {
    if (group != kGroupZero) return QString();
    const int n = item.toInt();
    if (n == 1) return QStringLiteral("the rack answers it itself");
    if (n == 4) return QStringLiteral("it comes from \"model\"");
    if (n == 40) return QStringLiteral("it comes from \"version\"");
    if (n == 41) return QStringLiteral("it selects the slot");
    if (slot > 0 && n == 39) return QStringLiteral("it comes from \"dip\"");
    if (slot == 0 && n >= 10 && n <= 25)
        return QStringLiteral("the slot list comes from the [slot N] sections");
    return QString();
}

// Quotes a value when it would not read back as it is.
QString quoted(const QString &value) {
    bool plain = !value.isEmpty() && !isBlank(value.front()) && !isBlank(value.back()) &&
                 !value.startsWith(QLatin1Char('"'));
    for (const QChar c : value)
        if (c.unicode() < 0x20 || c.unicode() == 0x7f || c == QLatin1Char('#')) plain = false;
    if (plain) return value;
    QString out = QStringLiteral("\"");
    for (const QChar c : value) {
        if (c == QLatin1Char('"') || c == QLatin1Char('\\'))
            out += QLatin1Char('\\') + c;
        else if (c.unicode() < 0x20 || c.unicode() == 0x7f)
            out += QStringLiteral("\\x%1").arg(c.unicode(), 2, 16, QLatin1Char('0'));
        else
            out += c;
    }
    return out + QLatin1Char('"');
}

class Parser {
public:
    explicit Parser(QString *error) : m_error(error) {}

    bool run(const QString &text) {
        const QStringList lines = text.split(QLatin1Char('\n'));
        for (qsizetype i = 0; i < lines.size(); ++i) {
            m_line = int(i) + 1;
            if (!parseLine(lines.at(i))) return false;
        }
        for (const Section &section : m_sections) {
            m_line = section.line;
            if (section.slot > 0 && !section.fields.contains(QStringLiteral("model")))
                return fail(QStringLiteral("[slot %1] has no model").arg(section.slot));
        }
        return true;
    }

    // The cards as the file describes them; the comm card keeps its defaults where the file is
    // silent.
    void build(std::array<SimCard, 17> &cards) const {
        SimRack fresh;
        cards[0] = fresh.comm();
        InstallCommProfile(cards[0]);
        for (const Section &section : m_sections) {
            SimCard &card = cards[size_t(section.slot)];
            const auto field = [&](const char *key, const QString &fallback) {
                return section.fields.value(QLatin1String(key), fallback);
            };
            card.model = field("model", card.model);
            card.version = field("version", card.version);
            card.dip = field("dip", card.dip);
            card.listName = field("listname", card.listName);
            if (section.slot > 0) {
                InstallProfile(card);
            } else {
                // The comm card's profile follows its model: it starts afresh from its fields.
                SimCard comm;
                comm.model = card.model;
                comm.version = card.version;
                card = comm;
                InstallCommProfile(card);
            }
            for (const Item &item : section.items)
                card.setItem(item.group, item.item, item.value);
        }
    }

private:
    bool fail(const QString &why) {
        if (m_error)
            *m_error = m_line > 0 ? QStringLiteral("line %1: %2").arg(m_line).arg(why) : why;
        return false;
    }

    bool parseLine(const QString &line) {
        for (const QChar c : line)
            if (c.unicode() > 0xff || c == QChar::ReplacementCharacter)
                return fail(QStringLiteral("characters the serial line cannot carry"));
        const QString text = trimBlanks(line);
        if (text.isEmpty() || text.startsWith(QLatin1Char('#'))) return true;
        if (text.startsWith(QLatin1Char('['))) return parseSection(text);
        const qsizetype eq = text.indexOf(QLatin1Char('='));
        if (eq < 0) return fail(QStringLiteral("expected [section] or key = value"));
        if (m_sections.isEmpty())
            return fail(QStringLiteral("a key before the first section ([comm] or [slot N])"));
        const QString key = trimBlanks(QStringView(text).left(eq));
        QString why;
        const std::optional<QString> value = parseValue(QStringView(text).mid(eq + 1), &why);
        if (!value) return fail(why);
        if (value->isEmpty()) return fail(QStringLiteral("%1 has no value").arg(key));
        return key.contains(QLatin1Char('/')) ? parseItem(key, *value) : parseField(key, *value);
    }

    bool parseSection(const QString &text) {
        static const QRegularExpression form(
            QStringLiteral("^\\[\\s*(comm|slot\\s*([0-9]+))\\s*\\]$"),
            QRegularExpression::CaseInsensitiveOption);
        const QRegularExpressionMatch match = form.match(trimBlanks(withoutComment(text)));
        if (!match.hasMatch())
            return fail(QStringLiteral("unknown section %1 (use [comm] or [slot 1] to [slot 16])")
                            .arg(trimBlanks(withoutComment(text))));
        int slot = 0;
        if (!match.captured(2).isEmpty()) {
            slot = match.captured(2).toInt();
            if (slot < 1 || slot > 16)
                return fail(
                    QStringLiteral("slot %1 does not exist (1 to 16)").arg(match.captured(2)));
        }
        if (m_seen.contains(slot))
            return fail(QStringLiteral("%1 is given twice")
                            .arg(slot == 0 ? QStringLiteral("[comm]")
                                           : QStringLiteral("[slot %1]").arg(slot)));
        m_seen.insert(slot);
        Section section;
        section.slot = slot;
        section.line = m_line;
        m_sections.append(section);
        return true;
    }

    bool parseField(const QString &rawKey, const QString &value) {
        Section &section = m_sections.last();
        const QString key = rawKey.toLower();
        const bool known = key == QLatin1String("model") || key == QLatin1String("version") ||
                           key == QLatin1String("dip") || key == QLatin1String("listname");
        if (!known)
            return fail(QStringLiteral("unknown key \"%1\" (model, version, dip, listname, or "
                                       "group/item)")
                            .arg(rawKey));
        if (section.slot == 0 && (key == QLatin1String("dip") || key == QLatin1String("listname")))
            return fail(QStringLiteral("the comm card has no %1").arg(key));
        if (section.fields.contains(key)) return fail(QStringLiteral("%1 is given twice").arg(key));
        if (key == QLatin1String("model") && section.slot > 0 &&
            (value.compare(QLatin1String("UNKNOWN"), Qt::CaseInsensitive) == 0 ||
             value.compare(QLatin1String("NONE"), Qt::CaseInsensitive) == 0))
            return fail(QStringLiteral("%1 means an empty slot; leave the section out").arg(value));
        section.fields.insert(key, value);
        return true;
    }

    bool parseItem(const QString &key, const QString &value) {
        Section &section = m_sections.last();
        const QStringList parts = key.split(QLatin1Char('/'));
        const std::optional<QString> group = parseNumber(trimBlanks(parts.value(0)));
        const std::optional<QString> item = parseNumber(trimBlanks(parts.value(1)));
        if (parts.size() != 2 || !group || !item)
            return fail(QStringLiteral("\"%1\" is not group/item (numbers, e.g. 01/02)").arg(key));
        const QString reason = reservedReason(section.slot, *group, *item);
        if (!reason.isEmpty())
            return fail(QStringLiteral("%1/%2 cannot be set here: %3").arg(*group, *item, reason));
        const QString id = *group + QLatin1Char('/') + *item;
        if (section.itemKeys.contains(id)) return fail(QStringLiteral("%1 is given twice").arg(id));
        section.itemKeys.insert(id);
        section.items.append({*group, *item, value});
        return true;
    }

    QString *m_error;
    int m_line = 0;
    QList<Section> m_sections;
    QSet<int> m_seen;
};

} // namespace

namespace RackFile {

bool parse(const QByteArray &bytes, SimRack &rack, QString *error) {
    QString text = QString::fromUtf8(bytes);
    if (text.startsWith(QChar(0xfeff))) text.remove(0, 1);
    Parser parser(error);
    if (!parser.run(text)) return false;
    std::array<SimCard, 17> cards;
    parser.build(cards);
    for (int n = 0; n <= 16; ++n)
        rack.slot(n) = cards[size_t(n)];
    rack.refreshDirectory();
    return true;
}

bool load(const QString &path, SimRack &rack, QString *error) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        if (error) *error = QStringLiteral("%1: %2").arg(path, file.errorString());
        return false;
    }
    if (file.size() > kMaxBytes) {
        if (error) *error = QStringLiteral("%1: too large for a rack file").arg(path);
        return false;
    }
    const QByteArray bytes = file.read(kMaxBytes + 1);
    if (bytes.size() > kMaxBytes || file.error() != QFileDevice::NoError) {
        if (error) *error = QStringLiteral("%1: cannot be read whole").arg(path);
        return false;
    }
    QString why;
    if (!parse(bytes, rack, &why)) {
        if (error) *error = QStringLiteral("%1: %2").arg(path, why);
        return false;
    }
    return true;
}

QByteArray write(SimRack &rack) {
    QString out = QStringLiteral("# A simulated VX rack for vxrack-sim --rack. Empty slots have no "
                                 "section.\n# group/item = the reply the card gives to \"I\" "
                                 "(\"D\" + value).\n");
    for (int n = 0; n <= 16; ++n) {
        const SimCard &card = rack.slot(n);
        if (!card.present()) continue;
        out += n == 0 ? QStringLiteral("\n[comm]\n") : QStringLiteral("\n[slot %1]\n").arg(n);
        out += QStringLiteral("model = %1\n").arg(quoted(card.model));
        if (n > 0 && !card.listName.isEmpty())
            out += QStringLiteral("listname = %1\n").arg(quoted(card.listName));
        if (!card.version.isEmpty())
            out += QStringLiteral("version = %1\n").arg(quoted(card.version));
        if (n > 0 && !card.dip.isEmpty()) out += QStringLiteral("dip = %1\n").arg(quoted(card.dip));
        for (auto group = card.groups.cbegin(); group != card.groups.cend(); ++group)
            for (auto item = group->cbegin(); item != group->cend(); ++item)
                if (reservedReason(n, group.key(), item.key()).isEmpty() && !item->isEmpty())
                    out += QStringLiteral("%1/%2 = %3\n")
                               .arg(group.key(), item.key(), quoted(item.value()));
    }
    return out.toUtf8();
}

bool save(const QString &path, SimRack &rack, QString *error) {
    const QByteArray bytes = write(rack);
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        if (error) *error = QStringLiteral("%1: %2").arg(path, file.errorString());
        file.cancelWriting();
        return false;
    }
    if (!file.commit()) {
        if (error) *error = QStringLiteral("%1: %2").arg(path, file.errorString());
        return false;
    }
    return true;
}

} // namespace RackFile
