#include "chronoweave/traxfunc/canvas/canvas.h"

#include <algorithm>

#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/draw/layout.h"
#include "chronoweave/traxfunc/input/scroll.h"
#include "chronoweave/traxfunc/list/task_list.h"
#include "chronoweave/traxfunc/model/time.h"
#include "chronoweave/traxfunc/session/legend_save.h"
#include "shared/libcxxutil/gate.h"
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

}  // namespace

_LaCanvasData::_LaCanvasData(LaGraph& place)
    : graph(&place), taskList(std::make_unique<TraxTaskList>(*this)) {}

_LaCanvasData::~_LaCanvasData() {
    gate_Program().Forget(this);
    graph->horizontal.onChange = nullptr;
    graph->vertical.onChange = nullptr;
}

std::unique_ptr<_LaCanvasData> laCanvas_Create(LaGraph& graph, int contentHeight) {
    auto canvas = std::make_unique<_LaCanvasData>(graph);
    canvas->view.contentHeight = contentHeight;
    laCanvas_UpdateRowHeight(canvas->looks, graph.font);
    laCanvas_Rescale(*canvas, false);
    _LaCanvasData* target = canvas.get();
    graph.horizontal.onChange = [target] { laCanvas_HorizontalScrolled(*target); };
    graph.vertical.onChange = [target] { laCanvas_VerticalScrolled(*target); };
    return canvas;
}

void laCanvas_Reset(_LaCanvasData& canvas, bool releaseSource, bool announce) {
    canvas.past.historyNewest = canvas.past.historyOldest = canvas.past.historyCurrent = -1;
    canvas.hand.pendingCursorX = -100;
    canvas.view.verticalOffset = 0;
    canvas.source.baseTick = 0;
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
    if (releaseSource) laCanvas_ReleaseSource(canvas);
    laCanvas_UpdateRowHeight(canvas.looks, canvas.graph->font);
    laCanvas_Rescale(canvas, false);
    if (announce) laCanvas_UpdateFields(canvas, 0, " ");
}

void laCanvas_ReleaseSource(_LaCanvasData& canvas) {
    if (canvas.calls.legendWindow != nullptr) canvas.calls.legendWindow->close(Dialog_Dismissed);
    laCanvas_ClearItems(canvas);
    canvas.taskList->Clear(true);
    canvas.source.store.reset();
    laLooks_Drop(canvas.looks, laLegend_Kept(canvas));
    take_settings(canvas);
    canvas.list.flatView = canvas.list.sortAroundEvent = false;
    canvas.source.damage.clear();
    canvas.source.canvasName.clear();
    canvas.source.shortName.clear();
    canvas.items.cpus.clear();
    canvas.marks.markedEvent = 0;
}

void laCanvas_ClearItems(_LaCanvasData& canvas) {
    canvas.taskList->Clear(false);
    laItems_Clear(canvas.items);
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

void laCanvas_Paint(_LaCanvasData& canvas, const std::function<void()>& work) {
    if (canvas.calls.upper.draw && canvas.graph->surface == nullptr)
        canvas.calls.upper.draw(work);
    else
        work();
}

int laCanvas_TimeToPixel(const _LaCanvasData& canvas, double value, int mode) {
    if (canvas.axis.timeMode != Time_Sequential) value = laTime_Convert(mode, value, Time_Second);
    return laTimeScale(canvas.view, canvas.axis, canvas.graph->width).toPixel(value);
}
