// The painting of a part of the picture from a scene, without touching the store.
//
// Every decision that depends on what stands to the left (which icons of a cluster are drawn, which switches
// of a column) is taken over the whole view, so that a part painted alone looks like that part of the whole.
// All coordinates that reach the surface lie in the drawing area or close to it. There is a surface.
#pragma once

#include "chronoweave/traxfunc/draw/scene.h"

// What is painted of the data area, in columns and rows of the drawing area. part is what the surface gets;
// reach holds the items that are looked at, which is more where such as stand outside reach in.
struct laPaintArea {
    laRect part, reach;
};
enum class laPaintReach { Part, Neighbours };
// Clamped to the drawing area.
laPaintArea laPaint_Area(const laScene& scene, const laRect& part, laPaintReach reach);
// Lanes, icons, context switches, bookmarks and marks of hits. Does not clear what was there.
void laPaint_Data(const laScene& scene, const laPaintArea& area);
// The cursors whose columns lie in the part, over its rows.
void laPaint_Cursors(const laScene& scene, const laRect& part);
// One cursor line, from the top down to the axis; nothing outside the area or with no surface.
void laCanvas_DrawCursor(const LaGraph& graph, int x, Colour colour);
// The bookmarks in the view.
void laBookmark_PaintAll(const laScene& scene);
