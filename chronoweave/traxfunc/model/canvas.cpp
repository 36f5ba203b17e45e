#include "chronoweave/traxfunc/model/canvas.h"

#include <algorithm>

#include "chronoweave/traxfunc/draw/layout.h"
#include "chronoweave/traxfunc/draw/scroll.h"
#include "chronoweave/traxfunc/draw/view.h"
#include "chronoweave/traxfunc/list/task_list.h"
#include "chronoweave/traxfunc/model/time.h"
#include "chronoweave/traxfunc/session/legend_save.h"
#include "shared/libcxxutil/gate.h"
#include "shared/libcxxutil/report.h"
#include "windlib/dialog/model.h"

namespace {

constexpr int thickestLine = 1000;  // pixels; keeps a damaged legend from overflowing the geometry

void tell_missing(const _LaCanvasData& canvas, const LegendEvent& event) {
    gen_console("Can't find icon <%s> required by the legend event <%s>, \nuse <help> icon instead!\n",
                event.iconName.c_str(), event.name.c_str());
    laCanvas_Beep(canvas);
}

// With tell, icons that are not there are reported.
void look_up_icons(_LaCanvasData& canvas, bool tell) {
    const IconHandle help = icon_Find("help");
    canvas.looks.eventLooks.clear();
    canvas.looks.anyImportantEvent = false;
    for (const LegendEvent& event : canvas.looks.legend.events) {
        LaEventLook look;
        if (!event.isCategory() && !event.iconName.empty()) {
            look.icon = icon_Find(event.iconName);
            if (look.icon == NoIcon) {
                look.icon = help;
                if (tell) tell_missing(canvas, event);
            }
            look.width = icon_Width(look.icon);
            look.height = icon_Height(look.icon);
        }
        look.shown = look.icon != NoIcon && event.visibility() != 0;
        look.important = event.isImportant();
        canvas.looks.anyImportantEvent = canvas.looks.anyImportantEvent || (look.shown && look.important);
        canvas.looks.eventLooks.push_back(look);
    }
    canvas.looks.overlapIcon = canvas.looks.legend.misc.overlapIcon.empty()
                                   ? NoIcon
                                   : icon_Find(canvas.looks.legend.misc.overlapIcon);
}

void make_status_looks(_LaCanvasData& canvas) {
    canvas.looks.statusLooks.clear();
    for (const LegendStatus& status : canvas.looks.legend.statuses) {
        LaStatusLook look;
        look.colour = colour_From16(status.red, status.green, status.blue);
        look.thickness = std::clamp(status.thickness, 1, thickestLine);
        look.style = std::clamp<int>(status.lineStyle, Line_Solid, Line_DashDotDot);
        look.shown = status.visible;
        look.isExecution = status.isExecution;
        look.isContextSwitch = status.isContextSwitch;
        canvas.looks.statusLooks.push_back(look);
    }
}

void compute_extents(_LaCanvasData& canvas) {
    canvas.looks.maxIconHeight = canvas.looks.maxIconWidth = canvas.looks.maxLineThickness = 0;
    canvas.looks.maxExtent = 16;
    for (const LaEventLook& look : canvas.looks.eventLooks) {
        canvas.looks.maxIconWidth = std::max(canvas.looks.maxIconWidth, look.width);
        canvas.looks.maxExtent = std::max({canvas.looks.maxExtent, look.width, look.height});
        if (look.shown) canvas.looks.maxIconHeight = std::max(canvas.looks.maxIconHeight, look.height);
    }
    for (const LaStatusLook& look : canvas.looks.statusLooks) {
        canvas.looks.maxExtent = std::max(canvas.looks.maxExtent, look.thickness);
        if (look.shown && !look.isContextSwitch)
            canvas.looks.maxLineThickness = std::max(canvas.looks.maxLineThickness, look.thickness);
    }
}

bool take_looks(_LaCanvasData& canvas, bool tell) {
    look_up_icons(canvas, tell);
    make_status_looks(canvas);
    compute_extents(canvas);
    return laCanvas_UpdateRowHeight(canvas);
}

void take_settings(_LaCanvasData& canvas) {
    const LegendMisc& misc = canvas.looks.legend.misc;
    canvas.looks.centerStatus = misc.centerStatus;
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
    const auto set_flag = [&](uint32_t bit, bool on) {
        canvas.view.flags = on ? canvas.view.flags | bit : canvas.view.flags & ~bit;
    };
    set_flag(Canvas_ExtraDataWarning, misc.extraDataWarning);
    set_flag(Canvas_UnusedExtraDataWarning, misc.unusedExtraDataWarning);
}

}  // namespace

_LaCanvasData::_LaCanvasData(LaGraph& place) : graph(&place) {
    list.taskList = std::make_unique<TraxTaskList>(*this);
}

_LaCanvasData::~_LaCanvasData() {
    gate_Program().Forget(this);
    graph->horizontal.onChange = nullptr;
    graph->vertical.onChange = nullptr;
}

std::unique_ptr<_LaCanvasData> laCanvas_Create(LaGraph& graph, int contentHeight) {
    auto canvas = std::make_unique<_LaCanvasData>(graph);
    canvas->view.contentHeight = contentHeight;
    laCanvas_UpdateRowHeight(*canvas);
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
    laCanvas_UpdateRowHeight(canvas);
    laCanvas_Rescale(canvas, false);
    if (announce) laCanvas_UpdateFields(canvas, 0, " ");
}

void laCanvas_ReleaseSource(_LaCanvasData& canvas) {
    if (canvas.calls.legendWindow != nullptr) canvas.calls.legendWindow->close(Dialog_Dismissed);
    laCanvas_ClearItems(canvas);
    canvas.list.taskList->Clear(true);
    canvas.source.store.reset();
    const LegendMisc kept = laLegend_Kept(canvas);
    canvas.looks.legend = Legend();
    canvas.looks.legend.misc = kept;
    canvas.looks.eventLooks.clear();
    canvas.looks.statusLooks.clear();
    canvas.looks.overlapIcon = NoIcon;
    compute_extents(canvas);
    take_settings(canvas);
    canvas.list.flatView = canvas.list.sortAroundEvent = false;
    canvas.view.flags &= ~Canvas_LegendChanged;
    canvas.source.canvasName.clear();
    canvas.source.shortName.clear();
    canvas.items.cpus.clear();
    canvas.marks.markedEvent = 0;
}

void laCanvas_ClearItems(_LaCanvasData& canvas) {
    canvas.list.taskList->Clear(false);
    canvas.items.lanes.clear();
    canvas.items.laneIndex.clear();
    canvas.items.hiddenAgent = laNoLane;
    canvas.items.bitmaps.clear();
    canvas.items.ctxLines.clear();
    for (LaCpuEntry& cpu : canvas.items.cpus) cpu.running = laNoLane;
    canvas.items.cachedLow = canvas.items.cachedHigh = 0;
    ++canvas.items.itemsVersion;
}

bool laCanvas_LoadLegend(_LaCanvasData& canvas, Legend legend) {
    if (legend.empty() || legend.unknownStatus < 0 || legend.unknownEvent < 0 ||
        legend.contextSwitchStatus < 0 || legend.events.size() > UINT16_MAX)
        return false;
    canvas.looks.legend = std::move(legend);
    take_settings(canvas);
    take_looks(canvas, true);
    return true;
}

bool laCanvas_LegendTouched(_LaCanvasData& canvas) {
    return take_looks(canvas, false);
}

bool laCanvas_UpdateRowHeight(_LaCanvasData& canvas) {
    const int content = canvas.looks.centerStatus
                            ? std::max(canvas.looks.maxIconHeight, canvas.looks.maxLineThickness)
                            : canvas.looks.maxIconHeight + canvas.looks.maxLineThickness;
    const int height = static_cast<int>(std::max(content, canvas.graph->font.height) * 1.2);
    if (height == canvas.looks.rowHeight) return false;
    canvas.looks.rowHeight = height;
    return true;
}

std::string laCanvas_Plural(std::string_view term) {
    return std::string(term) + "s";
}

void laCanvas_Paint(_LaCanvasData& canvas, const std::function<void()>& work) {
    if (canvas.calls.upper.draw && canvas.graph->surface == nullptr)
        canvas.calls.upper.draw(work);
    else
        work();
}

void laCanvas_Beep(const _LaCanvasData& canvas) {
    if (canvas.graph->beep) canvas.graph->beep();
}

void laCanvas_Refuse(_LaCanvasData& canvas, std::string_view message) {
    laCanvas_Beep(canvas);
    laCanvas_UpdateFields(canvas, 0, std::string(message).c_str());
}
