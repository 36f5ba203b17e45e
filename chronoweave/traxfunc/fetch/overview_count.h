// How busy the whole trace was, for the overview. Every event is counted into a fixed number of bins, so that
// drawing costs the same for any trace; a long trace is counted in slices, and one that grows is counted on.
#pragma once

#include <cstdint>
#include <vector>

#include "chronoweave/traxfunc/model/source.h"

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
