#include "chronoweave/analysis/dialog_items.h"
#include "chronoweave/analysis/dialogs.h"
#include "windlib/dialog/layout_builder.h"

DialogDescription dialogs_Bookmarks() {
    LayoutBuilder layout;
    layout.leastWidths({{.of = {"t_label", "label", "rename"}, .pixels = 40},
                        {.of = {"goto", "delete", "colour", "close"}, .pixels = 48},
                        {.pixels = 80, .letters = 48}});
    layout.leastHeight({.of = {"f_marks", "label", "close"}, .pixels = 56, .lines = 6});
    layout.firstWidths({{.pixels = 12, .letters = 64}});
    layout.firstHeight({.pixels = 46, .lines = 18});
    for (const char* wide : {"f_marks", "marks"}) layout.fillWidth(wide, {.gaps = 16});
    layout.fillHeight("marks", {.less = {"f_marks", "label", "close"}, .gaps = 48});
    layout.fillWidth("label", {.less = {"t_label", "rename"}, .gaps = 32});
    layout.left({.items = {"f_marks", "marks", "t_label", "goto"}});
    layout.top({.items = {"f_marks"}});
    layout.below({.items = {"marks"}, .of = "f_marks"});
    layout.rightOf({.items = {"label"}, .of = "t_label"});
    layout.below({.items = {"label"}, .of = "marks"});
    layout.baseline({"t_label", "rename"}, "label");
    layout.right({.items = {"rename"}});
    layout.bottom({.items = {"goto", "delete", "colour", "close"}});
    layout.inRow({"goto", "delete", "colour"});
    layout.right({.items = {"close"}});
    const auto button = [](const char* name, const char* text, unsigned flags = 0) -> DialogItem {
        return {.name = name, .kind = DialogKind::Button, .text = text, .flags = Dialog_Disabled | flags};
    };
    return {.name = "EditBookmarks",
            .title = "Bookmarks",
            .items = {item_Filter("marks"),
                      {.name = "marks",
                       .kind = DialogKind::List,
                       .accessible = "Bookmarks",
                       .list = {"Label", "Time", "Object", "Colour"}},
                      item_Label("t_label", "&Label:", "label"),
                      {.name = "label",
                       .kind = DialogKind::TextField,
                       .accessible = "Label",
                       .flags = Dialog_Disabled,
                       .room = std::string(16, 'n')},
                      button("rename", "Re&name"),
                      button("colour", "&Colour..."),
                      button("goto", "&Go To", Dialog_Default),
                      button("delete", "&Delete"),
                      item_Close()},
            .layout = layout.lines()};
}

DialogDescription dialogs_KeySheet() {
    LayoutBuilder layout;
    layout.leastWidths({{.pixels = 80, .letters = 48}});
    layout.leastHeight({.of = {"f_keys", "close"}, .pixels = 48, .lines = 8});
    layout.firstWidths({{.pixels = 12, .letters = 64}});
    layout.firstHeight({.pixels = 46, .lines = 28});
    for (const char* wide : {"f_keys", "keys"}) layout.fillWidth(wide, {.gaps = 16});
    layout.fillHeight("keys", {.less = {"f_keys", "close"}, .gaps = 40});
    layout.left({.items = {"f_keys", "keys"}});
    layout.top({.items = {"f_keys"}});
    layout.below({.items = {"keys"}, .of = "f_keys"});
    layout.corner({"close"});
    DialogItem close = item_Close();
    close.flags |= Dialog_Default;
    return {.name = "KeySheet",
            .title = "Keys",
            .items = {item_Filter("keys"),
                      {.name = "keys",
                       .kind = DialogKind::List,
                       .accessible = "Keys",
                       .list = {"Keys", "What they do"}},
                      close},
            .layout = layout.lines()};
}

DialogDescription dialogs_Palette() {
    LayoutBuilder layout;
    layout.leastWidths({{.of = {"t_filter", "filter"}, .pixels = 32},
                        {.of = {"run", "close"}, .pixels = 32},
                        {.pixels = 60, .letters = 40}});
    layout.leastHeight({.of = {"filter", "close"}, .pixels = 48, .lines = 6});
    layout.firstWidths({{.pixels = 12, .letters = 56}});
    layout.firstHeight({.pixels = 46, .lines = 20});
    layout.fillWidth("filter", {.less = {"t_filter"}, .gaps = 24});
    layout.fillWidth("commands", {.gaps = 16});
    layout.fillHeight("commands", {.less = {"filter", "close"}, .gaps = 40});
    layout.left({.items = {"t_filter", "commands"}});
    layout.top({.items = {"filter"}});
    layout.textRow({"t_filter", "filter"}, "filter");
    layout.below({.items = {"commands"}, .of = "filter"});
    layout.corner({"close", "run"});
    return {.name = "Palette",
            .title = "Commands",
            .items = {item_Label("t_filter", "&Find:", "filter"),
                      {.name = "filter",
                       .kind = DialogKind::TextField,
                       .accessible = "Part of a command's name",
                       .room = std::string(16, 'n')},
                      {.name = "commands",
                       .kind = DialogKind::List,
                       .accessible = "Commands",
                       .list = {"Command", "Menu", "Keys"}},
                      item_Ok("run", "Run"),
                      item_Close()},
            .layout = layout.lines()};
}
