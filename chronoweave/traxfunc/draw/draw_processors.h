// The rows of processors: who runs, as a band of segments in colours by object, with the name where it fits;
// where many come close together, how much of the time the processor was busy.
#pragma once

#include "chronoweave/traxfunc/draw/draw_items.h"
#include "chronoweave/traxfunc/draw/pinned_rows.h"

// The rows that stand where the list has them.
void laPaint_Processors(const laPaint& paint);
// Those at the edge of the view, on a ground of their own: over all else.
void laPaint_PinnedProcessors(const laPaint& paint);

// Of a fixed palette that colour-blind eyes tell apart; dark text is readable on each.
Colour laProcessor_Colour(uint32_t objectId);
// The strip of 8 columns, as for switches, that a column of the view falls into, where more begins than can
// be told apart: its columns, end not included. Empty where segments are drawn.
struct laLoadStrip {
    int from = 0, end = 0;
};
laLoadStrip laProcessor_LoadAt(const laScene& scene, const LaProcessor& processor, int x);
