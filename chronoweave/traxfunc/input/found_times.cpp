#include "chronoweave/traxfunc/input/found_times.h"

#include <algorithm>

#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/draw/hit_marks.h"

void laHits_Set(_LaCanvasData& canvas, std::vector<double> times) {
    if (canvas.marks.hits.empty() && times.empty()) return;
    canvas.marks.hits = std::move(times);
    laCanvas_RepaintRows(canvas, 0, laHits_Height);
    if (canvas.calls.buttonsChanged) canvas.calls.buttonsChanged();
}

std::optional<size_t> laHits_Next(const _LaCanvasData& canvas, std::optional<size_t> last, bool forward) {
    const std::vector<double>& times = canvas.marks.hits;
    const double cursor = canvas.marks.cursor[0];
    const auto ahead = [&](double time) {
        return std::lower_bound(times.begin(), times.end(), time) - times.begin();
    };
    const auto upTo = [&](double time) {
        return std::upper_bound(times.begin(), times.end(), time) - times.begin();
    };
    std::ptrdiff_t next;
    if (last && *last < times.size() && cursor == std::max(0.0, times[*last]))
        next = static_cast<std::ptrdiff_t>(*last) + (forward ? 1 : -1);
    else if (forward)
        next = cursor >= 0 ? upTo(cursor) : ahead(canvas.view.viewLow);
    else
        next = (cursor >= 0 ? ahead(cursor) : upTo(canvas.view.viewHigh)) - 1;
    if (next < 0 || static_cast<size_t>(next) >= times.size()) return std::nullopt;
    return static_cast<size_t>(next);
}
