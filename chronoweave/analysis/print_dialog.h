// Asking what is printed and how, for the canvas and for the tables of windows.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "chronoweave/traxfunc/canvas/canvas.h"
#include "windlib/dialog/host.h"
#include "windlib/msl/scroll_list.h"

// Asks with the dialog "Print" and prints the canvas; listWidth is that of the names on screen, with the
// divider. Where the system has no printer, or the user wants a PDF, a file is asked for. False when nothing
// was printed; the user was told why, or cancelled.
bool dialogs_AskPrint(_LaCanvasData& canvas, int listWidth);

// The same for tables: title stands on every page. Progress is told by the row; stopped, it leaves the pages
// that are whole. What there is to say of what was printed, for a message line; nothing when nothing was.
std::optional<std::string> dialogs_PrintTables(DialogHost& host, const std::string& title,
                                               const std::vector<const MScrollList*>& lists,
                                               const Progress& progress);
