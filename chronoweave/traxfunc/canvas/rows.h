// Fetch, list and layout put together: the items of a range, the rows of the objects, the scale of the
// picture. Nothing here paints.
#pragma once

#include "chronoweave/traxfunc/canvas/canvas.h"
#include "chronoweave/traxfunc/fetch/fetch.h"

// Drops all items and rows; the cached range becomes 0 to 0.
void laCanvas_ClearItems(_LaCanvasData& canvas);
// Fetches the items for a range of the time base; the whole cache is replaced, and the rows are to be made
// anew (laCanvas_Resort). canvas.calls.progress is told. False when the store gave nothing; there are then no
// items.
bool laCanvas_FetchRange(_LaCanvasData& canvas, double low, double high,
                         laFetchAhead ahead = laFetchAhead::Yes);

// What became of the items when a source that grew was read on.
struct laExtended {
    double from = 0;    // of earlier times nothing changed but what reaches to here; time base
    bool rows = false;  // rows were made anew, or the left side was dropped
};
// The trace has grown since the fetch reached its end: the fetch goes on where it stopped, as far as a view
// of this range needs it, and much that lies left of the view is dropped. The items are those that a fetch of
// the cached range would give, and laid out. canvas.calls.progress is told. Nothing when the range must be
// fetched instead; what there is then is not to be shown.
std::optional<laExtended> laCanvas_ExtendRange(_LaCanvasData& canvas, double low, double high);

// Rows of the object list become places of lanes; the view goes up where the content got lower.
void laCanvas_Layout(_LaCanvasData& canvas);
// What rows that follow the view are to be made for now, and the activities in it, which the next rebuilding
// of the list goes by.
LaRowsView laCanvas_RowsView(const _LaCanvasData& canvas);
void laCanvas_TakeActivity(_LaCanvasData& canvas);
// Rebuilds the object list from the lanes and lays out.
void laCanvas_Resort(_LaCanvasData& canvas);
// The scale after a change of the view's length or the width, and the scroll bars. A picture that would be
// more than 1e18 views wide is refused with a message.
void laCanvas_Rescale(_LaCanvasData& canvas);
// The drawing area has a new size: scale and scroll bars follow.
void laCanvas_Resized(_LaCanvasData& canvas, int width, int height);

// True when the list is, or could be, more than one level deep: then the flat view is offered.
bool laCanvas_HasHierarchy(const _LaCanvasData& canvas);
