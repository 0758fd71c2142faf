#pragma once

#include "simrack.h"

// The power transducer cards: XD1, XD1A, XD1B with one circuit and XD4, XD4A, XD4B with four.
// Their scaling lives in group 01; the "A" and "B" variants keep the current ratings at other
// items and have no secondary current. Group 00 gives the live words as hexadecimal digits:
// power words that drift and energy counters that grow until a write of "1" to group 01 item 81
// ("Wh Clear") sets them back to zero. A four-circuit card lays its words out by the eighth
// character of its model name.
void InstallPowerTransducerProfile(SimCard &card);
