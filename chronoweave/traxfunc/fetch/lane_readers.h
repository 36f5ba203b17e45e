// Readers of the items of a range that make them of its lane index. What they give is what a fetch of the
// range would have kept.
#pragma once

#include <memory>

#include "chronoweave/traxfunc/fetch/lane_range.h"
#include "chronoweave/traxfunc/model/items.h"

// Of a lane of the table.
std::unique_ptr<const LaSegmentReader> laSegments_Reader(std::shared_ptr<const LaLaneRange> range,
                                                         uint32_t lane, laStatusRow row);
std::unique_ptr<const LaLaneIconReader> laIcons_Reader(std::shared_ptr<const LaLaneRange> range,
                                                       uint32_t lane);
// Of the events of all lanes; lanes tells places of lanes by object.
std::unique_ptr<const LaItemReader<laItem_Bitmap>> laBitmaps_Reader(std::shared_ptr<const LaLaneRange> range,
                                                                    const ObjectIndex& lanes);
