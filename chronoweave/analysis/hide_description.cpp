#include "chronoweave/analysis/dialogs.h"

DialogDescription dialogs_Hide() {
    DialogDescription d;
    d.name = "HideTasks";
    d.title = "Select objects to hide";
    d.items = {
        {"t_show", DialogKind::Label, "Objects to Show", "", 0, {}, "", "to_show"},
        {"to_show", DialogKind::List, "", "Objects to Show", Dialog_Multiple, {"Object Name", "Object ID"}},
        {"hide", DialogKind::Button, "&Hide", "", Dialog_Disabled},
        {"hideall", DialogKind::Button, "Hide &All", "", Dialog_Disabled},
        {"t_hide", DialogKind::Label, "Objects to Hide", "", 0, {}, "", "to_hide"},
        {"to_hide", DialogKind::List, "", "Objects to Hide", Dialog_Multiple, {"Object Name", "Object ID"}},
        {"show", DialogKind::Button, "&Show", "", Dialog_Disabled},
        {"showall", DialogKind::Button, "Sho&w All", "", Dialog_Disabled},
        {"t_pattern", DialogKind::Label, "&Path pattern to hide:", "", 0, {}, "", "pattern"},
        {"pattern", DialogKind::TextField, "", "Path pattern to hide", 0, {}, "nnnnnnnnnnnnnnnnnnnnnnnn"},
        {"ts_info", DialogKind::StatusText, "", "Message"},
        {"ok", DialogKind::Button, "OK", "", Dialog_Default},
        {"cancel", DialogKind::Button, "Cancel", "", Dialog_Cancel},
    };
    // Two columns of half the window each, with 4 pixels left, right and between.
    d.layout = {
        "MinSizes",
        "0,(@hide,@hideall),(),14,0,0,0,0,2,1,6,Horizontal",
        "0,(@show,@showall),(),14,0,0,0,0,2,1,5,Horizontal",
        "0,(@t_show),(),10,0,0,0,0,2,1,4,Horizontal",
        "0,(@t_hide),(),10,0,0,0,0,2,1,3,Horizontal",
        "0,(),(),80,64,0,0,0,1,1,2,Horizontal",
        "0,(@t_pattern,@pattern),(),24,0,0,0,0,1,1,1,Horizontal",
        "0,(@t_show,@hide,@pattern,@ts_info,@ok),(),46,0,0,6,0,1,1,1,Vertical",
        "Sizes",
        "0,(),(),12,96,0,0,0,1,1,1,Horizontal",
        "0,(),(),46,0,0,28,0,1,1,1,Vertical",
        "@to_show,(0),(),-12,0,0,0,0,1,2,1,Horizontal",
        "@to_show,(0),(@t_show,@hide,@pattern,@ts_info,@ok),-38,0,0,0,0,1,1,1,Vertical",
        "@to_hide,(@to_show),(),0,0,0,0,0,1,1,1,Horizontal",
        "@to_hide,(@to_show),(),0,0,0,0,0,1,1,1,Vertical",
        "@pattern,(0),(@t_pattern),-16,0,0,0,0,1,1,1,Horizontal",
        "@ts_info,(0),(),-8,0,0,0,0,1,1,1,Horizontal",
        "Positions",
        "(@t_show,@to_show,@hide,@t_pattern,@ts_info),0,4,0,0,0,0,Left,Left,Left",
        "(@t_show,@t_hide),0,4,0,0,0,0,Top,Top,Top",
        "(@to_show,@to_hide),@t_show,2,0,0,0,0,Top,Top,Bottom",
        "(@to_hide),0,-4,0,0,0,0,Right,Right,Right",
        "(@t_hide,@show),@to_hide,0,0,0,0,0,Left,Left,Left",
        "(@hide,@hideall,@show,@showall),@to_show,4,0,0,0,0,Top,Top,Bottom",
        "(@hideall),@hide,4,0,0,0,0,Left,Left,Right",
        "(@showall),@show,4,0,0,0,0,Left,Left,Right",
        "(@pattern),@hide,8,0,0,0,0,Top,Top,Bottom",
        "(@pattern),0,-4,0,0,0,0,Right,Right,Right",
        "(@t_pattern),@pattern,0,0,0,0,0,Baseline,Baseline,Baseline",
        "(@ok,@cancel),0,-4,0,0,0,0,Bottom,Bottom,Bottom",
        "(@cancel),0,-4,0,0,0,0,Right,Right,Right",
        "(@ok),@cancel,-8,0,0,0,0,Right,Right,Left",
        "(@ts_info),@ok,-4,0,0,0,0,Bottom,Bottom,Top",
    };
    return d;
}
