#include "chronoweave/analysis/dialogs.h"

DialogDescription dialogs_Bookmarks() {
    DialogDescription d;
    d.name = "EditBookmarks";
    d.title = "Bookmarks";
    d.items = {
        {"marks", DialogKind::List, "", "Bookmarks", 0, {"Label", "Time", "Object", "Colour"}},
        {"t_label", DialogKind::Label, "&Label:", "", 0, {}, "", "label"},
        {"label", DialogKind::TextField, "", "Label", Dialog_Disabled, {}, "nnnnnnnnnnnnnnnn"},
        {"rename", DialogKind::Button, "Re&name", "", Dialog_Disabled},
        {"colour", DialogKind::Button, "&Colour...", "", Dialog_Disabled},
        {"goto", DialogKind::Button, "&Go To", "", Dialog_Disabled | Dialog_Default},
        {"delete", DialogKind::Button, "&Delete", "", Dialog_Disabled},
        {"close", DialogKind::Button, "Close", "", Dialog_Cancel},
    };
    d.layout = {
        "MinSizes",
        "0,(@t_label,@label,@rename),(),40,0,0,0,0,1,1,3,Horizontal",
        "0,(@goto,@delete,@colour,@close),(),48,0,0,0,0,1,1,2,Horizontal",
        "0,(),(),80,48,0,0,0,1,1,1,Horizontal",
        "0,(@label,@close),(),48,0,0,6,0,1,1,1,Vertical",
        "Sizes",
        "0,(),(),12,64,0,0,0,1,1,1,Horizontal",
        "0,(),(),46,0,0,18,0,1,1,1,Vertical",
        "@marks,(0),(),-16,0,0,0,0,1,1,1,Horizontal",
        "@marks,(0),(@label,@close),-40,0,0,0,0,1,1,1,Vertical",
        "@label,(0),(@t_label,@rename),-32,0,0,0,0,1,1,1,Horizontal",
        "Positions",
        "(@marks,@t_label,@goto),0,8,0,0,0,0,Left,Left,Left",
        "(@marks),0,8,0,0,0,0,Top,Top,Top",
        "(@label),@t_label,8,0,0,0,0,Left,Left,Right",
        "(@label),@marks,8,0,0,0,0,Top,Top,Bottom",
        "(@t_label,@rename),@label,0,0,0,0,0,Baseline,Baseline,Baseline",
        "(@rename),0,-8,0,0,0,0,Right,Right,Right",
        "(@goto,@delete,@colour,@close),0,-8,0,0,0,0,Bottom,Bottom,Bottom",
        "(@delete),@goto,8,0,0,0,0,Left,Left,Right",
        "(@colour),@delete,8,0,0,0,0,Left,Left,Right",
        "(@close),0,-8,0,0,0,0,Right,Right,Right",
    };
    return d;
}

DialogDescription dialogs_KeySheet() {
    DialogDescription d;
    d.name = "KeySheet";
    d.title = "Keys";
    d.items = {
        {"keys", DialogKind::List, "", "Keys", 0, {"Keys", "What they do"}},
        {"close", DialogKind::Button, "Close", "", Dialog_Default | Dialog_Cancel},
    };
    d.layout = {
        "MinSizes",
        "0,(),(),80,48,0,0,0,1,1,1,Horizontal",
        "0,(@close),(),40,0,0,8,0,1,1,1,Vertical",
        "Sizes",
        "0,(),(),12,64,0,0,0,1,1,1,Horizontal",
        "0,(),(),46,0,0,28,0,1,1,1,Vertical",
        "@keys,(0),(),-16,0,0,0,0,1,1,1,Horizontal",
        "@keys,(0),(@close),-32,0,0,0,0,1,1,1,Vertical",
        "Positions",
        "(@keys),0,8,0,0,0,0,Left,Left,Left",
        "(@keys),0,8,0,0,0,0,Top,Top,Top",
        "(@close),0,-8,0,0,0,0,Bottom,Bottom,Bottom",
        "(@close),0,-8,0,0,0,0,Right,Right,Right",
    };
    return d;
}

DialogDescription dialogs_Palette() {
    DialogDescription d;
    d.name = "Palette";
    d.title = "Commands";
    d.items = {
        {"t_filter", DialogKind::Label, "&Find:", "", 0, {}, "", "filter"},
        {"filter", DialogKind::TextField, "", "Part of a command's name", 0, {}, "nnnnnnnnnnnnnnnn"},
        {"commands", DialogKind::List, "", "Commands", 0, {"Command", "Menu", "Keys"}},
        {"run", DialogKind::Button, "Run", "", Dialog_Default},
        {"close", DialogKind::Button, "Close", "", Dialog_Cancel},
    };
    d.layout = {
        "MinSizes",
        "0,(@t_filter,@filter),(),32,0,0,0,0,1,1,3,Horizontal",
        "0,(@run,@close),(),32,0,0,0,0,1,1,2,Horizontal",
        "0,(),(),60,40,0,0,0,1,1,1,Horizontal",
        "0,(@filter,@close),(),48,0,0,6,0,1,1,1,Vertical",
        "Sizes",
        "0,(),(),12,56,0,0,0,1,1,1,Horizontal",
        "0,(),(),46,0,0,20,0,1,1,1,Vertical",
        "@filter,(0),(@t_filter),-24,0,0,0,0,1,1,1,Horizontal",
        "@commands,(0),(),-16,0,0,0,0,1,1,1,Horizontal",
        "@commands,(0),(@filter,@close),-40,0,0,0,0,1,1,1,Vertical",
        "Positions",
        "(@t_filter,@commands),0,8,0,0,0,0,Left,Left,Left",
        "(@filter),0,8,0,0,0,0,Top,Top,Top",
        "(@filter),@t_filter,8,0,0,0,0,Left,Left,Right",
        "(@t_filter),@filter,0,0,0,0,0,Baseline,Baseline,Baseline",
        "(@commands),@filter,8,0,0,0,0,Top,Top,Bottom",
        "(@run,@close),0,-8,0,0,0,0,Bottom,Bottom,Bottom",
        "(@close),0,-8,0,0,0,0,Right,Right,Right",
        "(@run),@close,-8,0,0,0,0,Right,Right,Left",
    };
    return d;
}
