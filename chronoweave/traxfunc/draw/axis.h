// The axis strip under the picture: tick steps, labels, the pattern of their common digits, and the band
// between the cursors. It begins at the row laAxis_Top and ends with the drawing area; its upper half holds
// the ticks, the lower the labels. Values are in the canvas's time mode.
#pragma once

#include <string>

#include "chronoweave/traxfunc/draw/scene.h"

// The tick step for the present view and width, in the axis's unit. Sets tickDigits, tickFormat and tickBase;
// tickDigits is -1, and the result 1.0, when not even one label fits.
double laAxis_ChooseStep(LaAxis& axis, const LaView& view, const LaGraph& graph);
// One label. With the pattern on, value is the tick less tickBase. A negative value shows as 0.
std::string laAxis_FormatTick(const LaAxis& axis, double value);
// The common digits with an X for each that varies, like 12.3XXX. Empty without a pattern or ticks.
std::string laAxis_PatternText(const LaAxis& axis);

// First row of the strip, and the strip's height for a font's metrics.
int laAxis_Top(const LaGraph& graph);
int laAxis_StripHeight(const FontMetrics& font);

// Whether a smaller unit may be taken so that the labels need few digits.
enum class laUnitRule { Adjust, Keep };
struct laAxisTicks {
    double step = 0;           // in the axis's unit
    bool freshLabels = false;  // they are not those that were drawn last
};
// The ticks for the present view: chooses the step, and a smaller unit where the rule and the axis allow it.
laAxisTicks laAxis_Settle(LaAxis& axis, const LaView& view, const LaGraph& graph, laUnitRule rule);
// Repaints the strip between two columns, or all of it with fresh labels. There is a surface.
void laAxis_Draw(const laScene& scene, const laAxisTicks& ticks, int x0, int x1);

// Columns of the selection; -1 and -1 when a cursor is unset. A cursor left of the view counts as column -1.
struct laAxisBand {
    int left = -1, right = -1;
};
// The strip's ground between two columns, with the selection.
laAxisBand laAxis_DrawBand(const laScene& scene, int x0, int x1);

// Pure parts of laAxis_ChooseStep.
int laAxis_DigitsOfStep(double step);
double laAxis_RefineStep(double step, double length, int width, int labelWidth);
struct laAxisPrefix {
    int format = 0;   // as tickFormat
    double base = 0;  // as tickBase
};
laAxisPrefix laAxis_CommonPrefix(double first, double last, int digits, bool pattern);
