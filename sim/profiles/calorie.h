#pragma once

#include "simrack.h"

// The two-channel calorie meter card (QY2): input scaling in group 01, calculation settings and
// the eight preset items of the totals in group 02, the coefficient and the live values in group
// 00. Channel 1 cools and channel 2 heats, so the totals of the running mode grow; a preset sets
// a total, which grows on from there.
void InstallCalorieMeterProfile(SimCard &card);
