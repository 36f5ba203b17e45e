// The items of a large range without a fetch: its lanes are made, and what they show is read from the lane
// index when it is asked for (lane_readers.h); only switches are made beforehand, in one pass. All of it is
// what a fetch of the range would give.
#pragma once

#include <cstdint>

#include "chronoweave/traxfunc/fetch/fetch.h"
#include "chronoweave/traxfunc/model/items.h"
#include "chronoweave/traxfunc/model/list.h"
#include "chronoweave/traxfunc/model/looks.h"
#include "chronoweave/traxfunc/model/source.h"

// Fills items, which are empty, for the range. False, with the items empty, where a fetch is to make them:
//  - the range has fewer events than least;
//  - there is no lane index, or it doesn't cover all events of the range, or it or the store is damaged;
//  - the source is followed while it grows: what a fetch made can go on, and its left side be dropped;
//  - the lane that stands for hidden objects is shown: it is the union of what all of them executed;
//  - two status codes of the range have the same row: a segment could be of any number of statuses then;
//  - two objects execute at once on one processor, or lanes are too many (lane_switches.h);
//  - ticks are so many that neighbouring ones may have the same time.
[[nodiscard]] bool laLaneItems_Make(LaItems& items, LaSource& source, const LaLooks& looks,
                                    const LaList& list, laFetchRange range, uint32_t least);
