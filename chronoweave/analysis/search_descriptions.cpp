#include "chronoweave/analysis/layout_lines.h"
#include "chronoweave/analysis/search_dialogs.h"
#include "chronoweave/analysis/search_window.h"

namespace {

const DialogItem okButton = {"ok", DialogKind::Button, "OK", "", Dialog_Default};
const DialogItem cancelButton = {"cancel", DialogKind::Button, "Cancel", "", Dialog_Cancel};
const DialogItem messageLine = {"ts_info", DialogKind::StatusText, "", "Message"};

// A range: two fields with their labels.
void add_range(DialogDescription& d) {
    d.items.insert(
        d.items.end(),
        {{"t_from", DialogKind::Label, "&From:", "", 0, {}, "", "tf_from"},
         {"tf_from", DialogKind::TextField, "", "From", 0, {}, "00000.0000000000"},
         {"t_to", DialogKind::Label, "&To:", "", 0, {}, "", "tf_to"},
         {"tf_to", DialogKind::TextField, "", "To", 0, {}, "0000.0000000000 (Max: 0000.0000000000)"}});
}

}  // namespace

DialogDescription search_ObjectsDialog(bool several) {
    DialogDescription d;
    d.name = several ? "SelectObjects" : "SelectOneObject";
    d.title = "Select Tasks";
    d.helpKey = "search";
    d.items = {
        {"t_prompt", DialogKind::Label, "Select tasks:", "", 0, {}, "", "list"},
        {"list", DialogKind::List, "", "Objects", several ? Dialog_Multiple : 0u, {"Task ID", "Task Name"}},
        {"t_period", DialogKind::Label, "Or define period during which tasks are alive (in Second):"}};
    add_range(d);
    d.items.insert(d.items.end(), {messageLine, okButton, cancelButton});
    LayoutLines lines;
    lines.atLeast(
        {{"@t_prompt", 16}, {"@t_period", 16}, {"@t_from,@tf_from,@t_to,@tf_to", 48}, {"@ok,@cancel", 32}});
    lines.least.insert(lines.least.end(),
                       {"0,(),(),80,40,0,0,0,1,1,1,Horizontal",
                        "0,(@t_prompt,@t_period,@tf_from,@ts_info,@ok),(),64,0,0,6,0,1,1,1,Vertical"});
    lines.sizes = {"0,(),(),12,56,0,0,0,1,1,1,Horizontal", "0,(),(),46,0,0,28,0,1,1,1,Vertical",
                   "@list,(0),(),-16,0,0,0,0,1,1,1,Horizontal",
                   "@list,(0),(@t_prompt,@t_period,@tf_from,@ts_info,@ok),-48,0,0,0,0,1,1,1,Vertical",
                   "@ts_info,(0),(),-16,0,0,0,0,1,1,1,Horizontal"};
    lines.positions = {"(@t_prompt,@list,@t_period,@t_from,@ts_info),0,8,0,0,0,0,Left,Left,Left",
                       "(@t_prompt),0,8,0,0,0,0,Top,Top,Top",
                       "(@list),@t_prompt,4,0,0,0,0,Top,Top,Bottom",
                       "(@t_period),@list,8,0,0,0,0,Top,Top,Bottom",
                       "(@tf_from),@t_period,4,0,0,0,0,Top,Top,Bottom",
                       "(@ts_info),@tf_from,8,0,0,0,0,Top,Top,Bottom"};
    lines.beside({"t_from", "tf_from", "t_to", "tf_to"}, "tf_from");
    lines.corner({"cancel", "ok"});
    d.layout = lines.all();
    return d;
}

DialogDescription search_KindDialog(bool pattern) {
    DialogDescription d;
    d.name = "SelectObjectType";
    d.title = "Select Object Type";
    d.helpKey = "search";
    d.items = {{"t_type", DialogKind::Label, "Object type to search:"},
               {"event", DialogKind::Button, "&Event", "", Dialog_Default}};
    if (pattern) d.items.push_back({"event_pattern", DialogKind::Button, "Event &Pattern"});
    d.items.insert(d.items.end(),
                   {{"ctx_switch", DialogKind::Button, "&Context Switch"},
                    {"status", DialogKind::Button, "&Status"},
                    {"t_range", DialogKind::Label, "Time range for searched object(s) (in seconds)"}});
    add_range(d);
    d.items.insert(d.items.end(), {messageLine, cancelButton});
    LayoutLines lines;
    lines.atLeast({{pattern ? "@event,@event_pattern,@ctx_switch,@status" : "@event,@ctx_switch,@status", 40},
                   {"@t_type", 16},
                   {"@t_range", 16},
                   {"@t_from,@tf_from,@t_to,@tf_to", 48}});
    lines.least.insert(
        lines.least.end(),
        {"0,(),(),80,40,0,0,0,1,1,1,Horizontal",
         "0,(@t_type,@event,@t_range,@tf_from,@ts_info,@cancel),(),60,0,0,0,0,1,1,1,Vertical"});
    lines.sizes = {"0,(),(),12,48,0,0,0,1,1,1,Horizontal",
                   "0,(@t_type,@event,@t_range,@tf_from,@ts_info,@cancel),(),60,0,0,0,0,1,1,1,Vertical",
                   "@ts_info,(0),(),-16,0,0,0,0,1,1,1,Horizontal"};
    lines.positions = {"(@t_type,@event,@t_range,@t_from,@ts_info),0,8,0,0,0,0,Left,Left,Left",
                       "(@t_type),0,8,0,0,0,0,Top,Top,Top",
                       "(@event),@t_type,4,0,0,0,0,Top,Top,Bottom",
                       "(@t_range),@event,16,0,0,0,0,Top,Top,Bottom",
                       "(@tf_from),@t_range,4,0,0,0,0,Top,Top,Bottom",
                       "(@ts_info),@tf_from,8,0,0,0,0,Top,Top,Bottom"};
    if (pattern)
        lines.beside({"event", "event_pattern", "ctx_switch", "status"}, "event");
    else
        lines.beside({"event", "ctx_switch", "status"}, "event");
    lines.beside({"t_from", "tf_from", "t_to", "tf_to"}, "tf_from");
    lines.corner({"cancel"});
    d.layout = lines.all();
    return d;
}

DialogDescription search_ChoiceDialog() {
    DialogDescription d;
    d.name = "SelectOneLegend";
    d.title = "Select One Event";
    d.helpKey = "search";
    d.items = {
        {"t_prompt", DialogKind::Label, "Select one of the statuses to search:", "", 0, {}, "", "list"},
        {"list", DialogKind::List, "", "Choice", 0, {"Event Name", "Code"}},
        okButton,
        cancelButton};
    LayoutLines lines;
    lines.atLeast({{"@t_prompt", 16}, {"@ok,@cancel", 32}});
    lines.least.insert(lines.least.end(), {"0,(),(),80,40,0,0,0,1,1,1,Horizontal",
                                           "0,(@t_prompt,@ok),(),36,0,0,6,0,1,1,1,Vertical"});
    lines.sizes = {"0,(),(),12,48,0,0,0,1,1,1,Horizontal", "0,(),(),46,0,0,24,0,1,1,1,Vertical",
                   "@list,(0),(),-16,0,0,0,0,1,1,1,Horizontal",
                   "@list,(0),(@t_prompt,@ok),-28,0,0,0,0,1,1,1,Vertical"};
    lines.positions = {"(@t_prompt,@list),0,8,0,0,0,0,Left,Left,Left", "(@t_prompt),0,8,0,0,0,0,Top,Top,Top",
                       "(@list),@t_prompt,4,0,0,0,0,Top,Top,Bottom"};
    lines.corner({"cancel", "ok"});
    d.layout = lines.all();
    return d;
}

DialogDescription search_PatternDialog() {
    DialogDescription d;
    d.name = "DefinePattern";
    d.title = "Define the event pattern";
    d.helpKey = "search";
    const std::vector<std::string> objectColumns = {"Task ID", "Task Name"};
    d.items = {
        {"t_begin", DialogKind::Label, "&Begin event:", "", 0, {}, "", "begin"},
        {"begin", DialogKind::List, "", "Begin event", Dialog_Multiple, {"Event Name"}},
        {"t_begin_objects", DialogKind::Label, "Tasks for begin event:", "", 0, {}, "", "begin_objects"},
        {"begin_objects", DialogKind::List, "", "Objects of the begin event", Dialog_Multiple, objectColumns},
        {"t_end", DialogKind::Label, "&End event:", "", 0, {}, "", "end"},
        {"end", DialogKind::List, "", "End event", Dialog_Multiple, {"Event Name"}},
        {"t_end_objects", DialogKind::Label, "Tasks for end event:", "", 0, {}, "", "end_objects"},
        {"end_objects", DialogKind::List, "", "Objects of the end event", Dialog_Multiple, objectColumns},
        {"same", DialogKind::CheckBox, "&Match events on the same task"},
        {"ok", DialogKind::Button, "Ok", "", Dialog_Default},
        cancelButton};
    LayoutLines lines;
    lines.atLeast({{"@t_begin", 12, 2},
                   {"@t_end", 12, 2},
                   {"@t_begin_objects", 12, 2},
                   {"@t_end_objects", 12, 2},
                   {"@same", 16},
                   {"@ok,@cancel", 32}});
    lines.least.insert(lines.least.end(),
                       {"0,(),(),80,64,0,0,0,1,1,1,Horizontal",
                        "0,(@t_begin,@t_begin_objects,@same,@ok),(),64,0,0,10,0,1,1,1,Vertical"});
    lines.sizes = {"0,(),(),12,96,0,0,0,1,1,1,Horizontal",
                   "0,(),(),46,0,0,32,0,1,1,1,Vertical",
                   "@begin,(0),(),-24,0,0,0,0,1,2,1,Horizontal",
                   "@begin,(0),(@t_begin,@t_begin_objects,@same,@ok),-44,0,0,0,0,1,2,1,Vertical",
                   "@end,(@begin),(),0,0,0,0,0,1,1,1,Horizontal",
                   "@end,(@begin),(),0,0,0,0,0,1,1,1,Vertical",
                   "@begin_objects,(@begin),(),0,0,0,0,0,1,1,1,Horizontal",
                   "@begin_objects,(@begin),(),0,0,0,0,0,1,1,1,Vertical",
                   "@end_objects,(@begin),(),0,0,0,0,0,1,1,1,Horizontal",
                   "@end_objects,(@begin),(),0,0,0,0,0,1,1,1,Vertical"};
    lines.positions = {"(@t_begin,@begin,@t_begin_objects,@begin_objects,@same),0,8,0,0,0,0,Left,Left,Left",
                       "(@t_begin,@t_end),0,8,0,0,0,0,Top,Top,Top",
                       "(@begin,@end),@t_begin,2,0,0,0,0,Top,Top,Bottom",
                       "(@end,@end_objects),0,-8,0,0,0,0,Right,Right,Right",
                       "(@t_end,@t_end_objects),@end,0,0,0,0,0,Left,Left,Left",
                       "(@t_begin_objects,@t_end_objects),@begin,8,0,0,0,0,Top,Top,Bottom",
                       "(@begin_objects,@end_objects),@t_begin_objects,2,0,0,0,0,Top,Top,Bottom",
                       "(@same),@begin_objects,8,0,0,0,0,Top,Top,Bottom"};
    lines.corner({"cancel", "ok"});
    d.layout = lines.all();
    return d;
}

DialogDescription search_IntervalDialog() {
    DialogDescription d;
    d.name = "SearchInterval";
    d.title = "Criteria for searching intervals based on event pattern";
    d.helpKey = "search";
    const std::vector<std::string> objectColumns = {"Task ID", "Task Name"};
    d.items = {{"t_begin", DialogKind::Label, "&Begin:", "", 0, {}, "", "begin"},
               {"begin", DialogKind::PullDown, "", "Begin event", 0, {}, "nnnnnnnnnnnnnnnnnnnn"},
               {"begin_objects", DialogKind::List, "", "Object of the begin event", 0, objectColumns},
               {"t_end", DialogKind::Label, "&End:", "", 0, {}, "", "end"},
               {"end", DialogKind::PullDown, "", "End event", 0, {}, "nnnnnnnnnnnnnnnnnnnn"},
               {"end_objects", DialogKind::List, "", "Object of the end event", 0, objectColumns},
               {"t_range", DialogKind::Label, "&Within (in Second):", "", 0, {}, "", "tf_from"},
               {"tf_from", DialogKind::TextField, "", "From", 0, {}, "0000000.000000"},
               {"tf_to", DialogKind::TextField, "", "To", 0, {}, "0000000.000000"},
               messageLine,
               okButton,
               cancelButton};
    LayoutLines lines;
    lines.atLeast({{"@t_begin", 12, 2},
                   {"@t_end", 12, 2},
                   {"@begin", 12, 2},
                   {"@end", 12, 2},
                   {"@t_range,@tf_from,@tf_to", 32},
                   {"@ok,@cancel", 32}});
    lines.least.insert(lines.least.end(),
                       {"0,(),(),80,64,0,0,0,1,1,1,Horizontal",
                        "0,(@t_begin,@begin,@tf_from,@ts_info,@ok),(),64,0,0,6,0,1,1,1,Vertical"});
    lines.sizes = {"0,(),(),12,96,0,0,0,1,1,1,Horizontal",
                   "0,(),(),46,0,0,26,0,1,1,1,Vertical",
                   "@begin_objects,(0),(),-24,0,0,0,0,1,2,1,Horizontal",
                   "@begin_objects,(0),(@t_begin,@begin,@tf_from,@ts_info,@ok),-46,0,0,0,0,1,1,1,Vertical",
                   "@begin,(@begin_objects),(),0,0,0,0,0,1,1,1,Horizontal",
                   "@end,(@begin_objects),(),0,0,0,0,0,1,1,1,Horizontal",
                   "@end_objects,(@begin_objects),(),0,0,0,0,0,1,1,1,Horizontal",
                   "@end_objects,(@begin_objects),(),0,0,0,0,0,1,1,1,Vertical",
                   "@ts_info,(0),(),-16,0,0,0,0,1,1,1,Horizontal"};
    lines.positions = {"(@t_begin,@begin,@begin_objects,@t_range,@ts_info),0,8,0,0,0,0,Left,Left,Left",
                       "(@t_begin,@t_end),0,8,0,0,0,0,Top,Top,Top",
                       "(@begin,@end),@t_begin,2,0,0,0,0,Top,Top,Bottom",
                       "(@begin_objects,@end_objects),@begin,4,0,0,0,0,Top,Top,Bottom",
                       "(@end,@end_objects),0,-8,0,0,0,0,Right,Right,Right",
                       "(@t_end),@end,0,0,0,0,0,Left,Left,Left",
                       "(@tf_from),@begin_objects,8,0,0,0,0,Top,Top,Bottom",
                       "(@ts_info),@tf_from,8,0,0,0,0,Top,Top,Bottom"};
    lines.beside({"t_range", "tf_from", "tf_to"}, "tf_from");
    lines.corner({"cancel", "ok"});
    d.layout = lines.all();
    return d;
}

DialogDescription search_ResultWindow(bool histogram, int letters) {
    DialogDescription d;
    d.name = histogram ? "SearchIntervals" : "SearchResult";
    d.title = "Search Result";
    d.helpKey = "search";
    d.menu = true;
    d.items = {{"MenuBar", DialogKind::MenuLine, "TraxSearchMenu", "Menus"},
               {"list",
                DialogKind::List,
                "",
                "Results",
                Dialog_Multiple,
                {"From Task", "From Time", "To Task", "To Time", "Interval"}},
               {"t_stat", DialogKind::Label, "Number: 0, Interval (in Second): max=0 min=0 ave=0"}};
    if (histogram) {
        d.items.push_back({"t_lengths", DialogKind::Label, "Lengths (in Second): min=0 max=0"});
        d.items.push_back({"histogram", DialogKind::Strip, "", "Histogram of the lengths"});
    }
    d.items.push_back({"only_rows", DialogKind::CheckBox, "&Only these rows on the time line"});
    if (histogram) d.items.push_back({"log_lengths", DialogKind::CheckBox, "&Logarithmic lengths"});
    d.items.push_back({"quit", DialogKind::Button, "Quit", "", Dialog_Cancel});
    LayoutLines lines;
    lines.atLeast({{"@t_stat", 25},
                   {histogram ? "@t_lengths" : "@t_stat", 16},
                   {histogram ? "@only_rows,@log_lengths,@quit" : "@only_rows,@quit", 48}});
    lines.least.push_back("0,(),(),80,56,0,0,0,1,1,1,Horizontal");
    lines.least.push_back(histogram ? "0,(@t_stat,@t_lengths,@quit),(),48,0,0,14,0,1,1,1,Vertical"
                                    : "0,(@t_stat,@quit),(),40,0,0,6,0,1,1,1,Vertical");
    lines.sizes = {"0,(),(),12," + std::to_string(letters) + ",0,0,0,1,1,1,Horizontal",
                   "0,(),(),46,0,0,32,0,1,1,1,Vertical", "@list,(0),(),-16,0,0,0,0,1,1,1,Horizontal"};
    if (histogram) {
        lines.sizes.insert(
            lines.sizes.end(),
            {"@histogram,(0),(),-16,0,0,0,0,1,1,1,Horizontal", "@histogram,(),(),0,0,0,7,0,1,1,1,Vertical",
             "@list,(0),(@t_stat,@t_lengths,@histogram,@quit),-36,0,0,0,0,1,1,1,Vertical"});
    } else {
        lines.sizes.emplace_back("@list,(0),(@t_stat,@quit),-28,0,0,0,0,1,1,1,Vertical");
    }
    lines.positions = {"(@list,@t_stat,@only_rows),0,8,0,0,0,0,Left,Left,Left",
                       "(@list),0,8,0,0,0,0,Top,Top,Top", "(@t_stat),@list,4,0,0,0,0,Top,Top,Bottom"};
    if (histogram)
        lines.positions.insert(lines.positions.end(),
                               {"(@t_lengths,@histogram),0,8,0,0,0,0,Left,Left,Left",
                                "(@t_lengths),@t_stat,4,0,0,0,0,Top,Top,Bottom",
                                "(@histogram),@t_lengths,4,0,0,0,0,Top,Top,Bottom",
                                "(@log_lengths),@only_rows,16,0,0,0,0,Left,Left,Right",
                                "(@log_lengths),@quit,0,0,0,0,0,TBCenter,TBCenter,TBCenter"});
    lines.corner({"quit"});
    lines.positions.emplace_back("(@only_rows),@quit,0,0,0,0,0,TBCenter,TBCenter,TBCenter");
    d.layout = lines.all();
    return d;
}
