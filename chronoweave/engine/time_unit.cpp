#include "chronoweave/engine/time_unit.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "shared/libcxxutil/report.h"

double laTime_Convert(TimeMode from, double value, TimeMode to) {
    if (from >= Time_Tick || to >= Time_Tick || from == to) return value;
    for (int steps = from - to; steps > 0; --steps) value /= 1000.0;
    for (int steps = to - from; steps > 0; --steps) value *= 1000.0;
    return value;
}

TimeMode laTime_NextUnit(TimeMode unit) {
    return static_cast<TimeMode>((unit + 1) % Time_Tick);
}

std::string laTime_TrimZeros(std::string text) {
    if (text.find('.') != std::string::npos) {
        while (!text.empty() && (text.back() == '0' || text.back() == ' ')) text.pop_back();
        if (!text.empty() && text.back() == '.') text.pop_back();
    }
    text.erase(0, std::min(text.find_first_not_of(' '), text.size()));
    return text;
}

TickScale laTime_Scale(double ticksPerSecond, TimeMode mode) {
    const auto ticks = static_cast<uint64_t>(std::max(1.0, ticksPerSecond));
    if (mode >= Time_Tick) return {1, 1};
    static constexpr uint64_t units[] = {1, 1000, 1000000, 1000000000};
    return {ticks, units[mode]};
}

std::string laTime_Digits(const TickScale& scale, double value, int most) {
    // What a double loses on the way from a count of ticks.
    constexpr double least = 1e-6, relative = 1e-15;
    const double ticks =
        value * (static_cast<double>(scale.ticksPerSecond) / static_cast<double>(scale.unitsPerSecond));
    const bool onTick = std::fabs(ticks - std::round(ticks)) <= least + relative * std::fabs(ticks);
    return onTick ? tick_Text(scale, value, most) : gen_format("%.*f", most, value);
}
