#include "chronoweave/traxfunc/input/life.h"

#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/canvas/rows.h"
#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/fetch/lanes.h"
#include "chronoweave/traxfunc/input/scroll.h"
#include "chronoweave/traxfunc/list/task_list.h"
#include "windlib/dialog/model.h"

namespace {

void take_settings(_LaCanvasData& canvas) {
    const LegendMisc& misc = canvas.looks.legend.misc;
    canvas.axis.tickPattern = misc.tickPattern;
    canvas.list.showHiddenAgent = misc.showHiddenAgent;
    canvas.options.allForIntervalSearch = misc.allForIntervalSearch;
    canvas.list.sortField = misc.sortField;
    canvas.list.sortAscending = misc.sortAscending;
    canvas.list.separator = misc.separator;
    canvas.list.objectTerm = misc.objectTerm;
    canvas.list.objectTermLower = misc.objectTermLower;
    canvas.options.refreshInterval = misc.refreshInterval;
    canvas.options.maxRefreshedEvents = misc.maxRefreshedEvents;
    canvas.options.targetTimeout = misc.targetTimeout;
    canvas.options.extraDataWarning = misc.extraDataWarning;
    canvas.options.unusedExtraDataWarning = misc.unusedExtraDataWarning;
}

// The list tells whom the canvas tells.
void connect_list(_LaCanvasData& canvas) {
    canvas.taskList->rowsChanged = [&canvas] { laCanvas_Relayout(canvas); };
    canvas.taskList->openObject = [&canvas](uint32_t objectId) {
        if (canvas.calls.openInfo) canvas.calls.openInfo(objectId);
        return static_cast<bool>(canvas.calls.openInfo);
    };
    canvas.taskList->changed = [&canvas](MslChange change) {
        if (change == MslChange::Footer)
            laCanvas_UpdateFields(canvas, 0, canvas.taskList->list().Footer().c_str());
        if (change != MslChange::Scroll && canvas.graph->listChanged) canvas.graph->listChanged();
    };
}

}  // namespace

std::unique_ptr<_LaCanvasData> laCanvas_Create(LaGraph& graph, int contentHeight) {
    auto canvas = std::make_unique<_LaCanvasData>(graph);
    canvas->view.contentHeight = contentHeight;
    laCanvas_UpdateRowHeight(canvas->looks, graph.font);
    laCanvas_Rescale(*canvas);
    graph.horizontal.onChange = [&target = *canvas] { laCanvas_HorizontalScrolled(target); };
    graph.vertical.onChange = [&target = *canvas] { laCanvas_VerticalScrolled(target); };
    connect_list(*canvas);
    return canvas;
}

void laCanvas_Reset(_LaCanvasData& canvas, laResetOf what) {
    canvas.past.historyNewest = canvas.past.historyOldest = canvas.past.historyCurrent = -1;
    canvas.marks.pendingCursorX = -100;
    canvas.view.verticalOffset = 0;
    canvas.source.clock.baseTick = 0;
    canvas.source.totalLength = canvas.source.scrollExtent = canvas.view.viewHigh = canvas.view.viewLength =
        1e-6;
    canvas.view.viewLow = 0;
    canvas.source.storeHasEvents = false;
    canvas.marks.cursor[0] = canvas.marks.cursor[1] = -100.0;
    canvas.axis.timeMode = Time_Second;
    canvas.axis.tickDigits = canvas.axis.tickFormat = 0;
    canvas.axis.tickStep = canvas.axis.tickBase = 0;
    canvas.view.contentHeight = 0;
    canvas.marks.bookmarks.clear();
    canvas.marks.hits.clear();
    laCanvas_ClearItems(canvas);
    if (what == laResetOf::Source) laCanvas_ReleaseSource(canvas);
    laCanvas_UpdateRowHeight(canvas.looks, canvas.graph->font);
    laCanvas_Rescale(canvas);
}

void laCanvas_ReleaseSource(_LaCanvasData& canvas) {
    if (canvas.calls.legendWindow != nullptr) canvas.calls.legendWindow->close(Dialog_Dismissed);
    laCanvas_ClearItems(canvas);
    canvas.taskList->Clear(true);
    laLanes_Close(canvas.source);
    canvas.source.store.reset();
    laLooks_Drop(canvas.looks, laLegend_Kept(canvas.options));
    take_settings(canvas);
    canvas.list.flatView = canvas.list.sortAroundEvent = false;
    canvas.list.onlyActive = canvas.list.mostActiveFirst = false;
    canvas.list.madeFor.reset();
    canvas.source.damage.clear();
    canvas.source.canvasName.clear();
    canvas.source.shortName.clear();
    canvas.marks.markedEvent = 0;
}

bool laCanvas_LoadLegend(_LaCanvasData& canvas, Legend legend) {
    if (!laLooks_Load(canvas.looks, std::move(legend), canvas.graph->beep)) return false;
    take_settings(canvas);
    laCanvas_UpdateRowHeight(canvas.looks, canvas.graph->font);
    return true;
}

bool laCanvas_LegendTouched(_LaCanvasData& canvas) {
    laLooks_Touched(canvas.looks);
    return laCanvas_UpdateRowHeight(canvas.looks, canvas.graph->font);
}

LegendMisc laLegend_Kept(const LaOptions& options) {
    LegendMisc misc;
    misc.refreshInterval = options.refreshInterval;
    misc.maxRefreshedEvents = options.maxRefreshedEvents;
    misc.targetTimeout = options.targetTimeout;
    return misc;
}
