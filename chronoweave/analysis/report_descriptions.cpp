#include "chronoweave/analysis/layout_lines.h"
#include "chronoweave/analysis/report_dialogs.h"
#include "chronoweave/analysis/report_window.h"

namespace {

const DialogItem okButton = {"ok", DialogKind::Button, "OK", "", Dialog_Default};
const DialogItem cancelButton = {"cancel", DialogKind::Button, "Cancel", "", Dialog_Cancel};
const DialogItem closeButton = {"close", DialogKind::Button, "Close", "", Dialog_Cancel};

DialogItem shown(const char* name, const char* spoken, const char* room) {
    return {name, DialogKind::TextField, "", spoken, Dialog_ReadOnly, {}, room};
}

}  // namespace

DialogDescription report_RangeDialog() {
    DialogDescription d;
    d.name = "SelectTimeRange";
    d.title = "Select Time Range";
    d.helpKey = "report";
    d.items = {{"t_prompt", DialogKind::Label, "Please define a period (in Second):"},
               {"t_from", DialogKind::Label, "&From:", "", 0, {}, "", "tf_from"},
               {"tf_from", DialogKind::TextField, "", "From", 0, {}, "00000.0000000000"},
               {"t_to", DialogKind::Label, "&To:", "", 0, {}, "", "tf_to"},
               {"tf_to", DialogKind::TextField, "", "To", 0, {}, "0000.0000000000 (Max: 0000.0000000000)"},
               {"ts_info", DialogKind::StatusText, "", "Message"},
               okButton,
               cancelButton};
    LayoutLines lines;
    lines.atLeast({{"@t_prompt", 16}, {"@t_from,@tf_from,@t_to,@tf_to", 48}, {"@ok,@cancel", 32}});
    lines.least.insert(lines.least.end(),
                       {"0,(),(),80,40,0,0,0,1,1,1,Horizontal",
                        "0,(@t_prompt,@tf_from,@ts_info,@ok),(),40,0,0,0,0,1,1,1,Vertical"});
    lines.sizes = {"0,(),(),12,48,0,0,0,1,1,1,Horizontal",
                   "0,(@t_prompt,@tf_from,@ts_info,@ok),(),40,0,0,0,0,1,1,1,Vertical",
                   "@ts_info,(0),(),-16,0,0,0,0,1,1,1,Horizontal"};
    lines.positions = {"(@t_prompt,@t_from,@ts_info),0,8,0,0,0,0,Left,Left,Left",
                       "(@t_prompt),0,8,0,0,0,0,Top,Top,Top", "(@tf_from),@t_prompt,4,0,0,0,0,Top,Top,Bottom",
                       "(@ts_info),@tf_from,8,0,0,0,0,Top,Top,Bottom"};
    lines.beside({"t_from", "tf_from", "t_to", "tf_to"}, "tf_from");
    lines.corner({"cancel", "ok"});
    d.layout = lines.all();
    return d;
}

DialogDescription report_OrderDialog() {
    DialogDescription d;
    d.name = "SelectOrder";
    d.title = "Select Displaying Order";
    d.helpKey = "report";
    d.items = {{"t_prompt", DialogKind::Label, "Please select the sorting order of result:"},
               {"order", DialogKind::ButtonSet, "", "Order", 0, {"&Increasing", "&Descending"}},
               {"first", DialogKind::ButtonSet, "", "What counts first", 0, {"&Number First", "&Time First"}},
               okButton,
               cancelButton};
    d.items[1].choiceNames = {"Increasing", "Descending"};
    d.items[2].choiceNames = {"Number_First", "Time_First"};
    LayoutLines lines;
    lines.atLeast({{"@t_prompt", 16}, {"@order,@first", 48}, {"@ok,@cancel", 32}});
    lines.least.insert(lines.least.end(), {"0,(),(),0,32,0,0,0,1,1,1,Horizontal",
                                           "0,(@t_prompt,@order,@ok),(),40,0,0,0,0,1,1,1,Vertical"});
    lines.sizes = {"0,(),(),0,40,0,0,0,1,1,1,Horizontal",
                   "0,(@t_prompt,@order,@ok),(),40,0,0,0,0,1,1,1,Vertical"};
    lines.positions = {"(@t_prompt),0,8,0,0,0,0,Left,Left,Left", "(@order),0,16,0,0,0,0,Left,Left,Left",
                       "(@t_prompt),0,8,0,0,0,0,Top,Top,Top",
                       "(@order,@first),@t_prompt,8,0,0,0,0,Top,Top,Bottom",
                       "(@first),@order,24,0,0,0,0,Left,Left,Right"};
    lines.corner({"cancel", "ok"});
    d.layout = lines.all();
    return d;
}

DialogDescription report_StatisticsWindow() {
    DialogDescription d;
    d.name = "Statistics";
    d.title = "Statistics for NO_NAME";
    d.helpKey = "report";
    d.menu = true;
    d.items = {{"MenuBar", DialogKind::MenuLine, "TraxStatisticsMenu", "Menus"},
               {"txt_title", DialogKind::Label, "Statistics for all Objects in the System"},
               {"txt_subtitle", DialogKind::Label, "(from 0 to 1 Second)"},
               {"Status",
                DialogKind::List,
                "",
                "Statistics",
                Dialog_Multiple,
                {"Object Name", "Object", "Percent of", "Time", "Percent of"}},
               {"t_load", DialogKind::Label, "Processor load"},
               {"load", DialogKind::List, "", "Processor load", 0, {"Processor", "Time", "Percent of Time"}},
               closeButton};
    LayoutLines lines;
    lines.atLeast({{"@txt_title", 16}, {"@txt_subtitle", 16}, {"@t_load", 16}, {"@close", 16}});
    lines.least.insert(lines.least.end(),
                       {"0,(),(),80,64,0,0,0,1,1,1,Horizontal",
                        "0,(@txt_title,@txt_subtitle,@t_load,@close),(),64,0,0,12,0,1,1,1,Vertical"});
    lines.sizes = {"0,(),(),12,128,0,0,0,1,1,1,Horizontal",
                   "0,(),(),46,0,0,40,0,1,1,1,Vertical",
                   "@Status,(0),(),-16,0,0,0,0,1,1,1,Horizontal",
                   "@load,(0),(),-16,0,0,0,0,1,1,1,Horizontal",
                   "@load,(),(),8,0,0,6,0,1,1,1,Vertical",
                   "@Status,(0),(@txt_title,@txt_subtitle,@t_load,@load,@close),-44,0,0,0,0,1,1,1,Vertical"};
    lines.positions = {"(@txt_title,@txt_subtitle,@Status,@t_load,@load),0,8,0,0,0,0,Left,Left,Left",
                       "(@txt_title),0,8,0,0,0,0,Top,Top,Top",
                       "(@txt_subtitle),@txt_title,2,0,0,0,0,Top,Top,Bottom",
                       "(@Status),@txt_subtitle,8,0,0,0,0,Top,Top,Bottom",
                       "(@t_load),@Status,8,0,0,0,0,Top,Top,Bottom",
                       "(@load),@t_load,2,0,0,0,0,Top,Top,Bottom"};
    lines.corner({"close"});
    d.layout = lines.all();
    return d;
}

DialogDescription report_ChosenWindow() {
    DialogDescription d;
    d.name = "GenStatistics";
    d.title = "Statistics for NO_NAME";
    d.helpKey = "report";
    d.menu = true;
    const char *words = "Context Switch", *number = "0000000.000000";
    d.items = {{"MenuBar", DialogKind::MenuLine, "TraxGenStatisticsMenu", "Menus"},
               {"t_header", DialogKind::Label, "Statistics for the Selected Object on the Selected Tasks"},
               {"t_objtype", DialogKind::Label, "Object Type:"},
               shown("tf_objtype", "Object type", words),
               {"t_obj", DialogKind::Label, "Object:"},
               shown("tf_objname", "Object", "nnnnnnnnnnnnnnnnnnnnnn"),
               {"t_range", DialogKind::Label, "Time Range for Objects is from (in Second):"},
               shown("tf_from", "From", number),
               {"t_to", DialogKind::Label, "to"},
               shown("tf_to", "To", number),
               {"t_timelen", DialogKind::Label, "Length:"},
               shown("tf_timelen", "Length", number),
               {"t_tasknum", DialogKind::Label, "Number of Selected Tasks:"},
               shown("tf_tasknum", "Number of selected objects", "000000"),
               {"t_objnum", DialogKind::Label, "Total Count:"},
               shown("tf_objnum", "Total count", "0000000000"),
               {"t_sorting", DialogKind::Label, "Sorting:"},
               shown("tf_sorting", "Sorting", "Descending, Number First"),
               {"list",
                DialogKind::List,
                "",
                "Statistics",
                Dialog_Multiple,
                {"Task", "Count", "Count Percent", "Time", "Time Percent"}},
               {"t_load", DialogKind::Label, "Processor load"},
               {"load", DialogKind::List, "", "Processor load", 0, {"Processor", "Time", "Percent of Time"}},
               closeButton};
    LayoutLines lines;
    lines.atLeast({{"@t_header", 16},
                   {"@t_objtype,@tf_objtype,@t_obj,@tf_objname", 40},
                   {"@t_range,@tf_from,@t_to,@tf_to,@t_timelen,@tf_timelen", 56},
                   {"@t_tasknum,@tf_tasknum,@t_objnum,@tf_objnum,@t_sorting,@tf_sorting", 56},
                   {"@t_load", 16},
                   {"@close", 16}});
    const std::string above = "@t_header,@tf_objtype,@tf_from,@tf_tasknum";
    lines.least.insert(lines.least.end(), {"0,(),(),80,64,0,0,0,1,1,1,Horizontal",
                                           "0,(" + above + ",@t_load,@close),(),88,0,0,12,0,1,1,1,Vertical"});
    lines.sizes = {"0,(),(),12,128,0,0,0,1,1,1,Horizontal",
                   "0,(),(),46,0,0,40,0,1,1,1,Vertical",
                   "@list,(0),(),-16,0,0,0,0,1,1,1,Horizontal",
                   "@load,(0),(),-16,0,0,0,0,1,1,1,Horizontal",
                   "@load,(),(),8,0,0,6,0,1,1,1,Vertical",
                   "@list,(0),(" + above + ",@t_load,@load,@close),-66,0,0,0,0,1,1,1,Vertical"};
    lines.positions = {
        "(@t_header,@t_objtype,@t_range,@t_tasknum,@list,@t_load,@load),0,8,0,0,0,0,Left,Left,Left",
        "(@t_header),0,8,0,0,0,0,Top,Top,Top",
        "(@tf_objtype),@t_header,8,0,0,0,0,Top,Top,Bottom",
        "(@tf_from),@tf_objtype,8,0,0,0,0,Top,Top,Bottom",
        "(@tf_tasknum),@tf_from,8,0,0,0,0,Top,Top,Bottom",
        "(@list),@tf_tasknum,8,0,0,0,0,Top,Top,Bottom",
        "(@t_load),@list,8,0,0,0,0,Top,Top,Bottom",
        "(@load),@t_load,2,0,0,0,0,Top,Top,Bottom"};
    lines.beside({"t_objtype", "tf_objtype", "t_obj", "tf_objname"}, "tf_objtype");
    lines.beside({"t_range", "tf_from", "t_to", "tf_to", "t_timelen", "tf_timelen"}, "tf_from");
    lines.beside({"t_tasknum", "tf_tasknum", "t_objnum", "tf_objnum", "t_sorting", "tf_sorting"},
                 "tf_tasknum");
    lines.corner({"close"});
    d.layout = lines.all();
    return d;
}
