#include "chronoweave/traxfunc/model/source.h"

#include <algorithm>

uint64_t laSource_TickOf(const LaSource& source, double time) {
    return source.baseTick + static_cast<uint64_t>(std::clamp(time * source.ticksPerSecond, 0.0, 9.2e18));
}
