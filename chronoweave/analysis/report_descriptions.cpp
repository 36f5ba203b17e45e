#include "chronoweave/analysis/dialog_items.h"
#include "chronoweave/analysis/report_dialogs.h"
#include "chronoweave/analysis/report_window.h"
#include "windlib/dialog/layout_builder.h"

namespace {

DialogItem shown(const char* name, const char* spoken, const char* room) {
    return {.name = name,
            .kind = DialogKind::TextField,
            .accessible = spoken,
            .flags = Dialog_ReadOnly,
            .room = room};
}

DialogItem menu_line(const char* menu) {
    return {.name = "MenuBar", .kind = DialogKind::MenuLine, .text = menu, .accessible = "Menus"};
}

DialogItem statistics(const char* name, std::vector<std::string> columns) {
    return {.name = name,
            .kind = DialogKind::List,
            .accessible = "Statistics",
            .flags = Dialog_Multiple,
            .list = std::move(columns)};
}

// The table of the processors' load below another, and its heading.
std::vector<DialogItem> load_items() {
    return {item_Label("t_load", "Processor load"),
            {.name = "load",
             .kind = DialogKind::List,
             .accessible = "Processor load",
             .list = {"Processor", "Time", "Percent of Time"}},
            item_Close()};
}

// A table under rows of text, the table of load under it and a button to close: both windows' lower part, and
// their sizes. below: pixels between all.
void lay_out_tables(LayoutBuilder& layout, const std::string& table, const LayoutItems& rows, int leastGaps,
                    int gaps) {
    LayoutItems others = rows;
    others.insert(others.end(), {"t_load", "close"});
    layout.leastWidths({{.of = {"t_load"}, .pixels = 16}, {.of = {"close"}, .pixels = 16}});
    layout.leastWidths({{.pixels = 80, .letters = 64}});
    layout.leastHeight({.of = others, .pixels = leastGaps, .lines = 12});
    layout.firstWidths({{.pixels = 12, .letters = 128}});
    layout.firstHeight({.pixels = 46, .lines = 40});
    layout.fillWidth(table, {.gaps = 16});
    layout.fillWidth("load", {.gaps = 16});
    layout.height("load", {.pixels = 8, .lines = 6});
    others.emplace_back("load");
    layout.fillHeight(table, {.less = others, .gaps = gaps});
    layout.left({.items = {table, "t_load", "load"}});
    layout.below({.items = {table}, .of = rows.back()});
    layout.below({.items = {"t_load"}, .of = table});
    layout.below({.items = {"load"}, .of = "t_load", .gap = 2});
    layout.corner({"close"});
}

}  // namespace

DialogDescription report_RangeDialog() {
    const LayoutItems rows = {"t_prompt", "tf_from", "r_view", "ts_info", "ok"};
    const LayoutItems range = {"t_from", "tf_from", "t_to", "tf_to"};
    LayoutBuilder layout;
    layout.leastWidths({{.of = {"t_prompt"}, .pixels = 16},
                        {.of = range, .pixels = 48},
                        {.of = {"ok", "cancel"}, .pixels = 32},
                        {.pixels = 80, .letters = 40}});
    layout.firstWidths({{.pixels = 12, .letters = 48}});
    layout.onlyHeight({.of = rows, .pixels = 44});
    layout.fillWidth("ts_info", {.gaps = 16});
    layout.left({.items = {"t_prompt", "t_from", "r_view", "ts_info"}});
    layout.top({.items = {"t_prompt"}});
    layout.below({.items = {"tf_from"}, .of = "t_prompt", .gap = 4});
    layout.below({.items = {"r_view"}, .of = "tf_from", .gap = 4});
    layout.below({.items = {"ts_info"}, .of = "r_view"});
    layout.textRow(range, "tf_from");
    layout.textRow({"r_view", "r_selection", "r_all"}, "r_view");
    layout.corner({"cancel", "ok"});
    DialogDescription d = {.name = "SelectTimeRange", .title = "Select Time Range", .helpKey = "report"};
    d.items = {item_Label("t_prompt", "Please define a period (in Second):")};
    items_Add(d.items, items_Range());
    items_Add(d.items, {item_Message(), item_Ok(), item_Cancel()});
    d.layout = layout.lines();
    return d;
}

DialogDescription report_OrderDialog() {
    LayoutBuilder layout;
    layout.leastWidths({{.of = {"t_prompt"}, .pixels = 16},
                        {.of = {"order", "first"}, .pixels = 48},
                        {.of = {"ok", "cancel"}, .pixels = 32},
                        {.letters = 32}});
    layout.firstWidths({{.letters = 40}});
    layout.onlyHeight({.of = {"t_prompt", "order", "ok"}, .pixels = 40});
    layout.left({.items = {"t_prompt"}});
    layout.left({.items = {"order"}, .gap = 16});
    layout.top({.items = {"t_prompt"}});
    layout.below({.items = {"order", "first"}, .of = "t_prompt"});
    layout.rightOf({.items = {"first"}, .of = "order", .gap = 24});
    layout.corner({"cancel", "ok"});
    return {.name = "SelectOrder",
            .title = "Select Displaying Order",
            .helpKey = "report",
            .items = {item_Label("t_prompt", "Please select the sorting order of result:"),
                      {.name = "order",
                       .kind = DialogKind::ButtonSet,
                       .accessible = "Order",
                       .list = {"&Increasing", "&Descending"},
                       .choiceNames = {"Increasing", "Descending"}},
                      {.name = "first",
                       .kind = DialogKind::ButtonSet,
                       .accessible = "What counts first",
                       .list = {"&Number First", "&Time First"},
                       .choiceNames = {"Number_First", "Time_First"}},
                      item_Ok(),
                      item_Cancel()},
            .layout = layout.lines()};
}

DialogDescription report_StatisticsWindow() {
    LayoutBuilder layout;
    layout.leastWidths({{.of = {"txt_title"}, .pixels = 16}, {.of = {"txt_subtitle"}, .pixels = 16}});
    layout.left({.items = {"txt_title", "txt_subtitle"}});
    layout.top({.items = {"txt_title"}});
    layout.below({.items = {"txt_subtitle"}, .of = "txt_title", .gap = 2});
    lay_out_tables(layout, "Status", {"txt_title", "txt_subtitle"}, 64, 44);
    DialogDescription d = {
        .name = "Statistics", .title = "Statistics for NO_NAME", .helpKey = "report", .menu = true};
    d.items = {menu_line("TraxStatisticsMenu"),
               item_Label("txt_title", "Statistics for all Objects in the System"),
               item_Label("txt_subtitle", "(from 0 to 1 Second)"),
               // Of what the percents are stands in the header's second row.
               statistics("Status", {"Object Name", "Object", "Percent of", "Time", "Percent of"})};
    items_Add(d.items, load_items());
    d.layout = layout.lines();
    return d;
}

DialogDescription report_ChosenWindow() {
    const LayoutItems kinds = {"t_objtype", "tf_objtype", "t_obj", "tf_objname"};
    const LayoutItems range = {"t_range", "tf_from", "t_to", "tf_to", "t_timelen", "tf_timelen"};
    const LayoutItems totals = {"t_tasknum", "tf_tasknum", "t_objnum",
                                "tf_objnum", "t_sorting",  "tf_sorting"};
    LayoutBuilder layout;
    layout.leastWidths({{.of = {"t_header"}, .pixels = 16},
                        {.of = kinds, .pixels = 40},
                        {.of = range, .pixels = 56},
                        {.of = totals, .pixels = 56}});
    layout.left({.items = {"t_header", "t_objtype", "t_range", "t_tasknum"}});
    for (const char* row : {"t_header", "tf_objtype", "tf_from", "tf_tasknum"}) layout.nextRow(row, 8);
    layout.textRow(kinds, "tf_objtype");
    layout.textRow(range, "tf_from");
    layout.textRow(totals, "tf_tasknum");
    lay_out_tables(layout, "list", {"t_header", "tf_objtype", "tf_from", "tf_tasknum"}, 88, 66);
    DialogDescription d = {
        .name = "GenStatistics", .title = "Statistics for NO_NAME", .helpKey = "report", .menu = true};
    const char* const number = "0000000.000000";
    d.items = {menu_line("TraxGenStatisticsMenu"),
               item_Label("t_header", "Statistics for the Selected Object on the Selected Tasks"),
               item_Label("t_objtype", "Object Type:"),
               shown("tf_objtype", "Object type", "Context Switch"),
               item_Label("t_obj", "Object:"),
               shown("tf_objname", "Object", "nnnnnnnnnnnnnnnnnnnnnn"),
               item_Label("t_range", "Time Range for Objects is from (in Second):"),
               shown("tf_from", "From", number),
               item_Label("t_to", "to"),
               shown("tf_to", "To", number),
               item_Label("t_timelen", "Length:"),
               shown("tf_timelen", "Length", number),
               item_Label("t_tasknum", "Number of Selected Tasks:"),
               shown("tf_tasknum", "Number of selected objects", "000000"),
               item_Label("t_objnum", "Total Count:"),
               shown("tf_objnum", "Total count", "0000000000"),
               item_Label("t_sorting", "Sorting:"),
               shown("tf_sorting", "Sorting", "Descending, Number First"),
               statistics("list", {"Task", "Count", "Count Percent", "Time", "Time Percent"})};
    items_Add(d.items, load_items());
    d.layout = layout.lines();
    return d;
}
