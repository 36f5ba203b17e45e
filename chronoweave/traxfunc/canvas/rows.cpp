#include "chronoweave/traxfunc/canvas/rows.h"

#include <algorithm>

#include "chronoweave/traxfunc/draw/axis.h"
#include "chronoweave/traxfunc/draw/layout.h"
#include "chronoweave/traxfunc/fetch/lane_items.h"
#include "chronoweave/traxfunc/fetch/range_fetch.h"
#include "chronoweave/traxfunc/list/task_list.h"
#include "chronoweave/traxfunc/model/processor_runs.h"
#include "shared/libcxxutil/report.h"

namespace {

int rows_height(const _LaCanvasData& canvas) {
    return canvas.looks.rowHeight * static_cast<int>(canvas.taskList->rows().size());
}

// From a time on; true when the rows of processors are others.
bool make_processors(_LaCanvasData& canvas, double from) {
    return canvas.list.processorRows &&
           laProcessors_Make(canvas.items, canvas.looks, canvas.source.osKind, canvas.list.separator, from);
}

constexpr uint32_t leastDropped = 4096;  // icons; for fewer it is not worth the rows

enum class LeftSide { Kept, Dropped, InDoubt };

// Half a view stays left of the view, and what is dropped is a good part of the whole, so that what stays is
// moved seldom.
LeftSide drop_left(_LaCanvasData& canvas, double low, double high) {
    const double from = low - (high - low) / 2;
    if (from <= canvas.items.cachedLow) return LeftSide::Kept;
    const uint32_t icons = laBm_FirstAt(canvas.items, from);
    if (icons < std::max(leastDropped, canvas.items.bitmaps.size() / 3)) return LeftSide::Kept;
    return canvas.fetch->DropLeft(from) == laLeftDrop::Done ? LeftSide::Dropped : LeftSide::InDoubt;
}

}  // namespace

void laCanvas_ClearItems(_LaCanvasData& canvas) {
    canvas.fetch.reset();
    canvas.taskList->Clear(false);
    laItems_Clear(canvas.items);
}

bool laCanvas_FetchRange(_LaCanvasData& canvas, double low, double high, laFetchAhead ahead) {
    LaSource& source = canvas.source;
    canvas.fetch.reset();
    canvas.items.running.clear();
    if (source.store == nullptr) return true;
    if (!source.storeHasEvents) source.storeHasEvents = mt_GetEventCount(*source.store) > 0;
    if (!source.storeHasEvents || canvas.looks.legend.empty()) return true;
    if (!canvas.options.prefetch) ahead = laFetchAhead::No;
    const laFetchRange range = laFetch_RangeFor(source, {low, high}, ahead);
    if (range.low > range.high) return true;
    laCanvas_ClearItems(canvas);
    canvas.list.sortAroundEvent = false;
    if (laLaneItems_Make(canvas.items, source, canvas.looks, canvas.list, range,
                         canvas.options.leastFromLanes))
        return true;
    canvas.fetch = std::make_unique<LaFetch>(canvas.items, source, canvas.looks, canvas.list);
    const bool fetched = canvas.fetch->Run(range, canvas.calls.progress);
    if (!canvas.fetch->CanExtend()) canvas.fetch.reset();
    return fetched;
}

std::optional<laExtended> laCanvas_ExtendRange(_LaCanvasData& canvas, double low, double high) {
    if (canvas.fetch == nullptr || !canvas.fetch->CanExtend()) return std::nullopt;
    if (low < canvas.items.cachedLow || low > canvas.items.cachedHigh) return std::nullopt;
    const auto growth = canvas.fetch->Extend(high, canvas.calls.progress);
    const LeftSide left = growth ? drop_left(canvas, low, high) : LeftSide::InDoubt;
    if (left == LeftSide::InDoubt) {
        laCanvas_ClearItems(canvas);
        return std::nullopt;
    }
    laExtended extended{growth->from, growth->lanes || left == LeftSide::Dropped};
    if (!extended.rows && make_processors(canvas, growth->from)) extended.rows = true;
    if (extended.rows) {
        // Lanes may have names, and other places.
        laProcessors_Clear(canvas.items);
        laCanvas_Resort(canvas);
    } else {
        laLayout_Lanes(canvas.items, canvas.looks);
    }
    return extended;
}

void laCanvas_Layout(_LaCanvasData& canvas) {
    ++canvas.list.layouts;
    laLayout_Lanes(canvas.items, canvas.looks);
    laLayout_Content(canvas.view, *canvas.graph, rows_height(canvas));
    laLayout_SetExtent(canvas.view, *canvas.graph,
                       laCanvas_AbsolutePixel(canvas.view, canvas.source.scrollExtent),
                       canvas.view.contentHeight);
}

LaRowsView laCanvas_RowsView(const _LaCanvasData& canvas) {
    return {canvas.view.viewLow, canvas.view.viewHigh, canvas.items.cachedLow, canvas.items.cachedHigh,
            canvas.items.itemsVersion};
}

void laCanvas_TakeActivity(_LaCanvasData& canvas) {
    if (!laList_FollowsView(canvas.list)) return;
    canvas.list.madeFor = laCanvas_RowsView(canvas);
    canvas.taskList->SetActivity(
        laActivity_InRange(canvas.items, canvas.looks, canvas.view.viewLow, canvas.view.viewHigh));
}

// Rows that follow the view stay those of the objects that they were made for.
void laCanvas_Resort(_LaCanvasData& canvas) {
    if (!canvas.list.processorRows) laProcessors_Clear(canvas.items);
    if (!laProcessors_Stand(canvas.items, canvas.list.separator)) make_processors(canvas, -1);
    if (!canvas.list.madeFor) laCanvas_TakeActivity(canvas);
    canvas.taskList->Fill();
    laCanvas_Layout(canvas);
    if (canvas.graph->listChanged) canvas.graph->listChanged();
}

void laCanvas_Rescale(_LaCanvasData& canvas) {
    const int height = std::max(rows_height(canvas), canvas.view.contentHeight);
    if (laLayout_Rescale(canvas.view, *canvas.graph, canvas.source.scrollExtent, height)) return;
    gen_console("Cannot show %0.15f out of %0.15f %s.\n", canvas.view.viewLength, canvas.source.scrollExtent,
                laCanvas_Plural(laTime_UnitName(canvas.axis, false)).c_str());
}

void laCanvas_Resized(_LaCanvasData& canvas, int width, int height) {
    LaGraph& graph = *canvas.graph;
    graph.width = std::max(0, width);
    graph.height = std::max(0, height);
    const FontMetrics axis = graph.surface ? graph.surface->fontMetrics(Font_Axis) : graph.axisFont;
    const int data = std::max(0, graph.height - laAxis_StripHeight(axis));
    graph.vertical.setRange(static_cast<uint64_t>(std::max(0, canvas.view.contentHeight)),
                            static_cast<uint64_t>(data));
    laCanvas_Rescale(canvas);
}

bool laCanvas_HasHierarchy(const _LaCanvasData& canvas) {
    return canvas.list.flatView || canvas.taskList->depth() > 1;
}
