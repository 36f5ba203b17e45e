#include "chronoweave/traxfunc/input/command_table.h"

#include <algorithm>

#include "chronoweave/traxfunc/canvas/followed_rows.h"
#include "chronoweave/traxfunc/canvas/rows.h"
#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/input/actions.h"
#include "chronoweave/traxfunc/input/bookmarks.h"
#include "chronoweave/traxfunc/input/debugger.h"
#include "chronoweave/traxfunc/input/history.h"
#include "chronoweave/traxfunc/input/navigate.h"
#include "chronoweave/traxfunc/input/time_unit.h"
#include "chronoweave/traxfunc/input/zoom.h"
#include "chronoweave/traxfunc/model/time.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

constexpr double keyZoom = 1.25;  // as one notch of the wheel
constexpr int keyColumns = 60;

// What stands behind the name, else the pointer's place, else the middle.
int column_of(const _LaCanvasData& canvas, const laArgument& argument) {
    const int width = std::max(0, canvas.graph->width);
    if (argument.number && *argument.number < static_cast<uint64_t>(width))
        return static_cast<int>(*argument.number);
    return canvas.graph->pointerColumn ? canvas.graph->pointerColumn() : width / 2;
}

using Canvas = _LaCanvasData;

template <bool (*move)(Canvas&)>
bool history(Canvas& canvas, const laArgument&) {
    return move(canvas);
}
template <auto act>
bool done(Canvas& canvas, const laArgument&) {
    act(canvas);
    return true;
}
template <bool (*act)(Canvas&)>
bool tried(Canvas& canvas, const laArgument&) {
    return act(canvas);
}
template <ZoomMode mode>
bool zoom_by_cursors(Canvas& canvas, const laArgument&) {
    return laCanvas_Zoom(canvas, mode);
}
bool zoom_in(Canvas& canvas, const laArgument&) {
    const double quarter = canvas.view.viewLength / 4;
    return laCanvas_Zoom(canvas, canvas.view.viewLow + quarter, canvas.view.viewLow + 3 * quarter);
}
bool zoom_out(Canvas& canvas, const laArgument&) {
    return laCanvas_ZoomOut(canvas);
}
bool zoom_in_at(Canvas& canvas, const laArgument& argument) {
    laCanvas_ZoomAtColumn(canvas, column_of(canvas, argument), 1 / keyZoom);
    return true;
}
bool zoom_out_at(Canvas& canvas, const laArgument& argument) {
    laCanvas_ZoomAtColumn(canvas, column_of(canvas, argument), keyZoom);
    return true;
}
bool delete_bookmarks(Canvas& canvas, const laArgument&) {
    laBookmark_DeleteAll(canvas);
    return true;
}
bool show_bookmark(Canvas& canvas, const laArgument& argument) {
    return laBookmark_Show(canvas, argument.number ? static_cast<size_t>(*argument.number) : SIZE_MAX);
}
template <bool last>
bool scroll_to_end(Canvas& canvas, const laArgument&) {
    laCanvas_ScrollToEnd(canvas, last);
    return true;
}
template <bool forward>
bool scroll_page(Canvas& canvas, const laArgument&) {
    laCanvas_ScrollPage(canvas, forward);
    return true;
}
template <int columns>
bool scroll_columns(Canvas& canvas, const laArgument&) {
    laCanvas_ScrollColumns(canvas, columns);
    return true;
}
template <int rows>
bool scroll_rows(Canvas& canvas, const laArgument&) {
    laCanvas_ScrollRows(canvas, int64_t{rows} * canvas.looks.rowHeight);
    return true;
}

bool zoom_in_here(Canvas& canvas, const laArgument&) {
    laCanvas_ZoomInAt(canvas, canvas.hand.place.time);
    return true;
}
bool zoom_out_here(Canvas& canvas, const laArgument&) {
    laCanvas_ZoomOutAt(canvas, canvas.hand.place.time);
    return true;
}
bool add_bookmark_here(Canvas& canvas, const laArgument&) {
    laBookmark_Add(canvas, canvas.hand.place.objectId, canvas.hand.place.time);
    return true;
}
bool delete_bookmark_here(Canvas& canvas, const laArgument&) {
    return laBookmark_Delete(canvas, canvas.hand.place.time, laBookmarkMatch::Near);
}

bool not_implemented(Canvas& canvas, const laArgument&) {
    laCanvas_Refuse(canvas, "Not implemented.");
    return false;
}
bool not_supported(Canvas& canvas, const laArgument& argument) {
    laCanvas_Refuse(canvas,
                    gen_format("Sorry, <%s> is not supported yet.", std::string(argument.text).c_str()));
    return false;
}
bool no_help(Canvas& canvas, const laArgument&) {
    laCanvas_Refuse(canvas, "Sorry, on-line help is not supported.");
    return false;
}
bool no_window(Canvas& canvas, const laArgument&) {
    laCanvas_Refuse(canvas, "Can't create new window");
    return false;
}

// Refusals that tell the user why.
bool unit_can_change(Canvas& canvas) {
    return !laTimeUnit_Refused(canvas);
}
bool has_source(Canvas& canvas) {
    if (canvas.source.store) return true;
    laCanvas_Refuse(canvas, "No data source is loaded.");
    return false;
}
bool was_opened(Canvas& canvas) {
    if (canvas.source.store) return true;
    laCanvas_Refuse(canvas, "You did not open a VOREL Chronoweave source file.");
    return false;
}
bool has_tables(Canvas& canvas) {
    if (!canvas.looks.legend.empty()) return true;
    laCanvas_Refuse(canvas, "Legend is not loaded until you open a VOREL Chronoweave source file.");
    return false;
}

// When commands can be used.
bool with_store(const Canvas& c) {
    return c.source.store != nullptr;
}
bool with_units(const Canvas& c) {
    return c.source.store != nullptr && c.axis.timeMode != Time_Tick;
}
bool with_starts(const Canvas& c) {
    const auto& events = c.looks.legend.events;
    return c.source.store != nullptr &&
           (c.options.allForIntervalSearch ||
            std::any_of(events.begin(), events.end(), [](const LegendEvent& event) {
                return (event.flags & LegendEvent_IntervalSearch) != 0;
            }));
}
bool with_legend(const Canvas& c) {
    return !c.looks.legend.empty();
}
bool with_hits(const Canvas& c) {
    return !c.marks.hits.empty();
}
bool with_bookmarks(const Canvas& c) {
    return !c.marks.bookmarks.empty();
}
bool with_views(const Canvas& c) {
    return !c.calls.viewWindows.empty();
}
bool with_cursor(const Canvas& c) {
    return c.marks.cursor[0] >= 0 || c.marks.cursor[1] >= 0;
}
bool source_grows(const Canvas& c) {
    return c.calls.upper.sourceGrows;
}
bool before_newest(const Canvas& c) {
    return c.past.historyNewest >= 0 && c.past.historyCurrent != c.past.historyNewest;
}
bool behind_oldest(const Canvas& c) {
    return c.past.historyOldest >= 0 && c.past.historyCurrent != c.past.historyOldest;
}
bool has_previous(const Canvas& c) {
    return c.past.historyCurrent >= 0 && c.past.historyCurrent != c.past.historyOldest;
}
bool has_next(const Canvas& c) {
    return c.past.historyCurrent >= 0 && c.past.historyCurrent != c.past.historyNewest;
}
bool target_can_be_called(const Canvas& c) {
    return c.source.store == nullptr || c.source.osKind == Os_Korvantis || c.calls.upper.serverConnected ||
           c.calls.upper.targetPanelOpened;
}
bool never(const Canvas&) {
    return false;
}

// Row by row: files; zooming and moving; rows and history; analysis; settings; tools; bookmarks; help; then
// what no list shows.
constexpr laCommand table[] = {
    {.name = "NewWindow",
     .label = "&New Window",
     .keys = "Ctrl+N",
     .tip = "Another window, empty",
     .page = "start",
     .run = no_window},
    {.name = "Open",
     .label = "&Open...",
     .keys = "Ctrl+O",
     .tip = "Open Data File",
     .help = "Choose a data file and show it in the canvas",
     .page = "start",
     .icon = "Open",
     .takes = CommandTakes::Text,
     .missing = "Opening a file"},
    {.name = "TraxMergeEventFiles",
     .label = "&Merge Raw Event Files...",
     .tip = "Merge raw event files into one",
     .page = "merge",
     .missing = "Merging raw event files"},
    {.name = "TraxPrint",
     .label = "&Print...",
     .keys = "Ctrl+P",
     .tip = "Print",
     .help = "Print the contents",
     .page = "print",
     .icon = "print",
     .can = with_store,
     .missing = "Printing"},
    {.name = "Quit",
     .label = "&Quit",
     .keys = "Ctrl+Q, Ctrl+W",
     .tip = "Close Canvas",
     .help = "Close the current canvas",
     .icon = "quit",
     .missing = "Closing the window"},

    {.name = "ZoomIn",
     .label = "Zoom &In",
     .tip = "Zoom in at Canvas Center",
     .help = "Zoom in at the canvas center by 2X",
     .page = "navigate",
     .icon = "zoomin",
     .can = with_store,
     .run = zoom_in},
    {.name = "ZoomToRange",
     .label = "Zoom To &Range",
     .pictureKeys = "Z",
     .tip = "Zoom to Range",
     .help = "Show the selected range in the whole canvas",
     .page = "navigate",
     .icon = "rzoomin",
     .can = with_store,
     .run = zoom_by_cursors<ZoomMode::Selection>},
    {.name = "ZoomOut",
     .label = "Zoom &Out",
     .tip = "Zoom out at Canvas Center",
     .help = "Zoom out at the canvas center by 2X",
     .page = "navigate",
     .icon = "zoomout",
     .can = with_store,
     .run = zoom_out},
    {.name = "ZoomInAt",
     .label = "Zoom In at Pointer",
     .pictureKeys = "W, +, =",
     .tip = "Zoom in at the pointer",
     .page = "navigate",
     .can = with_store,
     .takes = CommandTakes::Number,
     .run = zoom_in_at},
    {.name = "ZoomOutAt",
     .label = "Zoom Out at Pointer",
     .pictureKeys = "S, -",
     .tip = "Zoom out at the pointer",
     .page = "navigate",
     .can = with_store,
     .takes = CommandTakes::Number,
     .run = zoom_out_at},
    {.name = "ShowAll",
     .label = "Fi&t",
     .pictureKeys = "0",
     .tip = "Show the whole trace",
     .page = "navigate",
     .can = with_store,
     .run = done<laCanvas_ShowAll>},
    {.name = "Focus",
     .label = "Centre Selection",
     .pictureKeys = "F",
     .tip = "Centre the selection; again: fit it",
     .page = "navigate",
     .can = with_store,
     .run = tried<laCanvas_FocusSelection>},
    {.name = "GoToTime",
     .label = "&Go To Time...",
     .keys = "Ctrl+G",
     .tip = "Go to a time or a range",
     .page = "navigate",
     .can = with_store,
     .missing = "Going to a time"},
    {.name = "ScrollLeft",
     .label = "Scroll Left",
     .pictureKeys = "A, Left",
     .tip = "Scroll back in time",
     .page = "navigate",
     .can = with_store,
     .run = scroll_columns<-keyColumns>},
    {.name = "ScrollRight",
     .label = "Scroll Right",
     .pictureKeys = "D, Right",
     .tip = "Scroll on in time",
     .page = "navigate",
     .can = with_store,
     .run = scroll_columns<keyColumns>},
    {.name = "ScrollUp",
     .label = "Scroll Up",
     .pictureKeys = "Up",
     .tip = "Scroll up by a row",
     .page = "navigate",
     .can = with_store,
     .run = scroll_rows<-1>},
    {.name = "ScrollDown",
     .label = "Scroll Down",
     .pictureKeys = "Down",
     .tip = "Scroll down by a row",
     .page = "navigate",
     .can = with_store,
     .run = scroll_rows<1>},
    {.name = "PageLeft",
     .label = "Page Back",
     .pictureKeys = "PgUp",
     .tip = "Scroll back by a view",
     .page = "navigate",
     .can = with_store,
     .run = scroll_page<false>},
    {.name = "PageRight",
     .label = "Page On",
     .pictureKeys = "PgDown",
     .tip = "Scroll on by a view",
     .page = "navigate",
     .can = with_store,
     .run = scroll_page<true>},
    {.name = "ScrollHome",
     .label = "To the Start",
     .pictureKeys = "Home",
     .tip = "To the start of the trace",
     .page = "navigate",
     .can = with_store,
     .run = scroll_to_end<false>},
    {.name = "ScrollEnd",
     .label = "To the End",
     .pictureKeys = "End",
     .tip = "To the end of the trace",
     .page = "navigate",
     .can = with_store,
     .run = scroll_to_end<true>},
    {.name = "LeftZoomIn",
     .label = "Zoom to Left of Cursor",
     .tip = "Zoom to what lies left of the first cursor",
     .page = "navigate",
     .can = with_store,
     .run = zoom_by_cursors<ZoomMode::Left>},
    {.name = "RightZoomIn",
     .label = "Zoom to Right of Cursor",
     .tip = "Zoom to what lies right of the first cursor",
     .page = "navigate",
     .can = with_store,
     .run = zoom_by_cursors<ZoomMode::Right>},

    {.name = "HideTasks",
     .label = "Change &Hidden Task List",
     .keys = "Ctrl+H",
     .tip = "Hide and show rows",
     .page = "objects",
     .can = with_store,
     .missing = "Hiding objects"},
    {.name = "FlatView",
     .label = "&Flat View",
     .tip = "Whole names without groups",
     .page = "objects",
     .can = laCanvas_HasHierarchy,
     .run = done<laCanvas_ToggleFlatView>},
    {.name = "OnlyActive",
     .label = "Only A&ctive in View",
     .pictureKeys = "O",
     .tip = "Only Rows Active in View",
     .help = "Show only the rows that ran, had an event or changed their status in the view",
     .page = "objects",
     .icon = "onlyactive",
     .can = with_store,
     .run = done<laRows_ToggleOnlyActive>},
    {.name = "MostActiveFirst",
     .label = "&Most Active First",
     .pictureKeys = "M",
     .tip = "Most Active Rows First",
     .help = "Sort the rows by how long they ran in the view",
     .page = "objects",
     .can = with_store,
     .run = done<laRows_ToggleMostActiveFirst>},
    {.name = "BottomHistory",
     .label = "&Earliest History Item",
     .tip = "Show the First Image",
     .help = "Show the first image in history",
     .page = "navigate",
     .icon = "leftend",
     .can = behind_oldest,
     .run = history<laHistory_Bottom>},
    {.name = "PrevHistory",
     .label = "&Previous History Item",
     .keys = "Alt+Left",
     .tip = "Show the Previous Image",
     .help = "Show the previous image in history",
     .page = "navigate",
     .icon = "arrowleft20",
     .can = has_previous,
     .run = history<laHistory_Prev>},
    {.name = "NextHistory",
     .label = "&Next History Item",
     .keys = "Alt+Right",
     .tip = "Show the Next Image",
     .help = "Show the next image in history",
     .page = "navigate",
     .icon = "arrowright20",
     .can = has_next,
     .run = history<laHistory_Next>},
    {.name = "TopHistory",
     .label = "&Latest History Item",
     .tip = "Show the Latest Image",
     .help = "Show the latest image in history",
     .page = "navigate",
     .icon = "rightend",
     .can = before_newest,
     .run = history<laHistory_Top>},
    {.name = "DelViews",
     .label = "&Delete Object Views",
     .tip = "Delete View Windows",
     .help = "Delete all view windows",
     .page = "details",
     .icon = "viewdel",
     .can = with_views,
     .run = done<laCanvas_CloseViews>},
    {.name = "ReadOn",
     .label = "Re&ad On",
     .keys = "F5",
     .tip = "Take what was added to a growing file",
     .page = "start",
     .can = source_grows,
     .allowed = has_source,
     .missing = "Reading on in a growing file"},

    {.name = "Find",
     .label = "Find",
     .keys = "Ctrl+F",
     .tip = "Find a text, an event, a task, a status or a time",
     .page = "find",
     .can = with_store,
     .allowed = has_source,
     .missing = "Finding"},
    {.name = "Search",
     .label = "&Search...",
     .keys = "Ctrl+Shift+F",
     .tip = "Search Objects",
     .help = "Search various objects",
     .page = "search",
     .icon = "search",
     .can = with_store,
     .missing = "The search"},
    {.name = "SearchInterval",
     .label = "Search Intervals...",
     .tip = "Search Intervals",
     .help = "Search intervals",
     .page = "intervals",
     .icon = "search_interval",
     .can = with_starts,
     .missing = "The search for intervals"},
    {.name = "NextHit",
     .label = "Ne&xt Hit",
     .keys = "F3",
     .tip = "To the next hit of what was found last",
     .page = "search",
     .can = with_hits,
     .missing = "Going to the next hit"},
    {.name = "PrevHit",
     .label = "Pre&vious Hit",
     .keys = "Shift+F3",
     .tip = "To the previous hit of what was found last",
     .page = "search",
     .can = with_hits,
     .missing = "Going to the previous hit"},
    {.name = "EventTable",
     .label = "Event Ta&ble",
     .keys = "Ctrl+E",
     .tip = "Show or hide the events of the view",
     .page = "eventtable",
     .can = with_store,
     .allowed = has_source,
     .missing = "The table of events"},
    {.name = "SelectionPanel",
     .label = "Selection Fig&ures",
     .keys = "Ctrl+I",
     .tip = "Show or hide what happened in the selection",
     .page = "measure",
     .missing = "The figures of the selection"},
    {.name = "ReportObjects",
     .label = "&Objects...",
     .tip = "Report about all objects",
     .page = "report",
     .can = with_store,
     .allowed = has_source,
     .missing = "The report about objects"},
    {.name = "ReportTask",
     .label = "&Task...",
     .tip = "Report about one object",
     .page = "report",
     .can = with_store,
     .allowed = has_source,
     .missing = "The report about one object"},
    {.name = "ReportGeneral",
     .label = "&General...",
     .tip = "Report of counts by choice",
     .page = "report",
     .can = with_store,
     .allowed = has_source,
     .missing = "The general report"},

    {.name = "Legend",
     .label = "&Legend",
     .tip = "Legend",
     .help = "Show legend",
     .page = "legend",
     .icon = "legend",
     .can = with_legend,
     .allowed = has_tables,
     .missing = "The legend"},
    {.name = "RefreshGap",
     .label = "&Refresh Interval...",
     .tip = "Period of live reading",
     .can = with_store,
     .allowed = was_opened,
     .missing = "The refresh interval"},
    {.name = "CanvasName",
     .label = "Canvas &Name...",
     .tip = "The window's title",
     .missing = "The name of the canvas"},
    {.name = "TimeUnit",
     .label = "&Time Unit...",
     .tip = "Choose the unit of times",
     .page = "navigate",
     .can = with_units,
     .allowed = unit_can_change,
     .missing = "The time unit"},
    {.name = "changeunit",
     .label = "Next Time Unit",
     .tip = "Change Tick Unit",
     .help = "Change tick unit",
     .page = "navigate",
     .icon = "unit",
     .can = with_units,
     .run = done<laCanvas_NextTimeMode>,
     .allowed = unit_can_change},
    {.name = "IconButton",
     .label = "&Icon Buttons",
     .tip = "Icons or texts on the tool bar",
     .page = "options",
     .missing = "The look of the buttons"},
    {.name = "ScrollPos",
     .label = "&Scroll Bars...",
     .tip = "On which sides the scroll bars stand",
     .page = "options",
     .missing = "Moving the scroll bars"},
    {.name = "Options",
     .label = "&Options...",
     .tip = "Options of the program",
     .page = "options",
     .missing = "The options"},
    {.name = "NoRefresh",
     .label = "Freeze",
     .tip = "Control Refreshing Canvas in Live-mode",
     .help = "Switch between freezing and refreshing the canvas in live-mode",
     .icon = "freeze",
     .run = done<laCanvas_ToggleFreeze>},

    {.name = "Korvantis",
     .label = "&KORVANTIS",
     .tip = "Control the target",
     .can = target_can_be_called,
     .missing = "The target control for KORVANTIS"},
    // Has a row, and nobody who does it.
    {.name = "Threadx", .label = "&ThreadX", .tip = "Control the target", .can = never},
    {.name = "vorelbar",
     .label = "&VOREL Launcher...",
     .tip = "Start the launcher",
     .missing = "The launcher"},
    {.name = "editor", .label = "&Editor...", .tip = "Start the editor", .missing = "The editor"},
    {.name = "notepad", .label = "&NotePad...", .tip = "Start the notepad", .missing = "The notepad"},
    {.name = "Console",
     .label = "&Messages",
     .tip = "Bring the message console to the front",
     .page = "messages",
     .missing = "The message console"},
    {.name = "Palette",
     .label = "&Command List...",
     .keys = "Ctrl+Shift+P",
     .tip = "Find a command by its name",
     .page = "commands",
     .missing = "The list of commands"},

    {.name = "AddBookmark",
     .label = "&Add Bookmarks for Selection",
     .keys = "Ctrl+B",
     .tip = "Bookmark the cursors",
     .page = "navigate",
     .can = with_cursor,
     .run = tried<laBookmark_AddForCursors>},
    {.name = "DeleteBookmarks",
     .label = "&Delete All Bookmarks",
     .tip = "Delete all bookmarks",
     .page = "navigate",
     .can = with_bookmarks,
     .run = delete_bookmarks},
    {.name = "EditBookmarks",
     .label = "&Edit Bookmarks...",
     .tip = "The list of bookmarks",
     .page = "navigate",
     .can = with_bookmarks,
     .missing = "The list of bookmarks"},

    {.name = "Help",
     .label = "&Chronoweave Manual",
     .pictureKeys = "F1",
     .tip = "Display Online Help",
     .help = "Display online help for VOREL Chronoweave",
     .page = "start",
     .icon = "help",
     .run = no_help},
    {.name = "About",
     .label = "&About VOREL Chronoweave...",
     .tip = "Version and build",
     .missing = "The about box"},
    {.name = "KeySheet",
     .label = "&Keys...",
     .keys = "?",
     .tip = "All keys on one sheet",
     .page = "commands",
     .missing = "The list of keys"},

    // Scripts of old and other programs of the suite ask for these.
    {.name = "Close", .run = done<laCanvas_CloseSource>},
    {.name = "Save", .run = not_implemented},
    {.name = "SaveAs", .run = not_implemented},
    {.name = "CollectData", .run = not_supported},
    {.name = "ProcessData", .run = not_supported},
    {.name = "Others", .run = not_supported},
    {.name = "WaitingStatus", .run = not_supported},
    {.name = "ShowBookmark", .takes = CommandTakes::Number, .run = show_bookmark},
    // The list's menu, by the texts of its rows.
    {.name = "&Flat View", .can = laCanvas_HasHierarchy, .run = done<laCanvas_ToggleFlatView>},
    {.name = "Sort in &Ascending Order", .run = done<laCanvas_ToggleSortOrder>},
    {.name = "Sort in &Descending Order", .run = done<laCanvas_ToggleSortOrder>},
    {.name = "SortField", .run = done<laCanvas_ToggleSortField>},
    {.name = "SortOrder", .run = done<laCanvas_ToggleSortOrder>},
    {.name = "ViewSelected", .run = done<laList_ShowSelected>},
    {.name = "HideSelected", .run = done<laList_HideSelected>},
    // The picture's menu, at the place of the pointer when it was called up.
    {.name = "ZoomInHere", .run = zoom_in_here},
    {.name = "ZoomOutHere", .run = zoom_out_here},
    {.name = "ViewHere", .run = tried<laPlace_View>},
    {.name = "HideHere", .run = done<laPlace_HideObject>},
    {.name = "SortAroundHere", .run = done<laPlace_SortAround>},
    {.name = "AddBookmarkHere", .run = add_bookmark_here},
    {.name = "DeleteBookmarkHere", .run = delete_bookmark_here},
    {.name = laDebugger_AttachHere, .missing = "The debugger"},
    {.name = laDebugger_AttachSelected, .missing = "The debugger"},
    {.name = laDebugger_ShowHere, .missing = "The debugger"},
    {.name = laDebugger_PastHere, .missing = "The debugger"},
    {.name = laDebugger_PastSelected, .missing = "The debugger"},
};

// What the pointer and the window system's own keys do, for the sheet.
constexpr const char* gestures[][2] = {
    {"Ctrl+wheel", "zoom at the pointer"},
    {"Wheel", "scroll over the rows"},
    {"Shift+wheel", "scroll in time"},
    {"Drag", "select (Alt: without snapping)"},
    {"Middle drag, Space+drag", "move the picture"},
    {"Double click", "tell what is there"},
    {"Right button, menu key", "a menu about the place"},
    {"Tab, Shift+Tab", "on to the names, the fields and buttons, and back"},
    {"Alt+letter, F10", "menus"},
    {"Escape", "stop long work"},
};

bool ends_nocase(std::string_view text, std::string_view end) {
    return text.size() >= end.size() && text_equal_nocase(text.substr(text.size() - end.size()), end);
}

// Calls take for each of the texts between ", " until it gives true.
template <class Take>
bool any_key(std::string_view keys, Take take) {
    while (!keys.empty()) {
        const size_t end = std::min(keys.find(", "), keys.size());
        if (take(keys.substr(0, end))) return true;
        keys.remove_prefix(std::min(end + 2, keys.size()));
    }
    return false;
}

}  // namespace

std::span<const laCommand> laCommands_All() {
    return table;
}

const laCommand* laCommands_Find(std::string_view text, laArgument* argument) {
    laArgument unused;
    laArgument& found = argument ? *argument : unused;
    found = {text, {}, {}};
    for (const laCommand& command : table) {
        const std::string_view name = command.name;
        if (text_equal_nocase(text, name)) return &command;
        if (command.takes == CommandTakes::Nothing || !text_starts_nocase(text, name)) continue;
        if (command.takes == CommandTakes::Number && text[name.size()] != ' ') continue;
        found.rest = text.substr(name.size() + 1);
        if (command.takes == CommandTakes::Number) found.number = scan_number(found.rest);
        return &command;
    }
    // "Sort by TERM &ID": the row changes its text with the object term and the present field.
    return ends_nocase(text, " &ID") || ends_nocase(text, " &Name") ? laCommands_Find("SortField") : nullptr;
}

const laCommand* laCommands_OfKey(std::string_view key, KeyPlace place) {
    if (key.empty()) return nullptr;
    for (const laCommand& command : table) {
        const char* keys = place == KeyPlace::Window ? command.keys : command.pictureKeys;
        if (any_key(keys, [&](std::string_view one) { return text_equal_nocase(one, key); })) return &command;
    }
    return nullptr;
}

std::string laCommand_Keys(const laCommand& command) {
    const std::string window = command.keys, picture = command.pictureKeys;
    return window + (window.empty() || picture.empty() ? "" : ", ") + picture;
}

std::string laCommand_FirstKey(const laCommand& command) {
    const std::string keys = laCommand_Keys(command);
    return keys.substr(0, keys.find(", "));
}

std::string laCommand_Title(const laCommand& command) {
    std::string title;
    for (const char c : std::string_view(command.label))
        if (c != '&') title += c;
    if (title.ends_with("...")) title.resize(title.size() - 3);
    return title;
}

std::vector<laKeyLine> laCommands_KeySheet() {
    std::vector<laKeyLine> lines;
    for (const laCommand& command : table)
        if (std::string keys = laCommand_Keys(command); !keys.empty())
            lines.push_back({std::move(keys), command.tip});
    for (laKeyLine& line : laCommands_Gestures()) lines.push_back(std::move(line));
    return lines;
}

std::vector<laKeyLine> laCommands_Gestures() {
    std::vector<laKeyLine> lines;
    for (const auto& [keys, what] : gestures) lines.push_back({keys, what});
    return lines;
}
