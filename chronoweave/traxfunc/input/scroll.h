// The scroll bars as the user moves them.
#pragma once

#include "chronoweave/traxfunc/canvas/canvas.h"

// A horizontal move goes to the history, once for all moves between laScroll_Hold and laScroll_Release, or of
// a drag of the cursor.
void laCanvas_HorizontalScrolled(_LaCanvasData& canvas);
void laCanvas_VerticalScrolled(_LaCanvasData& canvas);
void laScroll_Hold(_LaCanvasData& canvas);
void laScroll_Release(_LaCanvasData& canvas);
