#include "chronoweave/traxfunc/input/menus.h"

#include <algorithm>
#include <string_view>

#include "chronoweave/traxfunc/list/task_list.h"
#include "chronoweave/traxfunc/model/time.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

struct MenuText {
    const char* name;
    const char* text;
};

constexpr const char* recentMark = " TRVDataFiles";  // ends the label of a row for a recent file

// Of windows with a table.
constexpr const char* tableFile =
    "{'&Copy' 'C-c' Copy} {'Save &As CSV...' 'C-s' SaveCsv} {\x01} {&Close Close}";

// A separator row's text is the byte 1.
constexpr MenuText menuTexts[] = {
    {"TraxMenuBar",
     "{&File ->TraxFile}{&View ->TraxView} {&Report ->TraxReport} {&Config ->TraxConfig} "
     "{T&arget ->TraxControl} {&Tools ->TraxTools}{&Bookmarks ->TraxBookmark} {&Help ->TraxHelp}"},
    {"TraxFile",
     "{'&New Window' NewWindow} {\x01} {'&Open...' Open} {\x01} "
     "{'&1 TRVDataFiles' Open} {'&2 TRVDataFiles' Open} {'&3 TRVDataFiles' Open} "
     "{'&4 TRVDataFiles' Open} {'&5 TRVDataFiles' Open} {'&6 TRVDataFiles' Open} "
     "{'&7 TRVDataFiles' Open} {'&8 TRVDataFiles' Open} {'&9 TRVDataFiles' Open} {\x01} "
     "{'&Merge Raw Event Files...' TraxMergeEventFiles} {\x01} {'&Print...' TraxPrint} {\x01} "
     "{'&Quit' 'Ctrl+Q' Quit}"},
    {"TraxView",
     "{'&Search...' Search} {'Search Intervals...' SearchInterval} "
     "{'Ne&xt Hit' 'F3' NextHit} {'Pre&vious Hit' 'Shift+F3' PrevHit} {\x01} "
     "{'Zoom &In' ZoomIn} {'Zoom To &Range' ZoomToRange} {'Zoom &Out' ZoomOut} "
     "{'Change &Hidden Task List' HideTasks} {\x01} "
     "{'&Earliest History Item' BottomHistory} {'&Previous History Item' PrevHistory} "
     "{'&Next History Item' NextHistory} {'&Latest History Item' TopHistory} {\x01} "
     "{'&Delete Object Views' DelViews} {\x01} {'&Flat View' FlatView} {\x01} "
     "{'&Go To Time...' 'Ctrl+G' GoToTime} {'Re&ad On' 'F5' ReadOn} {'Fi&t' ShowAll} {'Event Ta&ble' "
     "'Ctrl+E' EventTable}"},
    {"TraxReport",
     "{'&Objects...' ReportObjects} {\x01} {'&Task...' ReportTask} {\x01} {'&General...' ReportGeneral}"},
    {"TraxConfig",
     "{'&Legend' Legend} {\x01} {'&Refresh Interval...' RefreshGap} {\x01} "
     "{'Canvas &Name...' CanvasName} {\x01} {'&Time Unit...' TimeUnit} {\x01} "
     "{'&Icon Buttons' IconButton} {'&Scroll Bars...' ScrollPos} {'&Options...' Options}"},
    {"TraxTools",
     "{'&VOREL Launcher...' vorelbar} {\x01} {'&Editor...' editor} {'&NotePad...' notepad} {\x01} "
     "{'&Command List...' 'Ctrl+Shift+P' Palette}"},
    {"TraxControl", "{&KORVANTIS Korvantis} {&ThreadX Threadx}"},
    {"TraxHelp",
     "{&Manuals ->ManualsMenu} {\x01} {'&About VOREL Chronoweave...' About} {\x01} {'&Keys...' KeySheet}"},
    {"TraxBookmark",
     "{'&Add Bookmarks for Selection' AddBookmark} {'&Delete All Bookmarks' DeleteBookmarks} "
     "{'&Edit Bookmarks...' EditBookmarks}"},
    {"TraxStatisticsMenu", "{&File ->TraxStatisticsFile}"},
    {"TraxStatisticsFile", tableFile},
    {"TraxGenStatisticsMenu", "{&File ->TraxGenStatisticsFile}"},
    {"TraxGenStatisticsFile", tableFile},
    {"TraxSearchMenu", "{&File ->TraxSearchFile}"},
    {"TraxSearchFile", tableFile},
    {"TraxLegendMenu", "{&File ->TraxLegendFile}"},
    {"TraxLegendFile", "{&Close Close}"},
};

constexpr laToolButton gap = {"-", "", "", "", ""};
constexpr laToolButton toolTable[] = {
    {"Open", "Open", "open", "Choose a data file and show it in the canvas@@Open Data File", "Open"},
    gap,
    {"ZoomIn", "zoomin", "ZoomIn", "Zoom in at the canvas center by 2X@@Zoom in at Canvas Center", "Zoom In"},
    {"ZoomToRange", "rzoomin", "ZoomToRange", "Show the selected range in the whole canvas@@Zoom to Range",
     "To Range"},
    {"ZoomOut", "zoomout", "ZoomOut", "Zoom out at the canvas center by 2X@@Zoom out at Canvas Center",
     "Zoom Out"},
    gap,
    {"TimeUnit", "unit", "changeunit", "Change tick unit@@Change Tick Unit", "Unit"},
    {"Legend", "legend", "Legend", "Show legend@@Legend", "Legend"},
    gap,
    {"Search", "search", "Search", "Search various objects@@Search Objects", "Search"},
    {"Search_Interval", "search_interval", "SearchInterval", "Search intervals@@Search Intervals",
     "Intervals"},
    gap,
    {"BottomHistory", "leftend", "BottomHistory", "Show the first image in history@@Show the First Image",
     "First"},
    {"PrevHistory", "arrowleft20", "PrevHistory",
     "Show the previous image in history@@Show the Previous Image", "Previous"},
    {"NextHistory", "arrowright20", "NextHistory", "Show the next image in history@@Show the Next Image",
     "Next"},
    {"TopHistory", "rightend", "TopHistory", "Show the latest image in history@@Show the Latest Image",
     "Latest"},
    gap,
    {"DelViews", "viewdel", "DelViews", "Delete all view windows@@Delete View Windows", "Close Views"},
    gap,
    {"NoRefresh", "freeze", "NoRefresh",
     "Switch between freezing and refreshing the canvas in live-mode@@Control Refreshing Canvas in "
     "Live-mode",
     "Freeze"},
    {"TraxPrint", "print", "TraxPrint", "Print the contents@@Print", "Print"},
    gap,
    {"Help", "help", "Help", "Display online help for VOREL Chronoweave@@Display Online Help", "Help"},
    gap,
    {"Quit", "quit", "Quit", "Close the current canvas@@Close Canvas", "Quit"},
};

bool can_start_intervals(const _LaCanvasData& canvas) {
    const auto& events = canvas.looks.legend.events;
    return canvas.options.allForIntervalSearch ||
           std::any_of(events.begin(), events.end(), [](const LegendEvent& event) {
               return (event.flags & LegendEvent_IntervalSearch) != 0;
           });
}

using Rule = bool (*)(const _LaCanvasData&);
struct CommandRule {
    const char* command;
    Rule can;
};

constexpr Rule withStore = [](const _LaCanvasData& c) { return c.source.store != nullptr; };
constexpr Rule withUnits = [](const _LaCanvasData& c) {
    return c.source.store != nullptr && c.axis.timeMode != Time_Tick;
};

constexpr CommandRule ruleTable[] = {
    {"TraxPrint", withStore},
    {"TopHistory",
     [](const _LaCanvasData& c) {
         return c.past.historyNewest >= 0 && c.past.historyCurrent != c.past.historyNewest;
     }},
    {"BottomHistory",
     [](const _LaCanvasData& c) {
         return c.past.historyOldest >= 0 && c.past.historyCurrent != c.past.historyOldest;
     }},
    {"PrevHistory",
     [](const _LaCanvasData& c) {
         return c.past.historyCurrent >= 0 && c.past.historyCurrent != c.past.historyOldest;
     }},
    {"NextHistory",
     [](const _LaCanvasData& c) {
         return c.past.historyCurrent >= 0 && c.past.historyCurrent != c.past.historyNewest;
     }},
    {"Search", withStore},
    {"SearchInterval",
     [](const _LaCanvasData& c) { return c.source.store != nullptr && can_start_intervals(c); }},
    {"NextHit", [](const _LaCanvasData& c) { return !c.marks.hits.empty(); }},
    {"PrevHit", [](const _LaCanvasData& c) { return !c.marks.hits.empty(); }},
    {"FlatView", laCanvas_HasHierarchy},
    {"DelViews", [](const _LaCanvasData& c) { return !c.calls.viewWindows.empty(); }},
    {"ReportObjects", withStore},
    {"ReportTask", withStore},
    {"ReportGeneral", withStore},
    {"RefreshGap", withStore},
    {"Legend", [](const _LaCanvasData& c) { return !c.looks.legend.empty(); }},
    {"TimeUnit", withUnits},
    {"Korvantis",
     [](const _LaCanvasData& c) {
         return c.source.store == nullptr || c.source.osKind == Os_Korvantis || c.calls.upper.serverConnected;
     }},
    {"Threadx", [](const _LaCanvasData&) { return false; }},
    {"Tolmund", [](const _LaCanvasData&) { return false; }},
    {"AddBookmark", [](const _LaCanvasData& c) { return c.marks.cursor[0] >= 0 || c.marks.cursor[1] >= 0; }},
    {"EditBookmarks", [](const _LaCanvasData& c) { return !c.marks.bookmarks.empty(); }},
    {"DeleteBookmarks", [](const _LaCanvasData& c) { return !c.marks.bookmarks.empty(); }},
    // What an empty canvas has nothing for.
    {"changeunit", withUnits},
    {"ZoomIn", withStore},
    {"ZoomToRange", withStore},
    {"ZoomOut", withStore},
    {"HideTasks", withStore},
    {"GoToTime", withStore},
    {"ShowAll", withStore},
    {"ReadOn", [](const _LaCanvasData& canvas) { return canvas.calls.upper.sourceGrows; }},
    {"EventTable", withStore},
};

void set_flag(MenuRow& row, unsigned flag, bool on) {
    row.flags = on ? row.flags | flag : row.flags & ~flag;
}

void enable_rows(MenuResource& menu, const _LaCanvasData& canvas) {
    for (MenuRow& row : menu.rows)
        if (!row.child) set_flag(row, MenuRow_Disabled, !laCanvas_CanDo(canvas, row.body));
}

void label_row(MenuRegistry& menus, MenuResource& menu, std::string_view command, std::string label) {
    if (MenuRow* row = menu.rowOf(command)) menus.SetLabel(menu, *row, std::move(label));
}

void check_row(MenuResource& menu, std::string_view command, bool on) {
    MenuRow* row = menu.rowOf(command);
    if (!row) return;
    set_flag(*row, MenuRow_Checkable, true);
    set_flag(*row, MenuRow_Checked, on);
}

// Rows made for recent files keep their mark in alternateLabel; those with no file are hidden.
void fill_recent(MenuRegistry& menus, MenuResource& menu, const _LaCanvasData& canvas) {
    const auto files =
        canvas.calls.upper.recentFiles ? canvas.calls.upper.recentFiles() : std::vector<std::string>();
    size_t number = 0;
    for (MenuRow& row : menu.rows) {
        if (!row.alternateLabel.ends_with(recentMark)) continue;
        const bool there = number < files.size();
        set_flag(row, MenuRow_Hidden, !there);
        ++number;
        menus.SetLabel(menu, row,
                       there ? "&" + std::to_string(number) + " " + menu_PlainLabel(files[number - 1])
                             : row.alternateLabel);
        row.body = there ? "Open " + files[number - 1] : "Open";
    }
}

std::string report_label(const _LaCanvasData& canvas) {
    const std::string term = menu_PlainLabel(canvas.list.objectTerm);
    const char first = canvas.list.objectTerm.empty() ? '\0' : text_lower(canvas.list.objectTerm.front());
    return (first == 'o' || first == 'g' ? "" : "&") + term +
           "...";  // &Objects and &General have the letters
}

}  // namespace

void laMenus_Register(MenuRegistry& menus) {
    for (const MenuText& menu : menuTexts) menus.Define(menu.name, menu.text);
    menus.Defer("ManualsMenu", "{'&Chronoweave Manual' Help}");
    MenuResource* file = menus.Find("TraxFile", false);
    for (MenuRow& row : file->rows)
        if (row.label.ends_with(recentMark)) row.alternateLabel = row.label;
}

std::string laToolButton::longHelp() const {
    const std::string_view text = tip;
    return std::string(text.substr(0, text.find("@@")));
}

std::string laToolButton::toolTip() const {
    const std::string_view text = tip;
    const size_t at = text.find("@@");
    return at == std::string_view::npos ? std::string(text) : std::string(text.substr(at + 2));
}

std::span<const laToolButton> laMenus_ToolBar() {
    return toolTable;
}

bool laCanvas_CanDo(const _LaCanvasData& canvas, std::string_view command) {
    for (const CommandRule& rule : ruleTable)
        if (text_equal_nocase(command, rule.command)) return rule.can(canvas);
    return true;
}

bool laCanvas_UpdateButtons(const _LaCanvasData& canvas, std::vector<laButtonState>& states) {
    const std::vector<laButtonState> before = states;
    states.resize(std::size(toolTable));
    for (size_t i = 0; i < std::size(toolTable); ++i)
        states[i].enabled = laCanvas_CanDo(canvas, toolTable[i].command);
    laCanvas_UpdateFreezeButton(canvas, states);
    return states != before;
}

bool laCanvas_UpdateFreezeButton(const _LaCanvasData& canvas, std::vector<laButtonState>& states) {
    bool changed = false;
    for (size_t i = 0; i < std::min(states.size(), std::size(toolTable)); ++i) {
        if (std::string_view(toolTable[i].name) != "NoRefresh") continue;
        const bool pressed = !canvas.source.liveRefresh;
        changed = states[i].pressed != pressed;
        states[i].pressed = pressed;
    }
    return changed;
}

void laCanvas_MenuHook(MenuRegistry& menus, std::string_view name, const _LaCanvasData& canvas) {
    if (name == "TraxBookmark") laCanvas_BuildBookmarkMenu(menus, canvas);
    MenuResource* menu = menus.Find(name, false);
    if (!menu) return;
    if (name == "TraxFile") {
        fill_recent(menus, *menu, canvas);
    } else if (name == "TraxView") {
        label_row(menus, *menu, "HideTasks",
                  "Change &Hidden " + menu_PlainLabel(canvas.list.objectTerm) + " List");
        check_row(*menu, "FlatView", canvas.list.flatView);
        check_row(*menu, "EventTable", canvas.calls.upper.eventTable);
    } else if (name == "TraxReport") {
        label_row(menus, *menu, "ReportTask", report_label(canvas));
    } else if (name == "TraxConfig") {
        check_row(*menu, "IconButton", canvas.calls.upper.iconButtons);
    } else if (name == "TraxBookmark") {
        const bool two = canvas.marks.cursor[0] >= 0 && canvas.marks.cursor[1] >= 0 &&
                         canvas.marks.cursor[0] != canvas.marks.cursor[1];
        label_row(menus, *menu, "AddBookmark",
                  two ? "&Add Bookmarks for Selection" : "&Add Bookmark for Selection");
    }
    enable_rows(*menu, canvas);
}

void laCanvas_BuildBookmarkMenu(MenuRegistry& menus, const _LaCanvasData& canvas) {
    std::string text = "menu TraxBookmark {";
    text += std::string(" {'&Add Bookmark' ") + "AddBookmark" + "} ";
    text += std::string(" {'&Delete All Bookmarks' ") + "DeleteBookmarks" + "} ";
    text += std::string(" {'&Edit Bookmarks...' ") + "EditBookmarks" + "} ";
    if (!canvas.marks.bookmarks.empty()) text += " {'-'}";
    for (size_t i = 0; i < canvas.marks.bookmarks.size() && i + 8 < MenuRegistry::mostRows; ++i)
        text += " {" + menu_Quote(menu_PlainLabel(text_unescape(canvas.marks.bookmarks[i].label))) +
                " ShowBookmark " + std::to_string(i) + "} ";
    text += "}";
    // As it stands the menu may be open right now.
    const MenuResource* menu = menus.Find("TraxBookmark", false);
    if (menu && text == "menu TraxBookmark {" + menu->text + "}") return;
    menus.HoldUpdates(true);
    menus.DefineStatement(text);
    menus.HoldUpdates(false);
}
