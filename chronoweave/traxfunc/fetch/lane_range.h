// A range of a trace as its lane index tells it: what all items that are made of the index have in common.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "chronoweave/engine/lanes/lane_table.h"
#include "chronoweave/engine/time_base.h"
#include "chronoweave/traxfunc/fetch/code_rows.h"
#include "chronoweave/traxfunc/fetch/fetch.h"

// What the statuses of a lane are like, from the first valid one in a range on.
enum class laStatusRow {
    Plain,  // each begins a segment
    Gapped  // some are not valid, or like the one ahead
};

struct LaLaneRange {
    std::shared_ptr<LaneIndex> index;
    std::shared_ptr<LaneTable> table;  // of the index
    TimeBase clock;
    laFetchRange range;
    uint32_t first = 0, end = 0;  // sequence numbers of its events; end is not included
    CodeRows statuses, events;    // of all codes that the range has
    std::vector<uint16_t> eventRows;

    // The row of a state; CodeRows::none for one that leaves the object in the status that it had.
    int32_t RowOf(uint32_t state) const {
        return (state & (lane_NotValid | lane_Absent)) != 0 ? CodeRows::none : statuses.of(state);
    }
};
