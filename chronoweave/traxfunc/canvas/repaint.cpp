#include "chronoweave/traxfunc/canvas/repaint.h"

#include <algorithm>

#include "chronoweave/traxfunc/canvas/rows.h"
#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/draw/scroll.h"
#include "chronoweave/traxfunc/list/task_list.h"

namespace {

// The strip with everything in it.
void repaint_axis(_LaCanvasData& canvas) {
    const LaGraph& graph = *canvas.graph;
    const int top = laAxis_Top(graph);
    if (top >= graph.height) return;
    graph.surface->clearRect(0, top, graph.width, graph.height - top);
    canvas.axis.tickStep = 0;
    laCanvas_PaintRect(canvas, top, graph.height, 0, graph.width);
}

// False when the whole must be painted.
bool paint_moved(_LaCanvasData& canvas) {
    const LaGraph& graph = *canvas.graph;
    const auto plan = laScroll_Plan(canvas.scene());
    if (!plan) return false;
    const laRect& from = plan->copied;
    const int width = from.right - from.left, height = from.bottom - from.top;
    if (width > 0 && !graph.surface->copyRect(from.left, from.top, width, height, plan->dx, plan->dy))
        return false;
    for (const auto& rows : plan->rows) laCanvas_RepaintRows(canvas, rows.from, rows.end);
    for (const auto& columns : plan->columns) laCanvas_RepaintColumns(canvas, columns.from, columns.end);
    if (plan->axis) repaint_axis(canvas);
    if (!plan->rows.empty() && graph.listChanged) graph.listChanged();
    return true;
}

}  // namespace

void laCanvas_Paint(_LaCanvasData& canvas, const std::function<void()>& work) {
    if (canvas.calls.upper.draw && canvas.graph->surface == nullptr)
        canvas.calls.upper.draw(work);
    else
        work();
}

void laCanvas_PaintRect(_LaCanvasData& canvas, int y0, int y1, int x0, int x1, laPaintReach reach) {
    const LaGraph& graph = *canvas.graph;
    if (graph.surface == nullptr || graph.width <= 0 || graph.height <= 0) return;
    const laScene scene = canvas.scene();
    const laPaintArea area = laPaint_Area(scene, {x0, y0, x1, y1}, reach);
    laPaint_Data(scene, area);
    laPaint_Cursors(scene, area.part);
    if (area.part.bottom > laAxis_Top(graph)) {
        laAxis_Draw(canvas, area.part.left, area.part.right);
        laCanvas_UpdateTotal(canvas);
    }
    if (graph.presented) graph.presented(area.part.left, area.part.top, area.part.right, area.part.bottom);
}

void laCanvas_Repaint(_LaCanvasData& canvas) {
    const LaGraph& graph = *canvas.graph;
    if (graph.surface == nullptr) return;
    graph.surface->clearRect(0, 0, graph.width, graph.height);
    canvas.axis.tickStep = 0;  // the whole strip goes with the rest
    laCanvas_PaintRect(canvas, 0, graph.height, 0, graph.width);
    laScroll_NotePainted(canvas.view, canvas.items, graph);
    if (graph.listChanged) graph.listChanged();
}

void laCanvas_RepaintColumns(_LaCanvasData& canvas, int x0, int x1) {
    const LaGraph& graph = *canvas.graph;
    x0 = std::clamp(x0, 0, std::max(0, graph.width));
    x1 = std::clamp(x1, 0, std::max(0, graph.width));
    if (graph.surface == nullptr || x0 >= x1) return;
    const int dataHeight = laAxis_Top(graph);
    graph.surface->clearRect(x0, 0, x1 - x0, dataHeight);
    laCanvas_PaintRect(canvas, 0, dataHeight, x0, x1, laPaintReach::Neighbours);
}

void laCanvas_RepaintRows(_LaCanvasData& canvas, int y0, int y1) {
    const LaGraph& graph = *canvas.graph;
    const int dataHeight = laAxis_Top(graph);
    y0 = std::clamp(y0, 0, dataHeight);
    y1 = std::clamp(y1, 0, dataHeight);
    if (graph.surface == nullptr || y0 >= y1) return;
    graph.surface->clearRect(0, y0, graph.width, y1 - y0);
    laCanvas_PaintRect(canvas, y0, y1, 0, graph.width);
}

void laScroll_Paint(_LaCanvasData& canvas) {
    const LaGraph& graph = *canvas.graph;
    if (graph.surface == nullptr) return;
    if (!paint_moved(canvas)) return laCanvas_Repaint(canvas);
    laScroll_NotePainted(canvas.view, canvas.items, graph);
    if (graph.presented) graph.presented(0, 0, graph.width, graph.height);
}

void laAxis_Draw(_LaCanvasData& canvas, int x0, int x1, laUnitRule rule) {
    const LaGraph& graph = *canvas.graph;
    if (graph.surface == nullptr || canvas.view.viewLength < 1e-12 || graph.width <= 0) return;
    const int unit = canvas.axis.timeMode;
    const laAxisTicks ticks = laAxis_Settle(canvas.axis, canvas.view, graph, rule);
    if (ticks.freshLabels) {
        canvas.fields.tickPattern = laAxis_PatternText(canvas.axis);
        canvas.fields.tickUnit = laTime_UnitName(canvas.axis, true);
        laCanvas_UpdateFields(canvas, Fields_View | Fields_Selection);
    }
    laAxis_Draw(canvas.scene(), ticks, x0, x1);
    if (canvas.axis.timeMode != unit) laCanvas_UpdateTotal(canvas);
}

void laCanvas_EraseCursor(_LaCanvasData& canvas, int x) {
    laCanvas_UpdateFields(canvas, 0, " ");
    if (x <= -2 || x > canvas.graph->width) return;
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
