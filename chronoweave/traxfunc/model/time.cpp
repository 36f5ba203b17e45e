#include "chronoweave/traxfunc/model/time.h"

#include <algorithm>
#include <cmath>

#include "shared/libcxxutil/report.h"

double laTime_Convert(int from, double value, int to) {
    if (from >= Time_Tick || to >= Time_Tick || from == to) return value;
    for (; from > to; --from) value /= 1000.0;
    for (; from < to; ++from) value *= 1000.0;
    return value;
}

double laCanvas_PixelToUnit(const LaView& view, const LaAxis& axis, int x) {
    return laTime_Convert(Time_Second, x / view.pixelsPerUnit + view.viewLow, axis.timeMode);
}

uint64_t laCanvas_AbsolutePixel(const LaView& view, double time) {
    const double pixel = time * view.pixelsPerUnit + 0.5;
    if (!(pixel > 0)) return 0;
    return pixel >= 18446744073709551615.0 ? UINT64_MAX : static_cast<uint64_t>(pixel);
}

double laCanvas_AbsoluteTime(const LaView& view, uint64_t pixel) {
    const double whole =
        static_cast<double>(pixel & 0xFFFFFFFFu) + static_cast<double>(pixel >> 32) * 4294967296.0;
    return whole / view.pixelsPerUnit;
}

const char* laTime_UnitName(const LaAxis& axis, bool longForm) {
    switch (axis.timeMode) {
        case Time_Sequential:
            return "Seq#";
        case Time_Tick:
            return "Tick";
        case Time_Millisecond:
            return longForm ? "Millisecond" : "Second";
        case Time_Microsecond:
            return longForm ? "Microsecond" : "Second";
        case Time_Nanosecond:
            return longForm ? "Nanosecond" : "Second";
        default:
            return "Second";
    }
}

std::string laTime_TrimZeros(std::string text) {
    if (text.find('.') != std::string::npos) {
        while (!text.empty() && (text.back() == '0' || text.back() == ' ')) text.pop_back();
        if (!text.empty() && text.back() == '.') text.pop_back();
    }
    text.erase(0, std::min(text.find_first_not_of(' '), text.size()));
    return text;
}

TickScale laTime_Scale(double ticksPerSecond, int mode) {
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
