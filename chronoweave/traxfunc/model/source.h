// Where the events come from: the store, its clock and its bounds.
#pragma once

#include <cstdint>
#include <string>

#include "chronoweave/rtos/legend.h"
#include "libtrv/trace_store.h"

struct LaSource {
    TraceStorePtr store;  // null when the canvas is empty
    bool storeHasEvents = false;
    bool liveRefresh = false;  // the view follows a source that grows
    int osKind = Os_Other;
    double ticksPerSecond = 1;   // store ticks in one unit of the time base
    uint64_t baseTick = 0;       // tick of the first event: time 0
    double totalLength = 1e-6;   // of the whole trace, time base
    double scrollExtent = 1e-6;  // what the horizontal bar spans; at least totalLength
    std::string sourcePath, sourceFile;
    std::string damage;      // what was told last of damage of the store; empty for none
    std::string canvasName;  // title of the window; empty for unnamed
    std::string shortName;
};

// The time base of a tick, which may lie before the first event; and the tick of a time, at least the first.
inline double laSource_TimeOf(const LaSource& source, uint64_t tick) {
    return static_cast<double>(static_cast<int64_t>(tick - source.baseTick)) / source.ticksPerSecond;
}
uint64_t laSource_TickOf(const LaSource& source, double time);
// The first tick that does not lie before a time.
uint64_t laSource_TickFrom(const LaSource& source, double time);
