#include "chronoweave/traxfunc/model/source.h"

#include <algorithm>

uint64_t laSource_TickOf(const LaSource& source, double time) {
    return source.baseTick + static_cast<uint64_t>(std::clamp(time * source.ticksPerSecond, 0.0, 9.2e18));
}

uint64_t laSource_TickFrom(const LaSource& source, double time) {
    const uint64_t tick = laSource_TickOf(source, time);
    return laSource_TimeOf(source, tick) < time ? tick + 1 : tick;
}
