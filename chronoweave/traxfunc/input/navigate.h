// Moving by hand: what wheels and keys do, in columns and rows of the drawing area. All end in the view
// changes of view.h, paint, and record a zoom in the history.
#pragma once

#include "chronoweave/traxfunc/canvas/canvas.h"

// Zooms by a factor about a column, whose time stays where it is; below 1 zooms in. Zooming out stops at the
// whole trace.
void laCanvas_ZoomAtColumn(_LaCanvasData& canvas, int x, double factor);
// Shows the whole trace.
void laCanvas_ShowAll(_LaCanvasData& canvas);
// Scrolls by columns and by rows of pixels, as the scroll bars would.
void laCanvas_ScrollColumns(_LaCanvasData& canvas, int64_t columns);
void laCanvas_ScrollRows(_LaCanvasData& canvas, int64_t rows);
// To the first or the last view.
void laCanvas_ScrollToEnd(_LaCanvasData& canvas, bool last);
// By the width of the area, to the right or left.
void laCanvas_ScrollPage(_LaCanvasData& canvas, bool forward);
// Brings the selection, or the one cursor, to the middle; where it is there already, shows just the
// selection. False, with a beep and a message, when there is no cursor.
bool laCanvas_FocusSelection(_LaCanvasData& canvas);
