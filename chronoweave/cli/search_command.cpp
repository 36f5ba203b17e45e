// search.
#include <algorithm>
#include <iterator>

#include "chronoweave/cli/analysis_line.h"
#include "chronoweave/cli/commands.h"
#include "shared/libcxxutil/text.h"

namespace {

int kind_of(const std::string& word) {
    return word == "event"    ? Search_Event
           : word == "status" ? Search_Status
           : word == "switch" ? Search_Switch
                              : Search_Pattern;
}

// An option that the kind does not know is told rather than passed over.
bool fits_kind(const CommandLine& line) {
    const bool pairs = line.subject == "pattern" || line.subject == "interval";
    const struct {
        bool given, taken;
        const char* option;
    } rules[] = {
        {!line.event.empty(), line.subject == "event", "--event"},
        {!line.status.empty(), line.subject == "status", "--status"},
        {!line.begin.empty(), pairs, "--begin"},
        {!line.end.empty(), pairs, "--end"},
        {!line.beginObjects.empty(), pairs, "--begin-objects"},
        {!line.endObjects.empty(), pairs, "--end-objects"},
        {line.sameObject, line.subject == "pattern", "--same-object"},
    };
    for (const auto& rule : rules)
        if (rule.given && !rule.taken) {
            cli_UsageError("search " + line.subject + " does not take " + rule.option);
            return false;
        }
    if (pairs && (line.begin.empty() || line.end.empty())) {
        cli_UsageError("search " + line.subject + ": --begin and --end are required");
        return false;
    }
    return true;
}

bool take_pair_objects(const CommandLine& line, const AnalysisLine& analysis, SearchRequest& request) {
    request.beginObjects = request.endObjects = request.objects;
    for (const auto& [text, option, list] :
         {std::tuple{&line.beginObjects, "--begin-objects", &request.beginObjects},
          {&line.endObjects, "--end-objects", &request.endObjects}}) {
        if (text->empty()) continue;
        const auto ids = analysis.objectList(*text, option);
        if (!ids) return false;
        *list = *ids;
    }
    if (line.subject == "interval") {
        if (request.beginObjects.size() != 1 || request.endObjects.size() != 1) {
            cli_UsageError(
                "search interval is from one object to one object: give --begin-objects ID and "
                "--end-objects ID");
            return false;
        }
        request.objects = request.beginObjects;
    }
    // Objects of either side are searched, whether --objects has them or not.
    for (const auto* list : {&request.beginObjects, &request.endObjects})
        request.objects.insert(request.objects.end(), list->begin(), list->end());
    if (line.sameObject) request.flags |= Search_SameObject;
    if (search_ShareObjects(request)) return true;
    cli_UsageError("no common " + analysis.words.lowerTerm + " is given for both begin and end event(s)");
    return false;
}

// Both events must be among those that can bound an interval; of several of one name any.
bool bounds_intervals(const CommandLine& line, const AnalysisLine& analysis) {
    const Legend& legend = analysis.named.legend;
    const auto rows = search_IntervalEvents(legend, legend.misc.allForIntervalSearch);
    for (const auto& [name, option] :
         {std::pair<std::string, const char*>{line.begin, "--begin"}, {line.end, "--end"}}) {
        const auto isNamed = [&legend, &wanted = name](int32_t row) {
            return text_equal_nocase(legend.events[static_cast<size_t>(row)].name, wanted);
        };
        if (std::any_of(rows.begin(), rows.end(), isNamed)) continue;
        cli_UsageError(std::string(option) + ": the event \"" + name +
                       "\" can't bound an interval: the configure file gives it no TRV_Interval_Search, and "
                       "TRV_All_For_Interval_Search is off");
        return false;
    }
    return true;
}

std::optional<SearchRequest> make_request(const CommandLine& line, const AnalysisLine& analysis) {
    std::optional<SearchRequest> asked = analysis.request();
    if (!asked) return asked;
    SearchRequest& request = *asked;
    request.kind = kind_of(line.subject);
    const auto take = [](std::optional<int32_t> row, int32_t& target) {
        if (row) target = *row;
        return row.has_value();
    };
    bool good = true;
    if (!line.event.empty()) good = take(analysis.event(line.event, "--event"), request.target);
    if (!line.status.empty()) good = take(analysis.status(line.status, "--status"), request.target);
    if (request.kind == Search_Switch) request.target = analysis.named.legend.contextSwitchStatus;
    if (request.kind == Search_Pattern)
        good = take(analysis.event(line.begin, "--begin"), request.target) &&
               take(analysis.event(line.end, "--end"), request.endTarget) &&
               take_pair_objects(line, analysis, request);
    if (!good || (line.subject == "interval" && !bounds_intervals(line, analysis))) return std::nullopt;
    if (line.subject == "interval" && request.rangeFrom > request.rangeTo)
        std::swap(request.rangeFrom, request.rangeTo);
    return asked;
}

// JSON has the same keys for every kind, tables the columns that tell something.
RowLayout layout_of(int kind) {
    RowLayout layout{{{"objectA", 10, CellForm::Id},
                      {"objectB", 10, CellForm::Id},
                      {"timeA", 14},
                      {"timeB", 14},
                      {"interval", 14},
                      {"nameA", -20},
                      {"nameB"}},
                     4};
    if (kind == Search_Event)
        layout.tables = {"objectA", "timeA", "nameA"};
    else if (kind == Search_Switch)
        layout.tables = {"objectA", "objectB", "timeA", "nameA", "nameB"};
    else if (kind == Search_Status)
        layout.tables = {"objectA", "timeA", "timeB", "interval", "nameA"};
    return layout;
}

void put_rows(const AnalysisLine& analysis, const SearchResult& result, RowWriter& rows) {
    const bool event = result.request.kind == Search_Event;
    for (const SearchRow& row : result.rows) {
        if (!rows.good()) return;
        rows.row({row.objectA, event ? Cell() : Cell(row.objectB), analysis.shownTime(row.timeA),
                  event ? Cell() : analysis.shownTime(row.timeB), analysis.shownLength(row.timeB - row.timeA),
                  analysis.nameOf(row.objectA), analysis.nameOf(row.objectB)});
    }
}

void put_summary(const AnalysisLine& analysis, const SearchResult& result, RowWriter& rows) {
    const int kind = result.request.kind;
    if (rows.form() != RowForm::Json) return rows.note(search_StatisticsLine(analysis.words, result));
    if (kind != Search_Pattern && kind != Search_Status) return rows.facts({{"rows", result.rows.size()}});
    const IntervalFigures figures = search_IntervalFigures(result);
    const bool any = !result.rows.empty();
    const auto shown = [&](double length) { return any ? analysis.shownLength(length) : Cell(); };
    rows.facts({{"rows", result.rows.size()},
                {"max", shown(figures.max)},
                {"min", shown(figures.min)},
                {"ave", any ? analysis.shownMean(figures.ave) : Cell()}});
}

}  // namespace

int command_Search(const CommandLine& line) {
    if (!fits_kind(line)) return Exit_Usage;
    const auto limit = cli_Number(line.limit, "--limit", 0);
    if (!limit) return Exit_Usage;
    AnalysisLine analysis(line);
    int status = Exit_Usage;
    if (!analysis.open(status)) return status;
    const auto request = make_request(line, analysis);
    if (!request) return analysis.refused();
    RowWriter rows(line, layout_of(request->kind), analysis.clock());
    if (!rows.good()) return Exit_Failed;
    SearchResult result;
    result.request = *request;
    // A store with no events gives no walk, and an empty result.
    if (!search_Run(analysis.source, *request, result, *limit) &&
        mt_GetEventCount(analysis.named.store()) > 0)
        return cli_Failure(line.path + ": the store can't be read");
    put_rows(analysis, result, rows);
    if (result.rows.empty())
        analysis.say(search_NotFoundMessage(analysis.named.legend, result.request));
    else
        put_summary(analysis, result, rows);
    if (result.rows.empty() && line.json) put_summary(analysis, result, rows);
    return analysis.finish(rows, result.damaged ? &result.lost : nullptr);
}
