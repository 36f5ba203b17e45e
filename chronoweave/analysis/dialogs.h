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
// A value to be typed, "getValue": prompt "t_please", field "tf_val", what it is "t_what", "bs_ok", "cancel".
DialogDescription dialogs_GetValue();
// The options of the program: check boxes "wheel", "snap", "newtrv", "processors", "marks", "switches",
// "prefetch", "kernel", "icons", "right", "bottom", "follow", "dark", and "ok", "cancel".
DialogDescription dialogs_Options();
// The sides of the scroll bars: choices "side" (left, right) and "end" (top, bottom), "ok", "cancel".
DialogDescription dialogs_ScrollPos();
// The bookmarks: list "marks", field "label", message line, "rename", "colour", "goto", "delete", "close".
DialogDescription dialogs_Bookmarks();
// What keys and pointer do: list "keys", "close".
DialogDescription dialogs_KeySheet();
// Commands to choose from: field "filter", list "commands", "run", "close".
DialogDescription dialogs_Palette();
// What is printed, and how: choices "range" (view, selection), "paper" (A4, Letter), "turn" (portrait,
// landscape), field "pages", check box "legend", message line, "ok", "preview", "pdf", "cancel".
DialogDescription dialogs_Print();
// The same for a table, which is printed whole: without "range", "pages" and "legend".
DialogDescription dialogs_PrintTable();
// About the program: "t_name", "t_version", "t_build", "ok".
DialogDescription dialogs_About();
