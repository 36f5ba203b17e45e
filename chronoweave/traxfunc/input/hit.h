// What lies under a point of the drawing area. The first hit wins, in the order lanes, icons, context lines.
#pragma once

#include <optional>
#include <string>

#include "chronoweave/traxfunc/canvas/canvas.h"

struct laHit {
    uint32_t lane = laNoLane;    // whose row holds the point
    double time = 0;             // time base: of the icon, or of the column
    laItemRef item;              // what was hit
    std::optional<size_t> icon;  // of canvas.items.bitmaps, when an icon was hit
};

// x, y: of the drawing area. Thin lines are hit from 3 pixels around. With activate, the item that is hit is
// handed to laCanvas_ItemActivated. hit, which may be null, takes what was found; its lane and time are set
// without a hit too. True on a hit.
bool laCanvas_HitTest(_LaCanvasData& canvas, int x, int y, bool activate, laHit* hit);
// The icon at a point, whatever lies over it; its place in canvas.items.bitmaps.
std::optional<size_t> laCanvas_IconAt(_LaCanvasData& canvas, int x, int y);
// In canvas.hand.hoverPass makes canvas.hand.hoverText; otherwise opens the window about the item.
void laCanvas_ItemActivated(_LaCanvasData& canvas, const laItemRef& item);
// The lane of a hit as an object: its id; none for the agent's row and for no lane.
std::optional<uint32_t> laHit_Object(const _LaCanvasData& canvas, const laHit& hit);
