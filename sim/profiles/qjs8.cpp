#include "profiles/qjs8.h"

#include "cardprofiles.h"

void InstallOutputTypeProfile(SimCard &card) {
    InstallVoltageProfile(card, 8);
    // Channels 1 and 2 give volts, 3 and 4 milliamperes.
    card.setItem("00", "55", "DQJ");
    card.setItem("00", "56", "DQJ");
    card.setItem("00", "57", "DQK");
    card.setItem("00", "58", "DQK");
}
