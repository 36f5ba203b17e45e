// The menus and the tool bar of the canvas window as data: their texts, and which rows and buttons can be
// used in which state of the canvas. Bodies of rows are commands (see commands.h).
#pragma once

#include <span>
#include <string>
#include <vector>

#include "chronoweave/traxfunc/canvas/canvas.h"
#include "windlib/menu/menu.h"

// Defines all menus of the analyzer's windows; "TraxMenuBar" is the canvas window's.
void laMenus_Register(MenuRegistry& menus);

struct laToolButton {
    const char* name;     // "-" for a gap
    const char* icon;     // by name
    const char* command;  // of laCanvas_Command
    const char* tip;      // long help for the message line, "@@", short tip
    const char* text;     // of a button that shows no icon
    bool isGap() const { return name[0] == '-'; }
    std::string longHelp() const;
    std::string toolTip() const;
};
// The buttons of "TraxBtns" in their order.
std::span<const laToolButton> laMenus_ToolBar();

struct laButtonState {
    bool enabled = true;
    bool pressed = false;
    bool operator==(const laButtonState&) const = default;
};
// The states of all buttons, in the order of the tool bar. True when one changed.
bool laCanvas_UpdateButtons(const _LaCanvasData& canvas, std::vector<laButtonState>& states);
// "NoRefresh" alone: pressed while the canvas does not follow a live source.
bool laCanvas_UpdateFreezeButton(const _LaCanvasData& canvas, std::vector<laButtonState>& states);
// True when a command can do something now, by the rules of menus and buttons.
bool laCanvas_CanDo(const _LaCanvasData& canvas, std::string_view command);

// To be called before the menu of this name opens over the canvas: enables its rows, sets check marks and
// labels, fills in recent files and bookmarks. The menu may be redefined by it.
void laCanvas_MenuHook(MenuRegistry& menus, std::string_view name, const _LaCanvasData& canvas);
// Redefines "TraxBookmark" with the canvas's bookmarks, unless it has them already.
void laCanvas_BuildBookmarkMenu(MenuRegistry& menus, const _LaCanvasData& canvas);
