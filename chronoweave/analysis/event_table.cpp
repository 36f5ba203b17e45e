#include "chronoweave/analysis/event_table.h"

#include <algorithm>

#include "chronoweave/analysis/detail_walk.h"
#include "chronoweave/analysis/dialog_items.h"
#include "chronoweave/rtos/extra_format.h"
#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/input/tips.h"
#include "chronoweave/traxfunc/list/task_list.h"
#include "chronoweave/traxfunc/model/time.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"
#include "windlib/busy.h"
#include "windlib/dialog/layout_builder.h"

namespace {

constexpr uint32_t progressMask = 0x3FF;
constexpr uint32_t readAhead = 48;        // texts read at once
constexpr size_t mostTexts = 4096;        // kept of rows seen
constexpr size_t mostTypedTexts = 20000;  // events whose texts are filtered at each letter typed

std::string lowered(std::string text) {
    for (char& c : text) c = text_lower(c);
    return text;
}

// One filter field.
class Pattern {
  public:
    explicit Pattern(const std::string& typed)
        : pattern_(lowered(std::string(text_trim(typed)))),
          wild_(pattern_.find_first_of("*?") != std::string::npos) {}
    bool empty() const { return pattern_.empty(); }
    bool fits(const std::string& text) const {
        if (pattern_.empty()) return true;
        const std::string low = lowered(text);
        return wild_ ? text_matches(pattern_, low) : low.find(pattern_) != std::string::npos;
    }

  private:
    std::string pattern_;
    bool wild_;
};

std::string object_text(const _LaCanvasData& canvas, const laItem_Bitmap& icon) {
    if (icon.lane == laNoLane) return {};
    return text_utf8(laTask_WithoutFake(laCanvas_LaneName(canvas.list, canvas.items.lanes[icon.lane])));
}
std::string event_text(const _LaCanvasData& canvas, const laItem_Bitmap& icon) {
    return text_utf8(laItem_EventName(canvas, icon));
}

bool is_hidden(const laItem_Line& lane) {
    return lane.hidden && lane.row < 0;
}

// The text of an event as it is read, without a word of problems: a table asks for too many.
std::string extra_text(const _LaCanvasData& canvas, const EventRecord& event, int32_t row) {
    std::string text;
    const std::string& format = canvas.looks.legend.events[static_cast<size_t>(row)].extraFormat;
    if (!format.empty())
        extra_Format(event, format, mt_IsBigEndianTarget(*canvas.source.store), false, false, text, nullptr);
    return text_utf8(text);
}

// The events of the store behind given icons, which come in order.
class IconReader {
  public:
    IconReader(const _LaCanvasData& canvas, uint32_t first) : canvas_(canvas) {
        const uint32_t wanted = laItem_StoreSequence(canvas.items, canvas.items.bitmaps[first]);
        mt_StartWalkAtEvent(*canvas.source.store, wanted, 0, nullptr, walk_);
    }
    // False when the store ends ahead of it.
    bool Read(uint32_t icon) {
        const uint32_t wanted = laItem_StoreSequence(canvas_.items, canvas_.items.bitmaps[icon]);
        while (mt_NextEvent(walk_, event))
            if (event.sequence >= wanted) return event.sequence == wanted;
        return false;
    }
    EventRecord event;

  private:
    const _LaCanvasData& canvas_;
    EventWalk walk_;
};

}  // namespace

// The filters share a row; the message has what they leave of it.
DialogDescription event_TableDescription() {
    LayoutBuilder layout;
    layout.leastWidths({{.of = {"t_object", "t_event", "t_text"}, .pixels = 172, .letters = 46}});
    layout.leastHeight({.of = {"tf_object"}, .pixels = 12, .lines = 4});
    layout.firstWidths({{.letters = 120}});
    layout.firstHeight({.pixels = 12, .lines = 10});
    for (const char* filter : {"tf_object", "tf_event", "tf_text"})
        layout.width(filter, {.pixels = 24, .letters = 10});
    layout.fillWidth(
        "ts_info",
        {.less = {"t_object", "t_event", "t_text", "tf_object", "tf_event", "tf_text"}, .gaps = 64});
    layout.fillWidth("list", {.gaps = 8});
    layout.fillHeight("list", {.less = {"tf_object"}, .gaps = 12});
    layout.left({.items = {"t_object", "list"}, .gap = 4});
    layout.top({.items = {"tf_object", "tf_event", "tf_text"}, .gap = 4});
    layout.inRow({"t_object", "tf_object"}, 6);
    layout.inRow({"tf_object", "t_event"}, 12);
    layout.inRow({"t_event", "tf_event"}, 6);
    layout.inRow({"tf_event", "t_text"}, 12);
    layout.inRow({"t_text", "tf_text"}, 6);
    layout.inRow({"tf_text", "ts_info"}, 12);
    layout.baseline({"t_object", "t_event", "t_text", "ts_info"}, "tf_object");
    layout.below({.items = {"list"}, .of = "tf_object", .gap = 4});
    const auto filter = [](const char* name, const char* spoken) -> DialogItem {
        return {
            .name = name, .kind = DialogKind::TextField, .accessible = spoken, .room = std::string(10, 'n')};
    };
    return {.name = "EventTable",
            .title = "Events",
            .helpKey = "eventtable",
            .framed = false,
            .items = {item_Label("t_object", "Object:", "tf_object"),
                      filter("tf_object", "Filter by object"),
                      item_Label("t_event", "Event:", "tf_event"),
                      filter("tf_event", "Filter by event"),
                      item_Label("t_text", "Text:", "tf_text"),
                      filter("tf_text", "Filter by text"),
                      {.name = "ts_info",
                       .kind = DialogKind::StatusText,
                       .accessible = "Number of events",
                       .room = "00000 of 00000"},
                      {.name = "list",
                       .kind = DialogKind::List,
                       .accessible = "Events of the view",
                       .list = {"Time", "Distance", "Object", "Event", "Text"}}},
            .layout = layout.lines()};
}

EventTable::EventTable(_LaCanvasData& canvas)
    : canvas_(canvas), model_(event_TableDescription()), list_(model_.list("list")) {
    list_.sortByHeader = false;  // by time, always
    list_.nameColumn = Column_Event;
    for (const int column : {Column_Time, Column_Distance}) list_.SetRightAligned(column, true);
    const int letter = std::max(1, canvas.graph->font.charWidth);
    const int widths[] = {18, 16, 24, 30, 44};
    for (int column = 0; column < 5; ++column) list_.SetWidth(column, widths[column] * letter);
    model_.onSelect = [this](const std::string&) { Choose(model_.selectedRow("list")); };
    model_.onActivate = [this](const std::string&, int row) { Activate(row); };
    // A text is looked for at once while there is not much to read, else when it is finished.
    model_.onEdit = [this](const std::string& name, const std::string& text) {
        if (name != "tf_text" || text.empty() || Candidates().size() <= mostTypedTexts) Filter();
    };
    model_.onCommit = [this](const std::string& name, const std::string&) {
        if (name == "tf_text") Filter();
    };
    canvas.calls.iconPressed = [this](size_t icon) {
        if (!shown_) return;
        Sync();
        SelectIcon(static_cast<uint32_t>(icon), true);
    };
}

EventTable::~EventTable() {
    canvas_.calls.iconPressed = {};
    canvas_.marks.markedEvent = 0;
}

EventTable::Basis EventTable::Present() const {
    Basis now{canvas_.source.store.get(), canvas_.items.itemsVersion, canvas_.view.viewLow,
              canvas_.view.viewHigh,      canvas_.axis.timeMode,      canvas_.items.bitmaps.size()};
    const auto add = [&now](bool bit) { now.shown = (now.shown ^ (bit ? 0x9Eu : 0x3Bu)) * 0x100000001B3u; };
    for (uint32_t i = 0; i < canvas_.items.lanes.size(); ++i) add(is_hidden(canvas_.items.lanes[i]));
    for (const LaEventLook& look : canvas_.looks.eventLooks) add(look.shown);
    return now;
}

void EventTable::SetShown(bool shown) {
    shown_ = shown;
    basis_ = {};
    if (shown) return;
    canvas_.marks.markedEvent = 0;
    list_.SetLazyRows({[](uint32_t, int) { return std::string(); }, {}, {}}, 0);
    texts_.clear();
    textStates_ = {};
}

bool EventTable::Sync() {
    if (!shown_) return false;
    const Basis now = Present();
    const bool changed = !(now == basis_);
    if (changed) {
        basis_ = now;
        Filter();
    }
    FollowCursor();
    return changed;
}

bool EventTable::Escape(const std::string& item) {
    if (!item.starts_with("tf_") || model_.item(item).text.empty()) return false;
    model_.setText(item, "");
    Filter();
    return true;
}

void EventTable::Filter() {
    basis_ = Present();
    texts_.clear();
    list_.SetHeader(0, Column_Time, std::string("Time (") + laTime_UnitName(canvas_.axis, true) + "s)");
    std::vector<uint32_t> ids = Candidates();
    const bool stopped = NeedsText() && !FilterByText(ids);
    if (!NeedsText()) textStates_ = {};
    ShowRows(std::move(ids), stopped);
}

// The events of the view by object and name. What a name looks like is asked once per object and per row of
// the legend; those that show their codes are asked one by one.
std::vector<uint32_t> EventTable::Candidates() const {
    const Pattern object(model_.item("tf_object").text), event(model_.item("tf_event").text);
    std::vector<uint8_t> lanes(canvas_.items.lanes.size()), rows(canvas_.looks.legend.events.size());
    for (uint32_t i = 0; i < canvas_.items.lanes.size(); ++i) {
        const laItem_Line& lane = canvas_.items.lanes[i];
        lanes[i] = !is_hidden(lane) && (object.empty() || object.fits(object_text(canvas_, {0, i})));
    }
    constexpr uint8_t askEach = 2;
    for (size_t row = 0; row < rows.size(); ++row) {
        const LegendEvent& entry = canvas_.looks.legend.events[row];
        if (row >= canvas_.looks.eventLooks.size() || !canvas_.looks.eventLooks[row].shown) continue;
        const bool codes =
            entry.IsWildcard() || static_cast<int32_t>(row) == canvas_.looks.legend.unknownEvent;
        rows[row] = !event.empty() && codes ? askEach : event.fits(text_utf8(entry.name));
    }
    std::vector<uint32_t> ids;
    const uint32_t end = canvas_.items.bitmaps.size();
    for (uint32_t i = laBm_FirstAt(canvas_.items, canvas_.view.viewLow);
         i < end && canvas_.items.bitmaps[i].time <= canvas_.view.viewHigh; ++i) {
        const laItem_Bitmap icon = canvas_.items.bitmaps[i];
        if (icon.lane == laNoLane || !lanes[icon.lane]) continue;
        const uint8_t named = rows[static_cast<size_t>(icon.event)];
        if (named == 1 || (named == askEach && event.fits(event_text(canvas_, icon)))) ids.push_back(i);
    }
    return ids;
}

// Leaves the events whose text fits. What was read is kept while the filter and the canvas's items stay.
// False when it was stopped: those not read are left out.
bool EventTable::FilterByText(std::vector<uint32_t>& ids) {
    const std::string& typed = model_.item("tf_text").text;
    const Pattern pattern(typed);
    if (typed != textFilter_ || textItems_ != canvas_.items.itemsVersion ||
        textStates_.size() != canvas_.items.bitmaps.size()) {
        textFilter_ = typed;
        textItems_ = canvas_.items.itemsVersion;
        textStates_.assign(canvas_.items.bitmaps.size(), Fits::Unknown);
    }
    const auto unknown = std::find_if(ids.begin(), ids.end(),
                                      [this](uint32_t id) { return textStates_[id] == Fits::Unknown; });
    bool whole = true;
    if (unknown != ids.end() && canvas_.source.store) {
        const BusyWork busy(GateWork::Search, canvas_.graph->setBusy);
        IconReader reader(canvas_, *unknown);
        uint32_t count = 0;
        for (auto at = unknown; at != ids.end() && whole; ++at) {
            Fits& state = textStates_[*at];
            if ((++count & progressMask) == 0 && canvas_.calls.progress)
                whole = canvas_.calls.progress(static_cast<double>(at - unknown),
                                               static_cast<double>(ids.end() - unknown));
            if (!whole || state != Fits::Unknown) continue;
            const bool read = reader.Read(*at);
            const int32_t row = canvas_.items.bitmaps[*at].event;
            state = read && pattern.fits(extra_text(canvas_, reader.event, row)) ? Fits::Yes : Fits::No;
        }
    }
    std::erase_if(ids, [this](uint32_t id) { return textStates_[id] != Fits::Yes; });
    return whole;
}

void EventTable::ShowRows(std::vector<uint32_t> ids, bool stopped) {
    const size_t count = ids.size();
    list_.HoldRepaint(true);
    const int64_t top = list_.ViewTop();
    list_.SetLazyRows({[this](uint32_t id, int column) { return Cell(id, column); }, {}, {}}, std::move(ids));
    list_.ScrollTo(top);
    list_.HoldRepaint(false);
    model_.setMessage(std::to_string(count) + (count == 1 ? " event" : " events") +
                      (stopped ? " so far, stopped" : ""));
    if (canvas_.marks.markedEvent == 0) return;
    if (const auto icon = detail_FindIcon(canvas_, canvas_.marks.markedEvent))
        SelectIcon(static_cast<uint32_t>(*icon), false);
}

// Ids stand in order.
int EventTable::RowOf(uint32_t icon) const {
    int first = 0;
    for (int end = list_.RowCount(); first < end;) {
        const int middle = first + (end - first) / 2;
        if (list_.RowId(middle) < icon)
            first = middle + 1;
        else
            end = middle;
    }
    return first;
}

void EventTable::SelectIcon(uint32_t icon, bool scroll) {
    const int row = RowOf(icon);
    if (row >= list_.RowCount() || list_.RowId(row) != icon) return;
    list_.SelectOnly(row);
    if (!scroll) return;
    list_.ScrollToRow(row);
    canvas_.marks.markedEvent = laItem_StoreSequence(canvas_.items, canvas_.items.bitmaps[icon]);
}

void EventTable::Choose(int row) {
    if (row < 0 || row >= list_.RowCount() || Present() != basis_) return;
    const DetailEvent event = detail_EventOf(canvas_, static_cast<size_t>(list_.RowId(row)));
    canvas_.marks.markedEvent = event.sequence;
    laCanvas_Paint(canvas_, [&] { detail_MoveCursor(canvas_, event.time, event.object); });
    cursor_ = canvas_.marks.cursor[0];
}

void EventTable::Activate(int row) {
    if (row < 0 || row >= list_.RowCount() || Present() != basis_ || !canvas_.calls.openDetail) return;
    const auto icon = static_cast<uint32_t>(list_.RowId(row));
    canvas_.calls.openDetail({laItemType::Bitmap, canvas_.items.bitmaps[icon].lane, icon});
}

// A cursor that was moved elsewhere brings the rows about it into sight.
void EventTable::FollowCursor() {
    const double time = canvas_.marks.cursor[0];
    if (time == cursor_) return;
    cursor_ = time;
    if (time < canvas_.view.viewLow || time > canvas_.view.viewHigh) return;
    const int row = RowOf(laBm_FirstAt(canvas_.items, time));
    list_.ScrollToRow(std::min(row, list_.RowCount() - 1));
}

std::string EventTable::Cell(uint32_t icon, int column) {
    // A view may ask for rows of items that are gone, until it is told of the new ones.
    if (icon >= canvas_.items.bitmaps.size() || basis_.items != canvas_.items.itemsVersion) return {};
    const laItem_Bitmap item = canvas_.items.bitmaps[icon];
    switch (static_cast<Column>(column)) {
        case Column_Time:
            return laCanvas_ExactTime(canvas_, item.time);
        case Column_Distance:
            return Distance(icon);
        case Column_Object:
            return object_text(canvas_, item);
        case Column_Event:
            return event_text(canvas_, item);
        case Column_Text:
            return Text(icon);
    }
    return {};
}

std::string EventTable::Distance(uint32_t icon) const {
    const int row = RowOf(icon);
    if (row == 0 || row >= list_.RowCount()) return {};
    const auto before = static_cast<uint32_t>(list_.RowId(row - 1));
    return laCanvas_ExactTime(canvas_, canvas_.items.bitmaps[icon].time - canvas_.items.bitmaps[before].time);
}

// Rows are mostly seen one under the other: those that follow are read along.
std::string EventTable::Text(uint32_t icon) {
    if (const auto known = texts_.find(icon); known != texts_.end()) return known->second;
    if (!canvas_.source.store) return {};
    if (texts_.size() > mostTexts) texts_.clear();
    IconReader reader(canvas_, icon);
    const uint32_t end = std::min(canvas_.items.bitmaps.size(), icon + readAhead);
    for (uint32_t at = icon; at < end && reader.Read(at); ++at)
        texts_[at] = extra_text(canvas_, reader.event, canvas_.items.bitmaps[at].event);
    return texts_[icon];
}
