// The overview: the whole trace in a strip, with how busy it was, the bookmarks, and the view as a frame that
// can be dragged and resized. Every event is counted into a fixed number of bins, so that drawing costs the
// same for any trace; a long trace is counted in slices, and one that grows is counted on.
#pragma once

#include <cstdint>
#include <vector>

#include "chronoweave/traxfunc/canvas/canvas.h"

constexpr uint32_t laOverview_Bins = 4096;

struct laOverview {
    double length = 0;            // of the trace, time base; 0 for an empty one
    double binWidth = 0;          // time base; the bins together are at least as long as the trace
    uint32_t counted = 0;         // events, from the first on
    std::vector<float> activity;  // events per bin, laOverview_Bins of them; empty for an empty trace
};

// An overview of the source with nothing counted yet.
laOverview laOverview_Begin(const LaSource& source);
// Counts at most so many further events, and takes the trace's length as it is now. True while there are
// more.
bool laOverview_Count(const LaSource& source, laOverview& overview, uint32_t most);

// Draws the strip from the surface's origin.
void laOverview_Draw(const _LaCanvasData& canvas, const laOverview& overview, Surface& surface, int width,
                     int height);

enum laOverviewPart { Overview_Outside, Overview_LeftEdge, Overview_Inside, Overview_RightEdge };
// What of the frame lies at a column of a strip of this width. An edge is caught within 4 columns.
laOverviewPart laOverview_HitTest(const _LaCanvasData& canvas, const laOverview& overview, int width, int x);

struct laOverviewRange {
    double low = 0, high = 0;  // time base
};
// The range that a drag gives, from the range and the column where it began. A press outside the frame takes
// the frame's middle there. The range stays within the trace; an edge keeps a column away from the other.
laOverviewRange laOverview_Drag(const laOverview& overview, int width, laOverviewPart part,
                                laOverviewRange start, int grabbed, int x);
// Shows a range; the caller records the end of a drag with laHistory_Add.
bool laOverview_Show(_LaCanvasData& canvas, laOverviewRange range);

// Between columns and times.
int laOverview_Column(const laOverview& overview, int width, double time);
double laOverview_Time(const laOverview& overview, int width, int x);
