// Moving over the trace. Every change of the view ends in laCanvas_ShowRange; refusals are a beep and a
// message and change nothing.
#pragma once

#include "chronoweave/traxfunc/canvas/canvas.h"

// Shows low to high, moved so that it begins on a whole pixel of the virtual picture; fetches what is not
// cached. With repaint, paints; with setLength, the view's length becomes that of the range. False when
// refused: past the limit of zoom, or nothing could be fetched. An empty range is reported, and true.
// False too while a fetch runs: the range is then shown, and painted, when the gate lets commands run again,
// if no other is asked for until then.
bool laCanvas_ShowRange(_LaCanvasData& canvas, double low, double high, bool repaint, bool setLength);

enum ZoomMode : int { Zoom_Left = 0, Zoom_Right = 1, Zoom_Selection = 2, Zoom_Range = 3 };
// The zoom commands: low >= 0 with a high gives the range; low >= 0 with high < 0 zooms out; low < 0 takes
// the range from the cursors by mode. True when the view changed, so that a history can record it.
bool laCanvas_Zoom(_LaCanvasData& canvas, double low, double high, bool repaint, int mode);
// The canvas menu's zooms, about a time of the time base.
void laCanvas_ZoomInAt(_LaCanvasData& canvas, double centre);
void laCanvas_ZoomOutAt(_LaCanvasData& canvas, double centre);

// Brings a time, given in a mode, and an object's row into view (laAgentId for no object). With warp, the
// pointer goes there.
void laCanvas_MoveToTime(_LaCanvasData& canvas, double value, int mode, uint32_t objectId, bool warp);
void laCanvas_GoTo(_LaCanvasData& canvas, double time, uint32_t objectId);
void laCanvas_Reveal(_LaCanvasData& canvas, double time, uint32_t objectId);

// Sets the vertical position; x must lie in the width. With force, repaints even when nothing moved.
void TRAX_ScrollTo(_LaCanvasData& canvas, int x, int y, bool force);
// The drawing area has a new size: scales and scroll bars follow. Does not paint.
void laCanvas_Resized(_LaCanvasData& canvas, int width, int height);
