// The overview: the whole trace in a strip, with how busy it was, the bookmarks, and the view as a frame that
// can be dragged and resized.
#pragma once

#include "chronoweave/traxfunc/fetch/overview_count.h"
#include "chronoweave/traxfunc/model/marks.h"
#include "chronoweave/traxfunc/model/view.h"
#include "windlib/lagraph/surface.h"

// Draws the strip from the surface's origin.
void laOverview_Draw(const laOverview& overview, const LaView& view, const LaMarks& marks, Surface& surface,
                     int width, int height);

enum class laOverviewPart { Outside, LeftEdge, Inside, RightEdge };
// What of the frame lies at a column of a strip of this width. An edge is caught within 4 columns.
laOverviewPart laOverview_HitTest(const laOverview& overview, const LaView& view, int width, int x);

struct laOverviewRange {
    double low = 0, high = 0;  // time base
};
// The range that a drag gives, from the range and the column where it began. A press outside the frame takes
// the frame's middle there. The range stays within the trace; an edge keeps a column away from the other.
laOverviewRange laOverview_Drag(const laOverview& overview, int width, laOverviewPart part,
                                laOverviewRange start, int grabbed, int x);

// Between columns and times.
int laOverview_Column(const laOverview& overview, int width, double time);
double laOverview_Time(const laOverview& overview, int width, int x);
