#include "chronoweave/analysis/search_dialogs.h"

#include <algorithm>
#include <set>

#include "chronoweave/analysis/list_filter.h"
#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/model/time.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"
#include "windlib/dialog/host.h"

namespace {

constexpr int accepted = 1;
constexpr double leastPeriod = 1e-12;
constexpr const char* invalidRange = "Invalid time range.";

// On the message lines of the canvas and of the dialog.
void tell(CanvasFacts& facts, DialogModel& model, const std::string& message) {
    laCanvas_UpdateFields(facts.canvas, 0, message.c_str());
    model.setMessage(message);
}
void refuse(CanvasFacts& facts, DialogModel& model, const std::string& message) {
    laCanvas_Beep(facts.canvas);
    tell(facts, model, message);
}
void error(CanvasFacts& facts, const std::string& message) {
    laCanvas_Beep(facts.canvas);
    facts.canvas.calls.host->message(message);
}

std::string with_max(const CanvasFacts& facts, const std::string& text) {
    return text + " (Max: " + laCanvas_TotalLengthText(facts.canvas) + ')';
}

bool is_period(const SearchRequest& request) {
    return request.periodFrom >= 0 && request.periodTo >= 0 &&
           request.periodTo - request.periodFrom > leastPeriod;
}

// Each name of the events once, sorted; categories have none.
std::vector<DialogRow> event_names(const Legend& legend) {
    std::set<std::string> names;
    for (const LegendEvent& event : legend.events)
        if (!event.IsCategory()) names.insert(event.name);
    std::vector<DialogRow> rows;
    for (const std::string& name : names) rows.push_back({{text_utf8(name)}, rows.size(), name});
    return rows;
}

// A row of a choice stands for a row of the legend by the code that it shows.
std::vector<DialogRow> event_rows(const Legend& legend) {
    std::set<std::string> seen;
    std::vector<DialogRow> rows;
    for (size_t i = 0; i < legend.events.size(); ++i) {
        const LegendEvent& event = legend.events[i];
        if (!event.IsCategory() && seen.insert(event.name).second)
            rows.push_back({{text_utf8(event.name), gen_format("0x%x/0x%x", event.type, event.subtype)}, i});
    }
    return rows;
}

std::vector<DialogRow> status_rows(const Legend& legend) {
    std::vector<DialogRow> rows;
    for (size_t i = 0; i < legend.statuses.size(); ++i) {
        const LegendStatus& status = legend.statuses[i];
        rows.push_back({{text_utf8(status.name), gen_format("0x%x", status.code)}, i});
    }
    return rows;
}

// The row that things of the chosen row resolve to. A wild card shows a code that may belong to another row;
// what was chosen is what is meant.
int32_t resolved(const Legend& legend, int kind, size_t row) {
    return kind == Search_Status ? legend.StatusIndex(legend.statuses[row].code)
                                 : legend.EventByName(legend.events[row].name);
}

bool take_objects(CanvasFacts& facts, DialogModel& model, const TimeField& from, const TimeField& to,
                  SearchRequest& request) {
    const auto periodFrom = from.IsEmpty() ? 0.0 : from.value();
    const auto periodTo = to.IsEmpty() ? -1.0 : to.value();
    if (!periodFrom || !periodTo) {
        refuse(facts, model, invalidRange);
        return false;
    }
    request.periodFrom = *periodFrom;
    request.periodTo = *periodTo;
    std::set<uint32_t> objects;
    for (const uint32_t object : analysis_SelectedObjects(model, "list")) objects.insert(object);
    if (is_period(request))
        for (const uint32_t object :
             analysis_ObjectsAlive(facts.source, request.periodFrom, request.periodTo))
            objects.insert(object);
    request.objects.assign(objects.begin(), objects.end());
    if (!objects.empty()) return true;
    tell(facts, model, "No " + facts.words.lowerTerm + " is selected.");
    return false;
}

// What a report can cover is cut to the trace. Its end is part of it: it may be one tick.
bool fits_report(const CanvasFacts& facts, SearchRequest& request) {
    if (request.rangeFrom > request.rangeTo) return false;
    for (double* end : {&request.rangeFrom, &request.rangeTo})
        *end = std::clamp(*end, 0.0, facts.source.totalLength);
    return true;
}

// What "Ok" says of the lists of a pattern, in this order; empty when all is well.
std::string pattern_fault(const CanvasFacts& facts, const DialogModel& model, SearchRequest& request) {
    const Legend& legend = *facts.words.legend;
    for (const auto& [list, word, target] :
         {std::tuple{"begin", "begin", &request.target}, {"end", "end", &request.endTarget}}) {
        const int row = model.selectedRow(list);
        if (row == Dialog_NoRow) return std::string("No ") + word + "-event is selected.";
        if (row < 0) return std::string("Multiple ") + word + "-events are selected.";
        *target = legend.EventByName(model.item(list).rows[static_cast<size_t>(row)].data);
    }
    request.beginObjects = analysis_SelectedObjects(model, "begin_objects");
    request.endObjects = analysis_SelectedObjects(model, "end_objects");
    const std::string& term = facts.words.lowerTerm;
    if (request.beginObjects.empty()) return "No " + term + " is selected for begin event(s).";
    if (request.endObjects.empty()) return "No " + term + " is selected for end event(s).";
    request.flags =
        model.item("same").checked ? request.flags | Search_SameObject : request.flags & ~Search_SameObject;
    std::sort(request.beginObjects.begin(), request.beginObjects.end());
    std::sort(request.endObjects.begin(), request.endObjects.end());
    if (!search_ShareObjects(request))
        return "No common " + term + " is selected for both begin and end event(s).";
    return {};
}

void select_all(DialogModel& model, std::string_view list) {
    model.list(list).SelectAll();
}

// The first row of a list that resolves to one of the legend's.
template <class RowOf>
void select_first(DialogModel& model, std::string_view name, const std::vector<int32_t>& wanted,
                  RowOf rowOf) {
    const MScrollList& list = model.list(name);
    for (int row = 0; row < list.RowCount(); ++row) {
        if (std::find(wanted.begin(), wanted.end(), rowOf(row)) == wanted.end()) continue;
        model.setSelected(name, {row});
        return model.list(name).ScrollToRow(row);
    }
}

const char* button_of(int kind) {
    constexpr const char* names[] = {"event", "event_pattern", "status", "ctx_switch"};
    return kind >= Search_Event && kind <= Search_Switch ? names[kind] : names[0];
}

}  // namespace

bool search_AskObjects(CanvasFacts& facts, SearchRequest& request, const SearchSeed& seed) {
    const AnalysisWords& words = facts.words;
    if (facts.objects.empty()) {
        laCanvas_UpdateFields(facts.canvas, 0, ("There is no " + words.lowerTerm + '.').c_str());
        return false;
    }
    DialogModel model(search_ObjectsDialog(true));
    model.setTitle("Select " + words.term + 's');
    model.setText("t_prompt", "Select " + words.lowerTerm + "s:");
    model.setText("t_period", "Or define period during which " + words.lowerTerm + "s are alive (in " +
                                  words.unit + "):");
    analysis_FillObjects(model, "list", facts, facts.objects, false);
    const ListFilters filters(model, {"list"});
    analysis_SelectObjects(model, "list", seed.objects);
    TimeField from(model, facts, "tf_from", "0.0", 0);
    TimeField to(model, facts, "tf_to", with_max(facts, "-1.0"), -1);
    analysis_ReadyRange(model, facts);
    model.onActivate = [&](const std::string&, int) { model.press("ok"); };
    model.onPress = [&](const std::string& name) {
        if (name == "cancel") return model.close(Dialog_Dismissed);
        if (name == "all_rows") return select_all(model, "list");
        if (analysis_PressRange(facts, name, from, to)) return;
        if (take_objects(facts, model, from, to, request)) model.close(accepted);
    };
    return facts.canvas.calls.host->run(model) == accepted;
}

bool search_AskKind(CanvasFacts& facts, SearchRequest& request, bool asReport, const SearchSeed& seed) {
    DialogModel model(search_KindDialog((request.flags & Search_OfferPattern) != 0,
                                        button_of(seed.kind.value_or(Search_Event))));
    model.setText("t_range", "A period for searched object(s) (in " + facts.words.unit + ')');
    const std::optional<TimeSpan> period =
        is_period(request) ? TimeSpan{request.periodFrom, request.periodTo} : seed.range;
    const double end = period ? period->to : facts.source.totalLength;
    TimeField from(model, facts, "tf_from", period ? laTime_TrimZeros(facts.Shown(period->from, 10)) : "0.0",
                   period ? period->from : 0);
    TimeField to(model, facts, "tf_to",
                 with_max(facts, period ? laTime_TrimZeros(facts.Shown(end, 10))
                                        : laCanvas_TotalLengthText(facts.canvas)),
                 end);
    analysis_ReadyRange(model, facts);
    model.onPress = [&](const std::string& name) {
        if (name == "cancel") return model.close(Dialog_Dismissed);
        if (analysis_PressRange(facts, name, from, to)) return;
        const auto rangeFrom = from.value(), rangeTo = to.value();
        if (rangeFrom && rangeTo) {
            request.rangeFrom = *rangeFrom;
            request.rangeTo = *rangeTo;
        }
        if (!rangeFrom || !rangeTo || (asReport && !fits_report(facts, request)))
            return refuse(facts, model, invalidRange);
        request.kind = name == "event"           ? Search_Event
                       : name == "event_pattern" ? Search_Pattern
                       : name == "status"        ? Search_Status
                                                 : Search_Switch;
        request.target = request.kind == Search_Switch ? facts.words.legend->contextSwitchStatus : -1;
        model.close(accepted);
    };
    return facts.canvas.calls.host->run(model) == accepted;
}

bool search_AskTarget(CanvasFacts& facts, SearchRequest& request, const SearchSeed& seed) {
    if (request.kind == Search_Switch) return true;
    const Legend& legend = *facts.words.legend;
    const bool event = request.kind == Search_Event;
    DialogModel model(search_ChoiceDialog());
    model.setTitle(event ? "Select One Event" : "Select One Status");
    model.setText("t_prompt",
                  event ? "Select one of the events to search:" : "Select one of the statuses to search:");
    model.setColumnTitles("list", {event ? "Event Name" : "Status Name", "Code"});
    model.setRows("list", event ? event_rows(legend) : status_rows(legend));
    model.list("list").SetUnsignedKey(1, [&legend, event](uint64_t id) -> uint64_t {
        const auto row = static_cast<size_t>(id);
        if (!event) return legend.statuses[row].code;
        return (static_cast<uint64_t>(legend.events[row].type) << 16) | legend.events[row].subtype;
    });
    select_first(model, "list", event ? seed.events : seed.statuses, [&](int row) {
        return resolved(legend, request.kind, static_cast<size_t>(model.rowId("list", row)));
    });
    const ListFilters filters(model, {"list"});
    model.onActivate = [&](const std::string&, int) { model.press("ok"); };
    model.onPress = [&](const std::string& name) {
        if (name == "cancel") return model.close(Dialog_Dismissed);
        const auto chosen = model.selectedIds("list");
        if (chosen.empty()) return facts.canvas.calls.host->message("No object is selected.");
        request.target = resolved(legend, request.kind, static_cast<size_t>(chosen.front()));
        model.close(accepted);
    };
    return facts.canvas.calls.host->run(model) == accepted;
}

bool search_AskPattern(CanvasFacts& facts, SearchRequest& request, const SearchSeed& seed) {
    const AnalysisWords& words = facts.words;
    DialogModel model(search_PatternDialog());
    for (const char* list : {"begin", "end"}) model.setRows(list, event_names(*words.legend));
    for (const char* list : {"begin_objects", "end_objects"}) {
        analysis_FillObjects(model, list, facts, request.objects, false);
        select_all(model, list);
    }
    select_first(model, "begin", seed.events, [&](int row) {
        return words.legend->EventByName(model.item("begin").rows[static_cast<size_t>(row)].data);
    });
    const ListFilters filters(model, {"begin", "end", "begin_objects", "end_objects"});
    model.setText("t_begin_objects", words.term + "s for begin event:");
    model.setText("t_end_objects", words.term + "s for end event:");
    model.setText("same", "&Match events on the same " + words.lowerTerm);
    model.setChecked("same", (request.flags & Search_SameObject) != 0);
    model.onActivate = [&](const std::string&, int) { model.press("ok"); };
    model.onPress = [&](const std::string& name) {
        if (name == "cancel") return model.close(Dialog_Dismissed);
        const std::string fault = pattern_fault(facts, model, request);
        if (!fault.empty()) return error(facts, fault);
        model.close(accepted);
    };
    return facts.canvas.calls.host->run(model) == accepted;
}

std::optional<SearchRequest> search_Ask(CanvasFacts& facts, const SearchSeed& seed) {
    SearchRequest request;
    request.flags = Search_OfferPattern;
    if (!search_AskObjects(facts, request, seed) || !search_AskKind(facts, request, false, seed))
        return std::nullopt;
    const bool done = request.kind == Search_Pattern ? search_AskPattern(facts, request, seed)
                                                     : search_AskTarget(facts, request, seed);
    return done ? std::optional(request) : std::nullopt;
}

namespace {

struct IntervalFields {
    const TimeField& from;
    const TimeField& to;
};

// False when the dialog stays. An empty field ends the search.
bool take_criteria(CanvasFacts& facts, DialogModel& model, const IntervalFields& fields,
                   IntervalCriteria& criteria, bool& empty) {
    const auto name = [&](const char* item, const std::vector<int32_t>& rows) {
        const auto choice = static_cast<size_t>(std::max(0, model.item(item).choice));
        return facts.words.legend->events[static_cast<size_t>(rows.at(choice))].name;
    };
    const auto rows = search_IntervalEvents(*facts.words.legend, facts.canvas.options.allForIntervalSearch);
    const auto begin = analysis_SelectedObjects(model, "begin_objects"),
               end = analysis_SelectedObjects(model, "end_objects");
    empty = fields.from.IsEmpty() || fields.to.IsEmpty() || begin.empty() || end.empty();
    if (empty) return true;
    const auto from = fields.from.value(), to = fields.to.value();
    if (!from || !to) {
        refuse(facts, model, invalidRange);
        return false;
    }
    criteria = {name("begin", rows), name("end", rows), begin.front(), end.front(), *from, *to};
    return true;
}

}  // namespace

std::optional<SearchRequest> search_AskInterval(CanvasFacts& facts, const SearchSeed& seed) {
    const Legend& legend = *facts.words.legend;
    const auto rows = search_IntervalEvents(legend, facts.canvas.options.allForIntervalSearch);
    if (rows.empty()) return std::nullopt;
    if (facts.objects.empty()) {
        laCanvas_Refuse(facts.canvas, "There is no " + facts.words.lowerTerm + '.');
        return std::nullopt;
    }
    DialogModel model(search_IntervalDialog());
    std::vector<std::string> names;
    for (const int32_t row : rows) names.push_back(text_utf8(legend.events[static_cast<size_t>(row)].name));
    const auto first = std::find_first_of(rows.begin(), rows.end(), seed.events.begin(), seed.events.end());
    model.setChoices("begin", names, first == rows.end() ? 0 : static_cast<int>(first - rows.begin()));
    model.setChoices("end", names, 0);
    for (const char* list : {"begin_objects", "end_objects"}) {
        analysis_FillObjects(model, list, facts, facts.objects, true);
        model.list(list).SetMustSelect(true);
        model.setSelected(list, {0});
        if (!seed.objects.empty()) model.setSelectedIds(list, {seed.objects.front()});
    }
    const ListFilters filters(model, {"begin_objects", "end_objects"});
    model.setText("t_range", "&Within (in " + facts.words.unit + "):");
    TimeField from(model, facts, "tf_from", "0", 0);
    TimeField to(model, facts, "tf_to", facts.Shown(facts.source.totalLength, 6), facts.source.totalLength);
    analysis_ReadyRange(model, facts);
    if (seed.range) {
        from.Set(laTime_TrimZeros(facts.Shown(seed.range->from, 10)), seed.range->from);
        to.Set(laTime_TrimZeros(facts.Shown(seed.range->to, 10)), seed.range->to);
    }
    IntervalCriteria criteria;
    bool empty = true;
    model.onPress = [&](const std::string& name) {
        if (name == "cancel") return model.close(Dialog_Dismissed);
        if (analysis_PressRange(facts, name, from, to)) return;
        if (take_criteria(facts, model, {from, to}, criteria, empty))
            model.close(empty ? Dialog_Dismissed : accepted);
    };
    if (facts.canvas.calls.host->run(model) != accepted) return std::nullopt;
    SearchRequest request = search_IntervalRequest(legend, criteria);
    return request;
}
