// The zooms of commands and keys. All paint, and record the view in the history; refusals are a beep and a
// message and change nothing. True when the view changed.
#pragma once

#include "chronoweave/traxfunc/canvas/canvas.h"

// A given range of the time base.
bool laCanvas_Zoom(_LaCanvasData& canvas, double low, double high);
// What the cursors say: half the view about the left or the right one, or from one to the other. Where none
// is set, half the view from its start on; without a selection, from the trace's.
enum class ZoomMode { Left, Right, Selection };
bool laCanvas_Zoom(_LaCanvasData& canvas, ZoomMode mode);
// Twice the view about its middle, within the trace.
bool laCanvas_ZoomOut(_LaCanvasData& canvas);
// The canvas menu's zooms, about a time of the time base.
void laCanvas_ZoomInAt(_LaCanvasData& canvas, double centre);
void laCanvas_ZoomOutAt(_LaCanvasData& canvas, double centre);
