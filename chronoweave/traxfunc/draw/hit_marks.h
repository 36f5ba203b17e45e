// Marks of found times: small triangles at the top of the drawing area, in a colour of their own. The times
// are canvas.marks.hits, of the time base, ascending.
#pragma once

#include "chronoweave/traxfunc/canvas/canvas.h"

// How far a mark reaches from its column, and its rows.
constexpr int laHits_Reach = 3, laHits_Height = 5;

// Takes over the times in place of the present ones and repaints the rows of the marks.
void laHits_Set(_LaCanvasData& canvas, std::vector<double> times);
// The marks of columns x0 to x1, the last not included, and those that reach into them. Between two marks of
// a view nothing is looked at but one time a column.
void laHits_Paint(const _LaCanvasData& canvas, int x0, int x1);
