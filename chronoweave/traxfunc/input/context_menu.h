// The context menus of the picture and of the object list, as rows with what each does. The window shows the
// rows outside of any drawing (DialogHost::PopUp) and passes the number of the one chosen.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "chronoweave/traxfunc/input/hit.h"
#include "chronoweave/traxfunc/list/task_list.h"
#include "windlib/dialog/host.h"

struct laContextMenu {
    std::string title;
    std::vector<PopUpRow> rows;
    // Carries out a row that was chosen; nothing for -1, a separator or a disabled row. Paints.
    std::function<void(int row)> act;
};

// For a right click at a point of the drawing area. The canvas and its items stay until act was called.
laContextMenu laCanvas_CanvasMenu(_LaCanvasData& canvas, int x, int y);
// For a right click on the object list. clicked is null below the last row; selected holds all selected rows,
// the clicked one among them.
laContextMenu laCanvas_ListMenu(_LaCanvasData& canvas, MslObjectEntry* clicked,
                                const std::vector<MslObjectEntry*>& selected);

// All lanes learn how many events they are away from the one with this item sequence, for a sort by it.
void laCanvas_SortAroundEvent(_LaCanvasData& canvas, uint32_t sequence);
// The window about a row of the list: of a group, its tree is opened or closed instead.
void laCanvas_ShowInfo(_LaCanvasData& canvas, MslObjectEntry& entry);
