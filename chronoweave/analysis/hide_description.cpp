#include "chronoweave/analysis/dialog_items.h"
#include "chronoweave/analysis/dialogs.h"
#include "windlib/dialog/layout_builder.h"

namespace {

DialogItem half(const char* name, const char* heading) {
    return {.name = name,
            .kind = DialogKind::List,
            .accessible = heading,
            .flags = Dialog_Multiple,
            .list = {"Object Name", "Object ID"}};
}
DialogItem mover(const char* name, const char* text) {
    return {.name = name, .kind = DialogKind::Button, .text = text, .flags = Dialog_Disabled};
}

std::vector<DialogItem> items() {
    return {item_Label("t_show", "Objects to Show", "to_show"),
            item_Filter("to_show"),
            half("to_show", "Objects to Show"),
            mover("hide", "&Hide"),
            mover("hideall", "Hide &All"),
            item_Label("t_hide", "Objects to Hide", "to_hide"),
            item_Filter("to_hide"),
            half("to_hide", "Objects to Hide"),
            mover("show", "&Show"),
            mover("showall", "Sho&w All"),
            item_Label("t_pattern", "&Path pattern to hide:", "pattern"),
            {.name = "pattern",
             .kind = DialogKind::TextField,
             .accessible = "Path pattern to hide",
             .room = std::string(24, 'n')},
            item_Message(),
            item_Ok(),
            item_Cancel()};
}

// Two columns of half the window each, with 4 pixels left, right and between.
std::vector<std::string> layout_lines() {
    const LayoutItems rows = {"t_show", "f_to_show", "hide", "pattern", "ts_info", "ok"};
    LayoutBuilder layout;
    layout.leastWidths({{.of = {"hide", "hideall"}, .pixels = 14, .times = 2},
                        {.of = {"show", "showall"}, .pixels = 14, .times = 2},
                        {.of = {"t_show"}, .pixels = 10, .times = 2},
                        {.of = {"t_hide"}, .pixels = 10, .times = 2},
                        {.pixels = 80, .letters = 64},
                        {.of = {"t_pattern", "pattern"}, .pixels = 24}});
    layout.leastHeight({.of = rows, .pixels = 50, .lines = 6});
    layout.firstWidths({{.pixels = 12, .letters = 96}});
    layout.firstHeight({.pixels = 46, .lines = 28});
    layout.fillWidth("to_show", {.gaps = 12, .parts = 2});
    layout.fillHeight("to_show", {.less = rows, .gaps = 42});
    for (const char* same : {"to_hide", "f_to_show", "f_to_hide"}) layout.width(same, {.of = {"to_show"}});
    layout.height("to_hide", {.of = {"to_show"}});
    layout.fillWidth("pattern", {.less = {"t_pattern"}, .gaps = 16});
    layout.fillWidth("ts_info", {.gaps = 8});
    layout.left({.items = {"t_show", "f_to_show", "to_show", "hide", "t_pattern", "ts_info"}, .gap = 4});
    layout.top({.items = {"t_show", "t_hide"}, .gap = 4});
    layout.below({.items = {"f_to_show", "f_to_hide"}, .of = "t_show", .gap = 2});
    layout.below({.items = {"to_show", "to_hide"}, .of = "f_to_show", .gap = 4});
    layout.right({.items = {"to_hide"}, .gap = 4});
    layout.align(PlacerEdge::Left, {"t_hide", "f_to_hide", "show"}, "to_hide");
    layout.below({.items = {"hide", "hideall", "show", "showall"}, .of = "to_show", .gap = 4});
    layout.inRow({"hide", "hideall"}, 4);
    layout.inRow({"show", "showall"}, 4);
    layout.below({.items = {"pattern"}, .of = "hide"});
    layout.right({.items = {"pattern"}, .gap = 4});
    layout.baseline({"t_pattern"}, "pattern");
    layout.bottom({.items = {"ok", "cancel"}, .gap = 4});
    layout.right({.items = {"cancel"}, .gap = 4});
    layout.leftOf({.items = {"ok"}, .of = "cancel"});
    layout.above({.items = {"ts_info"}, .of = "ok", .gap = 4});
    return layout.lines();
}

}  // namespace

DialogDescription dialogs_Hide() {
    return {
        .name = "HideTasks", .title = "Select objects to hide", .items = items(), .layout = layout_lines()};
}
