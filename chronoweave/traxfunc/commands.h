// The commands of the canvas, by their text.
#pragma once

#include <string>
#include <string_view>

#include "chronoweave/traxfunc/canvas.h"

// Clears the message line and carries out a command; letters compare without regard to case. False for one
// that is not the canvas's, which is then its caller's to know, and for one that was refused, after a beep
// and mostly a message. An empty text is done.
//
// Beside the menu's and the buttons': the rows of the list's menu by their text ("Sort by ... &ID", "Sort in
// &Descending Order", "&Flat View"), and what keys do: "ZoomInAt x", "ZoomOutAt x" (a column), "Focus",
// "ShowAll", "ScrollHome", "ScrollEnd", "PageLeft", "PageRight".
bool laCanvas_Command(_LaCanvasData& canvas, std::string_view text);
// True when laCanvas_Command knows the text.
bool laCanvas_HasCommand(std::string_view text);

// Between sorting by name and by id; the order; the tree and whole names. All resort and repaint.
void laCanvas_ToggleSortField(_LaCanvasData& canvas);
void laCanvas_ToggleSortOrder(_LaCanvasData& canvas);
void laCanvas_ToggleFlatView(_LaCanvasData& canvas);
// The rows of the list's menu that toggle these say what the next press does.
std::string laCanvas_SortFieldLabel(const _LaCanvasData& canvas);
std::string laCanvas_SortOrderLabel(const _LaCanvasData& canvas);
// Live refresh on or off.
void laCanvas_ToggleFreeze(_LaCanvasData& canvas);
