#pragma once

#include "simrack.h"

// The temperature cards: QP4 and QR4, QP8, QR8 and QP8A, and the mixed QFR8. Scales, adjusts,
// bases and "Unused" flags; what the card reports of itself (input types, burnout, unit);
// temperatures that move. QP cards of version 1.0 or later and every QP8A have the limit option
// (group 00 item 56); the QP8A measures zero offsets in group 03, the QFR8 keeps leadwire
// resistances there. A model without such an item answers "CNU", without such a group "CNG".
void InstallTemperatureProfile(SimCard &card);
