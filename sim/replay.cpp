#include "replay.h"

#include "link/traffictext.h"

#include <QFile>
#include <QMap>
#include <QSet>
#include <array>
#include <memory>
#include <optional>

namespace {

using TrafficText::Row;

const QString kGroupZero = QStringLiteral("00");
const QString kUnknown = QStringLiteral("UNKNOWN");

// What one item of one card answered, in order.
struct ItemScript {
    QStringList answers; // the empty text: nothing came
    std::optional<QString> lastReply;
    qsizetype next = 0;
};

// One card as the log shows it.
struct CardScript {
    QSet<QString> groups;
    QMap<QString, QMap<QString, ItemScript>> items; // group -> item
    QSet<QString> written;                          // "group/item" written in the replay

    bool seen() const { return !groups.isEmpty() || !items.isEmpty(); }

    QString lastReply(const QString &group, const QString &item) const {
        return items.value(group).value(item).lastReply.value_or(QString());
    }

    std::optional<QString> answer(const QString &group, const QString &item) {
        const auto inGroup = items.find(group);
        if (inGroup == items.end()) return std::nullopt;
        const auto found = inGroup->find(item);
        if (found == inGroup->end()) return std::nullopt;
        ItemScript &script = *found;
        if (script.next < script.answers.size()) return script.answers.at(script.next++);
        if (written.contains(group + QLatin1Char('/') + item)) return std::nullopt;
        // An item that never answered stays as the log left it.
        return script.lastReply.value_or(script.answers.constLast());
    }
};

using Scripts = std::array<std::shared_ptr<CardScript>, 17>;

QString twoDigits(int n) {
    return QStringLiteral("%1").arg(n, 2, 10, QLatin1Char('0'));
}

// The value of a data reply, behind its tag where it has one: "DVER:1.20" gives "1.20".
QString replyValue(const QString &reply) {
    const QString value = reply.mid(1).trimmed();
    return value.contains(QLatin1Char(':')) ? value.section(QLatin1Char(':'), 1).trimmed() : value;
}

std::optional<QList<Row>> readRows(const QByteArray &bytes, QString *error) {
    const auto fail = [error](const QString &why) {
        if (error) *error = why;
        return std::nullopt;
    };
    const QStringList lines = QString::fromUtf8(bytes).split(QLatin1Char('\n'));
    QList<Row> rows;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        QString line = lines.at(i);
        if (line.endsWith(QLatin1Char('\r'))) line.chop(1);
        if (line.trimmed().isEmpty() || line.startsWith(QLatin1Char('#'))) continue;
        if (line == TrafficText::csvHeader())
            return fail(QStringLiteral("line %1: a CSV export; the replay reads the plain text "
                                       "export of the traffic log")
                            .arg(i + 1));
        QString why;
        const std::optional<Row> row = TrafficText::parsePlainRow(line, &why);
        if (!row) return fail(QStringLiteral("line %1: %2").arg(i + 1).arg(why));
        rows << *row;
    }
    if (rows.isEmpty()) return fail(QStringLiteral("no traffic in the file"));
    return rows;
}

// Walks the rows as the rack lived them: a command, then what came back. The slot of each
// command is the log's own column; the group is the last one the rack took.
Scripts readScripts(const QList<Row> &rows) {
    Scripts scripts;
    for (auto &script : scripts)
        script = std::make_shared<CardScript>();
    QString group;
    std::optional<Row> command;
    for (const Row &row : rows) {
        if (row.kind == Link::Traffic::Sent) {
            // A command whose outcome the log does not show leaves the group unknown.
            if (command && command->raw.startsWith(QLatin1Char('G'))) group.clear();
            command = row;
            continue;
        }
        if (!command) continue;
        const Row sent = *std::exchange(command, std::nullopt);
        CardScript &card = *scripts[size_t(std::max(sent.slot, 0))];
        const QString body = TrafficText::normalisedNumber(sent.raw.mid(1).trimmed());
        if (sent.raw.startsWith(QLatin1Char('G'))) {
            const bool taken =
                row.kind == Link::Traffic::Received && row.raw.trimmed() == QLatin1String("COK");
            group = taken ? body : QString();
            if (taken) card.groups.insert(group);
        } else if (sent.raw.startsWith(QLatin1Char('I')) && !group.isEmpty() &&
                   !(group == kGroupZero && body == QLatin1String("41"))) {
            // Noise goes back as it came; the rack's CR is added again when it is sent. An empty
            // reply line replays as silence, which the program takes the same way.
            QString answer = row.raw;
            if (row.kind == Link::Traffic::NoReply && answer.endsWith(QLatin1Char('\r')))
                answer.chop(1);
            ItemScript &script = card.items[group][body];
            script.answers << answer;
            if (row.kind == Link::Traffic::Received) script.lastReply = answer;
        }
    }
    return scripts;
}

// The card of `slot` as the log shows it: its name from its own item 04, else from the comm
// card's slot list; a card with traffic but no name is UNKNOWN.
SimCard buildCard(const Scripts &scripts, int slot) {
    const std::shared_ptr<CardScript> script = scripts[size_t(slot)];
    SimCard card;
    const QString own = script->lastReply(kGroupZero, QStringLiteral("04")).mid(1).trimmed();
    if (slot == 0) {
        // The comm card gives its name with a status behind a colon.
        const QString name = own.section(QLatin1Char(':'), 0, 0);
        card.model = name.isEmpty() ? kUnknown : name;
    } else {
        const QString listed = replyValue(scripts[0]->lastReply(kGroupZero, twoDigits(9 + slot)));
        const bool named =
            !listed.isEmpty() && listed != kUnknown && listed != QLatin1String("NONE");
        card.model = !own.isEmpty() ? own : named ? listed : script->seen() ? kUnknown : QString();
        if (named && listed != card.model) card.listName = listed;
        card.dip = replyValue(script->lastReply(kGroupZero, QStringLiteral("39")));
    }
    card.version = replyValue(script->lastReply(kGroupZero, QStringLiteral("40")));
    if (!card.present()) return card;

    for (const QString &group : script->groups)
        card.groups[group];
    for (auto group = script->items.cbegin(); group != script->items.cend(); ++group)
        for (auto item = group->cbegin(); item != group->cend(); ++item)
            if (item->lastReply) card.setItem(group.key(), item.key(), *item->lastReply);
    card.live = [script](const QString &group, const QString &item, qint64) {
        return script->answer(group, item);
    };
    card.onWrite = [script](SimCard &, const QString &group, const QString &item, const QString &) {
        script->written.insert(group + QLatin1Char('/') + item);
    };
    return card;
}

} // namespace

namespace Replay {

bool parse(const QByteArray &text, SimRack &rack, QString *error) {
    const std::optional<QList<Row>> rows = readRows(text, error);
    if (!rows) return false;
    const Scripts scripts = readScripts(*rows);
    for (int slot = 0; slot <= 16; ++slot)
        rack.slot(slot) = buildCard(scripts, slot);
    // The directory items come from the fields; the log's own replies still answer first.
    rack.refreshDirectory();
    return true;
}

bool load(const QString &path, SimRack &rack, QString *error) {
    QFile file(path);
    const auto fail = [&](const QString &why) {
        if (error) *error = QStringLiteral("%1: %2").arg(path, why);
        return false;
    };
    if (!file.open(QIODevice::ReadOnly)) return fail(file.errorString());
    if (file.isSequential() || file.size() > kMaxBytes)
        return fail(QStringLiteral("not a traffic log file of at most %1 MB")
                        .arg(kMaxBytes / (1024 * 1024)));
    const QByteArray bytes = file.read(kMaxBytes + 1);
    if (bytes.size() > kMaxBytes || file.error() != QFileDevice::NoError)
        return fail(QStringLiteral("cannot be read whole"));
    QString why;
    if (!parse(bytes, rack, &why)) return fail(why);
    return true;
}

} // namespace Replay
