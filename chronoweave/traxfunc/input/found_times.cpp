#include "chronoweave/traxfunc/input/found_times.h"

#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/draw/hit_marks.h"

void laHits_Set(_LaCanvasData& canvas, std::vector<double> times) {
    if (canvas.marks.hits.empty() && times.empty()) return;
    canvas.marks.hits = std::move(times);
    laCanvas_RepaintRows(canvas, 0, laHits_Height);
    if (canvas.calls.buttonsChanged) canvas.calls.buttonsChanged();
}
