#include "chronoweave/traxfunc/session/session.h"

#include <algorithm>
#include <cmath>

#include "chronoweave/engine/lanes/lane_index.h"
#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/canvas/rows.h"
#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/draw/icon_walk.h"
#include "chronoweave/traxfunc/draw/scroll.h"
#include "chronoweave/traxfunc/draw/switch_density.h"
#include "chronoweave/traxfunc/fetch/lanes.h"
#include "chronoweave/traxfunc/input/life.h"
#include "chronoweave/traxfunc/input/view.h"
#include "chronoweave/traxfunc/model/time.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"

namespace {

constexpr const char* programTitle = "VOREL Chronoweave";

bool fail(_LaCanvasData& canvas, const std::string& name) {
    laCanvas_Reset(canvas, laResetOf::Source);
    laCanvas_UpdateFields(canvas, 0,
                          gen_format("Error on loading source file \"%s\".", name.c_str()).c_str());
    return false;
}

bool show_first_view(_LaCanvasData& canvas, uint32_t count) {
    const double length = laSession_FirstViewLength(canvas, count);
    canvas.marks.cursor[0] = length / 2;
    if (count == 0) {
        canvas.view.viewHigh = canvas.view.viewLength = canvas.source.totalLength;
        laCanvas_Rescale(canvas);
        return true;
    }
    // No view of the canvas before is taken for this one, and the first fetch is of what is shown alone.
    canvas.view.viewLow = canvas.view.viewHigh = 0;
    return laCanvas_ShowRange(canvas, 0, length, {.ahead = laFetchAhead::No}) &&
           canvas.view.viewHigh > canvas.view.viewLow;
}

// How many columns a new item may change to the left of its own: those of an icon that it hides under, of the
// mark about many there, and what is counted by columns. To the right it is the item alone.
int reach_left(const _LaCanvasData& canvas) {
    return 2 * (laIcons_Reach(canvas.looks, canvas.graph->axisFont) + laSwitches_Strip);
}
int reach_right(const _LaCanvasData& canvas) {
    return laIcons_Reach(canvas.looks, canvas.graph->axisFont) + laSwitches_Strip;
}

// The columns from a time on to the end of the data, behind which there was and is nothing. False when none
// of them is in view.
bool paint_new(_LaCanvasData& canvas, double time) {
    const auto column = [&](double at) { return (at - canvas.view.viewLow) * canvas.view.pixelsPerUnit; };
    const double width = canvas.graph->width;
    const double from = std::max(0.0, column(time) - reach_left(canvas));
    const double end = std::min(width, std::ceil(column(canvas.source.totalLength)) + reach_right(canvas));
    if (from >= end) return false;
    laCanvas_RepaintColumns(canvas, static_cast<int>(from), static_cast<int>(end));
    return true;
}

// The picture from a time on; all of it where it isn't one of the items as they were.
void paint_from(_LaCanvasData& canvas, double time, uint32_t version) {
    const LaPainted& painted = canvas.view.painted;
    if (!painted.valid || painted.itemsVersion != version || painted.low != canvas.view.viewLow ||
        painted.pixelsPerUnit != canvas.view.pixelsPerUnit)
        return laCanvas_Repaint(canvas);
    if (!paint_new(canvas, time)) return;
    // The names of what runs stand where their room is.
    for (const auto& band : laScroll_ProcessorBands(canvas.scene()))
        laCanvas_RepaintRows(canvas, band.from, band.end);
}

}  // namespace

void laCanvas_TakeBounds(_LaCanvasData& canvas) {
    const mt_Range range = mt_GetTimeRange(*canvas.source.store);
    const uint32_t count = mt_GetEventCount(*canvas.source.store);
    canvas.source.storeHasEvents = count > 0;
    canvas.source.clock.baseTick = range.first;
    // Of a damaged store the count may be one that no signed tick holds.
    canvas.source.totalLength = canvas.source.clock.LengthOf(static_cast<double>(range.end - range.first));
    const double margin = std::max(canvas.source.totalLength / 1000, 1e-12);
    canvas.source.scrollExtent = std::max(canvas.source.scrollExtent, canvas.source.totalLength + margin);
}

laGrown laCanvas_SourceGrew(_LaCanvasData& canvas) {
    if (!canvas.source.store) return laGrown::InPicture;
    const LaView& view = canvas.view;
    LaItems& items = canvas.items;
    const uint64_t base = canvas.source.clock.baseTick;
    const uint32_t version = items.itemsVersion;
    mt_RefreshIndex(*canvas.source.store);
    if (canvas.source.lanes) canvas.source.lanes->Refresh(*canvas.source.store);
    laCanvas_TakeBounds(canvas);
    if (canvas.source.clock.baseTick != base) laCanvas_ClearItems(canvas);  // times count from another event
    const auto extended = laCanvas_ExtendRange(canvas, view.viewLow, view.viewHigh);
    // What was fetched up to the old end may lack what came at that very time.
    if (!extended && view.viewHigh >= items.cachedHigh) items.cachedLow = items.cachedHigh = 0;
    if (!extended)
        laCanvas_ShowRange(canvas, view.viewLow, view.viewHigh, {.keepLength = true, .refetch = true});
    laCanvas_Rescale(canvas);
    laCanvas_UpdateTotal(canvas);
    if (extended && !extended->rows && items.itemsVersion == version) {
        paint_from(canvas, extended->from, version);
        return laGrown::InPicture;
    }
    if (!extended && items.itemsVersion == version) return laGrown::InPicture;  // it lies behind the view
    laCanvas_Repaint(canvas);
    return laGrown::WithRows;
}

bool laCanvas_SourceMovedOn(_LaCanvasData& canvas, double low) {
    const LaView& view = canvas.view;
    LaItems& items = canvas.items;
    const uint32_t version = items.itemsVersion;
    const double high = low + view.viewLength;
    const auto extended = laCanvas_ExtendRange(canvas, low, high);
    // What was fetched up to the old end may lack what came at that very time.
    if (!extended) items.cachedLow = items.cachedHigh = 0;
    if (!laCanvas_ShowRange(canvas, low, high, {.keepLength = true, .ahead = laFetchAhead::No})) return false;
    laCanvas_UpdateTotal(canvas);
    if (!extended || extended->rows || items.itemsVersion != version) return laCanvas_Repaint(canvas), true;
    laScroll_Paint(canvas);
    paint_new(canvas, extended->from);
    return true;
}

std::optional<double> laSession_SampleSpan(const _LaCanvasData& canvas, uint32_t count) {
    EventWalk walk;
    if (!mt_StartWalkAtEvent(*canvas.source.store, 1, count, nullptr, walk)) return std::nullopt;
    EventRecord event;
    uint64_t first = 0, last = 0;
    uint32_t seen = 0;
    for (; mt_NextEvent(walk, event); ++seen) {
        if (seen == 0) first = event.time;
        last = event.time;
    }
    if (seen == 0) return std::nullopt;
    return seen < count
               ? 0.0
               : canvas.source.clock.LengthOf(static_cast<double>(static_cast<int64_t>(last - first)));
}

double laSession_FirstViewLength(const _LaCanvasData& canvas, uint32_t eventCount) {
    const int stepWidth = std::max(1, canvas.looks.maxIconWidth);
    uint32_t wanted = static_cast<uint32_t>(std::max(30, 2 * (canvas.graph->width / stepWidth)));
    if (eventCount <= wanted) return canvas.source.totalLength;
    for (int tries = 0; tries < 8; ++tries) {
        const auto span = laSession_SampleSpan(canvas, wanted + 1);
        if (span && *span > 0) return *span;
        wanted = std::min(wanted * 2, eventCount - 1);
    }
    for (double divisor : {10000.0, 1000.0, 100.0, 10.0})
        if (canvas.source.totalLength / divisor >= 1e-8) return canvas.source.totalLength / divisor;
    return canvas.source.totalLength;
}

bool laCanvas_SetUpFromStore(_LaCanvasData& canvas, TraceStorePtr store, Legend legend,
                             const std::string& name) {
    laCanvas_Reset(canvas, laResetOf::Source);
    if (store == nullptr || !laCanvas_LoadLegend(canvas, std::move(legend))) return fail(canvas, name);
    canvas.source.store = std::move(store);
    laLanes_Open(canvas.source);
    const char* osName = mt_GetOsName(canvas.source.store.get());
    canvas.source.osKind = legend_OsKind(osName != nullptr ? osName : "");
    canvas.axis.timeMode = canvas.source.osKind == Os_TraceFunctionFlow ? Time_Tick : Time_Second;
    // In tick mode times are the tick numbers themselves.
    const uint64_t rate = mt_GetTicksPerSecond(*canvas.source.store);
    if (rate == 0) return fail(canvas, name);
    canvas.source.clock.ticksPerSecond = canvas.axis.timeMode == Time_Tick ? 1.0 : static_cast<double>(rate);
    canvas.source.sourcePath = path_directory(name);
    canvas.source.sourceFile = std::string(path_file(name));
    canvas.source.scrollExtent = 0;
    laCanvas_TakeBounds(canvas);
    if (!show_first_view(canvas, mt_GetEventCount(*canvas.source.store))) return fail(canvas, name);
    canvas.source.canvasName = name + " - " + programTitle;
    canvas.source.shortName = canvas.source.sourceFile;
    laCanvas_UpdateTotal(canvas);
    laCanvas_UpdateFields(canvas, Fields_View | Fields_Selection);
    return true;
}
