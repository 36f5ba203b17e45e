#include "chronoweave/traxfunc/input/actions.h"

#include <algorithm>
#include <cstdlib>

#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/canvas/rows.h"
#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/input/hit.h"
#include "chronoweave/traxfunc/input/life.h"
#include "chronoweave/traxfunc/input/view.h"
#include "chronoweave/traxfunc/model/time.h"
#include "windlib/dialog/model.h"

namespace {

void resort(_LaCanvasData& canvas) {
    laCanvas_Resort(canvas);
    laCanvas_Repaint(canvas);
    if (canvas.calls.buttonsChanged) canvas.calls.buttonsChanged();
}

}  // namespace

// A closing window takes itself out of the list.
void laCanvas_CloseViews(_LaCanvasData& canvas) {
    for (DialogModel* window : std::vector<DialogModel*>(canvas.calls.viewWindows)) {
        const auto& open = canvas.calls.viewWindows;
        if (std::find(open.begin(), open.end(), window) != open.end()) window->close(Dialog_Dismissed);
    }
    canvas.calls.viewWindows.clear();
    if (canvas.calls.buttonsChanged) canvas.calls.buttonsChanged();
}

void laCanvas_CloseSource(_LaCanvasData& canvas) {
    laCanvas_CloseViews(canvas);
    laCanvas_Reset(canvas, laResetOf::Source);
    laCanvas_UpdateFields(canvas, 0, " ");
    laCanvas_UpdateTotal(canvas);
    laCanvas_UpdateFields(canvas, Fields_View | Fields_Selection);
    laCanvas_Repaint(canvas);
    if (canvas.graph->listChanged) canvas.graph->listChanged();
    if (canvas.calls.buttonsChanged) canvas.calls.buttonsChanged();
}

void laCanvas_ToggleSortField(_LaCanvasData& canvas) {
    canvas.list.sortField = canvas.list.sortField == 0 ? 1 : 0;
    canvas.list.sortAroundEvent = canvas.list.mostActiveFirst = false;
    resort(canvas);
}

void laCanvas_ToggleSortOrder(_LaCanvasData& canvas) {
    canvas.list.sortAscending = !canvas.list.sortAscending;
    canvas.list.sortAroundEvent = canvas.list.mostActiveFirst = false;
    resort(canvas);
}

void laCanvas_ToggleFlatView(_LaCanvasData& canvas) {
    canvas.list.flatView = !canvas.list.flatView;
    resort(canvas);
}

std::string laCanvas_SortFieldLabel(const _LaCanvasData& canvas) {
    return "Sort by " + canvas.list.objectTerm + (canvas.list.sortField == 0 ? " &ID" : " &Name");
}

std::string laCanvas_SortOrderLabel(const _LaCanvasData& canvas) {
    return canvas.list.sortAscending ? "Sort in &Descending Order" : "Sort in &Ascending Order";
}

void laCanvas_ToggleFreeze(_LaCanvasData& canvas) {
    canvas.source.liveRefresh = !canvas.source.liveRefresh;
    if (canvas.calls.upper.refreshToggled) canvas.calls.upper.refreshToggled();
    if (canvas.calls.buttonsChanged) canvas.calls.buttonsChanged();
}

void laCanvas_SortAroundEvent(_LaCanvasData& canvas, uint32_t sequence) {
    for (uint32_t i = 0; i < canvas.items.lanes.size(); ++i)
        canvas.items.lanes[i].eventDistance = laFarFromEvent;
    for (uint32_t i = 0; i < canvas.items.bitmaps.size(); ++i) {
        const laItem_Bitmap icon = canvas.items.bitmaps[i];
        if (icon.lane == laNoLane || !canvas.looks.eventLooks[static_cast<size_t>(icon.event)].shown)
            continue;
        const auto distance = static_cast<int32_t>(icon.sequence - sequence);
        int32_t& kept = canvas.items.lanes[icon.lane].eventDistance;
        if (std::abs(distance) < std::abs(kept)) kept = distance;
    }
}

void laCanvas_ShowInfo(_LaCanvasData& canvas, MslObjectEntry& entry) {
    if (entry.payload != laNoLane) {
        if (canvas.calls.openInfo) canvas.calls.openInfo(canvas.items.lanes[entry.payload].objectId);
    } else if (canvas.taskList->SetCollapsed(entry, !entry.collapsed)) {
        laCanvas_Relayout(canvas);
    }
}

bool laList_IsObject(const _LaCanvasData& canvas, const MslObjectEntry& entry) {
    return entry.payload != laNoLane && !canvas.items.lanes[entry.payload].isAgent;
}

bool laList_HasObject(const _LaCanvasData& canvas, const MslObjectEntry& entry) {
    return laList_IsObject(canvas, entry) ||
           std::any_of(entry.children.begin(), entry.children.end(),
                       [&](const auto& child) { return laList_HasObject(canvas, *child); });
}

void laList_ShowSelected(_LaCanvasData& canvas) {
    for (MslObjectEntry* entry : canvas.taskList->SelectedEntries())
        if (laList_IsObject(canvas, *entry)) laCanvas_ShowInfo(canvas, *entry);
}

void laList_HideSelected(_LaCanvasData& canvas) {
    for (MslObjectEntry* row : canvas.taskList->SelectedEntries())
        if (laList_HasObject(canvas, *row)) canvas.taskList->HideEntry(*row);
    laCanvas_Relayout(canvas);  // the last one may have gone with one before it
}

bool laPlace_View(_LaCanvasData& canvas) {
    const LaPlace place = canvas.hand.place;
    if (laCanvas_HitTest(canvas, place.x, place.y, true, nullptr)) return true;
    laCanvas_Refuse(canvas, "There is no object at the place.");
    return false;
}

void laPlace_HideObject(_LaCanvasData& canvas) {
    laItem_Line* lane = laCanvas_FindLane(canvas.items, canvas.hand.place.objectId);
    if (lane && lane->listEntry) laTask_Hide(canvas, *lane->listEntry);
}

void laPlace_SortAround(_LaCanvasData& canvas) {
    const auto at = canvas.hand.place.icon;
    if (!at || *at >= canvas.items.bitmaps.size()) return;
    const laItem_Bitmap item = canvas.items.bitmaps[static_cast<uint32_t>(*at)];
    const uint32_t object = canvas.items.lanes[item.lane].objectId;
    canvas.list.sortAroundEvent = true;
    laCanvas_SortAroundEvent(canvas, item.sequence);
    laCanvas_Resort(canvas);
    laCanvas_Repaint(canvas);
    laCanvas_MoveToTime(canvas, item.time, Time_Second, object, true);
}
