#include "chronoweave/analysis/dialog_items.h"
#include "chronoweave/analysis/legend_dialogs.h"
#include "chronoweave/analysis/legend_window.h"
#include "windlib/dialog/layout_builder.h"

namespace {

DialogItem changer(const char* name, const char* text, unsigned flags = 0) {
    return {.name = name, .kind = DialogKind::Button, .text = text, .flags = Dialog_Disabled | flags};
}

DialogItem number(const char* name, const char* spoken) {
    return {.name = name, .kind = DialogKind::TextField, .accessible = spoken, .room = "0x0000"};
}

std::vector<std::string> legend_lines() {
    const LayoutItems buttons = {"bt_change", "bt_visible", "bt_look", "bt_undo", "bt_close"};
    const LayoutItems rows = {"tf_filter", "bt_important", "bt_close"};
    LayoutBuilder layout;
    layout.leastWidths({{.of = {"t_filter", "tf_filter"}, .pixels = 24},
                        {.of = buttons, .pixels = 56},
                        {.of = {"bt_important"}, .pixels = 24},
                        {.pixels = 80, .letters = 40}});
    layout.leastHeight({.of = rows, .pixels = 56, .lines = 8});
    layout.firstWidths({{.of = buttons, .pixels = 72}, {.pixels = 12, .letters = 56}});
    layout.firstHeight({.pixels = 56, .lines = 32});
    layout.fillWidth("tf_filter", {.less = {"t_filter"}, .gaps = 24});
    layout.fillWidth("list", {.gaps = 16});
    layout.fillHeight("list", {.less = rows, .gaps = 48});
    layout.fillWidth("StatusBox", {.gaps = 8});
    layout.height("StatusBox", {.of = {"tf_filter", "list"}, .pixels = 16});
    layout.left({.items = {"StatusBox"}, .gap = 4});
    layout.top({.items = {"StatusBox"}, .gap = 4});
    layout.left({.items = {"t_filter", "list", "bt_change", "bt_important"}});
    layout.top({.items = {"tf_filter"}});
    layout.textRow({"t_filter", "tf_filter"}, "tf_filter");
    layout.below({.items = {"list"}, .of = "tf_filter"});
    layout.bottom({.items = buttons});
    layout.inRow({"bt_change", "bt_visible", "bt_look", "bt_undo"});
    layout.right({.items = {"bt_close"}});
    layout.above({.items = {"bt_important"}, .of = "bt_change"});
    return layout.lines();
}

// Labels in a column as wide as the widest, fields beside them.
std::vector<std::string> status_lines() {
    LayoutBuilder layout;
    layout.leastWidths({{.of = {"t_style", "stylePD"}, .pixels = 40},
                        {.of = {"t_thickness", "tf_thickness", "bt_choose"}, .pixels = 40},
                        {.of = {"t_style", "tf_green", "bt_choose"}, .pixels = 40},
                        {.of = {"bt_ok", "bt_cancel"}, .pixels = 32}});
    layout.leastHeight({.of = {"tf_red", "tf_green", "tf_blue", "tf_thickness", "stylePD", "bt_ok"},
                        .pixels = 88,
                        .lines = 3});
    layout.firstWidths({{.letters = 40}});
    layout.fillWidth("rgbWin", {.gaps = 16});
    layout.height("rgbWin", {.lines = 3});
    layout.left({.items = {"rgbWin", "t_red", "t_green", "t_blue", "t_thickness", "t_style"}});
    layout.rightOf({.items = {"tf_thickness"}, .of = "t_thickness", .gap = 16});
    layout.align(PlacerEdge::Left, {"tf_red", "tf_green", "tf_blue", "stylePD"}, "tf_thickness");
    for (const char* row : {"rgbWin", "tf_red", "tf_green", "tf_blue", "tf_thickness", "stylePD"})
        layout.nextRow(row, 8);
    layout.baseline({"t_red"}, "tf_red");
    layout.baseline({"t_green"}, "tf_green");
    layout.baseline({"t_blue"}, "tf_blue");
    layout.baseline({"t_thickness"}, "tf_thickness");
    layout.baseline({"t_style"}, "stylePD");
    layout.rightOf({.items = {"bt_choose"}, .of = "tf_green"});
    layout.middle({"bt_choose"}, "tf_green");
    layout.corner({"bt_cancel", "bt_ok"});
    return layout.lines();
}

}  // namespace

DialogDescription legend_Window() {
    return {
        .name = "Legend",
        .title = "Legend",
        .helpKey = "legend",
        .menu = true,
        .offset = 10,
        .items = {{.name = "MenuBar",
                   .kind = DialogKind::MenuLine,
                   .text = "TraxLegendMenu",
                   .accessible = "Menus"},
                  {.name = "StatusBox", .kind = DialogKind::Frame},
                  item_Label("t_filter", "&Filter:", "tf_filter"),
                  {.name = "tf_filter",
                   .kind = DialogKind::TextField,
                   .accessible = "Filter of the legend by name",
                   .room = std::string(16, 'n')},
                  {.name = "list",
                   .kind = DialogKind::List,
                   .accessible = "Legend",
                   .list = {"Kind", "Name", "", "Visibility"}},
                  changer("bt_change", "&Change...", Dialog_Default),
                  changer("bt_visible", "&Visible / Invisible"),
                  {.name = "bt_important",
                   .kind = DialogKind::CheckBox,
                   .text = "&Never hidden under others",
                   .flags = Dialog_Disabled},
                  {.name = "bt_look", .kind = DialogKind::Button, .text = "Use &look..."},
                  changer("bt_undo", "&Undo"),
                  item_Close("bt_close")},
        .layout = legend_lines(),
    };
}

DialogDescription legend_StatusDialog() {
    return {
        .name = "ConfigureStatus",
        .title = "Configure Status",
        .helpKey = "legend",
        .items = {{.name = "rgbWin", .kind = DialogKind::Strip, .accessible = "The line as it will be"},
                  item_Label("t_red", "&Red:", "tf_red"),
                  number("tf_red", "Red"),
                  item_Label("t_green", "&Green:", "tf_green"),
                  number("tf_green", "Green"),
                  item_Label("t_blue", "&Blue:", "tf_blue"),
                  number("tf_blue", "Blue"),
                  {.name = "bt_choose", .kind = DialogKind::Button, .text = "&Choose..."},
                  item_Label("t_thickness", "&Thickness:", "tf_thickness"),
                  number("tf_thickness", "Thickness in pixels"),
                  item_Label("t_style", "Line &Style:", "stylePD"),
                  {.name = "stylePD",
                   .kind = DialogKind::PullDown,
                   .accessible = "Line style",
                   .list = {"Solid", "Dash", "Dot", "DashDot", "DashDotDot"}},
                  item_Ok("bt_ok"),
                  item_Cancel("bt_cancel")},
        .layout = status_lines(),
    };
}

DialogDescription legend_IconDialog() {
    LayoutBuilder layout;
    layout.leastWidths({{.of = {"bt_ok", "bt_cancel"}, .pixels = 32}, {.pixels = 80, .letters = 40}});
    layout.leastHeight({.of = {"bt_ok"}, .pixels = 40, .lines = 8});
    layout.firstWidths({{.pixels = 12, .letters = 48}});
    layout.firstHeight({.pixels = 46, .lines = 24});
    layout.fillWidth("colHeader", {.gaps = 16});
    layout.fillHeight("colHeader", {.less = {"bt_ok"}, .gaps = 32});
    layout.left({.items = {"colHeader"}});
    layout.top({.items = {"colHeader"}});
    layout.corner({"bt_cancel", "bt_ok"});
    return {
        .name = "selectIcon",
        .title = "Select One Icon",
        .helpKey = "legend",
        .items =
            {{.name = "colHeader", .kind = DialogKind::List, .accessible = "Icons", .list = {"Icon", "File"}},
             item_Ok("bt_ok"),
             item_Cancel("bt_cancel")},
        .layout = layout.lines(),
    };
}
