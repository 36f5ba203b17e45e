// Bookmarks: marked times, drawn as dotted lines over the rows and listed in the menu, newest first. Times
// are of the time base; no two bookmarks share one.
#pragma once

#include <cstddef>

#include "chronoweave/traxfunc/canvas/canvas.h"
#include "chronoweave/traxfunc/model/marks.h"

// The bookmark at exactly this time, or the first of the list within 3 pixels of it. Null when there is none.
// Valid until the list changes.
enum class laBookmarkMatch { Exact, Near };
const LaBookmark* laBookmark_Find(const _LaCanvasData& canvas, double time, laBookmarkMatch match);
// Adds one unless there is one at exactly this time, and gives it. objectId is laAgentId for no object. This
// and the deletions repaint.
const LaBookmark& laBookmark_Add(_LaCanvasData& canvas, uint32_t objectId, double time);
// Its label as it is shown: in one that the user did not give, the time is in the unit of the canvas.
std::string laBookmark_ShownLabel(const _LaCanvasData& canvas, const LaBookmark& mark);
// True when one went.
bool laBookmark_Delete(_LaCanvasData& canvas, double time, laBookmarkMatch match);
// False, and nothing, for an index behind the list.
bool laBookmark_DeleteAt(_LaCanvasData& canvas, size_t index);
void laBookmark_DeleteAll(_LaCanvasData& canvas);
// Brings it and its object into view, with the pointer. False, with a beep, for an index behind the list.
bool laBookmark_Show(_LaCanvasData& canvas, size_t index);
// Adds one for each cursor that is set. False, with a beep, when none is.
bool laBookmark_AddForCursors(_LaCanvasData& canvas);
