#include "chronoweave/engine/time_base.h"

#include <algorithm>

namespace {
constexpr double mostTicks = 4e18;
constexpr double mostExact = 9e15;  // ticks that a double tells apart
}  // namespace

mt_Time TimeBase::NearestTick(double time) const {
    const double ticks = std::isnan(time) ? 0.0 : std::clamp(time * ticksPerSecond, -mostTicks, mostTicks);
    // Ticks are signed.
    int64_t tick = 0;
    if (__builtin_add_overflow(static_cast<int64_t>(baseTick), std::llround(ticks), &tick))
        tick = ticks < 0 ? INT64_MIN : INT64_MAX;
    return static_cast<mt_Time>(std::min(tick, INT64_MAX - 1));
}

mt_Time TimeBase::TickAt(double time) const {
    return baseTick + static_cast<mt_Time>(std::clamp(time * ticksPerSecond, 0.0, 9.2e18));
}

mt_Time TimeBase::TickFrom(double time) const {
    const mt_Time tick = TickAt(time);
    return TimeOf(tick) < time ? tick + 1 : tick;
}

double TimeBase::WholeLength(double length) const {
    const double ticks = TicksIn(length);
    return std::fabs(ticks) < mostExact ? LengthOf(ticks) : length;
}
