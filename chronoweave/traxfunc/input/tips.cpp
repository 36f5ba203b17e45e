#include "chronoweave/traxfunc/input/tips.h"

#include <algorithm>
#include <chrono>

#include "chronoweave/rtos/extra_format.h"
#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/draw/icon_walk.h"
#include "chronoweave/traxfunc/fetch/stretch_ends.h"
#include "chronoweave/traxfunc/input/icon_counts.h"
#include "chronoweave/traxfunc/list/task_list.h"
#include "chronoweave/traxfunc/model/list.h"
#include "chronoweave/traxfunc/model/time.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

std::string quoted(const std::string& name) {
    return '"' + text_utf8(name) + '"';
}

// The object of a lane as a context line's tip names it.
std::string object_text(const _LaCanvasData& canvas, uint32_t lane) {
    const laItem_Line& item = canvas.items.lanes[lane];
    return canvas.list.objectTerm + (item.hasName ? " " + quoted(std::string(laTask_WithoutFake(item.name)))
                                                  : gen_format(" 0x%x", item.objectId));
}

std::string begin_text(const _LaCanvasData& canvas, const LaStretchEnd& from) {
    const std::string time = laTip_Time(canvas, from.time);
    switch (from.known) {
        case LaEndKnown::Exact:
            return " from " + time;
        case LaEndKnown::Beyond:
            return " began before " + time;
        case LaEndKnown::NotYet:
        case LaEndKnown::Lost:
            break;
    }
    return " from before " + time;
}

std::string end_text(const _LaCanvasData& canvas, const LaStretchEnd& to) {
    const std::string time = laTip_Time(canvas, to.time);
    switch (to.known) {
        case LaEndKnown::Exact:
            return " to " + time;
        case LaEndKnown::Beyond:
            return " and goes on at " + time;
        case LaEndKnown::NotYet:
        case LaEndKnown::Lost:
            break;
    }
    return " to after " + time;
}

std::string status_tip(_LaCanvasData& canvas, const laItemRef& item, const Progress& goOn) {
    const laItem_Line& lane = canvas.items.lanes[item.lane];
    const LaLnSeg segment = lane.segments[item.index];
    std::string text =
        "Status " + quoted(canvas.looks.legend.statuses[static_cast<size_t>(segment.status)].name);
    if (canvas.axis.timeMode == Time_Tick)
        text += " on " + quoted(std::string(laTask_WithoutFake(laCanvas_LaneName(canvas.list, lane))));
    return text + laTip_Stretch(canvas, item, goOn);
}

// How many events an icon stands for, and of which names, the most frequent first.
std::string group_text(const _LaCanvasData& canvas, const laItem_Bitmap& icon, size_t index) {
    const laItem_Line& lane = canvas.items.lanes[icon.lane];
    size_t number = lane.icons.FirstFrom(icon.time);
    while (number < lane.icons.size() && laBm_OfLane(canvas.items, icon.lane, number) != index) ++number;
    const laIconGroup group = laIcons_Group(canvas.scene(), lane, number);
    const std::string counts = laIcons_CountText(canvas, lane, group);
    return counts.empty() ? counts : '\n' + counts;
}

std::string event_tip(_LaCanvasData& canvas, const laItemRef& item) {
    const laItem_Bitmap icon = canvas.items.bitmaps[static_cast<uint32_t>(item.index)];
    const std::string extra = laItem_EventText(canvas, icon);
    return "Event " + quoted(laItem_EventName(canvas, icon)) + (extra.empty() ? "" : ", " + extra) +
           group_text(canvas, icon, item.index);
}

std::string switch_tip(const _LaCanvasData& canvas, const laItemRef& item) {
    const laItem_Ctx line = canvas.items.ctxLines[static_cast<uint32_t>(item.index)];
    const std::string& name = canvas.looks.legend.statuses[static_cast<size_t>(line.status)].name;
    return (name.empty() ? "Context Switch" : text_utf8(name)) + " from " +
           object_text(canvas, line.fromLane) + " to " + object_text(canvas, line.toLane);
}

Progress for_so_long(int milliseconds) {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::milliseconds(milliseconds);
    return [end](double, double) { return Clock::now() < end; };
}

// That there is more to tell of it, if there is.
void note_rest(_LaCanvasData& canvas, const laItemRef& item) {
    const bool open = item.itype == laItemType::Line && !laStretch_Of(canvas.items, item).settled();
    canvas.hand.tipItem = open ? std::optional(item) : std::nullopt;
    canvas.hand.tipItems = canvas.items.itemsVersion;
}

}  // namespace

std::string laTip_Time(const _LaCanvasData& canvas, double time) {
    return laTime_TrimZeros(laCanvas_ExactTime(canvas, time));
}

std::string laTip_Stretch(_LaCanvasData& canvas, const laItemRef& item, const Progress& goOn) {
    const LaStretch stretch =
        laStretch_Complete(canvas.items, canvas.source, canvas.looks.legend, item, goOn);
    const bool ticks = canvas.axis.timeMode == Time_Tick;
    std::string text = begin_text(canvas, stretch.from);
    if (!ticks || stretch.to.known != LaEndKnown::Exact) text += end_text(canvas, stretch.to);
    text += stretch.whole() ? " with length " : " with length over ";
    return text + laTip_Time(canvas, stretch.to.time - stretch.from.time) + " (in " +
           laTime_UnitName(canvas.axis, true) + "s)";
}

std::string laItem_EventName(const _LaCanvasData& canvas, const laItem_Bitmap& icon) {
    const LegendEvent& event = canvas.looks.legend.events[static_cast<size_t>(icon.event)];
    const bool codes = event.IsWildcard() || icon.event == canvas.looks.legend.unknownEvent;
    return event.name + (codes ? gen_format("(Types=0x%x/0x%x)", icon.type, icon.subtype) : "");
}

namespace {

// The event of an icon as the store has it; false when it is not there. The walk keeps its bytes.
bool read_event(const _LaCanvasData& canvas, const laItem_Bitmap& icon, EventWalk& walk, EventRecord& event) {
    const uint32_t wanted = laItem_StoreSequence(canvas.items, icon);
    return canvas.source.store && mt_StartWalkAtEvent(*canvas.source.store, wanted, 1, nullptr, walk) &&
           mt_NextEvent(walk, event) && event.sequence == wanted;
}

}  // namespace

std::string laItem_EventText(_LaCanvasData& canvas, const laItem_Bitmap& icon) {
    const std::string& format = canvas.looks.legend.events[static_cast<size_t>(icon.event)].extraFormat;
    EventWalk walk;
    EventRecord event;
    if (format.empty() || !read_event(canvas, icon, walk, event)) return {};
    std::string text;
    bool problem = false;
    extra_Format(event, format, mt_IsBigEndianTarget(*canvas.source.store), canvas.options.extraDataWarning,
                 canvas.options.unusedExtraDataWarning, text, &problem);
    return text_utf8(text);
}

std::string laItem_EventData(const _LaCanvasData& canvas, const laItem_Bitmap& icon) {
    EventWalk walk;
    EventRecord event;
    if (!read_event(canvas, icon, walk, event)) return {};
    return {event.extra.begin(), event.extra.end()};
}

std::string laTip_Text(_LaCanvasData& canvas, const laItemRef& item, const Progress& goOn) {
    switch (item.itype) {
        case laItemType::Line:
            return status_tip(canvas, item, goOn);
        case laItemType::Bitmap:
            return event_tip(canvas, item);
        case laItemType::Ctx:
            return switch_tip(canvas, item);
        case laItemType::None:
            break;
    }
    return {};
}

std::string laTip_TextWithin(_LaCanvasData& canvas, const laItemRef& item, int milliseconds) {
    std::string text = laTip_Text(canvas, item, for_so_long(milliseconds));
    canvas.hand.tipAhead.clear();
    note_rest(canvas, item);
    return text;
}

std::string laTip_AroundStretch(_LaCanvasData& canvas, const laItemRef& item, std::string ahead,
                                std::string behind, int milliseconds) {
    std::string text = ahead + laTip_Stretch(canvas, item, for_so_long(milliseconds)) + behind;
    canvas.hand.tipAhead = std::move(ahead);
    canvas.hand.tipBehind = std::move(behind);
    note_rest(canvas, item);
    return text;
}

std::optional<std::string> laTip_More(_LaCanvasData& canvas, int milliseconds) {
    if (!canvas.hand.tipItem || canvas.hand.tipItems != canvas.items.itemsVersion) {
        canvas.hand.tipItem.reset();
        return std::nullopt;
    }
    LaHand& hand = canvas.hand;
    std::string text = hand.tipAhead.empty() ? laTip_TextWithin(canvas, *hand.tipItem, milliseconds)
                                             : laTip_AroundStretch(canvas, *hand.tipItem, hand.tipAhead,
                                                                   hand.tipBehind, milliseconds);
    return canvas.hand.tipItem ? std::string() : std::move(text);
}
