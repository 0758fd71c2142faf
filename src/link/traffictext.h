#pragma once

#include "link/link.h"

#include <QString>
#include <optional>

// The traffic of the line as text a person reads: the rows of the traffic log, its files, and
// what the simulator's replay reads back. One row a line:
//
//   14:03:22.118 > 05 G01\r
//   14:03:22.131 < 05 COK\r
//   14:03:25.131 ! 05 (no reply)
//   14:03:25.133 ! 05 (line lost)
//   14:03:25.140 ? 05 \x01\xFE#?\x7F\r
//
// time to the millisecond, the mark (> sent, < reply, ! nothing came, ? bytes that made no
// reply), the slot selected on the rack when the line passed (-- before the traffic has
// selected one), and the line with its control bytes made visible.
namespace TrafficText {

inline constexpr int kNoSlot = -1;

struct Row {
    qint64 msecs = 0; // since the epoch (from a file: since the start of its day)
    Link::Traffic kind = Link::Traffic::Sent;
    int slot = kNoSlot;
    // As it passed: a command with its CR, a reply without its CR, the bytes that made no reply
    // (empty when nothing came).
    QString raw;
    // Nothing came because the line was closed or lost (an adapter pulled out): no wait for the
    // rack would have helped.
    bool lineLost = false;
};

// Control bytes, the backslash and bytes above 0x7E as escapes: \r \n \t \\ \xNN.
QString visible(const QString &raw);
// The reverse; nothing for a broken escape.
std::optional<QString> fromVisible(const QString &text);

QChar mark(const Row &row);
QString timeText(qint64 msecs);
QString slotText(int slot);
// The line as the log shows it; a reply with its CR.
QString lineText(const Row &row);

// The row as one line of the plain text file, and as a CSV record.
QString plainRow(const Row &row);
QString csvRow(const Row &row);
QString csvHeader();

// A line of the plain text file; nothing, and why, when it is not one.
std::optional<Row> parsePlainRow(const QString &line, QString *why);

// Follows the rack's card selection through the traffic itself: group 00 item 41 data <slot>
// selects a slot, unless the rack refuses it. A selection whose reply is lost counts: the rack
// most likely took it, and the program's next worker selects anew in any case.
class SlotFollower {
public:
    // Takes the next row of traffic and gives the slot selected as it passed.
    int see(Link::Traffic kind, const QString &raw);
    int slot() const { return m_slot; }
    void reset() { *this = SlotFollower(); }

private:
    enum class Step { None, Group, Item, Data };
    Step m_last = Step::None;
    QString m_group;
    bool m_groupTaken = false;
    QString m_item;
    int m_slot = kNoSlot;
    int m_before = kNoSlot;
    bool m_selecting = false;
};

// Group and item texts name the same number with or without a leading zero ("9", "09").
QString normalisedNumber(const QString &text);

} // namespace TrafficText
