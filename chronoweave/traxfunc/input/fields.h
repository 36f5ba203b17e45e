// What the user types into the six fields of the view and the selection. Values are in the canvas's unit.
#pragma once

#include <string_view>

#include "chronoweave/traxfunc/canvas/canvas.h"

// A field by its item name ("tf_view_from", "tf_view_to", "tf_view_len", "tf_sel_from", "tf_sel_to",
// "tf_sel_len") was committed with a text. An unchanged text is nothing. A view is shown and goes to the
// history; a cursor moves. False for a text or value that is refused, with a beep and a message, and the
// group's texts as they were; false and nothing else for an unknown name.
//
// A number may have a unit of its own, as in "go to" (goto.h); "+" and a time is a length from where the view
// or the selection begins. What lies more than two lengths of the trace behind its start is taken as its end.
bool laCanvas_CommitField(_LaCanvasData& canvas, std::string_view name, std::string_view text);
