#pragma once

#include "simrack.h"

// The millivolt cards QS4 and QS8: scales, bases in group 02 (items 2ch+8 and 2ch+9), flags,
// live millivolts, and the percentage of each value between its bases at group 02 item ch+59.
void InstallMillivoltProfile(SimCard &card);

// The load-cell card QX2: scales, adjusts, tare and load ratios and threshold adjusts in group
// 01 (items 4 to 9), flags, and two live weights.
void InstallLoadCellProfile(SimCard &card);
