#pragma once

#include "simrack.h"

// The wireless comm cards "VX-ZQ1...", "VX-ZRV..." and "VX-ZRV1F...": the Modbus side in group
// 00 and the radio network in group 17, as far as the card's version has them. "Slave or Relay"
// (00/55) comes with a "ZRV" at 2.14 and the extra items 17/26 to 29 with 3.00 ("ZRV" and
// "ZQ1"); a "ZRV1F" has all of them. The card refuses ("CNG") what it cannot take: a channel
// out of its range, a PAN ID of FFFF, a key that is not 32 hexadecimal digits, a network size
// its version lacks, a port code of the other model. Install after the model and version are
// set, on top of the common part.
void InstallWirelessCommProfile(SimCard &card);
