// The name column beside the picture: the rows of the object list, aligned with the lanes by the row height
// and the vertical scroll. Used by the window and by picture files. What is selected, expanded and searched
// is the state of canvas.taskList->list(); here it meets the pointer, the keyboard and the drawing.
#pragma once

#include "chronoweave/traxfunc/canvas/canvas.h"
#include "chronoweave/traxfunc/list/task_list.h"

// Draws the rows that meet the column of this width and height, whose top left corner is the surface's
// origin. Texts that don't fit end in "…". With inWindow, selected rows are drawn in the selection's colours,
// and the current row with a frame while the names have the keyboard; pictures have none of this.
void laNames_Draw(const _LaCanvasData& canvas, Surface& surface, int width, int height, bool inWindow = true);
// Width that shows every name whole, from 100 to most pixels.
int laNames_Width(const _LaCanvasData& canvas, Surface& surface, int most);
// The row at a pixel row of the column, null below the last.
MslObjectEntry* laNames_RowAt(const _LaCanvasData& canvas, int y);
// True when x hits the expand mark of the row.
bool laNames_HitsMark(const _LaCanvasData& canvas, const MslObjectEntry& entry, int x);
// The text cut at a character so that it and "…" fit; the whole text when it fits.
std::string laNames_Elide(Surface& surface, std::string_view text, int width);

// A click at a pixel of the column, with its keys: opens or closes the group on whose mark it falls, else
// selects; the second of a double click opens the object's window, or the group. False below the last row,
// where nothing happens. All of these may paint.
bool laNames_Click(_LaCanvasData& canvas, int x, int y, int clicks, bool control, bool shift);
// The pointer, held since a click, came to a pixel row.
void laNames_DragTo(_LaCanvasData& canvas, int y);
// A right click selects the row alone unless it is selected. The row, null below the last; its menu, which is
// about laNames_Selected, is the caller's.
MslObjectEntry* laNames_RightClick(_LaCanvasData& canvas, int y);
// Selected rows from the top.
std::vector<MslObjectEntry*> laNames_Selected(const _LaCanvasData& canvas);
void laNames_ClearSelection(_LaCanvasData& canvas);
// What the row at a pixel row is, for a tool tip; empty below the last.
std::string laNames_Tip(const _LaCanvasData& canvas, int y);
// A key while the names have the keyboard (see MScrollList::Key); the picture scrolls with the current row.
// False for a key that means nothing here.
bool laNames_Key(_LaCanvasData& canvas, MslKey key, bool control, bool shift);
// Typing searches the names, with what was typed on the message line: text typed, a character taken back
// (false while there is no search), and the end.
void laNames_Type(_LaCanvasData& canvas, std::string_view typed);
bool laNames_Backspace(_LaCanvasData& canvas);
void laNames_EndSearch(_LaCanvasData& canvas);
// The names got or lost the keyboard, which shows in a window.
void laNames_Focus(_LaCanvasData& canvas, bool focused);
