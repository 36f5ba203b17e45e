// The repaint: parts of the picture, and the axis with the texts that follow from it. With a surface it is
// painted at once; with none it is noted what must be painted, and the texts follow at once.
#pragma once

#include <functional>

#include "chronoweave/traxfunc/canvas/canvas.h"
#include "chronoweave/traxfunc/draw/axis.h"
#include "chronoweave/traxfunc/draw/draw.h"
#include "windlib/msl/object_list.h"

// Runs work that may paint; a window paints what was noted when the work is over.
void laCanvas_Paint(_LaCanvasData& canvas, const std::function<void()>& work);

// Paints what was noted. There is a surface, and it shows what was painted last.
void laCanvas_PaintWanted(_LaCanvasData& canvas);
// Clears and paints the whole area and asks for the list to be painted.
void laCanvas_Repaint(_LaCanvasData& canvas);
// Clears and paints these columns of the data area, or these rows across the width.
void laCanvas_RepaintColumns(_LaCanvasData& canvas, int x0, int x1);
void laCanvas_RepaintRows(_LaCanvasData& canvas, int y0, int y1);
// Brings the surface from what it shows to the present view: what stays is copied where that can be done.
void laScroll_Paint(_LaCanvasData& canvas);
// Repaints the axis between two columns, or all of it when the labels changed; their texts follow.
void laAxis_Draw(_LaCanvasData& canvas, int x0, int x1, laUnitRule rule = laUnitRule::Adjust);
// Blanks the message and restores the columns around x.
void laCanvas_EraseCursor(_LaCanvasData& canvas, int x);

// After rows were hidden, shown, collapsed or expanded: layout, and a repaint.
void laCanvas_Relayout(_LaCanvasData& canvas);
// Hides what a row of the list stands for, or shows it again.
void laTask_Hide(_LaCanvasData& canvas, const MslObjectEntry& entry);
void laTask_Show(_LaCanvasData& canvas, const MslObjectEntry& entry);
