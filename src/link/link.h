#pragma once

#include "link/serialline.h"

#include <QString>
#include <functional>
#include <memory>

// The one serial line of the program, the step limit timer of an exchange, and the place every
// line sent and every reply received passes through.
namespace Link {

// The line the exchanges use; null until one is installed.
SerialLine *port();
// Installs the line (the real port in the program, the simulated rack in tests) and returns the
// one it replaces.
std::unique_ptr<SerialLine> setPort(std::unique_ptr<SerialLine> line);

// Sent: a command with its CR. Received: a reply without its CR. NoReply: the step ended without
// one; the text is what came instead (noise, a line without its CR), empty when nothing did.
enum class Traffic { Sent, Received, NoReply };
using TrafficObserver = std::function<void(Traffic kind, const QString &text)>;
int addTrafficObserver(TrafficObserver observer);
void removeTrafficObserver(int id);
void notifyTraffic(Traffic kind, const QString &text);

// Hub for the signals a waiting step listens to.
class Events : public QObject {
    Q_OBJECT
signals:
    void stepEnded();
    void stepExpired();
};
Events *events();

// Stops the step timer and clears its flag (for tests and a fresh start).
void resetTimer();

} // namespace Link

// The step limit of an exchange (IntervalTimer). Durations are production values.
void IntervalTimerOn(int milliseconds);
void IntervalTimerOff();
bool IntervalTimerCheck();
bool IntervalTimerEnabled();
