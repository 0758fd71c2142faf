#pragma once

#include "simrack.h"

// Card family profiles: the items a family's cards answer, sensible defaults, and live values
// that move. A new family adds one install function and one line in InstallProfile.

// Installs the profile that fits the card's model; returns false for a model with none (the
// card then answers only its group 00 directory items).
bool InstallProfile(SimCard &card);

// The plain signal cards: 4, 8 or 16 channels of scales, adjusts and "Unused" flags.
void InstallVoltageProfile(SimCard &card, int channels);

// The multi-power card's eight live values (group 01 items 10..17).
void InstallMultiPowerProfile(SimCard &card);
// The calorie card's four live values (group 00 items 10..13), now and then "TMOUT".
void InstallCalorieProfile(SimCard &card);
// The pulse card's four counters (group 00 items 10..13).
void InstallPulseProfile(SimCard &card);
