// The dispatch: a command's text to its work (command_table.h).
#pragma once

#include <string>
#include <string_view>

#include "chronoweave/traxfunc/canvas/canvas.h"

// Clears the message line and carries out a command: menus, buttons, keys and context menus all come here.
// Letters compare without regard to case. False for one that was refused, after a beep and mostly a message,
// and for one that nobody knows, which the console is told. An empty text is done. The canvas may be gone
// afterwards ("Quit").
//
// A command of the floor above (canvas.calls.upper.commands) goes before the canvas's own; one that nobody
// does says that it is not there yet. "Open FILE" opens a file: one character, then the name.
bool laCanvas_Command(_LaCanvasData& canvas, std::string_view text);
// Why nobody does a command in this program, for a tip: "The editor is not there yet."; empty for one that
// somebody does, and where no floor above does any.
std::string laCanvas_NotThere(const _LaCanvasData& canvas, std::string_view text);
// True when laCanvas_Command knows the text.
bool laCanvas_HasCommand(std::string_view text);
// True when a command can do something now, by the rule of its row.
bool laCanvas_CanDo(const _LaCanvasData& canvas, std::string_view command);
