#include "chronoweave/analysis/dialog_items.h"
#include "chronoweave/analysis/dialogs.h"
#include "windlib/dialog/layout_builder.h"

namespace {

DialogItem time_field(const char* name, const char* spoken) {
    return {.name = name, .kind = DialogKind::TextField, .accessible = spoken, .room = "000000.000000000"};
}
DialogItem text(const char* name, const char* shown, const char* spoken, const char* room) {
    return {.name = name, .kind = DialogKind::Label, .text = shown, .accessible = spoken, .room = room};
}

std::vector<DialogItem> items() {
    return {
        {.name = "TraxMenuBar", .kind = DialogKind::MenuLine, .accessible = "Menus"},
        {.name = "TraxBtns", .kind = DialogKind::ToolBar, .accessible = "Commands"},
        {.name = "TaskNames",
         .kind = DialogKind::List,
         .accessible = "Objects",
         .flags = Dialog_Multiple,
         .part = "DataCanvas"},
        {.name = "Divider", .kind = DialogKind::Divider, .part = "DataCanvas"},
        {.name = "DataCanvas", .kind = DialogKind::Graph, .accessible = "Timeline"},
        text("TickPattern", "0.XX", "Digits of the time axis", "0.XXXXXXXXXXXX"),
        text("TickUnit", "Second", "Unit of the time axis", "Microsecond"),
        text("TotalLength", "", "Total length", "Total Time Length(in Microseconds): 000000.000000000"),
        {.name = "info_rect", .kind = DialogKind::Frame},
        item_Label("t_view", "View:"),
        time_field("tf_view_from", "View from"),
        time_field("tf_view_to", "View to"),
        time_field("tf_view_len", "View length"),
        item_Label("t_sel", "Selection:"),
        time_field("tf_sel_from", "Selection from"),
        time_field("tf_sel_to", "Selection to"),
        time_field("tf_sel_len", "Selection length"),
        item_Message(),
        {.name = "changeunit",
         .kind = DialogKind::Button,
         .text = "Change Unit",
         .accessible = "Change Tick Unit"},
        {.name = "Overview", .kind = DialogKind::Strip, .accessible = "Overview"},
        {.name = "Progress",
         .kind = DialogKind::ProgressBar,
         .accessible = "Progress",
         .flags = Dialog_Hidden},
        text("tu_view", "", "Unit of the view", "ticks"),
        text("tu_sel", "", "Unit of the selection", "ticks"),
        item_Label("tl_view_from", "From", "tf_view_from"),
        item_Label("tl_view_to", "To", "tf_view_to"),
        item_Label("tl_view_len", "Length", "tf_view_len"),
        item_Label("tl_sel_from", "From", "tf_sel_from"),
        item_Label("tl_sel_to", "To", "tf_sel_to"),
        item_Label("tl_sel_len", "Length", "tf_sel_len"),
    };
}

// The least size holds the menu line, too. The picture takes what is left below the tool bar.
void add_sizes(LayoutBuilder& layout) {
    layout.leastWidths({{.of = {"changeunit", "TickPattern", "TickUnit", "TotalLength"}, .pixels = 42},
                        {.of = {"t_view", "tl_view_from", "tf_view_from", "tl_view_to", "tf_view_to",
                                "tl_view_len", "tf_view_len", "tu_view"},
                         .pixels = 84},
                        {.of = {"t_sel", "tl_sel_from", "tf_sel_from", "tl_sel_to", "tf_sel_to", "tl_sel_len",
                                "tf_sel_len", "tu_sel"},
                         .pixels = 84},
                        {.of = {"Progress"}, .pixels = 20, .letters = 40},
                        {.pixels = 153, .lines = 3, .bars = 1}});
    const LayoutItems rows = {"TraxBtns", "Overview", "changeunit", "info_rect", "Progress"};
    layout.leastHeight({.of = rows, .pixels = 23, .lines = 9, .bars = 1});
    layout.firstWidths({{.letters = 120}});
    layout.firstHeight({.lines = 36});
    layout.fillWidth("TraxBtns", {});
    layout.fillWidth("Overview", {});
    layout.height("Overview", {.pixels = 4, .lines = 2});
    layout.width("Progress", {.letters = 20});
    layout.fillWidth("ts_info", {.less = {"Progress"}, .gaps = 20});
    layout.fillWidth("info_rect", {.gaps = 8});
    layout.height("info_rect", {.of = {"tf_view_from", "tf_sel_from"}, .pixels = 12});
    layout.fillWidth("DataCanvas", {});
    layout.fillHeight("DataCanvas", {.less = rows, .gaps = 16});
}

// The fields, one row under the other in common columns.
void place_fields(LayoutBuilder& layout) {
    layout.above({.items = {"info_rect"}, .of = "Progress", .gap = 4});
    layout.left({.items = {"info_rect"}, .gap = 4});
    layout.bottom({.items = {"tf_sel_from", "tf_sel_to", "tf_sel_len"}, .of = "info_rect", .gap = 4});
    layout.above({.items = {"tf_view_from", "tf_view_to", "tf_view_len"}, .of = "tf_sel_from", .gap = 4});
    layout.baseline({"t_sel", "tl_sel_from", "tl_sel_to", "tl_sel_len", "tu_sel"}, "tf_sel_from");
    layout.baseline({"t_view", "tl_view_from", "tl_view_to", "tl_view_len", "tu_view"}, "tf_view_from");
    layout.tie({.items = {"t_view", "t_sel"},
                .of = "info_rect",
                .pixels = 8,
                .together = PlacerEdge::Right,
                .theirs = PlacerEdge::Left,
                .others = PlacerEdge::Left});
    layout.rightOf({.items = {"tl_view_from", "tl_sel_from"}, .of = "t_view", .gap = 12});
    layout.rightOf({.items = {"tf_view_from", "tf_sel_from"}, .of = "tl_view_from", .gap = 6});
    layout.rightOf({.items = {"tl_view_to", "tl_sel_to"}, .of = "tf_view_from", .gap = 12});
    layout.rightOf({.items = {"tf_view_to", "tf_sel_to"}, .of = "tl_view_to", .gap = 6});
    layout.rightOf({.items = {"tl_view_len", "tl_sel_len"}, .of = "tf_view_to", .gap = 12});
    layout.rightOf({.items = {"tf_view_len", "tf_sel_len"}, .of = "tl_view_len", .gap = 6});
    layout.rightOf({.items = {"tu_view", "tu_sel"}, .of = "tf_view_len", .gap = 6});
}

// Rows from the bottom up: message line, fields of the selection, fields of the view, unit, overview.
std::vector<std::string> layout_lines() {
    LayoutBuilder layout;
    add_sizes(layout);
    layout.top({.items = {"TraxBtns"}, .gap = 0});
    layout.left({.items = {"TraxBtns", "DataCanvas", "Overview"}, .gap = 0});
    layout.below({.items = {"DataCanvas"}, .of = "TraxBtns", .gap = 0});
    // Message line and progress.
    layout.bottom({.items = {"Progress"}, .gap = 4});
    layout.right({.items = {"Progress"}, .gap = 4});
    layout.middle({"ts_info"}, "Progress");
    layout.left({.items = {"ts_info"}});
    place_fields(layout);
    // Unit and total length.
    layout.above({.items = {"changeunit"}, .of = "info_rect", .gap = 4});
    layout.left({.items = {"changeunit"}, .gap = 4});
    layout.baseline({"TickPattern", "TickUnit", "TotalLength"}, "changeunit");
    layout.rightOf({.items = {"TickPattern"}, .of = "changeunit"});
    layout.rightOf({.items = {"TickUnit"}, .of = "TickPattern", .gap = 6});
    layout.right({.items = {"TotalLength"}});
    layout.above({.items = {"Overview"}, .of = "changeunit", .gap = 4});
    return layout.lines();
}

}  // namespace

DialogDescription dialogs_CanvasWindow() {
    return {
        .name = "Trax",
        .title = "Chronoweave",
        .helpKey = "TRAXHelp",
        .framed = false,
        .menu = true,
        .items = items(),
        .layout = layout_lines(),
    };
}
