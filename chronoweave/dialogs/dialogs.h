// The analyzer's windows and dialogs as descriptions. Logic and platform are bound to them by item names.
#pragma once

#include "windlib/dialog/description.h"

// The canvas window: menu line, tool bar, picture with its name list, overview strip, time unit, fields of
// the view and of the selection, message line, progress bar.
DialogDescription dialogs_CanvasWindow();
// Which objects are hidden: lists "to_show" and "to_hide" under the headings "t_show" and "t_hide", the field
// "pattern", buttons "hide", "hideall", "show", "showall", "ok", "cancel". Title, headings and columns are
// set to the trace's words for its objects.
DialogDescription dialogs_Hide();
// The unit of times: choices "units" in the order of the time modes 0 to 3, check box "auto", "ok", "cancel".
DialogDescription dialogs_TimeUnit();
// A time or range to go to: field "time", explanation "t_explain", message line, "ok", "cancel".
DialogDescription dialogs_GotoTime();
