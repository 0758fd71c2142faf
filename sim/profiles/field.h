#pragma once

#include "simrack.h"

// The field-device cards.

// The motor actuator card: two actuators whose raw position (group 03 or 04, item 28) moves
// while a coarse jog runs in a setting and steps with each fine jog; in test mode each drives
// to its test position, otherwise it follows a slowly wandering setpoint. Ending a setting
// stops a jog and takes the raw position as the end that was set.
void InstallMotorActuatorProfile(SimCard &card);

// The HART input card: four 4-20 mA channels in groups 01 to 04, each with the short settings of
// its HART master as items and the long ones behind block requests ("R", "W", "C") in the data
// of items 37 to 41.
void InstallHartInputProfile(SimCard &card);
