// Between ticks of a store and times of its time base: seconds from the first event, or ticks from it where a
// trace has no clock but a count. All conversions of the two go through here.
#pragma once

#include <cmath>

#include "libtrv/trace_store.h"

struct TimeBase {
    double ticksPerSecond = 1;  // store ticks in one unit of the time base
    mt_Time baseTick = 0;       // of time 0

    // The time of a tick, which may lie ahead of the first.
    double TimeOf(mt_Time tick) const {
        return LengthOf(static_cast<double>(static_cast<int64_t>(tick - baseTick)));
    }
    // The nearest tick; clamped so that nothing overflows, one tick on included. Not a number is time 0.
    mt_Time NearestTick(double time) const;
    // The time of the nearest tick: where a walk from or to a time really begins or ends.
    double OnTick(double time) const { return TimeOf(NearestTick(time)); }
    // The tick that a time is in, at least the first.
    mt_Time TickAt(double time) const;
    // The first tick that does not lie before a time, at least the first.
    mt_Time TickFrom(double time) const;

    // Of so many ticks, which need not be whole; and back, to the nearest whole number.
    double LengthOf(double ticks) const { return ticks / ticksPerSecond; }
    double TicksIn(double length) const { return std::round(length * ticksPerSecond); }
    // A length that the trace holds, or the difference of two times: what its double lost on the way comes
    // back.
    double WholeLength(double length) const;
};
