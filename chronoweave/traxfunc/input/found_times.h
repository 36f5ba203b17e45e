// The times that a search found, marked on the picture.
#pragma once

#include <vector>

#include "chronoweave/traxfunc/canvas/canvas.h"

// Takes over the times (time base, ascending) in place of the present ones and repaints the rows of the
// marks.
void laHits_Set(_LaCanvasData& canvas, std::vector<double> times);
