// The legend's window: every status, category and event with its line or icon and its visibility, and the
// place where the user changes them. Changes take effect at once (legend_edit.h); each can be undone while
// the window is open.
#pragma once

#include "chronoweave/traxfunc/canvas/canvas.h"
#include "windlib/dialog/description.h"

// Makes "Legend" a command of the canvas: opens its one window, or raises it.
void legend_Attach(_LaCanvasData& canvas);

// Window "Legend": "MenuBar", "StatusBox" around the filter field "tf_filter" and the list "list", buttons.
DialogDescription legend_Window();
