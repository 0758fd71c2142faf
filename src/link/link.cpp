#include "link/link.h"

#include "link/clock.h"

#include <QTimer>
#include <map>

namespace {

struct LinkState {
    std::unique_ptr<SerialLine> line;
    std::map<int, Link::TrafficObserver> observers;
    int nextObserverId = 1;
    bool expired = false;
};

LinkState &state() {
    static LinkState s;
    return s;
}

QTimer *intervalTimer() {
    static QTimer *timer = [] {
        auto *t = new QTimer(Link::events());
        t->setObjectName("IntervalTimer");
        t->setSingleShot(true);
        t->setTimerType(Qt::PreciseTimer);
        QObject::connect(t, &QTimer::timeout, [] {
            state().expired = true;
            emit Link::events()->stepExpired();
        });
        return t;
    }();
    return timer;
}

} // namespace

namespace Link {

SerialLine *port() { return state().line.get(); }

std::unique_ptr<SerialLine> setPort(std::unique_ptr<SerialLine> line) {
    std::swap(state().line, line);
    return line;
}

int addTrafficObserver(TrafficObserver observer) {
    const int id = state().nextObserverId++;
    state().observers.emplace(id, std::move(observer));
    return id;
}

void removeTrafficObserver(int id) { state().observers.erase(id); }

void notifyTraffic(Traffic kind, const QString &text) {
    // Copy first: an observer may remove itself.
    const auto observers = state().observers;
    for (const auto &entry : observers) entry.second(kind, text);
}

Events *events() {
    static Events *hub = new Events;
    return hub;
}

void resetTimer() {
    intervalTimer()->stop();
    state().expired = false;
}

} // namespace Link

void IntervalTimerOn(int milliseconds) {
    state().expired = false;
    intervalTimer()->start(Clock::ms(milliseconds));
}

void IntervalTimerOff() {
    intervalTimer()->stop();
    emit Link::events()->stepEnded();
}

bool IntervalTimerCheck() { return state().expired; }

bool IntervalTimerEnabled() { return intervalTimer()->isActive(); }
