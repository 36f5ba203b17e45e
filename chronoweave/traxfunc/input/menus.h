// The menus and the tool bar of the canvas window, made from the table of commands (command_table.h): which
// command stands where. Bodies of rows are commands.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "chronoweave/traxfunc/canvas/canvas.h"
#include "chronoweave/traxfunc/input/command_table.h"
#include "windlib/menu/menu.h"

// Defines all menus of the analyzer's windows; "TraxMenuBar" is the canvas window's.
void laMenus_Register(MenuRegistry& menus);

// Which rows of a menu, and how: as it is registered, with all rows and keys; or only what the menu has had
// since it was first made, which scripts and site files rely on.
enum class MenuForm { Full, Original };
// The text of a menu of ours; empty for another name.
std::string laMenu_Text(std::string_view name, MenuForm form);
// Name of the menu of the bar that a command stands in, without its mark ("View"); empty for none.
std::string laMenu_Of(std::string_view command);

// The manual's table of commands (docs/manual/commands.md), as Markdown with links to pages beside it: those
// of the menus in their order, then those that stand in none, then the keys of the pointer and the window
// system.
std::string laCommands_ManualTable();

struct laToolButton {
    const char* name;      // "-" for a gap
    const char* command;   // of laCanvas_Command
    const char* text;      // of a button that shows no icon
    bool toggles = false;  // it stays pressed
    bool IsGap() const { return name[0] == '-'; }
    const laCommand& row() const;  // of the table; the button is no gap
    std::string LongHelp() const;
    std::string ToolTip() const;
};
// The buttons of "TraxBtns" in their order.
std::span<const laToolButton> laMenus_ToolBar();

struct laButtonState {
    bool enabled = true;
    bool pressed = false;
    bool visible = true;
    bool operator==(const laButtonState&) const = default;
};
// The states of all buttons, in the order of the tool bar. True when one changed.
bool laCanvas_UpdateButtons(const _LaCanvasData& canvas, std::vector<laButtonState>& states);
// "NoRefresh" alone: there for live sources, pressed while the canvas does not follow one.
bool laCanvas_UpdateFreezeButton(const _LaCanvasData& canvas, std::vector<laButtonState>& states);

// To be called before the menu of this name opens over the canvas: enables its rows, sets check marks and
// labels, fills in recent files and bookmarks. The menu may be redefined by it.
void laCanvas_MenuHook(MenuRegistry& menus, std::string_view name, const _LaCanvasData& canvas);
// Redefines "TraxBookmark" with the canvas's bookmarks, unless it has them already.
void laCanvas_BuildBookmarkMenu(MenuRegistry& menus, const _LaCanvasData& canvas);
