// Options of the program, and those that the configure file gives it.
#pragma once

#include <cstdint>

struct LaOptions {
    bool newTrv = true;          // the overlap rule by free space, else by rectangles
    bool prefetch = true;        // a fetch takes twice the range
    bool snapCursors = true;     // the pointer's cursors jump to an edge close by
    bool plainMarks = false;     // marks of overlap are the legend's picture, else numbers
    bool plainSwitches = false;  // context switches are drawn the same however many they are
    bool allForIntervalSearch = false;
    bool extraDataWarning = true;        // in texts of extra data that does not fit its format
    bool unusedExtraDataWarning = true;  // and of extra data that the format leaves over
    int refreshInterval = 1000;          // milliseconds
    int maxRefreshedEvents = 600;
    int targetTimeout = 5000;  // milliseconds
    // A view of at least so many events is read from the lane index, where that can tell all of it.
    uint32_t leastFromLanes = 200'000;
    bool followEnd = false;  // the end of a trace that grows stays at the view's right edge
};
