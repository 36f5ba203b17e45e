#include "chronoweave/analysis/dialogs.h"

namespace {

constexpr const char* timeRoom = "000000.000000000";  // what a field of a time shows at least

DialogItem label(const char* name, const char* text, const char* buddy = "") {
    return {name, DialogKind::Label, text, "", 0, {}, "", buddy};
}
DialogItem time(const char* name, const char* accessible) {
    return {name, DialogKind::TextField, "", accessible, 0, {}, timeRoom};
}

std::vector<DialogItem> items() {
    return {
        {"TraxMenuBar", DialogKind::MenuLine, "", "Menus"},
        {"TraxBtns", DialogKind::ToolBar, "", "Commands"},
        {"TaskNames", DialogKind::List, "", "Objects", Dialog_Multiple, {}, "", "", "DataCanvas"},
        {"Divider", DialogKind::Divider, "", "", 0, {}, "", "", "DataCanvas"},
        {"DataCanvas", DialogKind::Graph, "", "Timeline"},
        {"TickPattern", DialogKind::Label, "0.XX", "Digits of the time axis", 0, {}, "0.XXXXXXXXXXXX"},
        {"TickUnit", DialogKind::Label, "Second", "Unit of the time axis", 0, {}, "Microsecond"},
        {"TotalLength",
         DialogKind::Label,
         "",
         "Total length",
         0,
         {},
         "Total Time Length(in Microseconds): 000000.000000000"},
        {"info_rect", DialogKind::Frame},
        label("t_view", "View:"),
        time("tf_view_from", "View from"),
        time("tf_view_to", "View to"),
        time("tf_view_len", "View length"),
        label("t_sel", "Selection:"),
        time("tf_sel_from", "Selection from"),
        time("tf_sel_to", "Selection to"),
        time("tf_sel_len", "Selection length"),
        {"ts_info", DialogKind::StatusText, "", "Message"},
        {"changeunit", DialogKind::Button, "Change Unit", "Change Tick Unit"},
        {"Overview", DialogKind::Strip, "", "Overview"},
        {"Progress", DialogKind::ProgressBar, "", "Progress", Dialog_Hidden},
        label("tl_view_from", "From", "tf_view_from"),
        label("tl_view_to", "To", "tf_view_to"),
        label("tl_view_len", "Length", "tf_view_len"),
        label("tl_sel_from", "From", "tf_sel_from"),
        label("tl_sel_to", "To", "tf_sel_to"),
        label("tl_sel_len", "Length", "tf_sel_len"),
    };
}

// Rows from the bottom up: message line, fields of the selection, fields of the view, unit, overview; the
// picture takes what is left below the tool bar. The least size holds the menu line, too.
std::vector<std::string> layout() {
    return {
        "MinSizes",
        "0,(@changeunit,@TickPattern,@TickUnit,@TotalLength),(),42,0,0,0,0,1,1,5,Horizontal",
        "0,(@t_view,@tl_view_from,@tf_view_from,@tl_view_to,@tf_view_to,@tl_view_len,@tf_view_len),(),"
        "78,0,0,0,0,1,1,4,Horizontal",
        "0,(@t_sel,@tl_sel_from,@tf_sel_from,@tl_sel_to,@tf_sel_to,@tl_sel_len,@tf_sel_len),(),"
        "78,0,0,0,0,1,1,3,Horizontal",
        "0,(@Progress),(),20,40,0,0,0,1,1,2,Horizontal",
        "0,(),(),153,0,0,3,1,1,1,1,Horizontal",
        "0,(@TraxBtns,@Overview,@changeunit,@info_rect,@Progress),(),23,0,0,9,1,1,1,1,Vertical",
        "Sizes",
        "0,(),(),0,120,0,0,0,1,1,1,Horizontal",
        "0,(),(),0,0,0,36,0,1,1,1,Vertical",
        "@TraxBtns,(0),(),0,0,0,0,0,1,1,1,Horizontal",
        "@Overview,(0),(),0,0,0,0,0,1,1,1,Horizontal",
        "@Overview,(),(),4,0,0,2,0,1,1,1,Vertical",
        "@Progress,(),(),0,20,0,0,0,1,1,1,Horizontal",
        "@ts_info,(0),(@Progress),-20,0,0,0,0,1,1,1,Horizontal",
        "@info_rect,(0),(),-8,0,0,0,0,1,1,1,Horizontal",
        "@info_rect,(@tf_view_from,@tf_sel_from),(),12,0,0,0,0,1,1,1,Vertical",
        "@DataCanvas,(0),(),0,0,0,0,0,1,1,1,Horizontal",
        "@DataCanvas,(0),(@TraxBtns,@Overview,@changeunit,@info_rect,@Progress),-16,0,0,0,0,1,1,1,Vertical",
        "Positions",
        "(@TraxBtns),0,0,0,0,0,0,Top,Top,Top",
        "(@TraxBtns,@DataCanvas,@Overview),0,0,0,0,0,0,Left,Left,Left",
        "(@DataCanvas),@TraxBtns,0,0,0,0,0,Top,Top,Bottom",
        // Message line and progress.
        "(@Progress),0,-4,0,0,0,0,Bottom,Bottom,Bottom",
        "(@Progress),0,-4,0,0,0,0,Right,Right,Right",
        "(@ts_info),@Progress,0,0,0,0,0,TBCenter,TBCenter,TBCenter",
        "(@ts_info),0,8,0,0,0,0,Left,Left,Left",
        // The fields, one row under the other in common columns.
        "(@info_rect),@Progress,-4,0,0,0,0,Bottom,Bottom,Top",
        "(@info_rect),0,4,0,0,0,0,Left,Left,Left",
        "(@tf_sel_from,@tf_sel_to,@tf_sel_len),@info_rect,-4,0,0,0,0,Bottom,Bottom,Bottom",
        "(@tf_view_from,@tf_view_to,@tf_view_len),@tf_sel_from,-4,0,0,0,0,Bottom,Bottom,Top",
        "(@t_sel,@tl_sel_from,@tl_sel_to,@tl_sel_len),@tf_sel_from,0,0,0,0,0,Baseline,Baseline,Baseline",
        "(@t_view,@tl_view_from,@tl_view_to,@tl_view_len),@tf_view_from,0,0,0,0,0,Baseline,Baseline,Baseline",
        "(@t_view,@t_sel),@info_rect,8,0,0,0,0,Right,Left,Left",
        "(@tl_view_from,@tl_sel_from),@t_view,12,0,0,0,0,Left,Left,Right",
        "(@tf_view_from,@tf_sel_from),@tl_view_from,6,0,0,0,0,Left,Left,Right",
        "(@tl_view_to,@tl_sel_to),@tf_view_from,12,0,0,0,0,Left,Left,Right",
        "(@tf_view_to,@tf_sel_to),@tl_view_to,6,0,0,0,0,Left,Left,Right",
        "(@tl_view_len,@tl_sel_len),@tf_view_to,12,0,0,0,0,Left,Left,Right",
        "(@tf_view_len,@tf_sel_len),@tl_view_len,6,0,0,0,0,Left,Left,Right",
        // Unit and total length.
        "(@changeunit),@info_rect,-4,0,0,0,0,Bottom,Bottom,Top",
        "(@changeunit),0,4,0,0,0,0,Left,Left,Left",
        "(@TickPattern,@TickUnit,@TotalLength),@changeunit,0,0,0,0,0,Baseline,Baseline,Baseline",
        "(@TickPattern),@changeunit,8,0,0,0,0,Left,Left,Right",
        "(@TickUnit),@TickPattern,6,0,0,0,0,Left,Left,Right",
        "(@TotalLength),0,-8,0,0,0,0,Right,Right,Right",
        "(@Overview),@changeunit,-4,0,0,0,0,Bottom,Bottom,Top",
    };
}

}  // namespace

DialogDescription dialogs_CanvasWindow() {
    DialogDescription d;
    d.name = "Trax";
    d.title = "Chronoweave";
    d.helpKey = "TRAXHelp";
    d.framed = false;
    d.menu = true;
    d.items = items();
    d.layout = layout();
    return d;
}
