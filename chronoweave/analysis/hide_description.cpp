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
            half("to_show", "Objects to Show"),
            mover("hide", "&Hide"),
            mover("hideall", "Hide &All"),
            item_Label("t_hide", "Objects to Hide", "to_hide"),
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
    const LayoutItems rows = {"t_show", "hide", "pattern", "ts_info", "ok"};
    LayoutBuilder layout;
    layout.LeastWidths({{.of = {"hide", "hideall"}, .pixels = 14, .times = 2},
                        {.of = {"show", "showall"}, .pixels = 14, .times = 2},
                        {.of = {"t_show"}, .pixels = 10, .times = 2},
                        {.of = {"t_hide"}, .pixels = 10, .times = 2},
                        {.pixels = 80, .letters = 64},
                        {.of = {"t_pattern", "pattern"}, .pixels = 24}});
    layout.LeastHeight({.of = rows, .pixels = 46, .lines = 6});
    layout.FirstWidths({{.pixels = 12, .letters = 96}});
    layout.FirstHeight({.pixels = 46, .lines = 28});
    layout.FillWidth("to_show", {.gaps = 12, .parts = 2});
    layout.FillHeight("to_show", {.less = rows, .gaps = 38});
    layout.Width("to_hide", {.of = {"to_show"}});
    layout.Height("to_hide", {.of = {"to_show"}});
    layout.FillWidth("pattern", {.less = {"t_pattern"}, .gaps = 16});
    layout.FillWidth("ts_info", {.gaps = 8});
    layout.Left({.items = {"t_show", "to_show", "hide", "t_pattern", "ts_info"}, .gap = 4});
    layout.Top({.items = {"t_show", "t_hide"}, .gap = 4});
    layout.Below({.items = {"to_show", "to_hide"}, .of = "t_show", .gap = 2});
    layout.Right({.items = {"to_hide"}, .gap = 4});
    layout.Align(PlacerEdge::Left, {"t_hide", "show"}, "to_hide");
    layout.Below({.items = {"hide", "hideall", "show", "showall"}, .of = "to_show", .gap = 4});
    layout.InRow({"hide", "hideall"}, 4);
    layout.InRow({"show", "showall"}, 4);
    layout.Below({.items = {"pattern"}, .of = "hide"});
    layout.Right({.items = {"pattern"}, .gap = 4});
    layout.Baseline({"t_pattern"}, "pattern");
    layout.Bottom({.items = {"ok", "cancel"}, .gap = 4});
    layout.Right({.items = {"cancel"}, .gap = 4});
    layout.LeftOf({.items = {"ok"}, .of = "cancel"});
    layout.Above({.items = {"ts_info"}, .of = "ok", .gap = 4});
    return layout.Lines();
}

}  // namespace

DialogDescription dialogs_Hide() {
    return {
        .name = "HideTasks", .title = "Select objects to hide", .items = items(), .layout = layout_lines()};
}
