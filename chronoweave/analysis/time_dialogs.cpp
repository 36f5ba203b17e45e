#include "chronoweave/analysis/dialog_items.h"
#include "chronoweave/analysis/dialogs.h"
#include "windlib/dialog/layout_builder.h"

DialogDescription dialogs_TimeUnit() {
    const LayoutItems rows = {"t_units", "units", "auto", "ok"};
    LayoutBuilder layout;
    layout.leastWidths({{.of = {"t_units"}, .pixels = 24},
                        {.of = {"units"}, .pixels = 40},
                        {.of = {"auto"}, .pixels = 24},
                        {.of = {"ok", "cancel"}, .pixels = 32}});
    layout.leastHeight({.of = rows, .pixels = 48});
    layout.firstWidths({{.letters = 40}});
    layout.firstHeight({.of = rows, .pixels = 40});
    layout.left({.items = {"t_units", "auto"}});
    layout.left({.items = {"units"}, .gap = 24});
    layout.top({.items = {"t_units"}});
    layout.below({.items = {"units"}, .of = "t_units", .gap = 4});
    layout.below({.items = {"auto"}, .of = "units"});
    layout.corner({"cancel", "ok"});
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
            .layout = layout.lines()};
}

DialogDescription dialogs_GotoTime() {
    const LayoutItems rows = {"time", "t_explain", "ts_info", "ok"};
    LayoutBuilder layout;
    layout.leastWidths({{.of = {"t_time", "time"}, .pixels = 32},
                        {.of = {"t_explain"}, .pixels = 24},
                        {.of = {"ok", "cancel"}, .pixels = 32}});
    layout.leastHeight({.of = rows, .pixels = 48});
    layout.firstWidths({{.of = {"t_explain"}, .pixels = 16}});
    layout.firstHeight({.of = rows, .pixels = 40});
    layout.fillWidth("time", {.less = {"t_time"}, .gaps = 24});
    layout.fillWidth("ts_info", {.gaps = 16});
    layout.left({.items = {"t_time", "t_explain", "ts_info"}});
    layout.top({.items = {"time"}});
    layout.textRow({"t_time", "time"}, "time");
    layout.below({.items = {"t_explain"}, .of = "time"});
    layout.corner({"cancel", "ok"});
    layout.above({.items = {"ts_info"}, .of = "ok"});
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
            .layout = layout.lines()};
}
