#include "chronoweave/analysis/dialog_items.h"
#include "chronoweave/analysis/search_dialogs.h"
#include "chronoweave/analysis/search_window.h"
#include "windlib/dialog/layout_builder.h"

namespace {

const LayoutItems range = {"t_from", "tf_from", "t_to", "tf_to"};
const LayoutItems rangeButtons = {"r_view", "r_selection", "r_all"};

DialogItem choice(const char* name, const char* spoken, std::vector<std::string> columns, unsigned flags) {
    return {.name = name,
            .kind = DialogKind::List,
            .accessible = spoken,
            .flags = flags,
            .list = std::move(columns)};
}

DialogItem objects(const char* name, const char* spoken, unsigned flags) {
    return choice(name, spoken, {"Task ID", "Task Name"}, flags);
}

DialogItem button(const char* name, const char* text, unsigned flags = 0) {
    return {.name = name, .kind = DialogKind::Button, .text = text, .flags = flags};
}

DialogItem field(const char* name, const char* spoken, const char* room) {
    return {.name = name, .kind = DialogKind::TextField, .accessible = spoken, .room = room};
}

DialogItem one_event(const char* name, const char* spoken) {
    return {.name = name, .kind = DialogKind::PullDown, .accessible = spoken, .room = std::string(20, 'n')};
}

// Widths that one half of the window holds, of two side by side.
void least_halves(LayoutBuilder& layout, const LayoutItems& items) {
    for (const std::string& item : items) layout.leastWidths({{.of = {item}, .pixels = 12, .times = 2}});
}

void same_size(LayoutBuilder& layout, const std::string& item, const std::string& as) {
    layout.width(item, {.of = {as}});
    layout.height(item, {.of = {as}});
}

}  // namespace

DialogDescription search_ObjectsDialog(bool several) {
    const LayoutItems rows = {"t_prompt", "f_list", "t_period", "tf_from", "r_view", "ts_info", "ok"};
    LayoutBuilder layout;
    layout.leastWidths({{.of = {"t_prompt"}, .pixels = 16},
                        {.of = {"t_period"}, .pixels = 16},
                        {.of = range, .pixels = 48},
                        {.of = {"ok", "cancel"}, .pixels = 32},
                        {.pixels = 80, .letters = 40}});
    layout.leastHeight({.of = rows, .pixels = 72, .lines = 6});
    layout.firstWidths({{.pixels = 12, .letters = 56}});
    layout.firstHeight({.pixels = 46, .lines = 28});
    layout.fillWidth("list", {.gaps = 16});
    layout.fillHeight("list", {.less = rows, .gaps = 56});
    layout.fillWidth("ts_info", {.gaps = 16});
    layout.left({.items = {"t_prompt", "f_list", "list", "t_period", "t_from", "r_view", "ts_info"}});
    layout.nextRow("t_prompt", 8);
    layout.nextRow("f_list", 4);
    layout.nextRow("list", 4);
    layout.nextRow("t_period", 8);
    layout.nextRow("tf_from", 4);
    layout.nextRow("r_view", 4);
    layout.nextRow("ts_info", 8);
    layout.textRow(range, "tf_from");
    layout.textRow(rangeButtons, "r_view");
    if (several) {
        layout.fillWidth("f_list", {.less = {"all_rows"}, .gaps = 24});
        layout.inRow({"f_list", "all_rows"});
        layout.middle({"all_rows"}, "f_list");
    } else {
        layout.fillWidth("f_list", {.gaps = 16});
    }
    layout.corner({"cancel", "ok"});
    DialogDescription d = {
        .name = several ? "SelectObjects" : "SelectOneObject", .title = "Select Tasks", .helpKey = "search"};
    d.items = {item_Label("t_prompt", "Select tasks:", "list"), item_Filter("list")};
    if (several) d.items.push_back(button("all_rows", "All &Rows"));
    items_Add(d.items,
              {objects("list", "Objects", several ? Dialog_Multiple : 0u),
               item_Label("t_period", "Or define period during which tasks are alive (in Second):")});
    items_Add(d.items, items_Range());
    items_Add(d.items, {item_Message(), item_Ok(), item_Cancel()});
    d.layout = layout.lines();
    return d;
}

DialogDescription search_KindDialog(bool pattern, std::string_view chosen) {
    const LayoutItems rows = {"t_type", "event", "t_range", "tf_from", "r_view", "ts_info", "cancel"};
    LayoutItems kinds = {"event", "ctx_switch", "status"};
    if (pattern) kinds.insert(kinds.begin() + 1, "event_pattern");
    LayoutBuilder layout;
    layout.leastWidths({{.of = kinds, .pixels = 40},
                        {.of = {"t_type"}, .pixels = 16},
                        {.of = {"t_range"}, .pixels = 16},
                        {.of = range, .pixels = 48},
                        {.pixels = 80, .letters = 40}});
    layout.firstWidths({{.pixels = 12, .letters = 48}});
    layout.onlyHeight({.of = rows, .pixels = 64});
    layout.fillWidth("ts_info", {.gaps = 16});
    layout.left({.items = {"t_type", "event", "t_range", "t_from", "r_view", "ts_info"}});
    layout.nextRow("t_type", 8);
    layout.nextRow("event", 4);
    layout.nextRow("t_range", 16);
    layout.nextRow("tf_from", 4);
    layout.nextRow("r_view", 4);
    layout.nextRow("ts_info", 8);
    layout.textRow(kinds, "event");
    layout.textRow(range, "tf_from");
    layout.textRow(rangeButtons, "r_view");
    layout.corner({"cancel"});
    DialogDescription d = {.name = "SelectObjectType", .title = "Select Object Type", .helpKey = "search"};
    const auto kind = [chosen](const char* name, const char* text) {
        return button(name, text, name == chosen ? Dialog_Default : 0u);
    };
    d.items = {item_Label("t_type", "Object type to search:"), kind("event", "&Event")};
    if (pattern) d.items.push_back(kind("event_pattern", "Event &Pattern"));
    items_Add(d.items, {kind("ctx_switch", "&Context Switch"), kind("status", "&Status"),
                        item_Label("t_range", "Time range for searched object(s) (in seconds)")});
    items_Add(d.items, items_Range());
    items_Add(d.items, {item_Message(), item_Cancel()});
    d.layout = layout.lines();
    return d;
}

DialogDescription search_ChoiceDialog() {
    LayoutBuilder layout;
    layout.leastWidths({{.of = {"t_prompt"}, .pixels = 16},
                        {.of = {"ok", "cancel"}, .pixels = 32},
                        {.pixels = 80, .letters = 40}});
    layout.leastHeight({.of = {"t_prompt", "f_list", "ok"}, .pixels = 40, .lines = 6});
    layout.firstWidths({{.pixels = 12, .letters = 48}});
    layout.firstHeight({.pixels = 46, .lines = 24});
    layout.fillWidth("list", {.gaps = 16});
    layout.fillWidth("f_list", {.gaps = 16});
    layout.fillHeight("list", {.less = {"t_prompt", "f_list", "ok"}, .gaps = 32});
    layout.left({.items = {"t_prompt", "f_list", "list"}});
    layout.nextRow("t_prompt", 8);
    layout.nextRow("f_list", 4);
    layout.nextRow("list", 4);
    layout.corner({"cancel", "ok"});
    return {.name = "SelectOneLegend",
            .title = "Select One Event",
            .helpKey = "search",
            .items = {item_Label("t_prompt", "Select one of the statuses to search:", "list"),
                      item_Filter("list"), choice("list", "Choice", {"Event Name", "Code"}, 0), item_Ok(),
                      item_Cancel()},
            .layout = layout.lines()};
}

// Four lists, two by two.
DialogDescription search_PatternDialog() {
    const LayoutItems rows = {"t_begin", "f_begin", "t_begin_objects", "f_begin_objects", "same", "ok"};
    LayoutBuilder layout;
    least_halves(layout, {"t_begin", "t_end", "t_begin_objects", "t_end_objects"});
    layout.leastWidths({{.of = {"same"}, .pixels = 16},
                        {.of = {"ok", "cancel"}, .pixels = 32},
                        {.pixels = 80, .letters = 64}});
    layout.leastHeight({.of = rows, .pixels = 68, .lines = 10});
    layout.firstWidths({{.pixels = 12, .letters = 96}});
    layout.firstHeight({.pixels = 46, .lines = 32});
    layout.fillWidth("begin", {.gaps = 24, .parts = 2});
    layout.fillHeight("begin", {.less = rows, .gaps = 48, .parts = 2});
    for (const char* other : {"end", "begin_objects", "end_objects"}) same_size(layout, other, "begin");
    for (const std::string list : {"begin", "end", "begin_objects", "end_objects"})
        layout.width("f_" + list, {.of = {list}});
    layout.left({.items = {"t_begin", "f_begin", "begin", "t_begin_objects", "f_begin_objects",
                           "begin_objects", "same"}});
    layout.top({.items = {"t_begin", "t_end"}});
    layout.below({.items = {"f_begin", "f_end"}, .of = "t_begin", .gap = 2});
    layout.below({.items = {"begin", "end"}, .of = "f_begin", .gap = 2});
    layout.right({.items = {"end", "end_objects"}});
    layout.align(PlacerEdge::Left, {"t_end", "f_end", "t_end_objects", "f_end_objects"}, "end");
    layout.below({.items = {"t_begin_objects", "t_end_objects"}, .of = "begin"});
    layout.below({.items = {"f_begin_objects", "f_end_objects"}, .of = "t_begin_objects", .gap = 2});
    layout.below({.items = {"begin_objects", "end_objects"}, .of = "f_begin_objects", .gap = 2});
    layout.below({.items = {"same"}, .of = "begin_objects"});
    layout.corner({"cancel", "ok"});
    return {
        .name = "DefinePattern",
        .title = "Define the event pattern",
        .helpKey = "search",
        .items = {item_Label("t_begin", "&Begin event:", "begin"),
                  item_Filter("begin"),
                  choice("begin", "Begin event", {"Event Name"}, Dialog_Multiple),
                  item_Label("t_begin_objects", "Tasks for begin event:", "begin_objects"),
                  item_Filter("begin_objects"),
                  objects("begin_objects", "Objects of the begin event", Dialog_Multiple),
                  item_Label("t_end", "&End event:", "end"),
                  item_Filter("end"),
                  choice("end", "End event", {"Event Name"}, Dialog_Multiple),
                  item_Label("t_end_objects", "Tasks for end event:", "end_objects"),
                  item_Filter("end_objects"),
                  objects("end_objects", "Objects of the end event", Dialog_Multiple),
                  {.name = "same", .kind = DialogKind::CheckBox, .text = "&Match events on the same task"},
                  item_Ok("ok", "Ok"),  // the wording is kept as it is known
                  item_Cancel()},
        .layout = layout.lines()};
}

DialogDescription search_IntervalDialog() {
    const LayoutItems rows = {"t_begin", "begin", "f_begin_objects", "tf_from", "ts_info", "ok"};
    const LayoutItems within = {"t_range", "tf_from", "tf_to", "r_view", "r_selection", "r_all"};
    LayoutBuilder layout;
    least_halves(layout, {"t_begin", "t_end", "begin", "end"});
    layout.leastWidths({{.of = within, .pixels = 56},
                        {.of = {"ok", "cancel"}, .pixels = 32},
                        {.pixels = 80, .letters = 64}});
    layout.leastHeight({.of = rows, .pixels = 68, .lines = 6});
    layout.firstWidths({{.pixels = 12, .letters = 96}});
    layout.firstHeight({.pixels = 46, .lines = 26});
    layout.fillWidth("begin_objects", {.gaps = 24, .parts = 2});
    layout.fillHeight("begin_objects", {.less = rows, .gaps = 50});
    for (const std::string list : {"begin_objects", "end_objects"})
        layout.width("f_" + list, {.of = {"begin_objects"}});
    layout.width("begin", {.of = {"begin_objects"}});
    layout.width("end", {.of = {"begin_objects"}});
    same_size(layout, "end_objects", "begin_objects");
    layout.fillWidth("ts_info", {.gaps = 16});
    layout.left({.items = {"t_begin", "begin", "f_begin_objects", "begin_objects", "t_range", "ts_info"}});
    layout.top({.items = {"t_begin", "t_end"}});
    layout.below({.items = {"begin", "end"}, .of = "t_begin", .gap = 2});
    layout.below({.items = {"f_begin_objects", "f_end_objects"}, .of = "begin", .gap = 4});
    layout.below({.items = {"begin_objects", "end_objects"}, .of = "f_begin_objects", .gap = 4});
    layout.right({.items = {"end", "end_objects"}});
    layout.align(PlacerEdge::Left, {"t_end", "f_end_objects"}, "end");
    layout.below({.items = {"tf_from"}, .of = "begin_objects"});
    layout.below({.items = {"ts_info"}, .of = "tf_from"});
    layout.textRow(within, "tf_from");
    layout.corner({"cancel", "ok"});
    DialogDescription d = {.name = "SearchInterval",
                           .title = "Criteria for searching intervals based on event pattern",
                           .helpKey = "search"};
    d.items = {item_Label("t_begin", "&Begin:", "begin"),
               one_event("begin", "Begin event"),
               item_Filter("begin_objects"),
               objects("begin_objects", "Object of the begin event", 0),
               item_Label("t_end", "&End:", "end"),
               one_event("end", "End event"),
               item_Filter("end_objects"),
               objects("end_objects", "Object of the end event", 0),
               item_Label("t_range", "&Within (in Second):", "tf_from"),
               field("tf_from", "From", "0000000.000000"),
               field("tf_to", "To", "0000000.000000")};
    items_Add(d.items, items_RangeButtons());
    items_Add(d.items, {item_Message(), item_Ok(), item_Cancel()});
    d.layout = layout.lines();
    return d;
}

namespace {

// The list of results, its statistics under it, then what a histogram needs, and a row of buttons.
std::vector<std::string> result_lines(bool histogram, int letters) {
    LayoutItems rows = {"t_stat", "quit"}, buttons = {"only_rows", "quit"};
    if (histogram) {
        rows.insert(rows.begin() + 1, "t_lengths");
        buttons.insert(buttons.begin() + 1, "log_lengths");
    }
    LayoutBuilder layout;
    layout.leastWidths({{.of = {"t_stat"}, .pixels = 25}, {.of = buttons, .pixels = 48}});
    if (histogram) layout.leastWidths({{.of = {"t_lengths"}, .pixels = 16}});
    layout.leastWidths({{.pixels = 80, .letters = 56}});
    layout.leastHeight({.of = rows, .pixels = histogram ? 48 : 40, .lines = histogram ? 14 : 6});
    layout.firstWidths({{.pixels = 12, .letters = letters}});
    layout.firstHeight({.pixels = 46, .lines = 32});
    layout.fillWidth("list", {.gaps = 16});
    layout.left({.items = {"list", "t_stat", "only_rows"}});
    layout.nextRow("list", 8);
    layout.nextRow("t_stat", 4);
    if (histogram) {
        layout.fillWidth("histogram", {.gaps = 16});
        layout.height("histogram", {.lines = 7});
        layout.left({.items = {"t_lengths", "histogram"}});
        layout.nextRow("t_lengths", 4);
        layout.nextRow("histogram", 4);
        layout.inRow({"only_rows", "log_lengths"}, 16);
        layout.middle({"log_lengths"}, "quit");
        rows.emplace_back("histogram");
    }
    layout.fillHeight("list", {.less = rows, .gaps = histogram ? 36 : 28});
    layout.corner({"quit"});
    layout.middle({"only_rows"}, "quit");
    return layout.lines();
}

}  // namespace

DialogDescription search_ResultWindow(bool histogram, int letters) {
    DialogDescription d = {.name = histogram ? "SearchIntervals" : "SearchResult",
                           .title = "Search Result",
                           .helpKey = "search",
                           .menu = true};
    d.items = {
        {.name = "MenuBar", .kind = DialogKind::MenuLine, .text = "TraxSearchMenu", .accessible = "Menus"},
        choice("list", "Results", {"From Task", "From Time", "To Task", "To Time", "Interval"},
               Dialog_Multiple),
        item_Label("t_stat", "Number: 0, Interval (in Second): max=0 min=0 ave=0")};
    const DialogItem onlyRows = {
        .name = "only_rows", .kind = DialogKind::CheckBox, .text = "&Only these rows on the time line"};
    if (histogram) {
        items_Add(d.items,
                  {item_Label("t_lengths", "Lengths (in Second): min=0 max=0"),
                   {.name = "histogram", .kind = DialogKind::Strip, .accessible = "Histogram of the lengths"},
                   onlyRows,
                   {.name = "log_lengths", .kind = DialogKind::CheckBox, .text = "&Logarithmic lengths"}});
    } else {
        d.items.push_back(onlyRows);
    }
    d.items.push_back(item_Close("quit", "Quit"));
    d.layout = result_lines(histogram, letters);
    return d;
}
