#include "chronoweave/analysis/dialogs.h"

DialogDescription dialogs_GetValue() {
    DialogDescription d;
    d.name = "getValue";
    d.title = "Get Value";
    d.items = {
        {"t_please", DialogKind::Label, "&Please type new value:", "", 0, {}, "", "tf_val"},
        {"tf_val", DialogKind::TextField, "", "New value", 0, {}, "nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn"},
        {"bs_ok", DialogKind::Button, "OK", "", Dialog_Default},
        {"cancel", DialogKind::Button, "Cancel", "", Dialog_Cancel},
    };
    d.layout = {
        "MinSizes",
        "0,(@t_please),(),24,0,0,0,0,1,1,3,Horizontal",
        "0,(@tf_val),(),24,0,0,0,0,1,1,2,Horizontal",
        "0,(@bs_ok,@cancel),(),32,0,0,0,0,1,1,1,Horizontal",
        "0,(@t_please,@tf_val,@bs_ok),(),40,0,0,0,0,1,1,1,Vertical",
        "Sizes",
        "0,(),(),0,48,0,0,0,1,1,1,Horizontal",
        "0,(@t_please,@tf_val,@bs_ok),(),40,0,0,0,0,1,1,1,Vertical",
        "Positions",
        "(@t_please,@tf_val),0,8,0,0,0,0,Left,Left,Left",
        "(@t_please),0,8,0,0,0,0,Top,Top,Top",
        "(@tf_val),@t_please,4,0,0,0,0,Top,Top,Bottom",
        "(@bs_ok,@cancel),0,-8,0,0,0,0,Bottom,Bottom,Bottom",
        "(@cancel),0,-8,0,0,0,0,Right,Right,Right",
        "(@bs_ok),@cancel,-8,0,0,0,0,Right,Right,Left",
    };
    return d;
}

namespace {

// Layout lines of items that stand one under the other over the buttons "ok" and "cancel".
std::vector<std::string> column(const std::vector<std::string>& names) {
    std::string all;
    for (const std::string& name : names) all += "@" + name + ",";
    std::vector<std::string> lines = {"MinSizes"};
    int order = static_cast<int>(names.size()) + 1;
    for (const std::string& name : names)
        lines.push_back("0,(@" + name + "),(),24,0,0,0,0,1,1," + std::to_string(order--) + ",Horizontal");
    const int gaps = 8 * (static_cast<int>(names.size()) + 3);
    lines.push_back("0,(@ok,@cancel),(),32,0,0,0,0,1,1,1,Horizontal");
    lines.push_back("0,(" + all + "@ok),()," + std::to_string(gaps) + ",0,0,0,0,1,1,1,Vertical");
    lines.push_back("Sizes");
    lines.push_back("0,(),(),0,40,0,0,0,1,1,1,Horizontal");
    lines.push_back("0,(" + all + "@ok),()," + std::to_string(gaps) + ",0,0,0,0,1,1,1,Vertical");
    lines.push_back("Positions");
    for (size_t i = 0; i < names.size(); ++i) {
        lines.push_back("(@" + names[i] + "),0,8,0,0,0,0,Left,Left,Left");
        lines.push_back(i == 0 ? "(@" + names[i] + "),0,8,0,0,0,0,Top,Top,Top"
                               : "(@" + names[i] + "),@" + names[i - 1] + ",8,0,0,0,0,Top,Top,Bottom");
    }
    lines.push_back("(@ok,@cancel),0,-8,0,0,0,0,Bottom,Bottom,Bottom");
    lines.push_back("(@cancel),0,-8,0,0,0,0,Right,Right,Right");
    lines.push_back("(@ok),@cancel,-8,0,0,0,0,Right,Right,Left");
    return lines;
}

const DialogItem okButton = {"ok", DialogKind::Button, "OK", "", Dialog_Default};
const DialogItem cancelButton = {"cancel", DialogKind::Button, "Cancel", "", Dialog_Cancel};

}  // namespace

DialogDescription dialogs_Options() {
    DialogDescription d;
    d.name = "Options";
    d.title = "Options";
    d.items = {
        {"wheel", DialogKind::CheckBox, "The wheel &zooms, and scrolls with Ctrl held"},
        {"snap", DialogKind::CheckBox, "&Cursors snap to edges and icons"},
        {"newtrv", DialogKind::CheckBox, "Overlapping icons give way by &free space"},
        {"prefetch", DialogKind::CheckBox, "&Prefetch what lies beside the view"},
        {"kernel", DialogKind::CheckBox, "&Kernel objects in a group of their own"},
        {"icons", DialogKind::CheckBox, "Tool buttons show &icons"},
        {"right", DialogKind::CheckBox, "Vertical scroll bar on the &right"},
        {"bottom", DialogKind::CheckBox, "Horizontal scroll bar at the &bottom"},
        {"dark", DialogKind::CheckBox, "&Dark colours"},
        okButton,
        cancelButton,
    };
    d.layout = column({"wheel", "snap", "newtrv", "prefetch", "kernel", "icons", "right", "bottom", "dark"});
    return d;
}

DialogDescription dialogs_ScrollPos() {
    DialogDescription d;
    d.name = "ScrollPos";
    d.title = "Scroll Bars";
    d.items = {
        {"t_side", DialogKind::Label, "Vertical scroll bar:", "", 0, {}, "", "side"},
        {"side", DialogKind::ButtonSet, "", "Vertical scroll bar", 0, {"&Left", "&Right"}},
        {"t_end", DialogKind::Label, "Horizontal scroll bar:", "", 0, {}, "", "end"},
        {"end", DialogKind::ButtonSet, "", "Horizontal scroll bar", 0, {"&Top", "&Bottom"}},
        okButton,
        cancelButton,
    };
    d.layout = column({"t_side", "side", "t_end", "end"});
    return d;
}

DialogDescription dialogs_About() {
    DialogDescription d;
    d.name = "About";
    d.title = "About VOREL Chronoweave";
    d.items = {
        {"t_name", DialogKind::Label, "VOREL Chronoweave"},
        {"t_what", DialogKind::Label, "Shows what a real-time operating system did."},
        {"t_version", DialogKind::Label, "", "Version", 0, {}, "Version 000.000.000"},
        {"t_build", DialogKind::Label, "", "Build", 0, {}, "RelWithDebInfo build, compiler 00.0.0"},
        {"ok", DialogKind::Button, "OK", "", Dialog_Default | Dialog_Cancel},
    };
    d.layout = {
        "MinSizes",
        "0,(@t_name),(),32,0,0,0,0,1,1,5,Horizontal",
        "0,(@t_what),(),32,0,0,0,0,1,1,4,Horizontal",
        "0,(@t_version),(),32,0,0,0,0,1,1,3,Horizontal",
        "0,(@t_build),(),32,0,0,0,0,1,1,2,Horizontal",
        "0,(@ok),(),32,0,0,0,0,1,1,1,Horizontal",
        "0,(@t_name,@t_what,@t_version,@t_build,@ok),(),56,0,0,0,0,1,1,1,Vertical",
        "Sizes",
        "0,(),(),0,40,0,0,0,1,1,1,Horizontal",
        "0,(@t_name,@t_what,@t_version,@t_build,@ok),(),56,0,0,0,0,1,1,1,Vertical",
        "Positions",
        "(@t_name,@t_what,@t_version,@t_build),0,16,0,0,0,0,Left,Left,Left",
        "(@t_name),0,12,0,0,0,0,Top,Top,Top",
        "(@t_what),@t_name,8,0,0,0,0,Top,Top,Bottom",
        "(@t_version),@t_what,8,0,0,0,0,Top,Top,Bottom",
        "(@t_build),@t_version,4,0,0,0,0,Top,Top,Bottom",
        "(@ok),0,-8,0,0,0,0,Bottom,Bottom,Bottom",
        "(@ok),0,-8,0,0,0,0,Right,Right,Right",
    };
    return d;
}
