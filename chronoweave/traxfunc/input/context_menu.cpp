#include "chronoweave/traxfunc/input/context_menu.h"

#include <algorithm>
#include <cstdlib>
#include <set>

#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/draw/draw.h"
#include "chronoweave/traxfunc/draw/layout.h"
#include "chronoweave/traxfunc/input/bookmarks.h"
#include "chronoweave/traxfunc/input/commands.h"
#include "chronoweave/traxfunc/input/view.h"
#include "chronoweave/traxfunc/model/list.h"
#include "chronoweave/traxfunc/model/time.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

using Act = std::function<void()>;

// Rows as they are put together.
class Rows {
  public:
    void Add(std::string text, bool enabled, Act act = {}) {
        shown_.push_back({std::move(text), enabled, {}});
        acts_.push_back(std::move(act));
    }
    void AddChecked(std::string text, bool enabled, bool checked, Act act) {
        Add(std::move(text), enabled, std::move(act));
        shown_.back().checked = checked;
    }
    // One that opens a dialog and so runs with the surface closed.
    void AddCommand(_LaCanvasData& canvas, std::string text, const char* command) {
        Add(std::move(text), true, [&canvas, command] { laCanvas_Command(canvas, command); });
        commands_.insert(shown_.size() - 1);
    }
    void AddGap() { Add(popUpSeparator, false); }

    laContextMenu Menu(_LaCanvasData& canvas, std::string title) {
        laContextMenu menu{std::move(title), std::move(shown_), {}};
        menu.act = [&canvas, rows = menu.rows, acts = std::move(acts_),
                    commands = std::move(commands_)](int chosen) {
            const auto row = static_cast<size_t>(chosen);
            if (chosen < 0 || row >= acts.size() || !acts[row] || !rows[row].enabled) return;
            if (commands.contains(row))
                acts[row]();
            else
                laCanvas_Paint(canvas, acts[row]);
        };
        return menu;
    }

  private:
    std::vector<PopUpRow> shown_;
    std::vector<Act> acts_;
    std::set<size_t> commands_;
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

void sort_around(_LaCanvasData& canvas, size_t icon) {
    const laItem_Bitmap item = canvas.items.bitmaps[static_cast<uint32_t>(icon)];
    const uint32_t object = canvas.items.lanes[item.lane].objectId;
    canvas.list.sortAroundEvent = true;
    laCanvas_SortAroundEvent(canvas, item.sequence);
    laCanvas_Resort(canvas);
    laCanvas_Repaint(canvas);
    laCanvas_MoveToTime(canvas, item.time, Time_Second, object, true);
}

void view_object(_LaCanvasData& canvas, int x, int y) {
    if (!laCanvas_HitTest(canvas, x, y, true, nullptr))
        laCanvas_Refuse(canvas, "There is no object at the place.");
}

bool is_selection(const _LaCanvasData& canvas) {
    return canvas.marks.cursor[0] >= 0 && canvas.marks.cursor[1] >= 0 &&
           canvas.marks.cursor[0] != canvas.marks.cursor[1];
}

// The row of the agent for hidden ones stands for no object.
bool is_object(const _LaCanvasData& canvas, const MslObjectEntry& entry) {
    return entry.lane != laNoLane && !canvas.items.lanes[entry.lane].isAgent;
}

// An object of an entry or of one below it.
bool has_object(const _LaCanvasData& canvas, const MslObjectEntry& entry) {
    return is_object(canvas, entry) ||
           std::any_of(entry.children.begin(), entry.children.end(),
                       [&](const auto& child) { return has_object(canvas, *child); });
}

void hide_object(_LaCanvasData& canvas, uint32_t id) {
    laItem_Line* lane = laCanvas_FindLane(canvas.items, id);
    if (lane && lane->listEntry) laTask_Hide(canvas, *lane->listEntry, false, true);
}

void show_infos(_LaCanvasData& canvas, const std::vector<MslObjectEntry*>& rows) {
    for (MslObjectEntry* entry : rows)
        if (is_object(canvas, *entry)) laCanvas_ShowInfo(canvas, *entry);
}

void hide_rows(_LaCanvasData& canvas, const std::vector<MslObjectEntry*>& rows) {
    for (MslObjectEntry* row : rows)
        if (has_object(canvas, *row)) laTask_Hide(canvas, *row, false, false);
    laCanvas_Relayout(canvas);  // the last one may have gone with one before it
}

}  // namespace

void laCanvas_SortAroundEvent(_LaCanvasData& canvas, uint32_t sequence) {
    for (uint32_t i = 0; i < canvas.items.lanes.size(); ++i)
        canvas.items.lanes[i].eventDistance = laFarFromEvent;
    for (uint32_t i = 0; i < canvas.items.bitmaps.size(); ++i) {
        const laItem_Bitmap& icon = canvas.items.bitmaps[i];
        if (icon.lane == laNoLane || !canvas.looks.eventLooks[static_cast<size_t>(icon.event)].shown)
            continue;
        const auto distance = static_cast<int32_t>(icon.sequence - sequence);
        int32_t& kept = canvas.items.lanes[icon.lane].eventDistance;
        if (std::abs(distance) < std::abs(kept)) kept = distance;
    }
}

void laCanvas_ShowInfo(_LaCanvasData& canvas, MslObjectEntry& entry) {
    if (entry.lane != laNoLane) {
        if (canvas.calls.openInfo) canvas.calls.openInfo(canvas.items.lanes[entry.lane].objectId);
    } else if (canvas.taskList->SetCollapsed(entry, !entry.collapsed)) {
        laCanvas_Relayout(canvas);
    }
}

laContextMenu laCanvas_CanvasMenu(_LaCanvasData& canvas, int x, int y) {
    laHit hit;
    const bool any = laCanvas_HitTest(canvas, x, y, false, &hit);
    const laItem_Line* lane = laHit_Object(canvas, hit) ? &canvas.items.lanes[hit.lane] : nullptr;
    const bool whole = canvas.view.viewLow <= 0 && canvas.view.viewHigh >= canvas.source.totalLength;
    const bool marked = laBookmark_Find(canvas, hit.time, false) != nullptr;
    const std::string object = lane ? object_text(canvas, *lane) : "Clicked " + canvas.list.objectTerm;
    const char* inDebugger =
        canvas.axis.timeMode == Time_Tick ? "Show Tick Position in &Debugger" : "Show Time in &Debugger";
    const double time = hit.time;
    const uint32_t id = lane ? lane->objectId : laAgentId;
    Rows rows;
    rows.Add("Zoom into &Selection", is_selection(canvas),
             [&canvas] { laCanvas_Zoom(canvas, -1.0, 0, true, Zoom_Selection); });
    rows.Add("Zoom &In", true, [&canvas, time] { laCanvas_ZoomInAt(canvas, time); });
    rows.Add("Zoom &Out", !whole, [&canvas, time] { laCanvas_ZoomOutAt(canvas, time); });
    rows.AddGap();
    rows.Add("&View Object", any, [&canvas, x, y] { view_object(canvas, x, y); });
    rows.AddGap();
    rows.Add("&Hide " + object, lane != nullptr, [&canvas, id] { hide_object(canvas, id); });
    rows.AddCommand(canvas, hidden_list_row(canvas), "HideTasks");
    // There is no debugger to talk to yet: its rows stand disabled.
    rows.Add("Debug " + object, false);
    rows.AddGap();
    rows.Add(inDebugger, false);
    rows.Add("Show &Rewindscope Debugger", false);
    rows.AddGap();
    rows.Add("Sort Around Clicked Event", hit.icon.has_value(),
             [&canvas, icon = hit.icon.value_or(0)] { sort_around(canvas, icon); });
    rows.AddGap();
    rows.AddChecked("&Flat View", true, canvas.list.flatView, [&canvas] { laCanvas_ToggleFlatView(canvas); });
    rows.AddGap();
    rows.Add("&Add Bookmark", !marked, [&canvas, id, time] { laBookmark_Add(canvas, id, time, true); });
    rows.Add("Delete &Bookmark", marked, [&canvas, time] { laBookmark_Delete(canvas, time, false, true); });
    return rows.Menu(canvas, "Please choose");
}

laContextMenu laCanvas_ListMenu(_LaCanvasData& canvas, MslObjectEntry* clicked,
                                const std::vector<MslObjectEntry*>& selected) {
    const bool group = clicked && clicked->lane == laNoLane;
    const bool hides = std::any_of(selected.begin(), selected.end(),
                                   [&](const MslObjectEntry* entry) { return has_object(canvas, *entry); });
    std::string info = "Clicked Object", hide = "Info of Clicked Object", debug = canvas.list.objectTerm;
    if (selected.size() > 1) {
        info = hide = debug = laCanvas_Plural(canvas.list.objectTerm);
    } else if (clicked) {
        info = hide = debug = group ? "\"" + menu_text(clicked->name) + '"'
                                    : object_text(canvas, canvas.items.lanes[clicked->lane]);
    }
    Rows rows;
    rows.Add("&View Info of " + info, clicked != nullptr && is_object(canvas, *clicked),
             [&canvas, selected] { show_infos(canvas, selected); });
    rows.AddGap();
    rows.Add("&Hide " + hide, clicked != nullptr && hides,
             [&canvas, selected] { hide_rows(canvas, selected); });
    rows.AddCommand(canvas, hidden_list_row(canvas), "HideTasks");
    rows.Add("&Debug " + debug, false);
    rows.AddGap();
    rows.Add("Show &Rewindscope Debugger", false);
    rows.AddGap();
    rows.Add(laCanvas_SortFieldLabel(canvas), true, [&canvas] { laCanvas_ToggleSortField(canvas); });
    rows.Add(laCanvas_SortOrderLabel(canvas), true, [&canvas] { laCanvas_ToggleSortOrder(canvas); });
    rows.AddGap();
    rows.AddChecked("&Flat View", laCanvas_HasHierarchy(canvas), canvas.list.flatView,
                    [&canvas] { laCanvas_ToggleFlatView(canvas); });
    return rows.Menu(canvas, "Operations");
}
