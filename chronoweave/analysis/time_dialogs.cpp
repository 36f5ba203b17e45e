#include "chronoweave/analysis/dialog_items.h"
#include "chronoweave/analysis/dialogs.h"
#include "windlib/dialog/layout_builder.h"

DialogDescription dialogs_TimeUnit() {
    const LayoutItems rows = {"t_units", "units", "auto", "ok"};
    LayoutBuilder layout;
    layout.LeastWidths({{.of = {"t_units"}, .pixels = 24},
                        {.of = {"units"}, .pixels = 40},
                        {.of = {"auto"}, .pixels = 24},
                        {.of = {"ok", "cancel"}, .pixels = 32}});
    layout.LeastHeight({.of = rows, .pixels = 48});
    layout.FirstWidths({{.letters = 40}});
    layout.FirstHeight({.of = rows, .pixels = 40});
    layout.Left({.items = {"t_units", "auto"}});
    layout.Left({.items = {"units"}, .gap = 24});
    layout.Top({.items = {"t_units"}});
    layout.Below({.items = {"units"}, .of = "t_units", .gap = 4});
    layout.Below({.items = {"auto"}, .of = "units"});
    layout.Corner({"cancel", "ok"});
    return {.name = "TimeUnit",
            .title = "Time Unit",
            .items = {item_Label("t_units", "Show times in:", "units"),
                      {.name = "units",
                       .kind = DialogKind::ButtonSet,
                       .accessible = "Time unit",
                       .list = {"&Second", "&Millisecond", "M&icrosecond", "&Nanosecond"}},
                      {.name = "auto", .kind = DialogKind::CheckBox, .text = "&Auto Adjust Time Unit"},
                      item_Ok(),
                      item_Cancel()},
            .layout = layout.Lines()};
}

DialogDescription dialogs_GotoTime() {
    const LayoutItems rows = {"time", "t_explain", "ts_info", "ok"};
    LayoutBuilder layout;
    layout.LeastWidths({{.of = {"t_time", "time"}, .pixels = 32},
                        {.of = {"t_explain"}, .pixels = 24},
                        {.of = {"ok", "cancel"}, .pixels = 32}});
    layout.LeastHeight({.of = rows, .pixels = 48});
    layout.FirstWidths({{.of = {"t_explain"}, .pixels = 16}});
    layout.FirstHeight({.of = rows, .pixels = 40});
    layout.FillWidth("time", {.less = {"t_time"}, .gaps = 24});
    layout.FillWidth("ts_info", {.gaps = 16});
    layout.Left({.items = {"t_time", "t_explain", "ts_info"}});
    layout.Top({.items = {"time"}});
    layout.TextRow({"t_time", "time"}, "time");
    layout.Below({.items = {"t_explain"}, .of = "time"});
    layout.Corner({"cancel", "ok"});
    layout.Above({.items = {"ts_info"}, .of = "ok"});
    return {.name = "GotoTime",
            .title = "Go to Time",
            .items = {item_Label("t_time", "&Time:", "time"),
                      {.name = "time",
                       .kind = DialogKind::TextField,
                       .accessible = "Time",
                       .room = "000000.000000000000"},
                      item_Label("t_explain",
                                 "A time, a start and an end, or a start, + and a length.\n"
                                 "Units are s, ms, us, ns and ticks; without one it is the unit of the "
                                 "canvas.\n"
                                 "For example: 1.5    20ms 35ms    1s + 250us"),
                      item_Message(),
                      item_Ok(),
                      item_Cancel()},
            .layout = layout.Lines()};
}
