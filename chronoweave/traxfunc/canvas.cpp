#include "chronoweave/traxfunc/canvas.h"

#include <algorithm>

#include "chronoweave/traxfunc/layout.h"
#include "chronoweave/traxfunc/legend_save.h"
#include "chronoweave/traxfunc/scroll.h"
#include "chronoweave/traxfunc/task_list.h"
#include "chronoweave/traxfunc/time.h"
#include "chronoweave/traxfunc/view.h"
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
    canvas.eventLooks.clear();
    canvas.anyImportantEvent = false;
    for (const LegendEvent& event : canvas.legend.events) {
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
        canvas.anyImportantEvent = canvas.anyImportantEvent || (look.shown && look.important);
        canvas.eventLooks.push_back(look);
    }
    canvas.overlapIcon =
        canvas.legend.misc.overlapIcon.empty() ? NoIcon : icon_Find(canvas.legend.misc.overlapIcon);
}

void make_status_looks(_LaCanvasData& canvas) {
    canvas.statusLooks.clear();
    for (const LegendStatus& status : canvas.legend.statuses) {
        LaStatusLook look;
        look.colour = colour_From16(status.red, status.green, status.blue);
        look.thickness = std::clamp(status.thickness, 1, thickestLine);
        look.style = std::clamp<int>(status.lineStyle, Line_Solid, Line_DashDotDot);
        look.shown = status.visible;
        look.isExecution = status.isExecution;
        look.isContextSwitch = status.isContextSwitch;
        canvas.statusLooks.push_back(look);
    }
}

void compute_extents(_LaCanvasData& canvas) {
    canvas.maxIconHeight = canvas.maxIconWidth = canvas.maxLineThickness = 0;
    canvas.maxExtent = 16;
    for (const LaEventLook& look : canvas.eventLooks) {
        canvas.maxIconWidth = std::max(canvas.maxIconWidth, look.width);
        canvas.maxExtent = std::max({canvas.maxExtent, look.width, look.height});
        if (look.shown) canvas.maxIconHeight = std::max(canvas.maxIconHeight, look.height);
    }
    for (const LaStatusLook& look : canvas.statusLooks) {
        canvas.maxExtent = std::max(canvas.maxExtent, look.thickness);
        if (look.shown && !look.isContextSwitch)
            canvas.maxLineThickness = std::max(canvas.maxLineThickness, look.thickness);
    }
}

bool take_looks(_LaCanvasData& canvas, bool tell) {
    look_up_icons(canvas, tell);
    make_status_looks(canvas);
    compute_extents(canvas);
    return laCanvas_UpdateRowHeight(canvas);
}

void take_settings(_LaCanvasData& canvas) {
    const LegendMisc& misc = canvas.legend.misc;
    canvas.centerStatus = misc.centerStatus;
    canvas.tickPattern = misc.tickPattern;
    canvas.showHiddenAgent = misc.showHiddenAgent;
    canvas.allForIntervalSearch = misc.allForIntervalSearch;
    canvas.sortField = misc.sortField;
    canvas.sortAscending = misc.sortAscending;
    canvas.separator = misc.separator;
    canvas.objectTerm = misc.objectTerm;
    canvas.objectTermLower = misc.objectTermLower;
    canvas.refreshInterval = misc.refreshInterval;
    canvas.maxRefreshedEvents = misc.maxRefreshedEvents;
    canvas.targetTimeout = misc.targetTimeout;
    const auto set_flag = [&](uint32_t bit, bool on) {
        canvas.flags = on ? canvas.flags | bit : canvas.flags & ~bit;
    };
    set_flag(Canvas_ExtraDataWarning, misc.extraDataWarning);
    set_flag(Canvas_UnusedExtraDataWarning, misc.unusedExtraDataWarning);
}

}  // namespace

_LaCanvasData::_LaCanvasData(LaGraph& place)
    : graph(&place), taskList(std::make_unique<TraxTaskList>(*this)) {}

_LaCanvasData::~_LaCanvasData() {
    graph->horizontal.onChange = nullptr;
    graph->vertical.onChange = nullptr;
}

std::unique_ptr<_LaCanvasData> laCanvas_Create(LaGraph& graph, int contentHeight) {
    auto canvas = std::make_unique<_LaCanvasData>(graph);
    canvas->contentHeight = contentHeight;
    laCanvas_UpdateRowHeight(*canvas);
    laCanvas_Rescale(*canvas, false);
    _LaCanvasData* target = canvas.get();
    graph.horizontal.onChange = [target] { laCanvas_HorizontalScrolled(*target); };
    graph.vertical.onChange = [target] { laCanvas_VerticalScrolled(*target); };
    return canvas;
}

void laCanvas_Reset(_LaCanvasData& canvas, bool releaseSource, bool announce) {
    canvas.historyNewest = canvas.historyOldest = canvas.historyCurrent = -1;
    canvas.pendingCursorX = -100;
    canvas.verticalOffset = 0;
    canvas.baseTick = 0;
    canvas.totalLength = canvas.scrollExtent = canvas.viewHigh = canvas.viewLength = 1e-6;
    canvas.viewLow = 0;
    canvas.storeHasEvents = false;
    canvas.cursor[0] = canvas.cursor[1] = -100.0;
    canvas.timeMode = Time_Second;
    canvas.tickDigits = canvas.tickFormat = 0;
    canvas.tickStep = canvas.tickBase = 0;
    canvas.contentHeight = 0;
    canvas.bookmarks.clear();
    canvas.hits.clear();
    laCanvas_ClearItems(canvas);
    if (releaseSource) laCanvas_ReleaseSource(canvas);
    laCanvas_UpdateRowHeight(canvas);
    laCanvas_Rescale(canvas, false);
    if (announce) laCanvas_UpdateFields(canvas, 0, " ");
}

void laCanvas_ReleaseSource(_LaCanvasData& canvas) {
    if (canvas.legendWindow != nullptr) canvas.legendWindow->close(Dialog_Dismissed);
    laCanvas_ClearItems(canvas);
    canvas.taskList->Clear(true);
    canvas.store.reset();
    const LegendMisc kept = laLegend_Kept(canvas);
    canvas.legend = Legend();
    canvas.legend.misc = kept;
    canvas.eventLooks.clear();
    canvas.statusLooks.clear();
    canvas.overlapIcon = NoIcon;
    compute_extents(canvas);
    take_settings(canvas);
    canvas.flatView = canvas.sortAroundEvent = false;
    canvas.flags &= ~Canvas_LegendChanged;
    canvas.canvasName.clear();
    canvas.shortName.clear();
    canvas.cpus.clear();
    canvas.markedEvent = 0;
}

void laCanvas_ClearItems(_LaCanvasData& canvas) {
    canvas.taskList->Clear(false);
    canvas.lanes.clear();
    canvas.laneIndex.clear();
    canvas.hiddenAgent = laNoLane;
    canvas.bitmaps.clear();
    canvas.ctxLines.clear();
    for (LaCpuEntry& cpu : canvas.cpus) cpu.running = laNoLane;
    canvas.cachedLow = canvas.cachedHigh = 0;
    ++canvas.itemsVersion;
}

bool laCanvas_LoadLegend(_LaCanvasData& canvas, Legend legend) {
    if (legend.empty() || legend.unknownStatus < 0 || legend.unknownEvent < 0 ||
        legend.contextSwitchStatus < 0 || legend.events.size() > UINT16_MAX)
        return false;
    canvas.legend = std::move(legend);
    take_settings(canvas);
    take_looks(canvas, true);
    return true;
}

bool laCanvas_LegendTouched(_LaCanvasData& canvas) {
    return take_looks(canvas, false);
}

bool laCanvas_UpdateRowHeight(_LaCanvasData& canvas) {
    const int content = canvas.centerStatus ? std::max(canvas.maxIconHeight, canvas.maxLineThickness)
                                            : canvas.maxIconHeight + canvas.maxLineThickness;
    const int height = static_cast<int>(std::max(content, canvas.graph->font.height) * 1.2);
    if (height == canvas.rowHeight) return false;
    canvas.rowHeight = height;
    return true;
}

std::string laCanvas_Plural(std::string_view term) {
    return std::string(term) + "s";
}

void laCanvas_Paint(_LaCanvasData& canvas, const std::function<void()>& work) {
    if (canvas.upper.draw && canvas.graph->surface == nullptr)
        canvas.upper.draw(work);
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
