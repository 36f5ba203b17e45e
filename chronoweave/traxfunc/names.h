// The name column beside the picture: the rows of the object list, aligned with the lanes by the row height
// and the vertical scroll. Used by the window and by picture files.
#pragma once

#include "chronoweave/traxfunc/canvas.h"
#include "chronoweave/traxfunc/task_list.h"

// Draws the rows that meet the column of this width and height, whose top left corner is the surface's
// origin. Texts that don't fit end in "…". selected, when given, is drawn in the selection's colours.
void laNames_Draw(const _LaCanvasData& canvas, Surface& surface, int width, int height,
                  const MslObjectEntry* selected = nullptr);
// Width that shows every name whole, from 100 to most pixels.
int laNames_Width(const _LaCanvasData& canvas, Surface& surface, int most);
// The row at a pixel row of the column, null below the last.
MslObjectEntry* laNames_RowAt(const _LaCanvasData& canvas, int y);
// True when x hits the expand mark of the row.
bool laNames_HitsMark(const _LaCanvasData& canvas, const MslObjectEntry& entry, int x);
// The text cut at a character so that it and "…" fit; the whole text when it fits.
std::string laNames_Elide(Surface& surface, std::string_view text, int width);
