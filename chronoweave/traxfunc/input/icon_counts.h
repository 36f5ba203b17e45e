// Which events a group of icons is of.
#pragma once

#include <string>

#include "chronoweave/traxfunc/canvas/canvas.h"
#include "chronoweave/traxfunc/draw/icon_walk.h"

// How many events there are, and of which names, the most frequent first; empty for fewer than two. Invisible
// ones don't count.
std::string laIcons_CountText(const _LaCanvasData& canvas, const laItem_Line& lane, laIconGroup icons);
