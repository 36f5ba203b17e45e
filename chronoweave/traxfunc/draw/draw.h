// The repaint: a rectangle of the picture from the items, without touching the store. Nothing is drawn with
// no surface.
//
// Every decision that depends on what stands to the left (which icons of a cluster are drawn, which switches
// of a column) is taken over the whole view, so that a part painted alone looks like that part of the whole.
// All coordinates that reach the surface lie in the drawing area or close to it.
#pragma once

#include "chronoweave/traxfunc/canvas/canvas.h"

// Rows y0 to y1 and columns x0 to x1 of the drawing area, axis strip included; the last ones are not
// included. With widen, items that reach into the rectangle from outside are drawn too. First takes over the
// position of a scroll bar that was moved behind the canvas's back, and a new width. Does not clear what was
// there.
void laCanvas_PaintRect(_LaCanvasData& canvas, int y0, int y1, int x0, int x1, bool widen);
// Clears and paints the whole area and asks for the list to be painted.
void laCanvas_Repaint(_LaCanvasData& canvas);
// Clears and paints these columns of the data area, or these rows across the width.
void laCanvas_RepaintColumns(_LaCanvasData& canvas, int x0, int x1);
void laCanvas_RepaintRows(_LaCanvasData& canvas, int y0, int y1);

// One cursor line at a column. With showMessage, and force or no first cursor, the message line tells its
// time.
void laCanvas_DrawCursor(_LaCanvasData& canvas, int x, bool showMessage, const char* message, bool force,
                         Colour colour);
// Blanks the message and restores the columns around x.
void laCanvas_EraseCursor(_LaCanvasData& canvas, int x);
// The bookmarks in the view.
void laBookmark_PaintAll(const _LaCanvasData& canvas);
