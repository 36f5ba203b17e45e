// The commands of the canvas, by their text.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "chronoweave/traxfunc/canvas/canvas.h"

// Clears the message line and carries out a command: menus, buttons and keys all come here. Letters compare
// without regard to case. False for one that was refused, after a beep and mostly a message, and for one that
// nobody knows, which the console is told. An empty text is done. The canvas may be gone afterwards ("Quit").
//
// A command of the floor above (canvas.calls.upper.commands) goes before the canvas's own; one that nobody
// does says that it is not there yet. "Open FILE" opens a file: one character, then the name.
//
// Beside the menu's and the buttons': the rows of the list's menu by their text ("Sort by ... &ID", "Sort in
// &Descending Order", "&Flat View"), and what keys do: "ZoomInAt x", "ZoomOutAt x" (a column), "Focus",
// "ShowAll", "ScrollHome", "ScrollEnd", "PageLeft", "PageRight", "GoToTime", "KeySheet", "Options",
// "Palette", "EventTable", "NextHit", "PrevHit".
bool laCanvas_Command(_LaCanvasData& canvas, std::string_view text);
// True when laCanvas_Command knows the text.
bool laCanvas_HasCommand(std::string_view text);
// All of the table, in its order.
std::vector<std::string> laCanvas_CommandNames();

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
