#pragma once

#include "simrack.h"

// The analog cards with alarm outputs, 4 or 8 channels (QA4 to QE8). Times, set points,
// hysteresis and levels in group 04 (group 12 on QC and QD models), "Unused" flags in group 02,
// values that move (group 00 items 14 upward), and the alarm words (items 10 and 11) that follow
// the values across the set points and levels: the profile's own, and what was written since
// (items a rack file sets do not move them).
void InstallAlarmProfile(SimCard &card);
