#include "chronoweave/traxfunc/draw/axis.h"

#include <algorithm>
#include <cmath>

#include "shared/libcxxutil/report.h"

namespace {

constexpr double tolerance = 1e-12;

double times_ten(double value, int count) {
    for (; count > 0; --count) value *= 10.0;
    return value;
}

// First and last tick inside the view.
void ticks_in_view(const LaAxis& axis, const LaView& view, double step, double& first, double& last) {
    const double low = laTime_Convert(Time_Second, view.viewLow, axis.timeMode);
    const double high = laTime_Convert(Time_Second, view.viewHigh - tolerance, axis.timeMode);
    first = std::floor(low / step) * step;
    if (first < low) first += step;
    last = std::floor((high - tolerance) / step) * step;
}

void set_prefix(LaAxis& axis, const LaView& view, double step, int digits) {
    double first = 0, last = 0;
    ticks_in_view(axis, view, step, first, last);
    const laAxisPrefix prefix = laAxis_CommonPrefix(first, last, digits, axis.tickPattern);
    axis.tickFormat = prefix.format;
    axis.tickBase = prefix.base;
}

// Takes a smaller unit until the labels need few digits. True when it did.
bool refine_unit(LaAxis& axis) {
    if (axis.timeMode >= Time_Nanosecond) return false;
    const TimeMode before = axis.timeMode;
    for (; axis.tickDigits > 2 && axis.timeMode < Time_Nanosecond;
         axis.timeMode = laTime_NextUnit(axis.timeMode))
        axis.tickDigits -= 3;
    return axis.timeMode != before;
}

}  // namespace

int laAxis_DigitsOfStep(double step) {
    int digits = 0;
    // A step is 1, 2 or 5 times a power of ten, so the walk ends; the bound is for steps no double can tell
    // from it.
    while (digits < 40) {
        step -= std::floor(step + tolerance);
        if (std::fabs(step) < tolerance) break;
        step *= 10;
        ++digits;
    }
    return digits;
}

double laAxis_RefineStep(double step, double length, int width, int labelWidth) {
    bool halved = false;
    for (int round = 0; round < 64; ++round) {
        float ratio = static_cast<float>(length / step);
        if (ratio < 2.0f) {
            step /= 2;
            ratio = static_cast<float>(length / step);
            halved = true;
        }
        const auto fits = [&](double count) {
            return std::floor(width / std::max(1.0, count)) >= labelWidth;
        };
        const double whole = std::ceil(static_cast<double>(ratio));
        if (fits(std::ceil(static_cast<double>(ratio * 10)))) return step / 10;
        if (fits(std::ceil(static_cast<double>(ratio * 5)))) return step / 5;
        if (fits(std::ceil(static_cast<double>(ratio * 2)))) return step / 2;
        if (fits(whole)) return step;
        if (whole > 10)
            step *= 10;
        else if (whole >= 5)
            step *= 5;
        else if (whole >= 2)
            step *= 2;
        else
            return step;
        if (halved) return step;
    }
    return step;
}

laAxisPrefix laAxis_CommonPrefix(double first, double last, int digits, bool pattern) {
    if (!pattern) {
        const int whole = last < 10 ? 1 : static_cast<int>(std::log10(last)) + 1;
        return {digits + whole + whole * 1000, first};
    }
    double a = std::floor(times_ten(first, digits) + 0.5);
    double b = std::floor(times_ten(last, digits) + 0.5);
    int varying = 0;
    while (std::floor(a) != std::floor(b) && varying < 400) {
        a /= 10;
        b /= 10;
        ++varying;
    }
    double base = times_ten(std::floor(a), varying);
    for (int i = 0; i < digits; ++i) base /= 10.0;
    const int whole = last - base >= 10 ? static_cast<int>(std::log10(last - base)) + 1 : 1;
    return {varying + whole * 1000, base};
}

double laAxis_ChooseStep(LaAxis& axis, const LaView& view, const LaGraph& graph) {
    axis.tickDigits = -1;
    const double length = laTime_Convert(Time_Second, view.viewLength, axis.timeMode);
    if (!(length > 0)) return 1.0;
    double step = std::pow(10.0, std::floor(std::log10(length) - 1));
    if (!(step > 0)) return 1.0;
    set_prefix(axis, view, step, laAxis_DigitsOfStep(step));
    const int room = (axis.tickFormat % 1000 + 3) * graph.font.charWidth;
    if (graph.width < room) return 1.0;
    step = laAxis_RefineStep(step, length, graph.width, room);
    const int digits = laAxis_DigitsOfStep(step);
    set_prefix(axis, view, step, digits);
    axis.tickDigits = digits;
    return step;
}

laAxisTicks laAxis_Settle(LaAxis& axis, const LaView& view, const LaGraph& graph, laUnitRule rule) {
    const LaAxis old = axis;
    double step = laAxis_ChooseStep(axis, view, graph);
    if (rule == laUnitRule::Adjust && axis.autoAdjustUnit)
        while (refine_unit(axis)) step = laAxis_ChooseStep(axis, view, graph);
    if (axis.tickDigits < 0) return {step, false};
    const bool fresh = axis.timeMode != old.timeMode || axis.tickDigits != old.tickDigits ||
                       axis.tickFormat != old.tickFormat || axis.tickBase != old.tickBase ||
                       axis.tickStep != step;
    axis.tickStep = step;
    return {step, fresh};
}

std::string laAxis_FormatTick(const LaAxis& axis, double value) {
    const int varying = axis.tickFormat % 1000;
    value = std::max(value, 0.0);
    if (axis.tickDigits <= 0) return gen_format("%0*.0f", varying, value);
    if (axis.tickDigits < varying) return gen_format("%0*.*f", varying + 1, axis.tickDigits, value);
    return gen_format("%0*.0f", varying, times_ten(value, axis.tickDigits));
}

std::string laAxis_PatternText(const LaAxis& axis) {
    if (!axis.tickPattern || axis.tickDigits < 0) return {};
    const int whole = axis.tickFormat / 1000, digits = axis.tickDigits;
    std::string text;
    if (digits == 0)
        text = gen_format("%0*.0f", whole, axis.tickBase);
    else if (digits < whole)
        text = gen_format("%0*.*f", whole + 1 + digits, digits, axis.tickBase);
    else
        text = gen_format("%0.*f", digits, axis.tickBase);
    int left = axis.tickFormat % 1000;
    for (size_t at = text.size(); at-- > 0 && left > 0;) {
        if (text[at] == '.') continue;
        text[at] = 'X';
        --left;
    }
    return text;
}

int laAxis_Top(const LaGraph& graph) {
    return static_cast<int>(
        std::min<uint64_t>(graph.vertical.visible(), static_cast<uint64_t>(std::max(0, graph.height))));
}

int laAxis_StripHeight(const FontMetrics& font) {
    return 2 * (font.height + 2);
}
