// Times, units and columns. All conversions between a time and a pixel go through here.
#pragma once

#include <cstdint>
#include <string>

#include "chronoweave/traxfunc/model/canvas.h"

// A value of one time mode in another: one multiplication or division by 1000 per step. Modes 4 and 5 convert
// to and from nothing.
double laTime_Convert(int from, double value, int to);

// The view as numbers, for converting many times in a row.
class laTimeScale {
  public:
    static constexpr int leftOfView = -2;
    static constexpr int farRight = 0x7fffffff;

    explicit laTimeScale(const _LaCanvasData& canvas)
        : low_(canvas.axis.timeMode == Time_Sequential ? 0 : canvas.view.viewLow),
          high_(canvas.axis.timeMode == Time_Sequential ? 1e300 : canvas.view.viewHigh),
          perUnit_(canvas.view.pixelsPerUnit),
          rightOfView_(canvas.graph->width + 3) {}
    // Of a view that is not the canvas's.
    laTimeScale(double low, double high, double perUnit, int width)
        : low_(low), high_(high), perUnit_(perUnit), rightOfView_(width + 3) {}

    // Column of a time of the time base. A time before the view gives leftOfView, one behind it
    // rightOfView(); the end of the view itself is the column behind the last. In sequential mode the view's
    // offset is taken to be in the value already, and nothing is left or right of the view.
    int toPixel(double time) const {
        if (time > high_) return rightOfView_;
        const double offset = time - low_;
        if (offset < 0) return leftOfView;
        const double pixel = offset * perUnit_ + half;
        return pixel >= 2147483647.0 ? farRight : static_cast<int>(pixel);
    }
    int rightOfView() const { return rightOfView_; }
    // Time base of a column.
    double toTime(int x) const { return x / perUnit_ + low_; }

  private:
    // Times and pixels are often both round, so that a time falls in the middle between two columns. A
    // millionth keeps it on one side, whatever the view's low end and the rounding of it.
    static constexpr double half = 0.5 + 0x1p-20;

    double low_, high_, perUnit_;
    int rightOfView_;
};

// Column of a value given in a mode; see laTimeScale.
int laCanvas_TimeToPixel(const _LaCanvasData& canvas, double value, int mode);
// Time at a column, in the canvas's mode.
double laCanvas_PixelToUnit(const _LaCanvasData& canvas, int x);
// Pixel of a time in the virtual picture; clamped to 64 bits. And back, exact as far as a double is.
uint64_t laCanvas_AbsolutePixel(const _LaCanvasData& canvas, double time);
double laCanvas_AbsoluteTime(const _LaCanvasData& canvas, uint64_t pixel);

// The unit's word. Short form: "Second" for every mode below 4.
const char* laTime_UnitName(const _LaCanvasData& canvas, bool longForm);
// Drops zeros and blanks at the end behind a point, then a bare point, and leading blanks.
std::string laTime_TrimZeros(std::string text);
// A time of the time base in the canvas's unit, with what its last digits need on this axis, trimmed.
std::string laTime_Text(const _LaCanvasData& canvas, double time);

// Changes the unit shown; with redraw the axis is drawn anew. Sequential mode is neither entered nor left:
// refused with a message.
void laCanvas_SetTimeMode(_LaCanvasData& canvas, int mode, bool redraw);
// The next of second, millisecond, microsecond, nanosecond, and round again, as a user's command.
void laCanvas_NextTimeMode(_LaCanvasData& canvas);

constexpr int Fields_View = 1, Fields_Selection = 2;
// Rewrites the texts of the fields named by what, and the message line when one is given, and tells the
// window.
void laCanvas_UpdateFields(_LaCanvasData& canvas, int what, const char* message = nullptr);
// Title and value of the total length, and the unit's label.
std::string laCanvas_TotalLengthText(const _LaCanvasData& canvas);
std::string laCanvas_TotalLengthTitle(const _LaCanvasData& canvas);
void laCanvas_UpdateTotal(_LaCanvasData& canvas);
