#pragma once

// Every duration the program waits for (the step limit of an exchange, the view ticks, the short
// pauses between commands) is given in its production value and passes through here, so tests
// can run the same code on a shortened clock. Production never changes a value.
namespace Clock {

// The duration to use for a production value of `productionMs` milliseconds.
int ms(int productionMs);

// Tests shorten every duration by this factor (1 is production). Values never drop below 1 ms.
void setDivisor(int divisor);
int divisor();

// A plain pause, as the program's Sleep: the thread rests and no events run.
void pause(int productionMs);

} // namespace Clock
