// Scrolling: what stays in view is copied and only what comes in is painted, if the surface can copy. The
// result is to the last pixel that of a whole repaint, which is done wherever that can't be promised: a fetch
// or another order of the lanes since the last one, a new scale or size, a picture too wide for exact
// columns, or icons whose clusters fall differently when the view begins elsewhere.
#pragma once

#include <optional>
#include <vector>

#include "chronoweave/traxfunc/draw/scene.h"

// How the surface comes from what it shows to the present view. Pixels of the drawing area; ends are not
// included.
struct laScrollPlan {
    struct Stretch {
        int from = 0, end = 0;
    };
    laRect copied;       // what is copied, as it stands before; empty when nothing moved
    int dx = 0, dy = 0;  // by so much
    // What is painted afterwards, in this order: rows across the width, columns of the data area, the axis.
    std::vector<Stretch> rows, columns;
    bool axis = false;
};
// The rows of the data area that show processors: their names stand where the view begins and where runs end,
// so that they are painted anew whenever either moves.
std::vector<laScrollPlan::Stretch> laScroll_ProcessorBands(const laScene& scene);
// None when all must be painted.
std::optional<laScrollPlan> laScroll_Plan(const laScene& scene);

// The surface shows the present view; told after a whole repaint or a scroll.
void laScroll_NotePainted(LaView& view, const LaItems& items, const LaLooks& looks, const LaGraph& graph);
