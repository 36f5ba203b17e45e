// A canvas gets its data: from an opened store and the legend of its operating system to a clock, bounds and
// a first view. Which file is opened, and how, is the caller's.
#pragma once

#include <optional>
#include <string>

#include "chronoweave/traxfunc/canvas/canvas.h"

// Takes over the store and a finished legend and shows the first view: wide enough for about two events per
// icon's width of the area. name is the source's, for the titles. Does not paint. False, with the message
// line saying so and the canvas empty, when the store can't be shown. A store with no events is a success
// with no lanes.
bool laCanvas_SetUpFromStore(_LaCanvasData& canvas, TraceStorePtr store, Legend legend,
                             const std::string& name);

// The clock and bounds again, after a live source grew: totalLength, scrollExtent, storeHasEvents.
void laCanvas_TakeBounds(_LaCanvasData& canvas);

// The store may have more events than before: takes the new bounds and, where the view shows what is new,
// brings it into the picture, of which no more is repainted than changed.
enum class laGrown {
    InPicture,  // the rows are those that there were
    WithRows    // rows may have come or changed
};
laGrown laCanvas_SourceGrew(_LaCanvasData& canvas);
// The same once the new bounds were taken, with the view moved along to begin at low: what stays in view is
// copied where that can be done. False when nothing can be shown there.
bool laCanvas_SourceMovedOn(_LaCanvasData& canvas, double low);

// Seconds from the store's first event to the event count - 1 behind it; 0 when there are fewer, none
// when there are none.
std::optional<double> laSession_SampleSpan(const _LaCanvasData& canvas, uint32_t count);
// Length of the first view of a source with this many events.
double laSession_FirstViewLength(const _LaCanvasData& canvas, uint32_t eventCount);
