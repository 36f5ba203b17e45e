#include "chronoweave/engine/search_texts.h"

#include <algorithm>

#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

constexpr std::string_view program_title = "VOREL Chronoweave";

// "'NAME'" of what was searched, or "\"BEGIN*END\"" of a pattern.
std::string quoted_target(const Legend& legend, const SearchRequest& request) {
    if (request.kind == Search_Pattern)
        return '"' + analysis_EventName(legend, request.target) + '*' +
               analysis_EventName(legend, request.endTarget) + '"';
    const bool event = request.kind == Search_Event;
    return '\'' +
           (event ? analysis_EventName(legend, request.target)
                  : analysis_StatusName(legend, request.target)) +
           '\'';
}

bool is_form_of_same_object(const SearchRequest& request) {
    return request.kind == Search_Status || (request.flags & Search_SameObject) != 0;
}

std::string id_text(uint32_t object) {
    return gen_format("0x%x", object);
}

constexpr int most_decimals = 10;

}  // namespace

ObjectNames::ObjectNames(TraceStore& store, char separator) {
    StateTable state;
    EventWalk walk;
    if (!mt_StartWalkInTimeRange(store, INT64_MAX, INT64_MAX, &state, walk)) return;
    for (uint32_t position = 0; position < state.size(); ++position) {
        if (state.entry(position).objectType != mt_ObjectTask) continue;
        auto name = mt_TaskNameAt(store, state, position, separator);
        if (name && !text_trim(*name).empty()) names_[state.IdAt(position)] = std::move(*name);
    }
}

const std::string* ObjectNames::find(uint32_t object) const {
    const auto found = names_.find(object);
    return found == names_.end() ? nullptr : &found->second;
}

AnalysisWords analysis_WordsOfLegend(const Legend& legend, const ObjectNames& names, const TimeBase& clock) {
    AnalysisWords words;
    words.clock = clock;
    words.legend = &legend;
    words.names = &names;
    words.term = legend.misc.objectTerm;
    words.lowerTerm = legend.misc.objectTermLower;
    return words;
}

std::string analysis_ObjectText(const AnalysisWords& words, uint32_t object) {
    const std::string* name = words.names->find(object);
    if (words.timeMode == Time_Tick) return name ? *name : words.term + ' ' + id_text(object);
    return name ? id_text(object) + " (" + *name + ')' : id_text(object);
}

double analysis_ShownTime(const AnalysisWords& words, double time) {
    if (words.inTicks) return words.clock.TicksIn(time);
    return laTime_Convert(Time_Second, time, words.timeMode);
}

double analysis_ShownOnTick(const AnalysisWords& words, double time) {
    return analysis_ShownTime(words, words.clock.WholeLength(time));
}

std::string analysis_TimeText(const AnalysisWords& words, double time, int most) {
    const TimeMode mode = words.inTicks ? Time_Tick : words.timeMode;
    return tick_Text(laTime_Scale(words.clock.ticksPerSecond, mode), analysis_ShownTime(words, time), most);
}

std::string analysis_EventName(const Legend& legend, int32_t row) {
    return row < 0                                           ? "any event"
           : static_cast<size_t>(row) < legend.events.size() ? legend.events[static_cast<size_t>(row)].name
                                                             : std::string();
}

std::string analysis_StatusName(const Legend& legend, int32_t row) {
    return row < 0 ? "any status"
           : static_cast<size_t>(row) < legend.statuses.size()
               ? legend.statuses[static_cast<size_t>(row)].name
               : std::string();
}

std::string search_NotFoundMessage(const Legend& legend, const SearchRequest& request) {
    return (request.kind == Search_Pattern ? "Did not find instance for event pattern "
                                           : "Did not find any ") +
           quoted_target(legend, request) + '.';
}

std::string search_FoundMessage(const Legend& legend, const SearchResult& result) {
    const SearchRequest& request = result.request;
    const std::string found = gen_format("Found %d instances of ", static_cast<int>(result.found));
    switch (request.kind) {
        case Search_Event:
            return found + "event " + quoted_target(legend, request) + '.';
        case Search_Status:
            return found + "status " + quoted_target(legend, request) + '.';
        case Search_Switch:
            return found + "context switch.";
        default:
            return {};
    }
}

std::string search_ResultTitle(const Legend& legend, const SearchRequest& request,
                               const std::string& canvasTitle, const std::string& traceFile) {
    const bool own = !canvasTitle.empty() && canvasTitle.compare(0, program_title.size(), program_title) != 0;
    return "Search Result for " + quoted_target(legend, request) + " in " + (own ? canvasTitle : traceFile);
}

std::string search_InvisibleMessage(const Legend& legend, const SearchRequest& request) {
    if (request.target < 0 || request.kind == Search_Pattern) return {};
    const auto row = static_cast<size_t>(request.target);
    if (request.kind == Search_Event) {
        if (row >= legend.events.size() || legend.events[row].visibility() != 0) return {};
        return "Event \"" + legend.events[row].name + "\" is invisible.";
    }
    if (row >= legend.statuses.size() || legend.statuses[row].visible) return {};
    return (legend.statuses[row].isContextSwitch ? "\"" : "Status \"") + legend.statuses[row].name +
           "\" is invisible.";
}

IntervalFigures search_IntervalFigures(const SearchResult& result) {
    IntervalFigures figures;
    for (const SearchRow& row : result.rows) {
        const double length = row.timeB - row.timeA;
        figures.max = std::max(figures.max, length);
        figures.min = std::min(figures.min, length);
        figures.ave += length;
    }
    if (!result.rows.empty()) figures.ave /= static_cast<double>(result.rows.size());
    return figures;
}

std::string search_StatisticsLine(const AnalysisWords& words, const SearchResult& result) {
    const int kind = result.request.kind;
    const int count = static_cast<int>(result.rows.size());
    if (kind != Search_Pattern && kind != Search_Status) return gen_format("Number of objects: %d", count);
    const IntervalFigures figures = search_IntervalFigures(result);
    return gen_format("Number: %d, Interval (in %s): max=%g min=%g ave=%g", count, words.unit.c_str(),
                      analysis_ShownOnTick(words, figures.max), analysis_ShownOnTick(words, figures.min),
                      analysis_ShownTime(words, figures.ave));
}

std::vector<SearchColumn> search_Columns(const AnalysisWords& words, const SearchRequest& request) {
    using Kind = SearchColumnKind;
    const SearchColumn id{Kind::ObjectId, words.term + " ID"}, name{Kind::ObjectName, words.term + " Name"},
        from{Kind::FromObject, "From " + words.term}, to{Kind::ToObject, "To " + words.term},
        time{Kind::Time, "Time(in " + words.unit + ')'}, fromTime{Kind::FromTime, "From Time"},
        toTime{Kind::ToTime, "To Time"}, interval{Kind::Interval, "Interval"};
    if (request.kind == Search_Event) return {id, time, name};
    if (request.kind == Search_Switch) return {from, to, time};
    if (is_form_of_same_object(request)) return {id, fromTime, toTime, interval, name};
    return {from, fromTime, to, toTime, interval};
}

std::string search_CellText(const AnalysisWords& words, const SearchRow& row, SearchColumnKind column) {
    switch (column) {
        case SearchColumnKind::ObjectId:
            return id_text(row.objectA);
        case SearchColumnKind::FromObject:
            return analysis_ObjectText(words, row.objectA);
        case SearchColumnKind::ToObject:
            return analysis_ObjectText(words, row.objectB);
        case SearchColumnKind::Time:
        case SearchColumnKind::FromTime:
            return analysis_TimeText(words, row.timeA, most_decimals);
        case SearchColumnKind::ToTime:
            return analysis_TimeText(words, row.timeB, most_decimals);
        case SearchColumnKind::Interval:
            return analysis_TimeText(words, row.timeB - row.timeA, most_decimals);
        case SearchColumnKind::ObjectName: {
            const std::string* name = words.names->find(row.objectA);
            return name ? *name : std::string();
        }
    }
    return {};
}
