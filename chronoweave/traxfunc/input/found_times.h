// The times that a search found, marked on the picture.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "chronoweave/traxfunc/canvas/canvas.h"

// Takes over the times (time base, ascending) in place of the present ones and repaints the rows of the
// marks.
void laHits_Set(_LaCanvasData& canvas, std::vector<double> times);
// The number of the one to go to: next to the last one shown while the first cursor stands there, else from
// the cursor or the view's end. None when there is none on that side.
std::optional<size_t> laHits_Next(const _LaCanvasData& canvas, std::optional<size_t> last, bool forward);
