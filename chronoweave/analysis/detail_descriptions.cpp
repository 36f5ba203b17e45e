#include "chronoweave/analysis/detail_windows.h"
#include "chronoweave/analysis/dialog_items.h"
#include "windlib/dialog/layout_builder.h"

namespace {

constexpr int fieldLetters = 26;
constexpr int fieldPadding = 24;  // pixels around them

// A window that grows row by row from the top. Labels of fields stand in one column, and those of pairs of
// buttons in another; of each the widest is named, which is made as wide as the longest text of its kind.
struct RowWindow {
    DialogDescription d;
    LayoutBuilder layout = {};
    struct Column {
        std::string widest;
        std::string longest = {};  // text; empty: the widest's own
    };
    Column fields, pairs;
    int reach = 0;  // pixels that the row above takes below its item
};

DialogItem label_in(const RowWindow::Column& column, const std::string& name, const std::string& text,
                    const std::string& leadsTo) {
    DialogItem label = item_Label(name, text, leadsTo);
    if (name == column.widest) label.room = column.longest;
    return label;
}

void next_row(RowWindow& w, const std::string& item, int gap) {
    w.layout.nextRow(item, gap + w.reach);
    w.reach = 0;
}

// A field that is only read, with a label on its left; it fills the width.
void add_field(RowWindow& w, const std::string& label, const std::string& text, const std::string& name) {
    const std::string& widest = w.fields.widest;
    items_Add(w.d.items, {label_in(w.fields, label, text, name),
                          {.name = name,
                           .kind = DialogKind::TextField,
                           .accessible = text,
                           .flags = Dialog_ReadOnly,
                           .room = std::string(fieldLetters, 'n')}});
    w.layout.leastWidths({{.of = {widest}, .pixels = 24 + fieldPadding, .letters = fieldLetters}});
    w.layout.fillWidth(name, {.less = {widest}, .gaps = 24});
    w.layout.left({.items = {label}});
    w.layout.rightOf({.items = {name}, .of = widest});
    next_row(w, name, 6);
    w.layout.baseline({label}, name);
}

// Two buttons in a frame with a label on their left: to the thing before and to the one behind.
struct Pair {
    std::string frame, label, text;
    std::string back, on;  // the buttons
    std::string spoken;    // what they lead to
};
void add_pair(RowWindow& w, const Pair& pair) {
    const auto button = [](const std::string& name, const std::string& text, const std::string& spoken) {
        return DialogItem{.name = name, .kind = DialogKind::Button, .text = text, .accessible = spoken};
    };
    items_Add(w.d.items, {label_in(w.pairs, pair.label, pair.text, pair.back),
                          {.name = pair.frame, .kind = DialogKind::Frame},
                          button(pair.back, "Previous", "Previous, " + pair.spoken),
                          button(pair.on, "Next", "Next, " + pair.spoken)});
    LayoutBuilder& layout = w.layout;
    layout.leastWidths({{.of = {pair.label, pair.back, pair.on}, .pixels = 40}});
    layout.width(pair.frame, {.of = {pair.back, pair.on}, .pixels = 12});
    layout.height(pair.frame, {.of = {pair.back}, .pixels = 8});
    layout.left({.items = {pair.label}});
    layout.rightOf({.items = {pair.back}, .of = w.pairs.widest, .gap = 16});
    layout.inRow({pair.back, pair.on}, 4);
    next_row(w, pair.back, 14);
    layout.align(PlacerEdge::Top, {pair.on}, pair.back);
    layout.middle({pair.label, pair.frame}, pair.back);
    layout.left({.items = {pair.frame}, .of = pair.back, .gap = -4});
    w.reach = 4;
}

// A label across the width.
void add_heading(RowWindow& w, const std::string& label, const std::string& text) {
    w.d.items.push_back(item_Label(label, text));
    w.layout.leastWidths({{.of = {label}, .pixels = 16}});
    w.layout.left({.items = {label}});
    next_row(w, label, 10);
}

// Items side by side from the left, centred on the tallest, the first; the last may stand at the right edge.
enum class LastItem { BesideTheOthers, AtTheEdge };
void add_line(RowWindow& w, const std::vector<DialogItem>& items, LastItem last) {
    LayoutItems all;
    for (const DialogItem& item : items) all.push_back(item.name);
    items_Add(w.d.items, items);
    w.layout.leastWidths({{.of = all, .pixels = 16 + 12 * static_cast<int>(all.size())}});
    w.layout.middle({all.begin() + 1, all.end()}, all.front());
    w.layout.left({.items = {all.front()}});
    next_row(w, all.front(), 14);
    if (last == LastItem::AtTheEdge) {
        w.layout.right({.items = {all.back()}});
        all.pop_back();
    }
    w.layout.inRow(all, 12);
}

// The message line at the foot. letters: the window's width at first.
DialogDescription finished(RowWindow& w, int letters) {
    w.d.items.push_back(item_Message());
    w.layout.fillWidth("ts_info", {.gaps = 16});
    w.layout.left({.items = {"ts_info"}});
    next_row(w, "ts_info", 8);
    w.layout.firstWidths({{.letters = letters}});
    w.layout.onlyHeight(w.layout.rowsHeight(8));
    w.d.layout = w.layout.lines();
    return std::move(w.d);
}

DialogDescription named(const char* name, const char* title) {
    return {.name = name, .title = title, .helpKey = "details"};
}

DialogItem button(const char* name, const std::string& text, const std::string& spoken, unsigned flags = 0) {
    return {.name = name, .kind = DialogKind::Button, .text = text, .accessible = spoken, .flags = flags};
}

std::string lower_first(std::string text) {
    if (!text.empty() && text[0] >= 'A' && text[0] <= 'Z') text[0] = static_cast<char>(text[0] - 'A' + 'a');
    return text;
}

// Texts of labels and buttons: '&' marks a shortcut there.
std::string plain(const std::string& term) {
    std::string text;
    for (const char c : term) text += c == '&' ? std::string("&&") : std::string(1, c);
    return text;
}

}  // namespace

DialogDescription detail_StatusWindow(const std::string& objectTerm) {
    const std::string term = plain(objectTerm), small = lower_first(term);
    RowWindow w = {.d = named("StatusDetail", "Status"),
                   .fields = {.widest = "t_length", .longest = term + " ID"},
                   .pairs = {.widest = "t_similar"}};
    add_field(w, "t_status", "Status", "tf_status");
    add_field(w, "t_taskid", term + " ID", "tf_taskid");
    add_field(w, "t_ftime", "From", "tf_ftime");
    add_field(w, "t_ttime", "To", "tf_ttime");
    add_field(w, "t_length", "Length (Second)", "tf_length");
    add_pair(w, {.frame = "general",
                 .label = "t_general",
                 .text = "Same " + term,
                 .back = "g_prev",
                 .on = "g_next",
                 .spoken = "status of the same " + small});
    add_pair(w, {.frame = "similar",
                 .label = "t_similar",
                 .text = "Same " + term + " && Status",
                 .back = "s_prev",
                 .on = "s_next",
                 .spoken = "the same status of the same " + small});
    add_line(w,
             {button("bt_go", "&Go", "", Dialog_Default),
              item_Label("t_goto", "Move Cursor To The Status In Canvas"),
              button("bt_task", term + "...", "The window of the " + small)},
             LastItem::AtTheEdge);
    return finished(w, 56);
}

DialogDescription detail_EventWindow(const std::string& objectTerm, bool offerDebugger) {
    const std::string term = plain(objectTerm), small = lower_first(term);
    RowWindow w = {.d = named("EventDetail", "Event"),
                   .fields = {.widest = "t_taskid", .longest = "Comments"},
                   .pairs = {.widest = "t_te", .longest = "Sequential"}};
    add_field(w, "t_name", "Name", "tf_name");
    add_field(w, "t_taskid", term + " ID", "tf_taskid");
    add_field(w, "t_time", "Time", "tf_time");
    add_field(w, "t_comments", "Comments", "tf_comments");
    // The frames' names have always been these, one behind their labels'.
    const Pair pairs[] = {
        {"general", "t_sequential", "Sequential", "g_prev", "g_next", "event of all"},
        {"similar", "t_general", "Same " + term, "s_prev", "s_next", "event of the same " + small},
        {"bt_se", "t_similar", "Same Event", "e_prev", "e_next", "event of the same kind"},
        {"bt_ste", "t_te", "Same " + term + " && Event", "te_prev", "te_next",
         "event of the same kind and " + small}};
    for (const Pair& pair : pairs) add_pair(w, pair);
    DialogItem gotos = {.name = "gotos",
                        .kind = DialogKind::ButtonSet,
                        .accessible = "Where to show the event",
                        .list = {"In the &canvas"},
                        .choiceNames = {"gotoCanvas", "gotoDebugger"}};
    if (offerDebugger) gotos.list.emplace_back("In the &debugger");
    add_line(w,
             {gotos, button("bt_go", "&Go", "Show the event", Dialog_Default),
              button("bt_task", term + "...", "The window of the " + small)},
             LastItem::AtTheEdge);
    return finished(w, 56);
}

DialogDescription detail_SwitchWindow(const std::string& objectTerm) {
    const std::string term = plain(objectTerm);
    RowWindow w = {.d = named("SwitchDetail", "Context Switch"),
                   .fields = {.widest = "t_ftaskid", .longest = "Time"},
                   .pairs = {.widest = "t_walk"}};
    add_heading(w, "t_from", "Context Switched From");
    add_field(w, "t_ftaskid", term + " ID", "tf_ftaskid");
    add_field(w, "t_ftime", "Time", "tf_ftime");
    add_heading(w, "t_to", "Context Switched To");
    add_field(w, "t_ttaskid", term + " ID", "tf_ttaskid");
    add_field(w, "t_ttime", "Time", "tf_ttime");
    add_pair(w, {.frame = "btNP",
                 .label = "t_walk",
                 .text = "Context Switch",
                 .back = "prev",
                 .on = "next",
                 .spoken = "context switch"});
    add_line(w,
             {button("bt_goto", "&Go", "", Dialog_Default),
              item_Label("t_goto", "Move Cursor To The Switch In Canvas")},
             LastItem::BesideTheOthers);
    return finished(w, 50);
}

DialogDescription detail_TaskWindow(const std::string& objectTerm) {
    const std::string term = plain(objectTerm);
    RowWindow w = {
        .d = named("TaskDetail", "Task"), .fields = {.widest = "name", .longest = "Priority"}, .pairs = {}};
    add_field(w, "name", term + " Name", "tf_name");
    add_field(w, "id", term + " ID", "tf_id");
    add_field(w, "priority", "Priority", "tf_priority");
    add_line(w,
             {button("Prev", "&Previous", "Previous " + lower_first(term)),
              button("Next", "&Next", "Next " + lower_first(term))},
             LastItem::BesideTheOthers);
    return finished(w, 46);
}
