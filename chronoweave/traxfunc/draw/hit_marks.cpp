#include "chronoweave/traxfunc/draw/hit_marks.h"

#include <algorithm>

#include "chronoweave/traxfunc/draw/axis.h"
#include "chronoweave/traxfunc/draw/draw.h"
#include "chronoweave/traxfunc/model/time.h"

namespace {
constexpr Colour markColour = 0xE0409A;
}

void laHits_Set(_LaCanvasData& canvas, std::vector<double> times) {
    if (canvas.marks.hits.empty() && times.empty()) return;
    canvas.marks.hits = std::move(times);
    laCanvas_RepaintRows(canvas, 0, laHits_Height);
    if (canvas.calls.buttonsChanged) canvas.calls.buttonsChanged();
}

void laHits_Paint(const _LaCanvasData& canvas, int x0, int x1) {
    Surface& surface = *canvas.graph->surface;
    const int height = std::min(laHits_Height, laAxis_Top(canvas));
    const laTimeScale scale(canvas.view, canvas.axis, canvas.graph->width);
    const auto end = canvas.marks.hits.end();
    // The first mark that is not left of a column: columns rise with time.
    const auto from = [&](auto first, int x) {
        return std::partition_point(first, end, [&](double time) { return scale.toPixel(time) < x; });
    };
    const int last = std::min(x1 + laHits_Reach, canvas.graph->width);
    for (auto at = from(canvas.marks.hits.begin(), std::max(0, x0 - laHits_Reach)); at != end;) {
        const int x = scale.toPixel(*at);
        if (x >= last) break;
        for (int row = 0; row < height; ++row) {
            const int reach = laHits_Reach - row * laHits_Reach / (laHits_Height - 1);
            surface.fillRect(x - reach, row, 2 * reach + 1, 1, markColour);
        }
        at = from(at, x + 1);
    }
}
