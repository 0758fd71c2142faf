#pragma once

#include <QtGlobal>

// The cyclic monitor of the overview: each pass addresses every card in the rack in turn and
// shows its discrete bits on the row's lamps and its values in the row's fields.

// One pass over slots 1 to 16. True when every slot is done; false on link trouble: silently
// when a card's first write gets no reply, and with "Uploading incomplete" and a disconnect when
// a discrete read gets none.
bool ReadOverview();

// Runs passes while IsMonitoring holds, with the event pump between them, until a pass fails.
// When a pass had nothing to read (only empty slots) the loop sleeps until the next event
// instead of spinning.
void MonitorLoop();

// How often a value read that answers "TMOUT" is asked again before the field keeps the word.
inline constexpr int kTimeoutRepeats = 10;

// Passes the monitor has begun since the program started (for watching its pace).
quint64 MonitorPasses();
