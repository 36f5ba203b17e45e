// The context menus of the picture and of the object list: rows with the command of each. The window shows
// the rows outside of any drawing (DialogHost::PopUp) and passes the number of the one chosen.
#pragma once

#include <string>
#include <vector>

#include "chronoweave/traxfunc/canvas/canvas.h"
#include "chronoweave/traxfunc/input/debugger.h"
#include "chronoweave/traxfunc/list/task_list.h"
#include "windlib/dialog/host.h"

struct laContextMenu {
    std::string title;
    std::vector<PopUpRow> rows;
    std::vector<const char*> commands;  // of the rows, in their order; empty for one with no work
};

// What the debugger can do is asked before anything of the canvas is looked at (laDebugger_Ask).
// For a right click at a point of the drawing area, which is kept in canvas.hand.place.
laContextMenu laCanvas_CanvasMenu(_LaCanvasData& canvas, int x, int y, const laDebuggerCan& can = {});
// For a right click on the object list; about its selected rows. clicked is null below the last row.
laContextMenu laCanvas_ListMenu(const _LaCanvasData& canvas, const MslObjectEntry* clicked,
                                const laDebuggerCan& can = {});
// Carries out a row that was chosen; nothing for -1, a separator or a disabled row. The items must be those
// for which the menu was made.
void laContextMenu_Choose(_LaCanvasData& canvas, const laContextMenu& menu, int row);
