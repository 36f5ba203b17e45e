// The context switches of a range, made of the statuses in its lane index in one pass and kept in 12 bytes
// each.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "chronoweave/traxfunc/fetch/lane_range.h"
#include "chronoweave/traxfunc/model/items.h"
#include "chronoweave/traxfunc/model/looks.h"

// Gives the items, whose lanes stand, their switches, and leaves the lanes' last statuses and who runs as a
// fetch leaves them; rows becomes what the statuses of each lane are like. False, with the items in no state
// that means something, where
//  - two objects execute at once on one processor: they would switch at every event;
//  - there are more lanes, or more links of statuses to switches, than fit;
//  - the index is damaged.
[[nodiscard]] bool laLaneSwitches_Make(LaItems& items, const std::shared_ptr<const LaLaneRange>& range,
                                       const LaLooks& looks, int osKind, std::vector<laStatusRow>& rows);
