#include "chronoweave/traxfunc/model/time.h"

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

const char* laTime_UnitMark(const LaAxis& axis) {
    static constexpr const char* marks[] = {"s", "ms", "us", "ns", "ticks", ""};
    return marks[axis.timeMode];
}
