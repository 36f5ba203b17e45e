// Where the events come from: the store, its clock and its bounds.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "chronoweave/engine/time_base.h"
#include "chronoweave/rtos/legend.h"
#include "libtrv/trace_store.h"

class LaneBuild;
class LaneIndex;
class LaneTable;

struct LaSource {
    LaSource();
    ~LaSource();
    LaSource(const LaSource&) = delete;
    LaSource& operator=(const LaSource&) = delete;

    TraceStorePtr store;  // null when the canvas is empty
    // The store's lane index, null while there is none; and the making of one, while that goes on.
    std::shared_ptr<LaneIndex> lanes;
    std::unique_ptr<LaneBuild> lanesMade;
    std::shared_ptr<LaneTable> laneTable;  // of lanes; null until a range was read from it
    bool storeHasEvents = false;
    bool liveRefresh = false;  // the view follows a source that grows
    int osKind = Os_Other;
    TimeBase clock;
    double totalLength = 1e-6;   // of the whole trace, time base
    double scrollExtent = 1e-6;  // what the horizontal bar spans; at least totalLength
    std::string sourcePath, sourceFile;
    std::string damage;      // what was told last of damage of the store; empty for none
    std::string canvasName;  // title of the window; empty for unnamed
    std::string shortName;
};
