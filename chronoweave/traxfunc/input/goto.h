// "Go to time": a text that names a time, a start and an end, or a start and a length behind "+", becomes a
// view. Each number may have its own unit: s, ms, us, ns or ticks (and their usual long forms); one without
// is in the unit that the canvas shows. Between two numbers stands white space, a comma, "..", "-" or "to":
//
//     1.5      20ms 35ms      1s + 250us      0.2 .. 1200 ticks      3 to 4
//
// Ticks, like all times, count from the first event.
#pragma once

#include <optional>
#include <string_view>

#include "chronoweave/traxfunc/canvas/canvas.h"
#include "shared/libcxxutil/result.h"

struct laGotoTarget {
    double low = 0;
    std::optional<double> high;  // none for a single time
};
// Times of the time base. Fails, with the target of no use, for a text that is no such thing.
Result laGoto_Parse(const _LaCanvasData& canvas, std::string_view text, laGotoTarget& target);
// Shows a range, or puts a single time in the middle with the view's length kept; goes to the history. False,
// after a beep and a message, for a text that is refused or a place that the trace doesn't reach.
bool laCanvas_GotoText(_LaCanvasData& canvas, std::string_view text);
