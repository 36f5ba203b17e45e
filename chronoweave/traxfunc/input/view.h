// Moving over the trace. Every change of the view ends in laCanvas_ShowRange; refusals are a beep and a
// message and change nothing.
#pragma once

#include "chronoweave/traxfunc/canvas/canvas.h"
#include "chronoweave/traxfunc/fetch/fetch.h"

struct laShow {
    bool paint = false;
    bool keepLength = false;  // the view's length stays what it is, as in a scroll
    bool refetch = false;     // what is shown already is looked at anew where it isn't cached
    laFetchAhead ahead = laFetchAhead::Yes;
};
// Shows low to high, moved so that it begins on a whole pixel of the virtual picture; fetches what is not
// cached. False when refused: past the limit of zoom, or nothing could be fetched. An empty range is
// reported, and true. False too while a fetch runs: the range is then shown, and painted, when the gate lets
// commands run again, if no other is asked for until then.
bool laCanvas_ShowRange(_LaCanvasData& canvas, double low, double high, laShow how = {});
// Reports a range that is none, with a beep.
void laCanvas_RefuseRange(_LaCanvasData& canvas, double low, double high);

// Brings a time, given in a mode, and an object's row into view (laAgentId for no object). With warp, the
// pointer goes there.
void laCanvas_MoveToTime(_LaCanvasData& canvas, double value, TimeMode mode, uint32_t objectId, bool warp);
void laCanvas_GoTo(_LaCanvasData& canvas, double time, uint32_t objectId);
void laCanvas_Reveal(_LaCanvasData& canvas, double time, uint32_t objectId);

// Sets the vertical position; x must lie in the width. With force, repaints even when nothing moved.
void TRAX_ScrollTo(_LaCanvasData& canvas, int x, int y, bool force);
