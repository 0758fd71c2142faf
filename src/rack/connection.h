#pragma once

#include <functional>

// The end of a session, reachable from every layer: a view or the monitor that finds the line
// gone calls DisconnectRack(), which closes the port, stops a waiting step and clears
// IsConnected. What the frame shows of a session (lamp, commands, its own timer) is the
// application's business: it installs a handler that runs after that.

// Ends the session from anywhere: port closed, step timer stopped, IsConnected false, then the
// installed handler.
void DisconnectRack();

// What DisconnectRack does on top; an empty function removes it.
void SetDisconnectHandler(std::function<void()> handler);
