// Scrolling: what stays in view is copied and only what comes in is painted, if the surface can copy. The
// result is to the last pixel that of a whole repaint, which is done wherever that can't be promised: a fetch
// or another order of the lanes since the last one, a new scale or size, a picture too wide for exact
// columns, or icons whose clusters fall differently when the view begins elsewhere.
#pragma once

#include "chronoweave/traxfunc/canvas/canvas.h"

// What the scroll bars call after the user moved them. A horizontal move goes to the history, once for all
// moves between laScroll_Hold and laScroll_Release, or of a drag of the cursor.
void laCanvas_HorizontalScrolled(_LaCanvasData& canvas);
void laCanvas_VerticalScrolled(_LaCanvasData& canvas);
void laScroll_Hold(_LaCanvasData& canvas);
void laScroll_Release(_LaCanvasData& canvas);

// Brings the surface from what it shows to the present view.
void laScroll_Paint(_LaCanvasData& canvas);
// The surface shows the present view; told by the whole repaint.
void laScroll_NotePainted(_LaCanvasData& canvas);
