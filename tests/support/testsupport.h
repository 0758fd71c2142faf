#pragma once

#include <QObject>
#include <functional>
#include <memory>
#include <vector>

namespace vxtest {
using Factory = std::function<std::unique_ptr<QObject>()>;
int registerTest(Factory factory);
} // namespace vxtest

// Registers a QObject test class with the folder's test executable.
#define VX_TEST(Class)                                                                             \
    static const int vx_registered_##Class =                                                       \
        vxtest::registerTest([] { return std::unique_ptr<QObject>(new Class); });

#include "link/clock.h"
#include "link/link.h"
#include "rack/cardtable.h"
#include "simline.h"
#include "simrack.h"
#include "ui/people.h"

#include <QList>
#include <QStringList>

namespace vxtest {

// Records every message box and answers them in the user's place (OK unless told otherwise).
struct MessageRecorder {
    QList<People::Message> messages;
    QList<People::Answer> answers; // taken in order; OK when none is left

    MessageRecorder() {
        People::setMessageHandler([this](const People::Message &m) {
            messages.append(m);
            return answers.isEmpty() ? People::Answer::Ok : answers.takeFirst();
        });
    }
    ~MessageRecorder() { People::setMessageHandler({}); }
    QStringList texts() const {
        QStringList said;
        for (const People::Message &m : messages)
            said << m.text;
        return said;
    }
    MessageRecorder(const MessageRecorder &) = delete;
    MessageRecorder &operator=(const MessageRecorder &) = delete;
};

// A simulated rack on an open in-process line, on a clock shortened `divisor` times, with the
// module data at its start values.
struct SimSession {
    SimRack rack;
    SimLine *line;

    explicit SimSession(int divisor = 100) : line(new SimLine(&rack)) {
        ResetModuleData();
        Clock::setDivisor(divisor);
        Link::resetTimer();
        Link::setPort(std::unique_ptr<SerialLine>(line));
        line->open(1);
    }
    ~SimSession() {
        Link::setPort(nullptr);
        Link::resetTimer();
        Clock::setDivisor(1);
    }
    SimSession(const SimSession &) = delete;
    SimSession &operator=(const SimSession &) = delete;
};

// The three lines of a write: group, item and data.
inline QStringList writeLines(const QString &group, const QString &item, const QString &data) {
    return {"G" + group, "I" + item, "D" + data};
}

// The lines of reads of `items` in `group`, one after the other.
inline QStringList readLines(const QString &group, const QStringList &items) {
    QStringList lines;
    for (const QString &item : items)
        lines << "G" + group << "I" + item;
    return lines;
}

// How a worker addresses a slot anew, with the opening write of `group` where one follows.
inline QStringList preamble(int slot, const QString &group = QString()) {
    QStringList lines = writeLines("00", "01", "F") + writeLines("00", "41", QString::number(slot));
    if (!group.isEmpty()) lines += writeLines(group, "01", "1");
    return lines;
}

// A card in `slot` that answers the opening of its group 01, so that a preamble goes through.
inline SimCard &putCard(SimRack &rack, int slot, const QString &model) {
    SimCard &card = rack.slot(slot);
    card.model = model;
    card.setItem("01", "01", "D1");
    rack.refreshDirectory();
    return card;
}

} // namespace vxtest
