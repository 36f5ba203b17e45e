// The true ends of stretches that the cached range cuts, read from the store piece by piece: a search that is
// stopped goes on where it was. What was found is kept with the lane, as long as its items are.
#pragma once

#include "chronoweave/traxfunc/model/items.h"
#include "chronoweave/traxfunc/model/source.h"
#include "shared/libcxxutil/progress.h"

// The stretch of a segment as far as it is known now; reads nothing.
LaStretch laStretch_Of(const LaItems& items, const laItemRef& segment);

// What a search needs to know beside the end itself.
struct LaStretchKey {
    uint32_t object = 0;
    int32_t status = -1;  // row of the legend
};
// Reads on for an end that is not known yet. end.time is, at first, a time at which the object is in the
// status, with nothing known outside of it. progress may be empty, and stops the search by false; false then.
bool laStretch_FindBegin(const LaSource& source, const Legend& legend, const LaStretchKey& key,
                         LaStretchEnd& end, const Progress& progress);
bool laStretch_FindEnd(const LaSource& source, const Legend& legend, const LaStretchKey& key,
                       LaStretchEnd& end, const Progress& progress);
// Both ends, the begin first.
bool laStretch_Find(const LaSource& source, const Legend& legend, const LaStretchKey& key, LaStretch& stretch,
                    const Progress& progress);
// The same for a segment; what is found stays with its lane.
LaStretch laStretch_Complete(LaItems& items, const LaSource& source, const Legend& legend,
                             const laItemRef& segment, const Progress& progress);
