// Times, columns and the axis. All conversions between a time and a pixel go through here.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>

#include "chronoweave/engine/time_unit.h"
#include "chronoweave/traxfunc/model/view.h"

// The axis under the picture: the unit shown, and the ticks as they were last drawn.
struct LaAxis {
    TimeMode timeMode = Time_Second;
    bool autoAdjustUnit = true;  // a smaller unit is taken when labels need many digits
    bool tickPattern = true;     // labels show only the digits that vary
    int tickDigits = 0;          // decimals that one step needs; -1 when no ticks fit
    int tickFormat = 0;          // integer digits x 1000 + varying digits
    double tickStep = 0;         // last step, in the unit shown
    double tickBase = 0;         // the common prefix of the labels, in the unit shown
};

// The view as numbers, for converting many times in a row.
class laTimeScale {
  public:
    static constexpr int leftOfView = -2;
    static constexpr int farRight = 0x7fffffff;

    // width: of the drawing area.
    laTimeScale(const LaView& view, const LaAxis& axis, int width)
        : laTimeScale(axis.timeMode == Time_Sequential ? 0 : view.viewLow,
                      axis.timeMode == Time_Sequential ? 1e300 : view.viewHigh, view.pixelsPerUnit, width) {}
    // Of a view that is not the canvas's.
    laTimeScale(double low, double high, double perUnit, int width)
        : low_(low), high_(high), perUnit_(perUnit), rightOfView_(width + 3) {}

    // Column of a time of the time base. A time before the view gives leftOfView, one behind it
    // RightOfView(); the end of the view itself is the column behind the last. In sequential mode the view's
    // offset is taken to be in the value already, and nothing is left or right of the view.
    int ToPixel(double time) const {
        if (time > high_) return rightOfView_;
        const double offset = time - low_;
        if (offset < 0) return leftOfView;
        const double pixel = offset * perUnit_ + half;
        return pixel >= 2147483647.0 ? farRight : static_cast<int>(pixel);
    }
    // The same also where it lies left or right of the view, as far as 2^30 columns.
    int ToColumn(double time) const {
        const double pixel = std::floor((time - low_) * perUnit_ + half);
        return static_cast<int>(std::clamp(pixel, -1073741824.0, 1073741824.0));
    }
    int RightOfView() const { return rightOfView_; }
    // Time base of a column.
    double ToTime(int x) const { return x / perUnit_ + low_; }
    // The first time that falls into a column.
    double BeginOf(int x) const { return (x - half) / perUnit_ + low_; }

  private:
    // Times and pixels are often both round, so that a time falls in the middle between two columns. A
    // millionth keeps it on one side, whatever the view's low end and the rounding of it.
    static constexpr double half = 0.5 + 0x1p-20;

    double low_, high_, perUnit_;
    int rightOfView_;
};

// Time at a column, in the axis's unit.
double laCanvas_PixelToUnit(const LaView& view, const LaAxis& axis, int x);
// Pixel of a time in the virtual picture; clamped to 64 bits. And back, exact as far as a double is.
uint64_t laCanvas_AbsolutePixel(const LaView& view, double time);
double laCanvas_AbsoluteTime(const LaView& view, uint64_t pixel);

// The unit's word. Short form: "Second" for every mode below 4.
const char* laTime_UnitName(const LaAxis& axis, bool longForm);
// What stands behind a number: "s", "ms", "us", "ns", "ticks"; nothing behind a sequence number.
const char* laTime_UnitMark(const LaAxis& axis);
