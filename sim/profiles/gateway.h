#pragma once

#include "simrack.h"

// The SLMP gateway and the slots it makes.
//
// The comm card "VX-HLINK1...": its IP and SLMP client settings in group 00 and a table of up to
// sixteen entries in group 17 (17/09 the count, 17/10 to 25 "code,address,type+channels"). It
// refuses an entry that is not three fields, a count beyond 16 and a protocol type other than 16
// or 32. Install after the model is set, on top of the common part.
void InstallGatewayCommProfile(SimCard &card);

// A slot of the gateway named "HLINK1" plus a place and the entry number as its last character
// ("HLINK103": entry 3; "A" to "G" are entries 10 to 16): the kind and channel count of every
// entry in 17/60 to 75, and live values of its own entry in 00/10 upward, analog or on/off by
// its kind.
void InstallGatewayEntryProfile(SimCard &card);

// Any other slot of the gateway family ("H..."): sixteen live pairs "input,output" in 00/10 to 25.
void InstallGatewaySlotProfile(SimCard &card);
