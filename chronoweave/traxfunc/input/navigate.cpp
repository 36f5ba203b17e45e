#include "chronoweave/traxfunc/input/navigate.h"

#include <algorithm>
#include <cmath>

#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/input/zoom.h"
#include "chronoweave/traxfunc/model/time.h"

void laCanvas_ZoomAtColumn(_LaCanvasData& canvas, int x, double factor) {
    if (!canvas.source.storeHasEvents || canvas.graph->width <= 0) return;
    if (factor > 1 && canvas.view.viewLow <= 0 && canvas.view.viewHigh >= canvas.source.totalLength) {
        laCanvas_Refuse(canvas, "The whole graph has already been shown in the window.");
        return;
    }
    const double centre = laTimeScale(canvas.view, canvas.axis, canvas.graph->width).ToTime(x);
    const double length = std::min(canvas.view.viewLength * factor,
                                   std::max(canvas.source.totalLength, canvas.view.viewLength));
    const double before = static_cast<double>(x) / canvas.graph->width;
    double low = centre - length * before;
    // Near the ends the view is pushed back into the trace rather than left half empty.
    if (factor > 1) low = std::min(low, std::max(canvas.source.totalLength, canvas.view.viewHigh) - length);
    low = std::max(low, 0.0);
    laCanvas_Zoom(canvas, low, low + length);
}

void laCanvas_ShowAll(_LaCanvasData& canvas) {
    if (canvas.source.storeHasEvents) laCanvas_Zoom(canvas, 0, canvas.source.totalLength);
}

void laCanvas_ScrollColumns(_LaCanvasData& canvas, int64_t columns) {
    canvas.graph->horizontal.userScrolled(columns);
}
void laCanvas_ScrollRows(_LaCanvasData& canvas, int64_t rows) {
    canvas.graph->vertical.userScrolled(rows);
}

void laCanvas_ScrollToEnd(_LaCanvasData& canvas, bool last) {
    ScrollBarModel& bar = canvas.graph->horizontal;
    bar.userMoved(last ? bar.maximum() : 0);
}

void laCanvas_ScrollPage(_LaCanvasData& canvas, bool forward) {
    laCanvas_ScrollColumns(canvas, forward ? canvas.graph->width : -canvas.graph->width);
}

bool laCanvas_FocusSelection(_LaCanvasData& canvas) {
    const auto [smaller, larger] = std::minmax(canvas.marks.cursor[0], canvas.marks.cursor[1]);
    if (larger < 0) {
        laCanvas_Refuse(canvas, "Nothing is selected.");
        return false;
    }
    const double first = smaller < 0 ? larger : smaller;
    const double low = std::max(0.0, (first + larger) / 2 - canvas.view.viewLength / 2);
    if (std::fabs(canvas.view.viewLow - low) > 1 / canvas.view.pixelsPerUnit)
        return laCanvas_Zoom(canvas, low, low + canvas.view.viewLength);
    return first == larger || laCanvas_Zoom(canvas, ZoomMode::Selection);
}
