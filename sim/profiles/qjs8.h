#pragma once

#include "simrack.h"

// The output card QJS8: the eight-channel plain signal card, and the output types of channels
// 1 to 4 at group 00 items 55 to 58 ("QJ..." a voltage output, anything else a current one).
void InstallOutputTypeProfile(SimCard &card);
