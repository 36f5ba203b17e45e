#include "chronoweave/analysis/dialog_items.h"
#include "chronoweave/analysis/dialogs.h"
#include "windlib/dialog/layout_builder.h"

DialogDescription dialogs_Bookmarks() {
    LayoutBuilder layout;
    layout.LeastWidths({{.of = {"t_label", "label", "rename"}, .pixels = 40},
                        {.of = {"goto", "delete", "colour", "close"}, .pixels = 48},
                        {.pixels = 80, .letters = 48}});
    layout.LeastHeight({.of = {"label", "close"}, .pixels = 48, .lines = 6});
    layout.FirstWidths({{.pixels = 12, .letters = 64}});
    layout.FirstHeight({.pixels = 46, .lines = 18});
    layout.FillWidth("marks", {.gaps = 16});
    layout.FillHeight("marks", {.less = {"label", "close"}, .gaps = 40});
    layout.FillWidth("label", {.less = {"t_label", "rename"}, .gaps = 32});
    layout.Left({.items = {"marks", "t_label", "goto"}});
    layout.Top({.items = {"marks"}});
    layout.RightOf({.items = {"label"}, .of = "t_label"});
    layout.Below({.items = {"label"}, .of = "marks"});
    layout.Baseline({"t_label", "rename"}, "label");
    layout.Right({.items = {"rename"}});
    layout.Bottom({.items = {"goto", "delete", "colour", "close"}});
    layout.InRow({"goto", "delete", "colour"});
    layout.Right({.items = {"close"}});
    const auto button = [](const char* name, const char* text, unsigned flags = 0) -> DialogItem {
        return {.name = name, .kind = DialogKind::Button, .text = text, .flags = Dialog_Disabled | flags};
    };
    return {.name = "EditBookmarks",
            .title = "Bookmarks",
            .items = {{.name = "marks",
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
            .layout = layout.Lines()};
}

DialogDescription dialogs_KeySheet() {
    LayoutBuilder layout;
    layout.LeastWidths({{.pixels = 80, .letters = 48}});
    layout.LeastHeight({.of = {"close"}, .pixels = 40, .lines = 8});
    layout.FirstWidths({{.pixels = 12, .letters = 64}});
    layout.FirstHeight({.pixels = 46, .lines = 28});
    layout.FillWidth("keys", {.gaps = 16});
    layout.FillHeight("keys", {.less = {"close"}, .gaps = 32});
    layout.Left({.items = {"keys"}});
    layout.Top({.items = {"keys"}});
    layout.Corner({"close"});
    DialogItem close = item_Close();
    close.flags |= Dialog_Default;
    return {.name = "KeySheet",
            .title = "Keys",
            .items = {{.name = "keys",
                       .kind = DialogKind::List,
                       .accessible = "Keys",
                       .list = {"Keys", "What they do"}},
                      close},
            .layout = layout.Lines()};
}

DialogDescription dialogs_Palette() {
    LayoutBuilder layout;
    layout.LeastWidths({{.of = {"t_filter", "filter"}, .pixels = 32},
                        {.of = {"run", "close"}, .pixels = 32},
                        {.pixels = 60, .letters = 40}});
    layout.LeastHeight({.of = {"filter", "close"}, .pixels = 48, .lines = 6});
    layout.FirstWidths({{.pixels = 12, .letters = 56}});
    layout.FirstHeight({.pixels = 46, .lines = 20});
    layout.FillWidth("filter", {.less = {"t_filter"}, .gaps = 24});
    layout.FillWidth("commands", {.gaps = 16});
    layout.FillHeight("commands", {.less = {"filter", "close"}, .gaps = 40});
    layout.Left({.items = {"t_filter", "commands"}});
    layout.Top({.items = {"filter"}});
    layout.TextRow({"t_filter", "filter"}, "filter");
    layout.Below({.items = {"commands"}, .of = "filter"});
    layout.Corner({"close", "run"});
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
            .layout = layout.Lines()};
}
