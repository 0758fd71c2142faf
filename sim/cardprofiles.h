#pragma once

#include "simrack.h"

// Card family profiles: the items a family's cards answer, sensible defaults, and live values
// that move. A new family adds one install function and one line in InstallProfile.

// Installs the profile that fits the card's model; returns false for a model with none (the
// card then answers only its group 00 directory items).
bool InstallProfile(SimCard &card);

// The plain signal cards: 4, 8 or 16 channels of scales, adjusts and "Unused" flags.
void InstallVoltageProfile(SimCard &card, int channels);


// Discrete cards: 8, 16, 32 or 64 channel states (group 00 up to 16 channels, else group 01),
// and the overview's words.
void InstallDiscreteProfile(SimCard &card, int channels);
// Cards with inputs and outputs together (XB16, XC8, QTC16): per-channel state texts and the
// overview's bytes.
void InstallInOutProfile(SimCard &card);
// The BCD card: two counting words and three logic settings.
void InstallBcdProfile(SimCard &card);
// The card set up by the sibling tool: eight slowly moving values for the overview.
void InstallXF2Profile(SimCard &card);
