#include "chronoweave/analysis/legend_window.h"

DialogDescription legend_Window() {
    DialogDescription d;
    d.name = "Legend";
    d.title = "Legend";
    d.helpKey = "legend";
    d.menu = true;
    d.offset = 10;
    d.items = {
        {"MenuBar", DialogKind::MenuLine, "TraxLegendMenu", "Menus"},
        {"StatusBox", DialogKind::Frame},
        {"t_filter", DialogKind::Label, "&Filter:", "", 0, {}, "", "tf_filter"},
        {"tf_filter", DialogKind::TextField, "", "Filter of the legend by name", 0, {}, "nnnnnnnnnnnnnnnn"},
        {"list", DialogKind::List, "", "Legend", 0, {"Kind", "Name", "", "Visibility"}},
        {"bt_change", DialogKind::Button, "&Change...", "", Dialog_Disabled | Dialog_Default},
        {"bt_visible", DialogKind::Button, "&Visible / Invisible", "", Dialog_Disabled},
        {"bt_important", DialogKind::CheckBox, "&Never hidden under others", "", Dialog_Disabled},
        {"bt_undo", DialogKind::Button, "&Undo", "", Dialog_Disabled},
        {"bt_close", DialogKind::Button, "Close", "", Dialog_Cancel},
    };
    d.layout = {
        "MinSizes",
        "0,(@t_filter,@tf_filter),(),24,0,0,0,0,1,1,4,Horizontal",
        "0,(@bt_change,@bt_visible,@bt_undo,@bt_close),(),48,0,0,0,0,1,1,3,Horizontal",
        "0,(@bt_important),(),24,0,0,0,0,1,1,2,Horizontal",
        "0,(),(),80,40,0,0,0,1,1,1,Horizontal",
        "0,(@tf_filter,@bt_important,@bt_close),(),56,0,0,8,0,1,1,1,Vertical",
        "Sizes",
        "0,(@bt_change,@bt_visible,@bt_undo,@bt_close),(),64,0,0,0,0,1,1,2,Horizontal",
        "0,(),(),12,56,0,0,0,1,1,1,Horizontal",
        "0,(),(),56,0,0,32,0,1,1,1,Vertical",
        "@tf_filter,(0),(@t_filter),-24,0,0,0,0,1,1,1,Horizontal",
        "@list,(0),(),-16,0,0,0,0,1,1,1,Horizontal",
        "@list,(0),(@tf_filter,@bt_important,@bt_close),-48,0,0,0,0,1,1,1,Vertical",
        "@StatusBox,(0),(),-8,0,0,0,0,1,1,1,Horizontal",
        "@StatusBox,(@tf_filter,@list),(),16,0,0,0,0,1,1,1,Vertical",
        "Positions",
        "(@StatusBox),0,4,0,0,0,0,Left,Left,Left",
        "(@StatusBox),0,4,0,0,0,0,Top,Top,Top",
        "(@t_filter,@list,@bt_change,@bt_important),0,8,0,0,0,0,Left,Left,Left",
        "(@tf_filter),0,8,0,0,0,0,Top,Top,Top",
        "(@tf_filter),@t_filter,8,0,0,0,0,Left,Left,Right",
        "(@t_filter),@tf_filter,0,0,0,0,0,Baseline,Baseline,Baseline",
        "(@list),@tf_filter,8,0,0,0,0,Top,Top,Bottom",
        "(@bt_change,@bt_visible,@bt_undo,@bt_close),0,-8,0,0,0,0,Bottom,Bottom,Bottom",
        "(@bt_visible),@bt_change,8,0,0,0,0,Left,Left,Right",
        "(@bt_undo),@bt_visible,8,0,0,0,0,Left,Left,Right",
        "(@bt_close),0,-8,0,0,0,0,Right,Right,Right",
        "(@bt_important),@bt_change,-8,0,0,0,0,Bottom,Bottom,Top",
    };
    return d;
}

DialogDescription legend_StatusDialog() {
    DialogDescription d;
    d.name = "ConfigureStatus";
    d.title = "Configure Status";
    d.helpKey = "legend";
    d.items = {
        {"rgbWin", DialogKind::Strip, "", "The line as it will be"},
        {"t_red", DialogKind::Label, "&Red:", "", 0, {}, "", "tf_red"},
        {"tf_red", DialogKind::TextField, "", "Red", 0, {}, "0x0000"},
        {"t_green", DialogKind::Label, "&Green:", "", 0, {}, "", "tf_green"},
        {"tf_green", DialogKind::TextField, "", "Green", 0, {}, "0x0000"},
        {"t_blue", DialogKind::Label, "&Blue:", "", 0, {}, "", "tf_blue"},
        {"tf_blue", DialogKind::TextField, "", "Blue", 0, {}, "0x0000"},
        {"bt_choose", DialogKind::Button, "&Choose..."},
        {"t_thickness", DialogKind::Label, "&Thickness:", "", 0, {}, "", "tf_thickness"},
        {"tf_thickness", DialogKind::TextField, "", "Thickness in pixels", 0, {}, "0x0000"},
        {"t_style", DialogKind::Label, "Line &Style:", "", 0, {}, "", "stylePD"},
        {"stylePD",
         DialogKind::PullDown,
         "",
         "Line style",
         0,
         {"Solid", "Dash", "Dot", "DashDot", "DashDotDot"}},
        {"bt_ok", DialogKind::Button, "OK", "", Dialog_Default},
        {"bt_cancel", DialogKind::Button, "Cancel", "", Dialog_Cancel},
    };
    // Labels in a column as wide as the widest, fields beside them.
    d.layout = {
        "MinSizes",
        "0,(@t_style,@stylePD),(),40,0,0,0,0,1,1,4,Horizontal",
        "0,(@t_thickness,@tf_thickness,@bt_choose),(),40,0,0,0,0,1,1,3,Horizontal",
        "0,(@t_style,@tf_green,@bt_choose),(),40,0,0,0,0,1,1,2,Horizontal",
        "0,(@bt_ok,@bt_cancel),(),32,0,0,0,0,1,1,1,Horizontal",
        "0,(@tf_red,@tf_green,@tf_blue,@tf_thickness,@stylePD,@bt_ok),(),88,0,0,3,0,1,1,1,Vertical",
        "Sizes",
        "0,(),(),0,40,0,0,0,1,1,1,Horizontal",
        "@rgbWin,(0),(),-16,0,0,0,0,1,1,1,Horizontal",
        "@rgbWin,(),(),0,0,0,3,0,1,1,1,Vertical",
        "Positions",
        "(@rgbWin,@t_red,@t_green,@t_blue,@t_thickness,@t_style),0,8,0,0,0,0,Left,Left,Left",
        "(@rgbWin),0,8,0,0,0,0,Top,Top,Top",
        "(@tf_thickness),@t_thickness,16,0,0,0,0,Left,Left,Right",
        "(@tf_red,@tf_green,@tf_blue,@stylePD),@tf_thickness,0,0,0,0,0,Left,Left,Left",
        "(@tf_red),@rgbWin,8,0,0,0,0,Top,Top,Bottom",
        "(@tf_green),@tf_red,8,0,0,0,0,Top,Top,Bottom",
        "(@tf_blue),@tf_green,8,0,0,0,0,Top,Top,Bottom",
        "(@tf_thickness),@tf_blue,8,0,0,0,0,Top,Top,Bottom",
        "(@stylePD),@tf_thickness,8,0,0,0,0,Top,Top,Bottom",
        "(@t_red),@tf_red,0,0,0,0,0,Baseline,Baseline,Baseline",
        "(@t_green),@tf_green,0,0,0,0,0,Baseline,Baseline,Baseline",
        "(@t_blue),@tf_blue,0,0,0,0,0,Baseline,Baseline,Baseline",
        "(@t_thickness),@tf_thickness,0,0,0,0,0,Baseline,Baseline,Baseline",
        "(@t_style),@stylePD,0,0,0,0,0,Baseline,Baseline,Baseline",
        "(@bt_choose),@tf_green,8,0,0,0,0,Left,Left,Right",
        "(@bt_choose),@tf_green,0,0,0,0,0,TBCenter,TBCenter,TBCenter",
        "(@bt_ok,@bt_cancel),0,-8,0,0,0,0,Bottom,Bottom,Bottom",
        "(@bt_cancel),0,-8,0,0,0,0,Right,Right,Right",
        "(@bt_ok),@bt_cancel,-8,0,0,0,0,Right,Right,Left",
    };
    return d;
}

DialogDescription legend_IconDialog() {
    DialogDescription d;
    d.name = "selectIcon";
    d.title = "Select One Icon";
    d.helpKey = "legend";
    d.items = {
        {"colHeader", DialogKind::List, "", "Icons", 0, {"Icon", "File"}},
        {"bt_ok", DialogKind::Button, "OK", "", Dialog_Default},
        {"bt_cancel", DialogKind::Button, "Cancel", "", Dialog_Cancel},
    };
    d.layout = {
        "MinSizes",
        "0,(@bt_ok,@bt_cancel),(),32,0,0,0,0,1,1,2,Horizontal",
        "0,(),(),80,40,0,0,0,1,1,1,Horizontal",
        "0,(@bt_ok),(),40,0,0,8,0,1,1,1,Vertical",
        "Sizes",
        "0,(),(),12,48,0,0,0,1,1,1,Horizontal",
        "0,(),(),46,0,0,24,0,1,1,1,Vertical",
        "@colHeader,(0),(),-16,0,0,0,0,1,1,1,Horizontal",
        "@colHeader,(0),(@bt_ok),-32,0,0,0,0,1,1,1,Vertical",
        "Positions",
        "(@colHeader),0,8,0,0,0,0,Left,Left,Left",
        "(@colHeader),0,8,0,0,0,0,Top,Top,Top",
        "(@bt_ok,@bt_cancel),0,-8,0,0,0,0,Bottom,Bottom,Bottom",
        "(@bt_cancel),0,-8,0,0,0,0,Right,Right,Right",
        "(@bt_ok),@bt_cancel,-8,0,0,0,0,Right,Right,Left",
    };
    return d;
}
