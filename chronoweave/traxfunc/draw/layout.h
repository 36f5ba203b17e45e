// The layout: rows of the object list become places of lanes. It touches lanes only; icons, segments and
// switches take their places from their lanes when they are drawn. And the scale: what the view's length and
// the width make of the picture, which the scroll bars span.
#pragma once

#include "chronoweave/traxfunc/model/items.h"
#include "chronoweave/traxfunc/model/looks.h"
#include "chronoweave/traxfunc/model/view.h"
#include "windlib/lagraph/graph.h"

// Gives every lane that has a row its y from it, and builds the agent's line anew from the hidden lanes.
void laLayout_Lanes(LaItems& items, const LaLooks& looks);
// The content has this height from now on: when it got lower, the view goes up to what is left. Pixels.
void laLayout_Content(LaView& view, LaGraph& graph, int height);

// Gives the scroll bars the ranges of a virtual picture and the content, and the horizontal one the position
// of the view.
void laLayout_SetExtent(LaView& view, LaGraph& graph, uint64_t virtualWidth, int contentHeight);
// The scale after a change of the view's length or the width, and the scroll bars; scrollExtent is what the
// horizontal one spans, of the time base. No item is touched. False, and nothing, when the picture would be
// more than 1e18 views wide.
bool laLayout_Rescale(LaView& view, LaGraph& graph, double scrollExtent, int contentHeight);
