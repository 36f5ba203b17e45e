// Names and priorities of lanes by the lane index.
#pragma once

#include <string_view>

#include "chronoweave/traxfunc/fetch/lane_range.h"
#include "chronoweave/traxfunc/model/items.h"
#include "libtrv/trace_store.h"

// Tells a lane, whose number in the table is known, what a fetch of the range learns: the first name and the
// first priority that the object has from the range's begin on.
void laLaneNames_Learn(laItem_Line& lane, const TraceStore& store, const LaLaneRange& range, uint32_t known,
                       std::string_view separator);
