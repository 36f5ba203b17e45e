// What commands do that no other file of the canvas has as one function.
#pragma once

#include "chronoweave/traxfunc/canvas/canvas.h"
#include "chronoweave/traxfunc/list/task_list.h"

// Closes all windows about the canvas (viewWindows).
void laCanvas_CloseViews(_LaCanvasData& canvas);
// Back to an empty canvas, painted.
void laCanvas_CloseSource(_LaCanvasData& canvas);

// Between sorting by name and by id; the order; the tree and whole names. All resort and repaint.
void laCanvas_ToggleSortField(_LaCanvasData& canvas);
void laCanvas_ToggleSortOrder(_LaCanvasData& canvas);
void laCanvas_ToggleFlatView(_LaCanvasData& canvas);
// The rows of the list's menu that toggle these say what the next press does.
std::string laCanvas_SortFieldLabel(const _LaCanvasData& canvas);
std::string laCanvas_SortOrderLabel(const _LaCanvasData& canvas);
// Live refresh on or off.
void laCanvas_ToggleFreeze(_LaCanvasData& canvas);

// All lanes learn how many events they are away from the one with this item sequence, for a sort by it.
void laCanvas_SortAroundEvent(_LaCanvasData& canvas, uint32_t sequence);
// The window about a row of the list: of a group, its tree is opened or closed instead.
void laCanvas_ShowInfo(_LaCanvasData& canvas, MslObjectEntry& entry);
// The row of the agent for hidden ones stands for no object.
bool laList_IsObject(const _LaCanvasData& canvas, const MslObjectEntry& entry);
// An object of an entry or of one below it.
bool laList_HasObject(const _LaCanvasData& canvas, const MslObjectEntry& entry);
// The windows about all selected rows; hides all of them.
void laList_ShowSelected(_LaCanvasData& canvas);
void laList_HideSelected(_LaCanvasData& canvas);

// At the place of the context menu (canvas.hand.place).
bool laPlace_View(_LaCanvasData& canvas);
void laPlace_HideObject(_LaCanvasData& canvas);
void laPlace_SortAround(_LaCanvasData& canvas);
