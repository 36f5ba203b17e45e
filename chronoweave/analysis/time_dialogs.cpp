#include "chronoweave/analysis/dialogs.h"

DialogDescription dialogs_TimeUnit() {
    DialogDescription d;
    d.name = "TimeUnit";
    d.title = "Time Unit";
    d.items = {
        {"t_units", DialogKind::Label, "Show times in:", "", 0, {}, "", "units"},
        {"units",
         DialogKind::ButtonSet,
         "",
         "Time unit",
         0,
         {"&Second", "&Millisecond", "M&icrosecond", "&Nanosecond"}},
        {"auto", DialogKind::CheckBox, "&Auto Adjust Time Unit"},
        {"ok", DialogKind::Button, "OK", "", Dialog_Default},
        {"cancel", DialogKind::Button, "Cancel", "", Dialog_Cancel},
    };
    d.layout = {
        "MinSizes",
        "0,(@t_units),(),24,0,0,0,0,1,1,4,Horizontal",
        "0,(@units),(),40,0,0,0,0,1,1,3,Horizontal",
        "0,(@auto),(),24,0,0,0,0,1,1,2,Horizontal",
        "0,(@ok,@cancel),(),32,0,0,0,0,1,1,1,Horizontal",
        "0,(@t_units,@units,@auto,@ok),(),48,0,0,0,0,1,1,1,Vertical",
        "Sizes",
        "0,(),(),0,40,0,0,0,1,1,1,Horizontal",
        "0,(@t_units,@units,@auto,@ok),(),40,0,0,0,0,1,1,1,Vertical",
        "Positions",
        "(@t_units,@auto),0,8,0,0,0,0,Left,Left,Left",
        "(@units),0,24,0,0,0,0,Left,Left,Left",
        "(@t_units),0,8,0,0,0,0,Top,Top,Top",
        "(@units),@t_units,4,0,0,0,0,Top,Top,Bottom",
        "(@auto),@units,8,0,0,0,0,Top,Top,Bottom",
        "(@ok,@cancel),0,-8,0,0,0,0,Bottom,Bottom,Bottom",
        "(@cancel),0,-8,0,0,0,0,Right,Right,Right",
        "(@ok),@cancel,-8,0,0,0,0,Right,Right,Left",
    };
    return d;
}

DialogDescription dialogs_GotoTime() {
    DialogDescription d;
    d.name = "GotoTime";
    d.title = "Go to Time";
    d.items = {
        {"t_time", DialogKind::Label, "&Time:", "", 0, {}, "", "time"},
        {"time", DialogKind::TextField, "", "Time", 0, {}, "000000.000000000000"},
        {"t_explain", DialogKind::Label,
         "A time, a start and an end, or a start, + and a length.\n"
         "Units are s, ms, us, ns and ticks; without one it is the unit of the canvas.\n"
         "For example: 1.5    20ms 35ms    1s + 250us"},
        {"ts_info", DialogKind::StatusText, "", "Message"},
        {"ok", DialogKind::Button, "OK", "", Dialog_Default},
        {"cancel", DialogKind::Button, "Cancel", "", Dialog_Cancel},
    };
    d.layout = {
        "MinSizes",
        "0,(@t_time,@time),(),32,0,0,0,0,1,1,3,Horizontal",
        "0,(@t_explain),(),24,0,0,0,0,1,1,2,Horizontal",
        "0,(@ok,@cancel),(),32,0,0,0,0,1,1,1,Horizontal",
        "0,(@time,@t_explain,@ts_info,@ok),(),48,0,0,0,0,1,1,1,Vertical",
        "Sizes",
        "0,(@t_explain),(),16,0,0,0,0,1,1,1,Horizontal",
        "0,(@time,@t_explain,@ts_info,@ok),(),40,0,0,0,0,1,1,1,Vertical",
        "@time,(0),(@t_time),-24,0,0,0,0,1,1,1,Horizontal",
        "@ts_info,(0),(),-16,0,0,0,0,1,1,1,Horizontal",
        "Positions",
        "(@t_time,@t_explain,@ts_info),0,8,0,0,0,0,Left,Left,Left",
        "(@time),0,8,0,0,0,0,Top,Top,Top",
        "(@time),@t_time,8,0,0,0,0,Left,Left,Right",
        "(@t_time),@time,0,0,0,0,0,Baseline,Baseline,Baseline",
        "(@t_explain),@time,8,0,0,0,0,Top,Top,Bottom",
        "(@ok,@cancel),0,-8,0,0,0,0,Bottom,Bottom,Bottom",
        "(@cancel),0,-8,0,0,0,0,Right,Right,Right",
        "(@ok),@cancel,-8,0,0,0,0,Right,Right,Left",
        "(@ts_info),@ok,-8,0,0,0,0,Bottom,Bottom,Top",
    };
    return d;
}
