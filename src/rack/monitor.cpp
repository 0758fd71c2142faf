#include "rack/monitor.h"

#include "link/exchange.h"
#include "rack/cardtable.h"
#include "rack/connection.h"
#include "rack/overview.h"
#include "rack/overviewio.h"
#include "rack/textroutines.h"
#include "ui/people.h"
#include "ui/viewregistry.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QLabel>

namespace {

quint64 g_passes = 0;

bool beginsWithAny(const QString &name, std::initializer_list<const char *> prefixes) {
    for (const char *prefix : prefixes)
        if (name.startsWith(QLatin1String(prefix))) return true;
    return false;
}

QString itemText(int item) {
    return QStringLiteral("%1").arg(item, 2, 10, QLatin1Char('0'));
}

bool isAlarm4(const QString &name) {
    return beginsWithAny(name, {"QA4", "QB4", "QC4", "QD4", "QE4"});
}
bool isAlarm8(const QString &name) {
    return beginsWithAny(name, {"QA8", "QB8", "QC8", "QD8", "QE8"});
}

// One discrete word: lamps first..first+15 (or fewer) go neutral, then take the word's bits.
// The word is the value behind the colon, cut by `cut` where a reply carries two words.
enum class Cut { Whole, FirstFour, LastFour };

struct DiscreteRead {
    QString group;
    QString item;
    Cut cut;
    int firstLamp;
    int lamps;
};

// The discrete reads of a card, in order. Rows overlap on purpose: "XB16" has a 16-lamp read and
// a 32-lamp one, and the second one's bits are the ones that stay on lamps 1 to 16.
QList<QList<DiscreteRead>> discreteRows(const QString &name) {
    QList<QList<DiscreteRead>> rows;
    const QString three = name.left(3);
    if (three == QLatin1String("QU8") || three == QLatin1String("QT8"))
        rows.append({{"00", "27", Cut::Whole, 1, 8}});
    if (beginsWithAny(name, {"QT1", "QU1", "XB16"}) || isAlarm4(name))
        rows.append({{"00", isAlarm4(name) ? "10" : "27", Cut::Whole, 1, 16}});
    if (beginsWithAny(name, {"QT3", "QU3", "QT6", "QU6", "XB16"}) || isAlarm8(name)) {
        if (isAlarm8(name))
            rows.append({{"00", "10", Cut::Whole, 1, 16}, {"00", "11", Cut::Whole, 17, 16}});
        else if (name.startsWith(QLatin1String("XB16")))
            rows.append({{"00", "26", Cut::FirstFour, 1, 16}, {"00", "26", Cut::LastFour, 17, 16}});
        else
            rows.append({{"01", "06", Cut::Whole, 1, 16}, {"01", "07", Cut::Whole, 17, 16}});
    }
    return rows;
}

QString cutWord(const QString &value, Cut cut) {
    switch (cut) {
    case Cut::FirstFour:
        return value.left(4);
    case Cut::LastFour:
        return value.right(4);
    case Cut::Whole:
        break;
    }
    return value;
}

// False when a read got no reply.
bool readDiscrete(int slot, const QString &name) {
    FrmOverview *overview = Overview();
    for (const QList<DiscreteRead> &row : discreteRows(name)) {
        // The lamps of the row's whole range are neutral while the row is read.
        for (const DiscreteRead &read : row)
            overview->NeutralLamps(slot, read.firstLamp, read.firstLamp + read.lamps - 1);
        for (const DiscreteRead &read : row) {
            const QString reply = ReadData(3, read.group, read.item);
            if (reply.isEmpty()) return false;
            const QString bits = HexToBits(cutWord(ValueAfterColon(reply), read.cut));
            // Channel n of a word is bit n-1, which HexToBits puts at position 16 - n.
            for (int n = 1; n <= read.lamps; ++n)
                overview->SetSlotLamp(slot, read.firstLamp + n - 1, bits.mid(16 - n, 1));
        }
    }
    return true;
}

enum class Shape { Plain, AfterColon, CommaCut };

QString shapeValue(const QString &reply, Shape shape) {
    switch (shape) {
    case Shape::AfterColon:
        return ValueAfterColon(reply);
    case Shape::CommaCut:
        if (reply == QLatin1String("CNG")) return reply;
        return DeleteDot(ValueAfterColon(reply)).section(QLatin1Char(','), 0, 0);
    case Shape::Plain:
        break;
    }
    return DeleteDot(ValueAfterColon(reply));
}

// Reads the items into value fields 1, 2, ... of the row; an empty reply leaves its field empty.
void readValues(int slot, const QString &group, const QList<int> &items, Shape shape,
                bool repeatTimeouts = false, bool monitoring = false) {
    FrmOverview *overview = Overview();
    int field = 1;
    for (int item : items) {
        QString reply = ReadData(3, group, itemText(item));
        // A card busy with its measurement says "TMOUT"; ask again, but not for ever, and not
        // after the user has stopped the monitor.
        for (int repeat = 0;
             repeatTimeouts && repeat < kTimeoutRepeats &&
             ValueAfterColon(reply) == QLatin1String("TMOUT") && !(monitoring && !IsMonitoring);
             ++repeat)
            reply = ReadData(3, group, itemText(item));
        overview->lblInputDataCh(slot, field++)->setText(shapeValue(reply, shape));
    }
}

QList<int> itemRange(int first, int last) {
    QList<int> items;
    for (int i = first; i <= last; ++i)
        items.append(i);
    return items;
}

// False when a card drawing its own row reported a failed read.
bool readOwnRow(int slot, const QString &form) {
    auto *io = dynamic_cast<OverviewRowIO *>(ViewByName(form));
    return !io || io->setOverViewDataIO(slot);
}

// The value reads of a row, by the first rule that fits the name. False on a failed own-row read.
bool readValueRow(int slot, const QString &name, bool monitoring) {
    if (name.startsWith(QLatin1String("QTC16"))) return readOwnRow(slot, "frmQTC16");
    if (name.startsWith(QLatin1String("XC8"))) return readOwnRow(slot, "frmXC8");
    if (name.startsWith(QLatin1String("QZ8"))) return readOwnRow(slot, "frmQZ8");
    if (beginsWithAny(name, {"QT", "QU", "XB16", "QA", "QB", "QC", "QD", "QE", "QI", "QO"}))
        return true;
    if (name.startsWith(QLatin1String("XDU"))) {
        readValues(slot, "01", itemRange(10, 17), Shape::Plain);
    } else if (name.startsWith(QLatin1String("XE"))) {
        readValues(slot, "00", itemRange(10, 13), Shape::Plain, true, monitoring);
    } else if (name.startsWith(QLatin1String("XHK2"))) {
        readValues(slot, "00", {11, 12, 14, 15}, Shape::AfterColon);
    } else if (name.startsWith(QLatin1String("HLINK1"))) {
        readValues(slot, "00", itemRange(10, 17), Shape::AfterColon);
    } else if (name.startsWith(QLatin1Char('H'))) {
        readValues(slot, "00", itemRange(10, 17), Shape::CommaCut);
    } else {
        const QChar third = name.size() > 2 ? name.at(2) : QChar();
        const bool eight = third == QLatin1Char('8') || third == QLatin1Char('1') ||
                           beginsWithAny(name, {"QZ4A", "QZ4B", "XF2", "QFR8", "QJS8"});
        readValues(slot, "00", itemRange(10, eight ? 17 : 13), Shape::Plain);
    }
    return true;
}

bool isSkipped(const QString &name) {
    return name.startsWith(QLatin1String("UN")) || name.startsWith(QLatin1String("NO"));
}

bool failLoudly() {
    People::message(QStringLiteral("Uploading incomplete"), QStringLiteral("Uploading"),
                    People::Icon::Stop);
    DisconnectRack();
    return false;
}

} // namespace

quint64 MonitorPasses() {
    return g_passes;
}

bool ReadOverview() {
    ++g_passes;
    // A stop during the pass lets it end, but cuts short the repeats of a busy card.
    const bool monitoring = IsMonitoring;
    FrmOverview *overview = Overview();
    for (int slot = 1; slot <= kSlots; ++slot) {
        const QString name = CardTable(slot).CardName;
        if (isSkipped(name)) continue;
        if (WriteData(3, "00", "01", "F").isEmpty()) return false;
        WriteData(3, "00", "41", QString::number(slot));
        WriteData(3, "01", "01", "1");
        if (!readDiscrete(slot, name)) return failLoudly();
        for (int ch = 1; ch <= FrmOverview::kValues; ++ch)
            overview->lblInputDataCh(slot, ch)->clear();
        if (!readValueRow(slot, name, monitoring)) return failLoudly();
    }
    return true;
}

namespace {
bool rackHasCards() {
    for (int slot = 1; slot <= kSlots; ++slot)
        if (!isSkipped(CardTable(slot).CardName)) return true;
    return false;
}
} // namespace

void MonitorLoop() {
    for (;;) {
        QCoreApplication::processEvents();
        if (!IsMonitoring) return;
        // A rack of empty slots has nothing to read: rest until the user does something
        // (such as "Stop") rather than run empty passes at full speed.
        if (!rackHasCards()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        if (!IsMonitoring) return;
        if (!ReadOverview()) return;
    }
}
