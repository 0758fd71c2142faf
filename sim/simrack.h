#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>
#include <array>
#include <functional>
#include <optional>

// One card of the simulated rack. Item stores hold the full reply text the card gives
// ("D" + value, tags and colons included), so each item answers in the form the program expects.
struct SimCard {
    QString model; // empty: no card in this slot
    // The name in the comm card's slot list when it is not the model: a multi-power card lists
    // only its family prefix and gives its full name in its own item 04. Empty: the model.
    QString listName;
    QString version;
    QString dip;
    // group -> item -> reply text
    QMap<QString, QMap<QString, QString>> groups;
    // Live values: asked first for every read; return nothing to use the store.
    std::function<std::optional<QString>(const QString &group, const QString &item, qint64 ms)>
        live;
    // Called after a write has been stored, for cards whose items act on each other.
    std::function<void(SimCard &card, const QString &group, const QString &item,
                       const QString &data)>
        onWrite;
    // Asked first for every data line, with the rack's time, by cards whose data lines are not
    // plain settings: a read that names a channel, a block request, a jog that starts at a
    // moment, a value the card refuses ("CNG"), a write the card answers with a value it
    // measured. A text is the reply, and the data is neither stored nor passed to onWrite (the
    // hook stores what it keeps). Nothing: the data is stored, onWrite runs, and the data is
    // echoed.
    std::function<std::optional<QString>(SimCard &card, const QString &group, const QString &item,
                                         const QString &data, qint64 ms)>
        onData;

    bool present() const { return !model.isEmpty(); }
    void setItem(const QString &group, const QString &item, const QString &reply) {
        groups[group][item] = reply;
    }
};

// What can go wrong on the line, on demand.
enum class SimFault {
    NoReply,  // the command is swallowed
    Split,    // the reply arrives in `param` pieces
    NoCR,     // the reply comes without its CR
    Delay,    // the reply comes `param` ms late (still inside the step limit)
    Late,     // the reply comes `param` ms after the step limit
    Garbage,  // junk bytes and CR instead of the reply
    Timeout,  // the rack's "DTMOUT"
    Refuse,   // "CNG"
    Unused,   // "CNU"
    CutLine,  // the line is cut at this command
};

struct SimFaultRule {
    SimFault kind;
    QString match;  // applies to commands that begin with this text ("" = any)
    int count = 1;  // how many commands it affects; -1 = all
    int param = 0;
};

// A reply ready to go back to the line.
struct SimReply {
    QByteArray bytes;
    int delayMs = 0; // production milliseconds, before the first piece
    int pieces = 1;
    bool cutLine = false;
};

struct SimTranscriptEntry {
    bool fromProgram; // true: a command line received; false: a reply sent
    QString text;     // without CR
};

// The rack: a communication card (slot 0) and 16 slots, answering G/I/D lines.
class SimRack {
public:
    SimRack();

    SimCard &comm() { return m_cards[0]; }
    SimCard &slot(int n) { return m_cards.at(static_cast<size_t>(n)); }
    // Fills the group 00 items a card answers (model, version, DIP, the comm card's slot list)
    // from the cards' fields. Call after changing models or versions.
    void refreshDirectory();
    // A card that is taken out: the slot answers as empty from now on.
    void vanish(int slot);

    // Feeds bytes from the line; returns the replies of every complete command.
    QList<SimReply> feed(const QByteArray &bytes);
    // One command line without CR; the reply text without CR (empty for no reply).
    QString answer(const QString &command);

    void addFault(const SimFaultRule &rule) { m_faults.append(rule); }
    void clearFaults() { m_faults.clear(); }

    const QList<SimTranscriptEntry> &transcript() const { return m_transcript; }
    // The command lines received, in order, without CR.
    QStringList commands() const;
    void clearTranscript() { m_transcript.clear(); }

    int selectedSlot() const { return m_slot; }
    // Milliseconds since start, for live values; tests may set it.
    void setTime(qint64 ms) { m_fixedTime = ms; }
    qint64 now() const;

private:
    SimCard &selected() { return m_cards.at(static_cast<size_t>(m_slot)); }
    QString answerGroup(const QString &group);
    QString answerItem(const QString &item);
    QString answerData(const QString &data);
    std::optional<SimFaultRule> takeFault(const QString &command);
    SimReply shape(const QString &reply, const std::optional<SimFaultRule> &fault);

    std::array<SimCard, 17> m_cards;
    int m_slot = 0;
    QString m_group;
    QString m_item;
    QByteArray m_pending;
    QList<SimFaultRule> m_faults;
    QList<SimTranscriptEntry> m_transcript;
    std::optional<qint64> m_fixedTime;
    qint64 m_startMs;
};
