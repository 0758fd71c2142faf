#pragma once

#include "simrack.h"

// The current transformer cards QL4, QM4, QN4 and QL8: the plain signal card's scales, adjusts
// and flags, and base fields in group 02 at the items each model uses (a QM card has none).
// Live values are milliamperes.
void InstallCurrentProfile(SimCard &card);
