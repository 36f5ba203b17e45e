#include "chronoweave/traxfunc/draw/hit_marks.h"

#include <algorithm>

#include "chronoweave/traxfunc/draw/axis.h"

namespace {
constexpr Colour markColour = 0xE0409A;
}

void laHits_Paint(const laScene& scene, int x0, int x1) {
    Surface& surface = *scene.graph.surface;
    const int height = std::min(laHits_Height, laAxis_Top(scene.graph));
    const laTimeScale scale = scene.scale();
    const auto end = scene.marks.hits.end();
    // The first mark that is not left of a column: columns rise with time.
    const auto from = [&](auto first, int x) {
        return std::partition_point(first, end, [&](double time) { return scale.ToPixel(time) < x; });
    };
    const int last = std::min(x1 + laHits_Reach, scene.graph.width);
    for (auto at = from(scene.marks.hits.begin(), std::max(0, x0 - laHits_Reach)); at != end;) {
        const int x = scale.ToPixel(*at);
        if (x >= last) break;
        for (int row = 0; row < height; ++row) {
            const int reach = laHits_Reach - row * laHits_Reach / (laHits_Height - 1);
            surface.fillRect(x - reach, row, 2 * reach + 1, 1, markColour);
        }
        at = from(at, x + 1);
    }
}
