#include "chronoweave/analysis/dialog_items.h"
#include "chronoweave/analysis/merge_dialogs.h"
#include "windlib/dialog/layout_builder.h"

namespace {

// One way to merge: its choice, and two lines that explain it.
struct Way {
    const char *choice, *text, *line1, *line2;
    const char *shown1, *shown2;
};
constexpr Way ways[] = {
    {"Natural_B", "&Natural", "NA_Txt1", "NA_Txt2", "Merge all events from different sources based on their",
     "recorded timestamps."},
    {"HA_B", "&Head aligned", "HA_Txt1", "HA_Txt2",
     "Adjust event timestamps so that the first events in each source", "have the same timestamp."},
    {"TA_B", "&Tail aligned", "TA_Txt1", "TA_Txt2",
     "Adjust event timestamps so that the last events in each source", "have the same timestamp."}};
constexpr int inset = 16, indent = 36;

void add_way(const Way& way, DialogDescription& d, LayoutBuilder& layout) {
    items_Add(d.items, {{.name = way.choice,
                         .kind = DialogKind::ButtonSet,
                         .accessible = std::string(way.shown1) + ' ' + way.shown2,
                         .list = {way.text}},
                        item_Label(way.line1, way.shown1),
                        item_Label(way.line2, way.shown2)});
    layout.left({.items = {way.choice}, .gap = inset});
    layout.left({.items = {way.line1, way.line2}, .gap = indent});
    for (const char* line : {way.line1, way.line2})
        layout.leastWidths({{.of = {line}, .pixels = indent + inset + 8}});
    layout.nextRow(way.choice, 12);
    layout.nextRow(way.line1, 4);
    layout.nextRow(way.line2, 2);
}

}  // namespace

DialogDescription dialogs_MergeOptions() {
    LayoutBuilder layout;
    DialogDescription d{.name = "MergeOptions", .title = "Merge Options", .helpKey = "merge"};
    d.items = {item_Label("Info_Txt", "Merge options:"), {.name = "Type_Rect", .kind = DialogKind::Frame}};
    layout.left({.items = {"Info_Txt", "Type_Rect"}});
    layout.nextRow("Info_Txt", 8);
    for (const Way& way : ways) add_way(way, d, layout);
    // The frame goes from a little above the first choice to a little below the last line.
    LayoutSize inside = {.pixels = 60};
    for (const Way& way : ways)
        for (const char* row : {way.choice, way.line1, way.line2}) inside.of.emplace_back(row);
    layout.fillWidth("Type_Rect", {.gaps = 16});
    layout.height("Type_Rect", inside);
    layout.below({.items = {"Type_Rect"}, .of = "Info_Txt", .gap = 4});
    items_Add(d.items, {item_Ok("Ok_BS"), item_Cancel()});
    layout.leastWidths({{.of = {"Ok_BS", "cancel"}, .pixels = 32}});
    layout.firstWidths({{.letters = 40}});
    LayoutSize height = layout.rowsHeight(32);
    height.of.emplace_back("Ok_BS");
    layout.onlyHeight(height);
    layout.corner({"cancel", "Ok_BS"});
    d.layout = layout.lines();
    return d;
}
