// The fetch: from a time range of the store to the items of a canvas. One walk over the events of the range;
// nothing of an event is kept but its icon, and texts are decoded when they are shown.
#pragma once

#include "chronoweave/traxfunc/canvas/canvas.h"

// Fills the items for low to high, in the time base; with the prefetch option for twice that, half on each
// side. The whole cache is replaced. Time behind the end of the trace holds nothing. canvas.calls.progress is
// told and may stop the fetch: the items then end where it stopped, and so does the cached range. An event at
// low is in, one at high is not. False when the store gave nothing; the lists are then empty.
bool laCanvas_FetchRange(_LaCanvasData& canvas, double low, double high);

// True when a view of this range needs no fetch.
bool laCanvas_IsCached(const _LaCanvasData& canvas, double low, double high);

// What was found to be damaged in the source's store since the last call goes to the console; the result is a
// sentence for the message line, empty when there is nothing new, which the source keeps.
std::string laSource_TellDamage(LaSource& source);
