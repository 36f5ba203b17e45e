#include "chronoweave/traxfunc/input/context_menu.h"

#include <algorithm>

#include "chronoweave/traxfunc/canvas/rows.h"
#include "chronoweave/traxfunc/input/actions.h"
#include "chronoweave/traxfunc/input/bookmarks.h"
#include "chronoweave/traxfunc/input/command_table.h"
#include "chronoweave/traxfunc/input/commands.h"
#include "chronoweave/traxfunc/input/debugger.h"
#include "chronoweave/traxfunc/input/hit.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

constexpr const char* noDebugger = "No debugger is connected that could.";

// Rows as they are put together.
class Rows {
  public:
    explicit Rows(std::string title) { menu_.title = std::move(title); }
    void Add(std::string text, bool enabled, const char* command = "") {
        PopUpRow row{std::move(text), enabled, {}};
        if (const laCommand* known = laCommands_Find(command); known && *command)
            row.key = laCommand_FirstKey(*known);
        menu_.rows.push_back(std::move(row));
        menu_.commands.push_back(command);
    }
    void AddChecked(std::string text, bool enabled, bool checked, const char* command) {
        Add(std::move(text), enabled, command);
        menu_.rows.back().checked = checked;
    }
    // A row of the debugger's, which says why it can't be chosen.
    void AddDebugger(std::string text, bool enabled, const char* command) {
        Add(std::move(text), enabled, command);
        if (!enabled) menu_.rows.back().tip = noDebugger;
    }
    void AddGap() { Add(popUpSeparator, false); }
    laContextMenu Menu() { return std::move(menu_); }

  private:
    laContextMenu menu_;
};

// A name inside a menu's text.
std::string menu_text(std::string_view name) {
    std::string text;
    for (const char c : text_utf8(name)) text += c == '&' ? std::string("&&") : std::string(1, c);
    return text;
}

// The object of a lane as the rows name it.
std::string object_text(const _LaCanvasData& canvas, const laItem_Line& lane) {
    if (!lane.hasName) return canvas.list.objectTerm + gen_format(" 0x%x", lane.objectId);
    return canvas.list.objectTerm + " \"" + menu_text(laTask_WithoutFake(lane.name)) + '"';
}

std::string hidden_list_row(const _LaCanvasData& canvas) {
    return "&Change Hidden " + canvas.list.objectTerm + " List";
}

bool shows_ticks(const _LaCanvasData& canvas) {
    return canvas.axis.timeMode == Time_Tick;
}

bool is_selection(const _LaCanvasData& canvas) {
    return canvas.marks.cursor[0] >= 0 && canvas.marks.cursor[1] >= 0 &&
           canvas.marks.cursor[0] != canvas.marks.cursor[1];
}

}  // namespace

laContextMenu laCanvas_CanvasMenu(_LaCanvasData& canvas, int x, int y, const laDebuggerCan& can) {
    laHit hit;
    const bool any = laCanvas_HitTest(canvas, x, y, false, &hit);
    const laItem_Line* lane = laHit_Object(canvas, hit) ? &canvas.items.lanes[hit.lane] : nullptr;
    canvas.hand.place = {x, y, hit.time, lane ? lane->objectId : laAgentId, hit.icon};
    const bool whole = canvas.view.viewLow <= 0 && canvas.view.viewHigh >= canvas.source.totalLength;
    const bool marked = laBookmark_Find(canvas, hit.time, laBookmarkMatch::Near) != nullptr;
    const std::string object = lane ? object_text(canvas, *lane) : "Clicked " + canvas.list.objectTerm;
    const char* inDebugger =
        shows_ticks(canvas) ? "Show Tick Position in &Debugger" : "Show Time in &Debugger";
    Rows rows("Please choose");
    rows.Add("Zoom into &Selection", is_selection(canvas), "ZoomToRange");
    rows.Add("Zoom &In", true, "ZoomInHere");
    rows.Add("Zoom &Out", !whole, "ZoomOutHere");
    rows.AddGap();
    rows.Add("&View Object", any, "ViewHere");
    rows.AddGap();
    rows.Add("&Hide " + object, lane != nullptr, "HideHere");
    rows.Add(hidden_list_row(canvas), true, "HideTasks");
    const bool attaches = can.attaches() && lane && laDebugger_IsTask(*lane) && !shows_ticks(canvas);
    rows.AddDebugger("Debug " + object, attaches, laDebugger_AttachHere);
    rows.AddGap();
    rows.AddDebugger(inDebugger, can.listens && can.shows, laDebugger_ShowHere);
    rows.AddDebugger("Show &Rewindscope Debugger", can.listens && can.timeTravel, laDebugger_PastHere);
    rows.AddGap();
    rows.Add("Sort Around Clicked Event", hit.icon.has_value(), "SortAroundHere");
    rows.AddGap();
    rows.AddChecked("&Flat View", true, canvas.list.flatView, "FlatView");
    rows.AddGap();
    rows.Add("&Add Bookmark", !marked, "AddBookmarkHere");
    rows.Add("Delete &Bookmark", marked, "DeleteBookmarkHere");
    return rows.Menu();
}

laContextMenu laCanvas_ListMenu(const _LaCanvasData& canvas, const MslObjectEntry* clicked,
                                const laDebuggerCan& can) {
    const std::vector<MslObjectEntry*> selected = canvas.taskList->SelectedEntries();
    const bool group = clicked && clicked->payload == laNoLane;
    const bool hides = std::any_of(selected.begin(), selected.end(), [&](const MslObjectEntry* entry) {
        return laList_HasObject(canvas, *entry);
    });
    std::string info = "Clicked Object", hide = "Info of Clicked Object", debug = canvas.list.objectTerm;
    if (selected.size() > 1) {
        info = hide = debug = laCanvas_Plural(canvas.list.objectTerm);
    } else if (clicked) {
        info = hide = debug = group ? "\"" + menu_text(clicked->name) + '"'
                                    : object_text(canvas, canvas.items.lanes[clicked->payload]);
    }
    Rows rows("Operations");
    rows.Add("&View Info of " + info, clicked != nullptr && laList_IsObject(canvas, *clicked),
             "ViewSelected");
    rows.AddGap();
    rows.Add("&Hide " + hide, clicked != nullptr && hides, "HideSelected");
    rows.Add(hidden_list_row(canvas), true, "HideTasks");
    const bool task =
        clicked && !shows_ticks(canvas) &&
        std::any_of(selected.begin(), selected.end(), [&](const MslObjectEntry* entry) {
            return laList_IsObject(canvas, *entry) && laDebugger_IsTask(canvas.items.lanes[entry->payload]);
        });
    rows.AddDebugger("D&ebug " + debug, can.attaches() && task,
                     laDebugger_AttachSelected);  // D is the order's
    rows.AddGap();
    rows.AddDebugger("Show &Rewindscope Debugger", can.listens && can.timeTravel && task,
                     laDebugger_PastSelected);
    rows.AddGap();
    rows.Add(laCanvas_SortFieldLabel(canvas), true, "SortField");
    rows.Add(laCanvas_SortOrderLabel(canvas), true, "SortOrder");
    rows.AddGap();
    rows.AddChecked("&Flat View", laCanvas_HasHierarchy(canvas), canvas.list.flatView, "FlatView");
    rows.AddGap();
    rows.AddChecked("&Only Active in View", true, canvas.list.onlyActive, "OnlyActive");
    rows.AddChecked("&Most Active First", true, canvas.list.mostActiveFirst, "MostActiveFirst");
    return rows.Menu();
}

void laContextMenu_Choose(_LaCanvasData& canvas, const laContextMenu& menu, int chosen) {
    const auto row = static_cast<size_t>(chosen);
    if (chosen < 0 || row >= menu.rows.size() || !menu.rows[row].enabled || !*menu.commands[row]) return;
    laCanvas_Command(canvas, menu.commands[row]);
}
