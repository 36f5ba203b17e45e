#include "chronoweave/analysis/dialog_items.h"
#include "chronoweave/analysis/dialogs.h"
#include "windlib/dialog/layout_builder.h"

namespace {

// Rows of items, one under the other, over the message line and the buttons.
std::vector<std::string> rows_over_buttons(const std::vector<LayoutItems>& rows) {
    LayoutBuilder layout;
    for (const LayoutItems& row : rows) {
        layout.leastWidths({{.of = row, .pixels = 32}});
        layout.left({.items = {row.front()}});
        layout.nextRow(row.back(), 8);
        if (row.size() > 1) layout.textRow(row, row.back());
    }
    layout.leastWidths({{.of = {"ok", "preview", "pdf", "cancel"}, .pixels = 48}});
    layout.firstWidths({{.letters = 40}});
    LayoutSize height = layout.rowsHeight(40);
    height.of.insert(height.of.end(), {"ts_info", "ok"});
    layout.onlyHeight(height);
    layout.fillWidth("ts_info", {.gaps = 16});
    layout.left({.items = {"ts_info"}});
    layout.corner({"cancel", "pdf", "preview", "ok"});
    layout.above({.items = {"ts_info"}, .of = "ok"});
    return layout.lines();
}

// The sheet and the answers.
std::vector<DialogItem> paper_items() {
    return {item_Label("t_paper", "Pa&per:", "paper"),
            {.name = "paper", .kind = DialogKind::PullDown, .accessible = "Paper", .list = {"A4", "Letter"}},
            {.name = "turn",
             .kind = DialogKind::ButtonSet,
             .accessible = "Orientation",
             .list = {"Po&rtrait", "L&andscape"}},
            item_Message(),
            item_Ok("ok", "Pr&int..."),
            {.name = "preview", .kind = DialogKind::Button, .text = "Previe&w..."},
            {.name = "pdf", .kind = DialogKind::Button, .text = "PD&F File..."},
            item_Cancel()};
}

}  // namespace

DialogDescription dialogs_Print() {
    DialogDescription d;
    d.name = "Print";
    d.title = "Print";
    d.items = {item_Label("t_range", "Print:", "range"),
               {.name = "range",
                .kind = DialogKind::ButtonSet,
                .accessible = "Print",
                .list = {"The &view", "The &selection"}},
               item_Label("t_pages", "&On pages:", "pages"),
               {.name = "pages", .kind = DialogKind::TextField, .accessible = "On pages", .room = "00000"},
               {.name = "legend",
                .kind = DialogKind::CheckBox,
                .text = "What is shown of the &legend, at the foot"}};
    items_Add(d.items, paper_items());
    d.layout = rows_over_buttons(
        {{"t_range"}, {"range"}, {"t_pages", "pages"}, {"legend"}, {"t_paper"}, {"paper"}, {"turn"}});
    return d;
}

DialogDescription dialogs_PrintTable() {
    DialogDescription d;
    d.name = "PrintTable";
    d.title = "Print";
    d.items = paper_items();
    d.layout = rows_over_buttons({{"t_paper"}, {"paper"}, {"turn"}});
    return d;
}
