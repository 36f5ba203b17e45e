#include "chronoweave/analysis/dialog_items.h"
#include "chronoweave/analysis/dialogs.h"
#include "windlib/dialog/layout_builder.h"

namespace {

// Items one under the other over the buttons "ok" and "cancel".
std::vector<std::string> column(const LayoutItems& names) {
    LayoutBuilder layout;
    for (const std::string& name : names) {
        layout.leastWidths({{.of = {name}, .pixels = 24}});
        layout.left({.items = {name}});
        layout.nextRow(name, 8);
    }
    layout.leastWidths({{.of = {"ok", "cancel"}, .pixels = 32}});
    layout.firstWidths({{.letters = 40}});
    LayoutSize height = layout.rowsHeight(24);
    height.of.emplace_back("ok");
    layout.onlyHeight(height);
    layout.corner({"cancel", "ok"});
    return layout.lines();
}

DialogItem check_box(const char* name, const char* text) {
    return {.name = name, .kind = DialogKind::CheckBox, .text = text};
}

}  // namespace

DialogDescription dialogs_GetValue() {
    LayoutBuilder layout;
    layout.leastWidths({{.of = {"t_please"}, .pixels = 24},
                        {.of = {"tf_val"}, .pixels = 24},
                        {.of = {"t_what"}, .pixels = 24},
                        {.of = {"bs_ok", "cancel"}, .pixels = 32}});
    layout.firstWidths({{.letters = 48}});
    layout.onlyHeight({.of = {"t_please", "tf_val", "t_what", "bs_ok"}, .pixels = 44});
    layout.left({.items = {"t_please", "tf_val", "t_what"}});
    layout.top({.items = {"t_please"}});
    layout.below({.items = {"tf_val"}, .of = "t_please", .gap = 4});
    layout.below({.items = {"t_what"}, .of = "tf_val", .gap = 4});
    layout.corner({"cancel", "bs_ok"});
    return {.name = "getValue",
            .title = "Get Value",
            .items = {item_Label("t_please", "&Please type new value:", "tf_val"),
                      {.name = "tf_val",
                       .kind = DialogKind::TextField,
                       .accessible = "New value",
                       .room = std::string(40, 'n')},
                      {.name = "t_what",
                       .kind = DialogKind::Label,
                       .accessible = "What the value is",
                       .room = std::string(48, 'n')},
                      item_Ok("bs_ok"),
                      item_Cancel()},
            .layout = layout.lines()};
}

DialogDescription dialogs_Options() {
    return {.name = "Options",
            .title = "Options",
            .items = {check_box("wheel", "The wheel &zooms, and scrolls with Ctrl held"),
                      check_box("snap", "&Cursors snap to edges and icons"),
                      check_box("newtrv", "Overlapping icons give way by &free space"),
                      check_box("processors", "Processor ro&ws"), check_box("marks", "Plain overlap &marks"),
                      check_box("switches", "Plain context &switches"),
                      check_box("prefetch", "&Prefetch what lies beside the view"),
                      check_box("kernel", "&Kernel objects in a group of their own"),
                      check_box("icons", "Tool buttons show &icons"),
                      check_box("right", "Vertical scroll bar on the &right"),
                      check_box("bottom", "Horizontal scroll bar at the &bottom"),
                      check_box("follow", "&A trace that grows is followed at its end"),
                      check_box("dark", "&Dark colours"), item_Ok(), item_Cancel()},
            .layout = column({"wheel", "snap", "newtrv", "processors", "marks", "switches", "prefetch",
                              "kernel", "icons", "right", "bottom", "follow", "dark"})};
}

DialogDescription dialogs_ScrollPos() {
    return {.name = "ScrollPos",
            .title = "Scroll Bars",
            .items = {item_Label("t_side", "Vertical scroll bar:", "side"),
                      {.name = "side",
                       .kind = DialogKind::ButtonSet,
                       .accessible = "Vertical scroll bar",
                       .list = {"&Left", "&Right"}},
                      item_Label("t_end", "Horizontal scroll bar:", "end"),
                      {.name = "end",
                       .kind = DialogKind::ButtonSet,
                       .accessible = "Horizontal scroll bar",
                       .list = {"&Top", "&Bottom"}},
                      item_Ok(),
                      item_Cancel()},
            .layout = column({"t_side", "side", "t_end", "end"})};
}

DialogDescription dialogs_About() {
    const LayoutItems rows = {"t_name", "t_what", "t_version", "t_build"};
    LayoutBuilder layout;
    for (const std::string& row : rows) layout.leastWidths({{.of = {row}, .pixels = 32}});
    layout.leastWidths({{.of = {"ok"}, .pixels = 32}});
    layout.firstWidths({{.letters = 40}});
    layout.onlyHeight({.of = {"t_name", "t_what", "t_version", "t_build", "ok"}, .pixels = 56});
    layout.left({.items = rows, .gap = 16});
    layout.top({.items = {"t_name"}, .gap = 12});
    layout.below({.items = {"t_what"}, .of = "t_name"});
    layout.below({.items = {"t_version"}, .of = "t_what"});
    layout.below({.items = {"t_build"}, .of = "t_version", .gap = 4});
    layout.corner({"ok"});
    DialogItem ok = item_Ok();
    ok.flags |= Dialog_Cancel;
    return {.name = "About",
            .title = "About VOREL Chronoweave",
            .items = {item_Label("t_name", "VOREL Chronoweave"),
                      item_Label("t_what", "A viewer of event logs of real-time operating systems"),
                      {.name = "t_version",
                       .kind = DialogKind::Label,
                       .accessible = "Version",
                       .room = "Version 000.000.000"},
                      {.name = "t_build",
                       .kind = DialogKind::Label,
                       .accessible = "Build",
                       .room = "RelWithDebInfo build, compiler 00.0.0"},
                      ok},
            .layout = layout.lines()};
}
