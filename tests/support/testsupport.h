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

#include "app/people.h"
#include "link/clock.h"
#include "link/link.h"
#include "rack/cardtable.h"
#include "simline.h"
#include "simrack.h"

#include <QList>

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

} // namespace vxtest
