#pragma once

#include "simrack.h"

// The rack a new user meets: the comm card "VX-ZT1" and a handful of I/O cards with versions,
// DIP switches and their families' items, with empty slots among them.
void LoadDemoRack(SimRack &rack);
