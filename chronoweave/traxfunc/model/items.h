// The drawable items of a canvas: lanes with their status segments, event icons, and context switches. They
// hold times and rows of tables only: where an item stands on screen is computed when it is drawn or hit
// (geometry.h), from its time by the conversions of time.h and from its lane's y. So no item ever holds a
// stale pixel, a zoom or a scroll touches no item, and hiding a lane hides its icons and switches with it.
//
// Memory, where items are kept: an icon takes 34 bytes, a segment and a switch 24 each.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "chronoweave/engine/object_index.h"
#include "chronoweave/engine/running_objects.h"
#include "chronoweave/traxfunc/model/item_lists.h"
#include "chronoweave/traxfunc/model/processors.h"
#include "chronoweave/traxfunc/model/stretch.h"
#include "shared/libcxxutil/table.h"

struct MslObjectEntry;

enum class laItemType : int32_t { None = -1, Line = 0, Bitmap = 1, Ctx = 2 };

constexpr uint32_t laNoLane = ObjectIndex::none;  // no lane, as a position in the lane list
constexpr uint32_t laAgentId = 0xFFFFFFFF;        // the object id of the agent lane
constexpr int32_t laFarFromEvent = 0x7fffffff;

// A lane: one object, its row on screen, and its segments, which never overlap and are ordered by time.
struct laItem_Line {
    static constexpr laItemType itype = laItemType::Line;
    uint32_t objectId = 0;
    int32_t priority = -1;  // -1 while not known
    std::string name;       // bytes as in the trace; shown through text_utf8
    bool hasName = false;
    bool hidden = true;    // has no row on screen
    bool isAgent = false;  // stands for all hidden objects, and has no object itself
    int32_t y = 0;         // centre of the lane, content pixels; meaningful while not hidden
    int32_t row = -1;      // row of the object list
    LaSegments segments;
    LaStretchEnd firstBegin, lastEnd;  // of the first and the last stretch, where the cached range cuts them
    LaLaneIcons icons;                 // its events again, as drawing and hits read them
    int32_t openStatus = -1;    // status row that the object is in at the present of a fetch; -1 for none
    double openSince = -100.0;  // when it began; negative for none
    bool broken = false;        // what follows the last segment is not known
    uint32_t ranUntil = 0;      // sequence, as of an icon, of the last event up to which it was executing
    MslObjectEntry* listEntry = nullptr;     // valid until the list is rebuilt
    int32_t eventDistance = laFarFromEvent;  // events from a clicked event, signed
};

// An event's icon.
struct laItem_Bitmap {
    static constexpr laItemType itype = laItemType::Bitmap;
    double time = 0;
    uint32_t lane = laNoLane;        // position in the lane list
    uint32_t sequence = 0;           // events behind the fetch's first one; see laItem_StoreSequence
    int32_t event = -1;              // row of the legend's event table
    uint16_t type = 0, subtype = 0;  // as logged
};

inline double laItem_Time(const laItem_Bitmap& icon) {
    return icon.time;
}

// A context switch: at one instant, from one lane to another.
struct laItem_Ctx {
    static constexpr laItemType itype = laItemType::Ctx;
    double t0 = 0;
    uint32_t fromLane = laNoLane, toLane = laNoLane;
    int32_t status = -1;  // row of the context-switch status that gives colour and style
    // Sequence, as of an icon, of the event up to which the one that leaves was executing: a fetch that
    // begins behind it doesn't know who ran before, and has no such switch.
    uint32_t leftAt = 0;
    double t1() const { return t0; }
};

inline double laItem_Time(const laItem_Ctx& line) {
    return line.t0;
}

static_assert(sizeof(LaLnSeg) == 24 && sizeof(laItem_Bitmap) == 24 && sizeof(laItem_Ctx) == 24);

// An item of the picture: a segment of a lane, an icon or a context line. Valid until items are dropped or
// change their places (LaItems::itemsVersion); what a range gains at its end leaves it valid.
struct laItemRef {
    laItemType itype = laItemType::None;
    uint32_t lane = laNoLane;  // of a segment or icon
    size_t index = 0;          // into the lane's segments, LaItems::bitmaps or LaItems::ctxLines
};

// Items of the cached range.
struct LaItems {
    Table<laItem_Line> lanes;         // in order of first appearance
    ObjectIndex laneIndex;            // positions in lanes, by object id
    uint32_t hiddenAgent = laNoLane;  // the agent's position in lanes
    LaItemList<laItem_Bitmap> bitmaps;
    LaItemList<laItem_Ctx> ctxLines;
    uint32_t firstSequence = 1;            // store sequence number of the event with item sequence 0
    LaProcessors processors;               // made for the rows that they have; else none
    RunningObjects running;                // as far as the fetch has come
    double cachedLow = 0, cachedHigh = 0;  // the range that the items cover; both 0 for none
    uint32_t itemsVersion = 0;             // grows whenever items are dropped or change their places
};

// Makes a lane at the end of the list and returns its position. The agent has no entry in the index.
uint32_t laLn_New(LaItems& items, uint32_t objectId);
// Adds a stretch at the end of a lane; t0 must be the end of the last one, or lie behind it after a break. A
// neighbour of the same status grows instead. False, with a message, when it does not join.
bool laLn_AppendSegment(laItem_Line& lane, double t0, double t1, int32_t status);
// What follows the lane's last stretch is not known: the next one begins anew.
void laLn_Break(laItem_Line& lane);
// The last stretch, if it ends where the range did, is open again: it goes on behind that end.
void laLn_Reopen(laItem_Line& lane, double rangeEnd);
// Adds an icon at the end of the list and of its lane's.
void laBm_Append(LaItems& items, const laItem_Bitmap& icon);
// Position in the icon list of a lane's icon, given as the lane counts them.
uint32_t laBm_OfLane(const LaItems& items, uint32_t lane, size_t number);
// Position of the first icon not before a time; the list's size when there is none.
uint32_t laBm_FirstAt(const LaItems& items, double time);
// The same for the context lines.
uint32_t laCtx_FirstAt(const LaItems& items, double time);
// Adds a switch. A repetition of the last one (same target lane, within 1e-12) is dropped: false.
bool laCtx_Append(LaItems& items, const laItem_Ctx& line);
// Drops all items; the cached range becomes 0 to 0, and nobody runs.
void laItems_Clear(LaItems& items);

// The lane of an object, the agent's for laAgentId, and its position; null and laNoLane when there is none.
laItem_Line* laCanvas_FindLane(LaItems& items, uint32_t objectId, uint32_t* position = nullptr);
const laItem_Line* laCanvas_FindLane(const LaItems& items, uint32_t objectId, uint32_t* position = nullptr);
// True when there is no lane or it is hidden.
bool laCanvas_LaneHidden(const LaItems& items, uint32_t objectId);
// Sequence number of an icon's event in the store, to look up its extra data when its text is asked for.
uint32_t laItem_StoreSequence(const LaItems& items, const laItem_Bitmap& icon);
