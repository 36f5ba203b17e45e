// Rows that follow the view (LaList::onlyActive, LaList::mostActiveFirst). They are made for one view and
// stay while it is moved, so that nothing jumps under the pointer; who moves it has them settled when it
// rests.
#pragma once

#include "chronoweave/traxfunc/canvas/canvas.h"

// True when rows follow the view, and were made for another one than what is shown now.
bool laRows_Stale(const _LaCanvasData& canvas);
// Makes them for what is shown now, and repaints when they changed: true then. The row at this pixel row of
// the data area, or else the next one that is still there, stays at its place as far as the content reaches;
// where the order itself follows from the activity, nothing scrolls. Nothing unless they are stale.
bool laRows_Settle(_LaCanvasData& canvas, int keep = 0);

// The two choices, which the message line tells the outcome of.
void laRows_ToggleOnlyActive(_LaCanvasData& canvas);
void laRows_ToggleMostActiveFirst(_LaCanvasData& canvas);
