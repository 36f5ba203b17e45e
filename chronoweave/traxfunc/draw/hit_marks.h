// Marks of found times: small triangles at the top of the drawing area, in a colour of their own. The times
// are LaMarks::hits, of the time base, ascending.
#pragma once

#include "chronoweave/traxfunc/draw/scene.h"

// How far a mark reaches from its column, and its rows.
constexpr int laHits_Reach = 3, laHits_Height = 5;

// The marks of columns x0 to x1, the last not included, and those that reach into them. Between two marks of
// a view nothing is looked at but one time a column.
void laHits_Paint(const laScene& scene, int x0, int x1);
