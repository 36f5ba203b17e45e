// Objects with nothing in the view: they do not exist yet, or no more.
#pragma once

#include "chronoweave/traxfunc/model/items.h"
#include "chronoweave/traxfunc/model/view.h"

// Neither a status nor an event of the lane lies in the view.
inline bool laLn_IsAbsent(const laItem_Line& lane, const LaView& view) {
    if (lane.isAgent) return false;
    if (!lane.segments.empty() && lane.segments.front().t0 <= view.viewHigh &&
        lane.segments.back().t1 >= view.viewLow)
        return false;
    const size_t event = lane.icons.FirstFrom(view.viewLow);
    return event == lane.icons.size() || lane.icons.time(event) > view.viewHigh;
}

// Changes when other rows are those of absent objects.
inline uint64_t laItems_AbsentRows(const LaItems& items, const LaView& view) {
    uint64_t mark = 0;
    for (uint32_t i = 0; i < items.lanes.size(); ++i)
        if (!items.lanes[i].hidden && laLn_IsAbsent(items.lanes[i], view))
            mark = (mark ^ (i + 1)) * 0x100000001b3u;
    return mark;
}
