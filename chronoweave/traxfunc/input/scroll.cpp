#include "chronoweave/traxfunc/input/scroll.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "chronoweave/traxfunc/draw/axis.h"
#include "chronoweave/traxfunc/draw/draw.h"
#include "chronoweave/traxfunc/draw/draw_items.h"
#include "chronoweave/traxfunc/draw/hit_marks.h"
#include "chronoweave/traxfunc/draw/icon_walk.h"
#include "chronoweave/traxfunc/input/history.h"
#include "chronoweave/traxfunc/input/view.h"
#include "chronoweave/traxfunc/model/marks.h"
#include "chronoweave/traxfunc/model/time.h"

namespace {

// Up to here a column is the same number from any view: the rounding of times stays far below the margin of
// laTimeScale.
constexpr uint64_t widestExact = uint64_t{1} << 31;
constexpr double onPixel = 0x1p-22;
constexpr int rowMargin = 2;
constexpr size_t mostBookmarks = 8;  // whose columns are cheaper to repaint than the whole

std::vector<LaPainted::Place> lane_order(const _LaCanvasData& canvas) {
    std::vector<LaPainted::Place> order;
    order.reserve(canvas.items.lanes.size());
    for (uint32_t i = 0; i < canvas.items.lanes.size(); ++i)
        order.push_back(
            {canvas.items.lanes[i].objectId, canvas.items.lanes[i].hidden ? -1 : canvas.items.lanes[i].y});
    return order;
}

bool is_exact(double low, double perUnit, uint64_t position, int width) {
    return position + static_cast<uint64_t>(width) < widestExact &&
           std::fabs(low * perUnit - static_cast<double>(position)) < onPixel;
}

// True when the surface holds a picture of the same items at the same scale.
bool can_copy(const _LaCanvasData& canvas) {
    const LaPainted& old = canvas.view.painted;
    const LaGraph& graph = *canvas.graph;
    return old.valid && old.itemsVersion == canvas.items.itemsVersion && old.width == graph.width &&
           old.height == graph.height && old.dataHeight == laAxis_Top(canvas) &&
           old.pixelsPerUnit == canvas.view.pixelsPerUnit && canvas.axis.timeMode != Time_Sequential &&
           is_exact(old.low, old.pixelsPerUnit, old.position, graph.width) &&
           is_exact(canvas.view.viewLow, canvas.view.pixelsPerUnit, canvas.view.scrollPosition,
                    graph.width) &&
           old.laneOrder == lane_order(canvas);
}

void paint_axis(_LaCanvasData& canvas) {
    const LaGraph& graph = *canvas.graph;
    const int top = laAxis_Top(canvas);
    if (top >= graph.height) return;
    graph.surface->clearRect(0, top, graph.width, graph.height - top);
    canvas.axis.tickStep = 0;
    laCanvas_PaintRect(canvas, top, graph.height, 0, graph.width, false);
}

// The view now begins columns further right (left when negative). False when nothing was done.
bool move_columns(_LaCanvasData& canvas, int64_t columns) {
    const LaGraph& graph = *canvas.graph;
    const int width = graph.width, height = canvas.view.painted.dataHeight;
    if (std::llabs(columns) >= width) return false;
    const int shift = static_cast<int>(columns);
    // How far an item may reach to either side of its column.
    const int reach =
        std::max({canvas.looks.maxExtent, canvas.looks.maxIconWidth, icon_Width(canvas.looks.overlapIcon)}) +
        2;
    const int settled = laIcons_SettleColumn(canvas, canvas.view.painted.low, canvas.view.viewLow,
                                             std::abs(shift), width - width / 4);
    const int left = std::max(shift < 0 ? -shift : 0, settled) + reach;
    const int right = width - (shift > 0 ? shift : 0) - reach;
    if (left >= right - width / 4) return false;
    if (!graph.surface->copyRect(left + shift, 0, right - left, height, -shift, 0)) return false;
    laCanvas_RepaintColumns(canvas, 0, left);
    laCanvas_RepaintColumns(canvas, right, width);
    paint_axis(canvas);
    return true;
}

// The same for rows further down (up when negative).
bool move_rows(_LaCanvasData& canvas, int rows) {
    const LaGraph& graph = *canvas.graph;
    const int height = canvas.view.painted.dataHeight;
    if (!laPaint_SwitchesLookAlike(canvas) || canvas.marks.bookmarks.size() > mostBookmarks) return false;
    const int top = (rows < 0 ? -rows : 0) + rowMargin;
    const int bottom = height - (rows > 0 ? rows : 0) - rowMargin;
    if (top >= bottom) return false;
    if (!graph.surface->copyRect(0, top + rows, graph.width, bottom - top, 0, -rows)) return false;
    laCanvas_RepaintRows(canvas, 0, top);
    laCanvas_RepaintRows(canvas, bottom, height);
    // Marks of hits stay at the top; those that went down with the rows go.
    if (!canvas.marks.hits.empty() && rows < 0) laCanvas_RepaintRows(canvas, -rows, -rows + laHits_Height);
    if (!canvas.marks.hits.empty()) laCanvas_RepaintRows(canvas, 0, laHits_Height);
    // The dashes of bookmarks don't scroll.
    for (const LaBookmark& mark : canvas.marks.bookmarks) {
        const int x = laCanvas_TimeToPixel(canvas, mark.time, Time_Second);
        const int reach = std::max(1, mark.thickness) / 2 + 1;
        if (x >= 0 && x < graph.width) laCanvas_RepaintColumns(canvas, x - reach, x + reach + 1);
    }
    if (graph.listChanged) graph.listChanged();
    return true;
}

bool paint_moved(_LaCanvasData& canvas) {
    if (!can_copy(canvas)) return false;
    const auto columns = static_cast<int64_t>(canvas.view.scrollPosition - canvas.view.painted.position);
    const int rows = canvas.view.verticalOffset - canvas.view.painted.verticalOffset;
    if (columns != 0 && rows != 0) return false;
    if (columns != 0) return move_columns(canvas, columns);
    return rows == 0 || move_rows(canvas, rows);
}

}  // namespace

void laScroll_NotePainted(_LaCanvasData& canvas) {
    LaPainted& painted = canvas.view.painted;
    painted.valid = true;
    painted.laneOrder = lane_order(canvas);
    painted.itemsVersion = canvas.items.itemsVersion;
    painted.low = canvas.view.viewLow;
    painted.pixelsPerUnit = canvas.view.pixelsPerUnit;
    painted.position = canvas.view.scrollPosition;
    painted.verticalOffset = canvas.view.verticalOffset;
    painted.width = canvas.graph->width;
    painted.height = canvas.graph->height;
    painted.dataHeight = laAxis_Top(canvas);
}

void laScroll_Paint(_LaCanvasData& canvas) {
    const LaGraph& graph = *canvas.graph;
    if (graph.surface == nullptr) return;
    if (!paint_moved(canvas)) return laCanvas_Repaint(canvas);
    laScroll_NotePainted(canvas);
    if (graph.presented) graph.presented(0, 0, graph.width, graph.height);
}

void laCanvas_HorizontalScrolled(_LaCanvasData& canvas) {
    const double low = laCanvas_AbsoluteTime(canvas.view, canvas.graph->horizontal.position());
    laCanvas_ShowRange(canvas, low, low + canvas.view.viewLength, false, false);
    laScroll_Paint(canvas);
    if (!canvas.hand.heldView && canvas.hand.dragStartView < 0) laHistory_Add(canvas);
}

void laScroll_Hold(_LaCanvasData& canvas) {
    canvas.hand.heldView = gate_Begin(GateWork::HeldDrawing);
}

void laScroll_Release(_LaCanvasData& canvas) {
    if (!canvas.hand.heldView) return;
    canvas.hand.heldView.reset();
    laHistory_Add(canvas);
}

void laCanvas_VerticalScrolled(_LaCanvasData& canvas) {
    canvas.view.verticalOffset = static_cast<int>(canvas.graph->vertical.position());
    laScroll_Paint(canvas);
}
