// Steps from an item of the picture to the next or previous one: by the lists that the canvas holds for its
// view, and past their ends by the store. Items are known by their times and objects, never by a place in a
// list, since a canvas replaces its lists whenever its view leaves what it has fetched.
//
// A walk that finds something has moved the canvas there. Those that read the store show progress and stop at
// Escape, with nothing found. Painting is up to the caller (laCanvas_Paint).
#pragma once

#include <optional>

#include "chronoweave/traxfunc/canvas/canvas.h"
#include "chronoweave/traxfunc/fetch/stretch_ends.h"

// A stretch of an object in one status; times in the time base. time and end are those of the item, by which
// a walk finds its place; what is shown are the ends that the trace has.
struct DetailStatus {
    uint32_t object = 0;
    int32_t status = -1;  // row of the legend
    double time = 0, end = 0;
    LaStretch ends = {};
};
struct DetailEvent {
    double time = 0;
    uint32_t object = 0;
    uint32_t sequence = 0;  // in the store
    int32_t event = -1;     // row of the legend
    uint16_t type = 0, subtype = 0;
};
struct DetailSwitch {
    double time = 0;
    uint32_t fromObject = 0, toObject = 0;
    int32_t status = -1;   // row of its context-switch status
    uint32_t ordinal = 0;  // among the switches of its time
};

// What an item is, as it stands in the lists now.
DetailStatus detail_StatusOf(const _LaCanvasData& canvas, const laItemRef& item);
// Looks for the ends that are not known yet, with progress. Escape leaves them as they are known by then.
void detail_FindEnds(_LaCanvasData& canvas, DetailStatus& stretch);
DetailEvent detail_EventOf(const _LaCanvasData& canvas, size_t icon);
DetailSwitch detail_SwitchOf(const _LaCanvasData& canvas, size_t line);
// Place in canvas.items.bitmaps of an event by its number in the store; none while it is not there.
std::optional<size_t> detail_FindIcon(const _LaCanvasData& canvas, uint32_t sequence);

// Puts the first cursor on a time and brings that, and the object's row, into view. A selection keeps its
// second cursor; without one the second is unset.
void detail_MoveCursor(_LaCanvasData& canvas, double time, uint32_t object);

// The next (or previous) stretch of the same object; with sameStatus the next of its status. The first and
// the last stretch that the canvas holds may be cut off by the edge of what it fetched, so these are looked
// up in the store.
std::optional<DetailStatus> detail_StepStatus(_LaCanvasData& canvas, const DetailStatus& from,
                                              bool sameStatus, bool forward);
// The next event of all, of the same legend entry, of the same object, or of both. Events of one time follow
// each other in the order of the store.
std::optional<DetailEvent> detail_StepEvent(_LaCanvasData& canvas, const DetailEvent& from, bool sameEvent,
                                            bool sameObject, bool forward);
std::optional<DetailSwitch> detail_StepSwitch(_LaCanvasData& canvas, const DetailSwitch& from, bool forward);
