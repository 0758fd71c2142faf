#pragma once

#include "simrack.h"

// Communication card profiles, by model: what every comm card answers (status, switches, its
// name with a status behind a colon, the communication time, the sixteen direct outputs, the
// fieldbus activate delay switch), and on top what the Ethernet cards ("VX-ZT...", the IP face
// "VX-ZTIP..."), the network-variable cards ("VX-ZB1", "VX-ZB2"), the CC-Link IE cards
// ("VX-ZKFD1", "VX-ZKFD1W"), the wireless cards ("VX-ZQ1", "VX-ZRV...") and the SLMP gateway
// ("VX-HLINK...") keep. Any other model gets the common part alone. Install after the
// model is set; the card's own model and version stay as they are.
void InstallCommProfile(SimCard &card);
