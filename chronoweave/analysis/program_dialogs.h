// The small dialogs of the canvas window's commands, run to their end through a host: each asks, and carries
// out the answer. The canvas's refusals (no source and the like) are its dispatch's and come before.
#pragma once

#include <optional>
#include <string>

#include "chronoweave/analysis/program_options.h"
#include "chronoweave/traxfunc/canvas/canvas.h"
#include "windlib/dialog/host.h"

class MenuRegistry;

// A value typed in place of one; none when the user cancelled. what tells what it is.
std::optional<std::string> dialogs_AskValue(DialogHost& host, const std::string& value,
                                            const std::string& what);
// "RefreshGap": the period of live reading, milliseconds. What is no number above 0 is dropped.
void dialogs_AskRefreshInterval(DialogHost& host, _LaCanvasData& canvas);
// "CanvasName": the title of the canvas. True when there is a new one in canvasName.
bool dialogs_AskCanvasName(DialogHost& host, _LaCanvasData& canvas, const std::string& title);

// The options as the user wants them; none when cancelled.
std::optional<ProgramOptions> dialogs_AskOptions(DialogHost& host, const ProgramOptions& options);
// The same for the sides of the scroll bars alone.
std::optional<ProgramOptions> dialogs_AskScrollPos(DialogHost& host, const ProgramOptions& options);
// What the dialog's answer r means: right by r > 9, top by r % 10.
void dialogs_TakeScrollPos(int r, ProgramOptions& options);

// "EditBookmarks": the list of bookmarks, until it is closed.
void dialogs_EditBookmarks(DialogHost& host, _LaCanvasData& canvas);
// The sheet of keys.
void dialogs_ShowKeys(DialogHost& host);
void dialogs_ShowAbout(DialogHost& host);
// All commands that can be used now: the rows of the window's menus (recent files and bookmarks among them)
// and those that stand in no menu. The command chosen; empty for none.
std::string dialogs_AskCommand(DialogHost& host, MenuRegistry& menus, const _LaCanvasData& canvas);
