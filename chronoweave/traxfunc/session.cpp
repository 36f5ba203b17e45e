#include "chronoweave/traxfunc/session.h"

#include <algorithm>

#include "chronoweave/traxfunc/layout.h"
#include "chronoweave/traxfunc/time.h"
#include "chronoweave/traxfunc/view.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"

namespace {

constexpr const char* programTitle = "VOREL Chronoweave";

bool fail(_LaCanvasData& canvas, const std::string& name) {
    laCanvas_Reset(canvas, true, false);
    laCanvas_UpdateFields(canvas, 0,
                          gen_format("Error on loading source file \"%s\".", name.c_str()).c_str());
    return false;
}

bool show_first_view(_LaCanvasData& canvas, uint32_t count) {
    const double length = laSession_FirstViewLength(canvas, count);
    if (length < 0) return false;
    canvas.cursor[0] = length / 2;
    if (count == 0) {
        canvas.viewHigh = canvas.viewLength = canvas.totalLength;
        laCanvas_Rescale(canvas, false);
        return true;
    }
    // No view of the canvas before is taken for this one, and the first fetch is of what is shown alone.
    canvas.viewLow = canvas.viewHigh = 0;
    const bool prefetch = canvas.prefetch;
    canvas.prefetch = false;
    const bool shown = laCanvas_ShowRange(canvas, 0, length, false, true);
    canvas.prefetch = prefetch;
    return shown && canvas.viewHigh > canvas.viewLow;
}

}  // namespace

void laCanvas_TakeBounds(_LaCanvasData& canvas) {
    const mt_Range range = mt_GetTimeRange(*canvas.store);
    const uint32_t count = mt_GetEventCount(*canvas.store);
    canvas.storeHasEvents = count > 0;
    canvas.eventBatch = count < 10000 ? 1000 : 10000;
    canvas.baseTick = range.first;
    canvas.totalLength = static_cast<double>(range.end - range.first) / canvas.ticksPerSecond;
    const double margin = std::max(canvas.totalLength / 1000, 1e-12);
    canvas.scrollExtent = std::max(canvas.scrollExtent, canvas.totalLength + margin);
}

void laCanvas_SourceGrew(_LaCanvasData& canvas) {
    if (!canvas.store) return;
    mt_RefreshIndex(*canvas.store);
    laCanvas_TakeBounds(canvas);
    // What was fetched up to the old end may lack what came at that very time.
    if (canvas.viewHigh >= canvas.cachedHigh) canvas.cachedLow = canvas.cachedHigh = 0;
    const uint32_t flags = canvas.flags;
    canvas.flags |= Canvas_LiveRefresh;  // so that the same view is fetched anew
    laCanvas_ShowRange(canvas, canvas.viewLow, canvas.viewHigh, false, false);
    canvas.flags = (canvas.flags & ~Canvas_LiveRefresh) | (flags & Canvas_LiveRefresh);
    laCanvas_Rescale(canvas, false);
    laCanvas_UpdateTotal(canvas);
}

double laSession_SampleSpan(const _LaCanvasData& canvas, uint32_t count) {
    EventWalk walk;
    if (!mt_StartWalkBySequence(*canvas.store, 1, count, nullptr, walk)) return -1;
    EventRecord event;
    uint64_t first = 0, last = 0;
    uint32_t seen = 0;
    for (; mt_NextEvent(walk, event); ++seen) {
        if (seen == 0) first = event.time;
        last = event.time;
    }
    if (seen == 0) return -1;
    return seen < count ? 0 : static_cast<double>(static_cast<int64_t>(last - first)) / canvas.ticksPerSecond;
}

double laSession_FirstViewLength(const _LaCanvasData& canvas, uint32_t eventCount) {
    const int stepWidth = std::max(1, canvas.maxIconWidth);
    uint32_t wanted = static_cast<uint32_t>(std::max(30, 2 * (canvas.graph->width / stepWidth)));
    if (eventCount <= wanted) return canvas.totalLength;
    for (int tries = 0; tries < 8; ++tries) {
        const double span = laSession_SampleSpan(canvas, wanted + 1);
        if (span > 0) return span;
        wanted = std::min(wanted * 2, eventCount - 1);
    }
    for (double divisor : {10000.0, 1000.0, 100.0, 10.0})
        if (canvas.totalLength / divisor >= 1e-8) return canvas.totalLength / divisor;
    return canvas.totalLength;
}

bool laCanvas_SetUpFromStore(_LaCanvasData& canvas, TraceStorePtr store, Legend legend,
                             const std::string& name) {
    laCanvas_Reset(canvas, true, false);
    if (store == nullptr || !laCanvas_LoadLegend(canvas, std::move(legend))) return fail(canvas, name);
    canvas.store = std::move(store);
    const char* osName = mt_GetOsName(canvas.store.get());
    canvas.osKind = legend_OsKind(osName != nullptr ? osName : "");
    canvas.timeMode = canvas.osKind == Os_TraceFunctionFlow ? Time_Tick : Time_Second;
    // In tick mode times are the tick numbers themselves.
    const uint64_t rate = mt_GetTicksPerSecond(*canvas.store);
    if (rate == 0) return fail(canvas, name);
    canvas.ticksPerSecond = canvas.timeMode == Time_Tick ? 1.0 : static_cast<double>(rate);
    canvas.sourcePath = path_directory(name);
    canvas.sourceFile = std::string(path_file(name));
    canvas.scrollExtent = 0;
    laCanvas_TakeBounds(canvas);
    if (!show_first_view(canvas, mt_GetEventCount(*canvas.store))) return fail(canvas, name);
    canvas.canvasName = name + " - " + programTitle;
    canvas.shortName = canvas.sourceFile;
    laCanvas_UpdateTotal(canvas);
    laCanvas_UpdateFields(canvas, Fields_View | Fields_Selection);
    return true;
}
