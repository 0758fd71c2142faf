#include "rack/connection.h"

#include "link/link.h"
#include "rack/cardtable.h"

namespace {
std::function<void()> &disconnectHandler() {
    static std::function<void()> handler;
    return handler;
}
} // namespace

void DisconnectRack() {
    SerialLine *line = Link::port();
    if (line && line->isOpen()) line->close();
    // A step still waiting gives up as soon as its timer is off.
    IntervalTimerOff();
    IsConnected = false;
    if (disconnectHandler()) disconnectHandler()();
}

void SetDisconnectHandler(std::function<void()> handler) {
    disconnectHandler() = std::move(handler);
}
