#pragma once

#include "simrack.h"

// The universal input card XE4. Its channel items hold all four channels at once, comma
// separated ("D11,30,00,50" at group 01 item 05); a data line of the channel prefix alone
// ("01" to "04") asks for one channel, and the prefix followed by a value sets it. Card-wide
// items answer a data line without data with their value. The card's build is what item 90 says:
// "VX_XE4/A" is the A build, which knows fewer input types and units and refuses the others; a
// model beginning "XE4A" starts as one. Live values (group 00 items 10 to 13) now and then say
// "TMOUT", as a channel still measuring does.
void InstallUniversalProfile(SimCard &card);
