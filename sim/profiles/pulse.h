#pragma once

#include "simrack.h"

#include <QtGlobal>

// The pulse cards: counters that count at steady rates, Clear and Preset that set them, and
// status bits that follow the alarm settings.

// How a counter starts at time 0 and how many pulses a second it counts.
struct SimCounterStart {
    quint64 value;
    int perSecond;
};

// The four 32-bit counters: the second carries its low word into the high one after 2.56 s,
// the fourth runs over its maximum after 4.096 s, so a watching user sees both soon.
inline constexpr SimCounterStart kCounter32Starts[4] = {
    {0, 7}, {0xFF00, 100}, {0x12345678, 2500}, {0xFFFFF000, 1000}};

// QZ2: two channels with speed, a counter in two words, a position and a status word whose
// bits 2 and 3 are the two alarms. Clear: group 01 item 09.
void InstallDualPulseProfile(SimCard &card);
// QZ4: four inputs with frequency values; settings only.
void InstallPulseInputProfile(SimCard &card);
// QZ4A, QZ4B: four 32-bit counters in low and high hexadecimal words, and their rates.
void InstallCounter32Profile(SimCard &card);
// QZ8, QZ16, XA16: counters that run over at their Max; Preset and Clear in group 02.
void InstallCounterProfile(SimCard &card, int rows);
