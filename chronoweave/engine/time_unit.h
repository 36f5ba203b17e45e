// The units in which times are shown, and their digits.
#pragma once

#include <string>

#include "shared/libcxxutil/tick_text.h"

enum TimeMode : int {
    Time_Second = 0,
    Time_Millisecond = 1,
    Time_Microsecond = 2,
    Time_Nanosecond = 3,
    Time_Tick = 4,
    Time_Sequential = 5
};

// A value of one time mode in another: one multiplication or division by 1000 per step. Modes 4 and 5 convert
// to and from nothing.
double laTime_Convert(TimeMode from, double value, TimeMode to);

// The next smaller unit of time; behind nanoseconds come seconds again.
TimeMode laTime_NextUnit(TimeMode unit);

// Drops zeros and blanks at the end behind a point, then a bare point, and leading blanks.
std::string laTime_TrimZeros(std::string text);
// What times are counted in, and the unit shown.
TickScale laTime_Scale(double ticksPerSecond, TimeMode mode);
// A value in the unit of the scale. One that the trace holds lies on a tick: it is rounded to that, with as
// many decimals as a tick has in the unit, and at most most (0 to 17). One between ticks (a column, a typed
// value) has all of those.
std::string laTime_Digits(const TickScale& scale, double value, int most);
