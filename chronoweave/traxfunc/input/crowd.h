// The numbers that stand for icons too close together: what is under them, and the zoom that parts them.
#pragma once

#include <optional>
#include <string>

#include "chronoweave/traxfunc/canvas/canvas.h"
#include "chronoweave/traxfunc/draw/icon_walk.h"

struct laCrowd {
    uint32_t lane = laNoLane;
    laIconGroup icons;  // of the lane
};
// The one whose number stands at a point of the drawing area.
std::optional<laCrowd> laCrowd_At(const _LaCanvasData& canvas, int x, int y);
// What a tip says: the counts, and the time that they take.
std::string laCrowd_Tip(const _LaCanvasData& canvas, const laCrowd& crowd);
// Zooms in until no two of them overlap, or they fill the view. Where all happened at one time that is
// refused with a message. True when the view changed.
bool laCrowd_Part(_LaCanvasData& canvas, const laCrowd& crowd);
