// The axis strip under the picture: tick steps, labels, the pattern of their common digits, and the band
// between the cursors. It begins at the row laAxis_Top and ends with the drawing area; its upper half holds
// the ticks, the lower the labels. Values are in the canvas's time mode.
#pragma once

#include <string>

#include "chronoweave/traxfunc/canvas/canvas.h"

// The tick step for the present view and width. Sets tickDigits, tickFormat and tickBase; tickDigits is -1,
// and the result 1.0, when not even one label fits.
double laAxis_ChooseStep(_LaCanvasData& canvas);
// One label. With the pattern on, value is the tick less tickBase. A negative value shows as 0.
std::string laAxis_FormatTick(const _LaCanvasData& canvas, double value);
// The common digits with an X for each that varies, like 12.3XXX. Empty without a pattern or ticks.
std::string laAxis_PatternText(const _LaCanvasData& canvas);

// First row of the strip, and the strip's height for a font's metrics.
int laAxis_Top(const _LaCanvasData& canvas);
int laAxis_StripHeight(const FontMetrics& font);

// Whether a smaller unit may be taken so that the labels need few digits.
enum class laUnitRule { Adjust, Keep };
// Repaints the strip between two columns, or all of it when the labels changed. Nothing with no surface.
void laAxis_Draw(_LaCanvasData& canvas, int x0, int x1, laUnitRule rule = laUnitRule::Adjust);
// The strip's ground between two columns, with the selection; gives the selection's columns, -1 and -1 when a
// cursor is unset. A cursor left of the view counts as column -1.
void laAxis_DrawBand(const _LaCanvasData& canvas, int x0, int x1, int& left, int& right);

// Pure parts of laAxis_ChooseStep.
int laAxis_DigitsOfStep(double step);
double laAxis_RefineStep(double step, double length, int width, int labelWidth);
struct laAxisPrefix {
    int format = 0;   // as tickFormat
    double base = 0;  // as tickBase
};
laAxisPrefix laAxis_CommonPrefix(double first, double last, int digits, bool pattern);
