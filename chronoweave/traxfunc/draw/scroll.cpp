#include "chronoweave/traxfunc/draw/scroll.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "chronoweave/traxfunc/draw/axis.h"
#include "chronoweave/traxfunc/draw/draw_items.h"
#include "chronoweave/traxfunc/draw/hit_marks.h"
#include "chronoweave/traxfunc/draw/icon_walk.h"
#include "chronoweave/traxfunc/draw/pinned_rows.h"
#include "chronoweave/traxfunc/model/absent.h"

namespace {

// Up to here a column is the same number from any view: the rounding of times stays far below the margin of
// laTimeScale.
constexpr uint64_t widestExact = uint64_t{1} << 31;
constexpr double onPixel = 0x1p-22;
constexpr int rowMargin = 2;
constexpr size_t mostBookmarks = 8;  // whose columns are cheaper to repaint than the whole

std::vector<LaPainted::Place> lane_order(const LaItems& items) {
    std::vector<LaPainted::Place> order;
    order.reserve(items.lanes.size());
    for (uint32_t i = 0; i < items.lanes.size(); ++i)
        order.push_back({items.lanes[i].objectId, items.lanes[i].hidden ? -1 : items.lanes[i].y});
    return order;
}

bool is_exact(double low, double perUnit, uint64_t position, int width) {
    return position + static_cast<uint64_t>(width) < widestExact &&
           std::fabs(low * perUnit - static_cast<double>(position)) < onPixel;
}

// True when the surface holds a picture of the same items at the same scale.
bool can_copy(const laScene& scene) {
    const LaPainted& old = scene.view.painted;
    const LaGraph& graph = scene.graph;
    return old.valid && old.itemsVersion == scene.items.itemsVersion && old.width == graph.width &&
           old.height == graph.height && old.dataHeight == laAxis_Top(graph) &&
           old.pixelsPerUnit == scene.view.pixelsPerUnit && scene.axis.timeMode != Time_Sequential &&
           is_exact(old.low, old.pixelsPerUnit, old.position, graph.width) &&
           is_exact(scene.view.viewLow, scene.view.pixelsPerUnit, scene.view.scrollPosition, graph.width) &&
           old.laneOrder == lane_order(scene.items);
}

// The view now begins columns further right (left when negative).
std::optional<laScrollPlan> move_columns(const laScene& scene, int64_t columns) {
    const int width = scene.graph.width, height = scene.view.painted.dataHeight;
    if (std::llabs(columns) >= width) return std::nullopt;
    const int shift = static_cast<int>(columns);
    // How far an item may reach to either side of its column.
    const int reach = laIcons_Reach(scene.looks, scene.graph.axisFont) + 2;
    const int settled = laIcons_SettleColumn(scene, scene.view.painted.low, scene.view.viewLow,
                                             std::abs(shift), width - width / 4);
    const int left = std::max(shift < 0 ? -shift : 0, settled) + reach;
    const int right = width - (shift > 0 ? shift : 0) - reach;
    if (left >= right - width / 4) return std::nullopt;
    laScrollPlan plan;
    plan.copied = {left + shift, 0, right + shift, height};
    plan.dx = -shift;
    plan.columns = {{0, left}, {right, width}};
    // The pointer's line stays at its column, and its copy goes.
    if (const int line = scene.marks.pendingCursorX; line >= 0)
        for (const int x : {line, line - shift}) plan.columns.push_back({x, x + 1});
    plan.rows = laScroll_ProcessorBands(scene);
    plan.axis = true;
    return plan;
}

// The same for rows further down (up when negative).
std::optional<laScrollPlan> move_rows(const laScene& scene, int rows) {
    const int width = scene.graph.width, height = scene.view.painted.dataHeight;
    const LaMarks& marks = scene.marks;
    if (!laPaint_SwitchesLookAlike(scene.looks) || marks.bookmarks.size() > mostBookmarks)
        return std::nullopt;
    const int top = (rows < 0 ? -rows : 0) + rowMargin;
    const int bottom = height - (rows > 0 ? rows : 0) - rowMargin;
    if (top >= bottom) return std::nullopt;
    laScrollPlan plan;
    plan.copied = {0, top + rows, width, bottom + rows};
    plan.dy = -rows;
    plan.rows = {{0, top}, {bottom, height}};
    // Marks of hits stay at the top; those that went down with the rows go.
    if (!marks.hits.empty() && rows < 0) plan.rows.push_back({-rows, -rows + laHits_Height});
    if (!marks.hits.empty()) plan.rows.push_back({0, laHits_Height});
    // So do rows at the edge, and what they were before.
    const LaFreeRows free = laPinned_Free(scene.items, scene.looks, scene.view, height);
    const LaFreeRows& before = scene.view.painted.free;
    if (before.from > std::max(0, rows)) plan.rows.push_back({0, before.from - rows});
    if (before.end < height) plan.rows.push_back({before.end - rows, height});
    if (free.from > 0) plan.rows.push_back({0, free.from});
    if (free.end < height) plan.rows.push_back({free.end, height});
    // The dashes of bookmarks don't scroll.
    const laTimeScale scale = scene.scale();
    for (const LaBookmark& mark : marks.bookmarks) {
        const int x = scale.ToPixel(mark.time);
        const int reach = std::max(1, mark.thickness) / 2 + 1;
        if (x >= 0 && x < width) plan.columns.push_back({x - reach, x + reach + 1});
    }
    return plan;
}

}  // namespace

std::vector<laScrollPlan::Stretch> laScroll_ProcessorBands(const laScene& scene) {
    std::vector<laScrollPlan::Stretch> bands;
    const int height = laAxis_Top(scene.graph), rowHeight = scene.looks.rowHeight;
    for (const LaProcessor& one : scene.items.processors.list) {
        const int top = one.row * rowHeight - scene.view.verticalOffset;
        if (one.row >= 0 && top < height && top + rowHeight > 0) bands.push_back({top, top + rowHeight});
    }
    const LaFreeRows free = laPinned_Free(scene.items, scene.looks, scene.view, height);
    if (free.from > 0) bands.push_back({0, free.from});
    if (free.end < height) bands.push_back({free.end, height});
    return bands;
}

std::optional<laScrollPlan> laScroll_Plan(const laScene& scene) {
    if (!can_copy(scene)) return std::nullopt;
    const auto columns = static_cast<int64_t>(scene.view.scrollPosition - scene.view.painted.position);
    const int rows = scene.view.verticalOffset - scene.view.painted.verticalOffset;
    if (columns != 0 && rows != 0) return std::nullopt;
    if (columns != 0) return move_columns(scene, columns);
    return rows == 0 ? laScrollPlan() : move_rows(scene, rows);
}

void laScroll_NotePainted(LaView& view, const LaItems& items, const LaLooks& looks, const LaGraph& graph) {
    LaPainted& painted = view.painted;
    painted.valid = true;
    painted.laneOrder = lane_order(items);
    painted.itemsVersion = items.itemsVersion;
    painted.low = view.viewLow;
    painted.pixelsPerUnit = view.pixelsPerUnit;
    painted.position = view.scrollPosition;
    painted.verticalOffset = view.verticalOffset;
    painted.width = graph.width;
    painted.height = graph.height;
    painted.dataHeight = laAxis_Top(graph);
    painted.absent = laItems_AbsentRows(items, view);
    painted.free = laPinned_Free(items, looks, view, painted.dataHeight);
}
