// The layout: rows of the object list become places of lanes. It touches lanes only; icons, segments and
// switches take their places from their lanes when they are drawn.
#pragma once

#include "chronoweave/traxfunc/canvas/canvas.h"

// Gives every lane its y from its row, hides those with none, and builds the agent's line anew from the
// hidden lanes. With adjustVertical the content may shrink, and the view scrolls up to what is left; without,
// the content height only grows. True when it had to scroll up.
bool laCanvas_Layout(_LaCanvasData& canvas, bool adjustVertical);
// Rebuilds the object list from the lanes and lays out.
void laCanvas_Resort(_LaCanvasData& canvas);
// After rows were hidden, shown, collapsed or expanded: layout with a content that may shrink, and a repaint.
void laCanvas_Relayout(_LaCanvasData& canvas);

// Recomputes the scale after a change of the view's length or the width, and the scroll bars. No item is
// touched. A picture that would be more than 1e18 views wide is refused with a message.
void laCanvas_Rescale(_LaCanvasData& canvas, bool repaint);
// Gives the scroll bars their ranges and the horizontal one its position; with repaint, repaints.
void laCanvas_SetExtent(_LaCanvasData& canvas, uint64_t virtualWidth, int contentHeight, bool repaint);
