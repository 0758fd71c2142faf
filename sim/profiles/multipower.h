#pragma once

#include "simrack.h"

// The multi-power card: one measuring system, or two when the fifth character of the model is
// "2"; the sixth names the clamp sensor series. Group 02 holds the sixteen word bindings, which
// the card takes over on item 09 and refuses when it cannot serve them; group 01 items 10..25
// are the live words those bindings fill; groups 03 and 04 are the systems' configuration, with
// the resets of items 25..28. Bindings a rack file puts in group 02 read back as written, but the
// live words follow the profile's own until the program has the card take them over.
void InstallMultiPowerProfile(SimCard &card);
