// What of the trace the picture shows, and what the surface shows of it. Times are of the time base; pixels
// are those of the drawing area, but for the virtual picture's (the whole trace at this zoom), which are
// 64-bit.
#pragma once

#include <cstdint>
#include <vector>

// Where rows of processors stay while what they head is scrolled away: where the view begins, and in windows
// also where it ends, so that each processor is always seen.
enum class LaPinEdges { Upper, Both };

// The rows of the data area that no such row covers. end is not included.
struct LaFreeRows {
    int from = 0, end = 0;
};

// What the surface shows, as of the last whole repaint or scroll: what a scroll may copy from.
struct LaPainted {
    struct Place {
        uint32_t objectId = 0;
        int32_t y = -1;  // of the lane, content pixels; -1 for a hidden one
        bool operator==(const Place&) const = default;
    };
    bool valid = false;
    std::vector<Place> laneOrder;  // the lanes in the order of the list
    uint32_t itemsVersion = 0;
    double low = 0, pixelsPerUnit = 0;
    uint64_t position = 0;  // pixel of the virtual picture in column 0
    int verticalOffset = 0, width = 0, height = 0, dataHeight = 0;
    uint64_t absent = 0;  // which rows were those of absent objects, see absent.h
    LaFreeRows free;      // of rows that lie over the lanes at the edges
};

// The shown range. viewHigh - viewLow is viewLength but for the snapping to a pixel.
struct LaView {
    double viewLow = 0, viewHigh = 1e-6, viewLength = 1e-6;
    double pixelsPerUnit = 1;     // width of the drawing area / viewLength
    uint64_t virtualWidth = 0;    // pixels of scrollExtent at this zoom
    uint64_t scrollPosition = 0;  // position last given to the horizontal bar
    int verticalOffset = 0;       // first content row on screen
    int contentHeight = 0;        // pixels
    LaPinEdges pinEdges = LaPinEdges::Upper;
    LaPainted painted;
};
