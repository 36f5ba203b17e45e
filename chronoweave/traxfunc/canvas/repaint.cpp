#include "chronoweave/traxfunc/canvas/repaint.h"

#include <algorithm>
#include <utility>

#include "chronoweave/traxfunc/canvas/rows.h"
#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/draw/scroll.h"
#include "chronoweave/traxfunc/list/task_list.h"
#include "chronoweave/traxfunc/model/absent.h"

namespace {

bool has_axis(const _LaCanvasData& canvas) {
    return canvas.view.viewLength >= 1e-12 && canvas.graph->width > 0;
}

// Step, unit and labels of the axis for the present view, and the texts that follow from them.
laAxisTicks settle_axis(_LaCanvasData& canvas, laUnitRule rule) {
    const int unit = canvas.axis.timeMode;
    const laAxisTicks ticks = laAxis_Settle(canvas.axis, canvas.view, *canvas.graph, rule);
    if (ticks.freshLabels) {
        canvas.fields.tickPattern = laAxis_PatternText(canvas.axis);
        canvas.fields.tickUnit = laTime_UnitName(canvas.axis, true);
        canvas.fields.unit = laTime_UnitMark(canvas.axis);
        laCanvas_UpdateFields(canvas, Fields_View | Fields_Selection);
    }
    if (canvas.axis.timeMode != unit) laCanvas_UpdateTotal(canvas);
    return ticks;
}

// The same for a picture that is painted as a whole, or moved. Gives whether the labels changed.
bool settle(_LaCanvasData& canvas) {
    const bool fresh = has_axis(canvas) && settle_axis(canvas, laUnitRule::Adjust).freshLabels;
    laCanvas_UpdateTotal(canvas);
    return fresh;
}

void note(_LaCanvasData& canvas, const std::function<void(LaWanted&)>& what) {
    const bool first = !canvas.wanted.any();
    what(canvas.wanted);
    if (first && canvas.wanted.any() && canvas.calls.paintWanted) canvas.calls.paintWanted();
}

void note_part(_LaCanvasData& canvas, LaWanted::Strip strip, int from, int end) {
    note(canvas, [&](LaWanted& wanted) { laWanted_Part(wanted, {strip, from, end}); });
}

void list_changed(const _LaCanvasData& canvas) {
    if (canvas.graph->listChanged) canvas.graph->listChanged();
}

void paint_axis(_LaCanvasData& canvas, int x0, int x1, bool fresh) {
    if (has_axis(canvas)) laAxis_Draw(canvas.scene(), {canvas.axis.tickStep, fresh}, x0, x1);
}

// Clears nothing; the axis is settled.
void paint_part(_LaCanvasData& canvas, const laRect& part, laPaintReach reach) {
    const LaGraph& graph = *canvas.graph;
    if (graph.width <= 0 || graph.height <= 0) return;
    const laScene scene = canvas.scene();
    const laPaintArea area = laPaint_Area(scene, part, reach);
    laPaint_Data(scene, area);
    laPaint_Cursors(scene, area.part);
    if (area.part.bottom > laAxis_Top(graph)) paint_axis(canvas, area.part.left, area.part.right, true);
}

void paint_whole(_LaCanvasData& canvas) {
    const LaGraph& graph = *canvas.graph;
    graph.surface->clearRect(0, 0, graph.width, graph.height);
    paint_part(canvas, {0, 0, graph.width, graph.height}, laPaintReach::Part);
    laScroll_NotePainted(canvas.view, canvas.items, canvas.looks, graph);
}

void paint_columns(_LaCanvasData& canvas, int x0, int x1) {
    const LaGraph& graph = *canvas.graph;
    x0 = std::clamp(x0, 0, std::max(0, graph.width));
    x1 = std::clamp(x1, 0, std::max(0, graph.width));
    if (x0 >= x1) return;
    const int dataHeight = laAxis_Top(graph);
    graph.surface->clearRect(x0, 0, x1 - x0, dataHeight);
    paint_part(canvas, {x0, 0, x1, dataHeight}, laPaintReach::Neighbours);
}

void paint_rows(_LaCanvasData& canvas, int y0, int y1) {
    const LaGraph& graph = *canvas.graph;
    const int dataHeight = laAxis_Top(graph);
    y0 = std::clamp(y0, 0, dataHeight);
    y1 = std::clamp(y1, 0, dataHeight);
    if (y0 >= y1) return;
    graph.surface->clearRect(0, y0, graph.width, y1 - y0);
    paint_part(canvas, {0, y0, graph.width, y1}, laPaintReach::Part);
}

// The strip with everything in it.
void paint_strip(_LaCanvasData& canvas) {
    const LaGraph& graph = *canvas.graph;
    const int top = laAxis_Top(graph);
    if (top >= graph.height) return;
    graph.surface->clearRect(0, top, graph.width, graph.height - top);
    paint_part(canvas, {0, top, graph.width, graph.height}, laPaintReach::Part);
}

// What is painted later need not be painted now.
void leave_out(laScrollPlan::Stretch& columns, const std::vector<LaWanted::Part>& later) {
    for (const LaWanted::Part& part : later) {
        if (part.strip != LaWanted::Strip::Columns) continue;
        if (part.from <= columns.from) columns.from = std::max(columns.from, part.end);
        if (part.end >= columns.end) columns.end = std::min(columns.end, part.from);
    }
}

// False when the whole must be painted. Some columns are painted later.
bool paint_moved(_LaCanvasData& canvas, const std::vector<LaWanted::Part>& later) {
    const LaGraph& graph = *canvas.graph;
    auto plan = laScroll_Plan(canvas.scene());
    if (!plan) return false;
    for (laScrollPlan::Stretch& columns : plan->columns) leave_out(columns, later);
    const laRect& from = plan->copied;
    const int width = from.right - from.left, height = from.bottom - from.top;
    if (width > 0 && !graph.surface->copyRect(from.left, from.top, width, height, plan->dx, plan->dy))
        return false;
    for (const auto& rows : plan->rows) paint_rows(canvas, rows.from, rows.end);
    for (const auto& columns : plan->columns) paint_columns(canvas, columns.from, columns.end);
    if (plan->axis) paint_strip(canvas);
    if (plan->dy != 0 || canvas.view.painted.absent != laItems_AbsentRows(canvas.items, canvas.view))
        list_changed(canvas);
    laScroll_NotePainted(canvas.view, canvas.items, canvas.looks, graph);
    return true;
}

void paint_noted(_LaCanvasData& canvas, const LaWanted::Part& part) {
    switch (part.strip) {
        case LaWanted::Strip::Columns:
            return paint_columns(canvas, part.from, part.end);
        case LaWanted::Strip::Rows:
            return paint_rows(canvas, part.from, part.end);
        case LaWanted::Strip::Axis:
            return paint_axis(canvas, part.from, part.end, false);
    }
}

}  // namespace

void laCanvas_Paint(_LaCanvasData& canvas, const std::function<void()>& work) {
    if (canvas.calls.upper.draw && canvas.graph->surface == nullptr)
        canvas.calls.upper.draw(work);
    else
        work();
}

void laCanvas_PaintWanted(_LaCanvasData& canvas) {
    const LaWanted wanted = std::exchange(canvas.wanted, {});
    if (wanted.whole || (wanted.moved && !paint_moved(canvas, wanted.parts))) return paint_whole(canvas);
    for (const LaWanted::Part& part : wanted.parts) paint_noted(canvas, part);
    if (wanted.labels) paint_strip(canvas);
}

void laCanvas_Repaint(_LaCanvasData& canvas) {
    canvas.axis.tickStep = 0;  // the whole strip goes with the rest
    settle(canvas);
    if (canvas.graph->surface)
        paint_whole(canvas);
    else
        note(canvas, laWanted_Whole);
    list_changed(canvas);
}

void laCanvas_RepaintColumns(_LaCanvasData& canvas, int x0, int x1) {
    if (!canvas.graph->surface) return note_part(canvas, LaWanted::Strip::Columns, x0, x1);
    paint_columns(canvas, x0, x1);
}

void laCanvas_RepaintRows(_LaCanvasData& canvas, int y0, int y1) {
    if (!canvas.graph->surface) return note_part(canvas, LaWanted::Strip::Rows, y0, y1);
    paint_rows(canvas, y0, y1);
}

void laScroll_Paint(_LaCanvasData& canvas) {
    const bool labels = settle(canvas);
    if (canvas.graph->surface) {
        if (!paint_moved(canvas, {})) laCanvas_Repaint(canvas);
        return;
    }
    note(canvas, laWanted_Moved);
    canvas.wanted.labels = canvas.wanted.labels || labels;
    if (canvas.view.verticalOffset != canvas.view.painted.verticalOffset ||
        canvas.view.painted.absent != laItems_AbsentRows(canvas.items, canvas.view))
        list_changed(canvas);
}

void laAxis_Draw(_LaCanvasData& canvas, int x0, int x1, laUnitRule rule) {
    if (!has_axis(canvas)) return;
    const laAxisTicks ticks = settle_axis(canvas, rule);
    if (canvas.graph->surface) return laAxis_Draw(canvas.scene(), ticks, x0, x1);
    note_part(canvas, LaWanted::Strip::Axis, x0, std::max(x1, x0 + 1));
    canvas.wanted.labels = canvas.wanted.labels || ticks.freshLabels;
}

void laCanvas_EraseCursor(_LaCanvasData& canvas, int x) {
    laCanvas_UpdateFields(canvas, 0, " ");
    if (x <= -2 || x > canvas.graph->width) return;
    if (canvas.wanted.moved) return laCanvas_Repaint(canvas);  // a copy of the line may move along
    laCanvas_RepaintColumns(canvas, x - 1, x + 2);
}

void laCanvas_Relayout(_LaCanvasData& canvas) {
    laCanvas_Layout(canvas);
    if (canvas.graph->listChanged) canvas.graph->listChanged();
    laCanvas_Repaint(canvas);
}

void laTask_Hide(_LaCanvasData& canvas, const MslObjectEntry& entry) {
    if (canvas.taskList->HideEntry(entry)) laCanvas_Relayout(canvas);
}

void laTask_Show(_LaCanvasData& canvas, const MslObjectEntry& entry) {
    if (canvas.taskList->ShowEntry(entry)) laCanvas_Relayout(canvas);
}
