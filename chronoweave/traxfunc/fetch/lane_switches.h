// The context switches of a range, made of the statuses in its lane index in one pass and kept in 12 bytes
// each; with them, where rows are to show that, who ran on each processor.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "chronoweave/traxfunc/fetch/lane_range.h"
#include "chronoweave/traxfunc/model/items.h"
#include "chronoweave/traxfunc/model/looks.h"

// What the pass finds beside the switches.
struct LaLanePass {
    std::vector<laStatusRow> rows;  // what the statuses of each lane are like
    std::vector<LaProcessor> runs;  // to be taken by laProcessors_Take
};
// Gives the items, whose lanes stand, their switches, and leaves the lanes' last statuses and who runs as a
// fetch leaves them. False, with the items in no state that means something, where
//  - two objects execute at once on one processor: they would switch at every event;
//  - there are more lanes, or more links of statuses to switches, than fit;
//  - the index is damaged.
//
// separator: of object names, where runs are wanted.
[[nodiscard]] bool laLaneSwitches_Make(LaItems& items, const std::shared_ptr<const LaLaneRange>& range,
                                       const LaLooks& looks, int osKind,
                                       std::optional<std::string_view> separator, LaLanePass& pass);
