// The two cursors, which make the selection. The first stands where the pointer was pressed; the second
// follows a drag, drawn in exclusive-or so that it comes and goes without a repaint. After a drag they are
// in order. Cursors keep their time when the view changes; one outside it is not drawn.
#pragma once

#include <string>

#include "chronoweave/traxfunc/canvas/canvas.h"

// Moves a cursor (0 or 1) to a time of the time base; nothing of the time is lost to the columns. One outside
// the view is not drawn. The first cursor begins a drag. With eraseOld the line at the old place goes. Fields
// and axis follow.
void laCanvas_SetCursorTime(_LaCanvasData& canvas, double time, int which, bool eraseOld);
// The same by a column of the area; left of it -1 stands for the view's low end, any other for its high end.
void laCanvas_SetCursor(_LaCanvasData& canvas, int x, int which, bool eraseOld);
// Moves one for good, with no drag: it is drawn as it stays.
void laCanvas_MoveCursor(_LaCanvasData& canvas, int which, double time);
// Unsets both and restores what was under them.
void laCanvas_ClearCursors(_LaCanvasData& canvas);
// Both at once, as a finished selection. Refused with a report when t0 > t1 or t0 < 0.
bool laCanvas_SetSelection(_LaCanvasData& canvas, double t0, double t1);

// The time under the pointer. Unless free (Alt is held) or the option is off, that of the nearest edge of a
// stretch or icon of the lane at row y, if it lies within 3 columns of x.
double laCanvas_PointerTime(_LaCanvasData& canvas, int x, int y, bool free);
// A press: both cursors are cleared and the first is put at the pointer.
void laCanvas_BeginDrag(_LaCanvasData& canvas, int x, int y, bool free);
// A move while dragging. Outside the area the second cursor stands at that end of the view, or is not drawn
// when there is nothing left to scroll to.
void laCanvas_DragTo(_LaCanvasData& canvas, int x, int y, bool free);
// A release at the place of the last move: the cursors are ordered and drawn as they stay. A drag that
// scrolled goes to the history.
void laCanvas_EndDrag(_LaCanvasData& canvas);

// What the message line says of a temporary cursor at a column: its time.
std::string laCanvas_ColumnText(const _LaCanvasData& canvas, int x);
// What the message line says while the pointer stands at a column: its time and, with a first cursor, how
// far it is from it.
std::string laCanvas_HoverText(const _LaCanvasData& canvas, int x);
