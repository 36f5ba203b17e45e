// report.
#include "chronoweave/cli/analysis_line.h"
#include "chronoweave/cli/commands.h"
#include "chronoweave/engine/report_texts.h"
#include "shared/libcxxutil/report.h"

namespace {

// The object's column is of report general alone.
RowLayout figure_layout(bool withObject) {
    RowLayout layout{{{"kind", -8},
                      {"name", -28},
                      {"code", 9, CellForm::Id},
                      {"count", 9},
                      {"countPercent", 12, CellForm::Percent},
                      {"time", 14},
                      {"timePercent", 11, CellForm::Percent},
                      {"object", 10, CellForm::Id}},
                     withObject ? SIZE_MAX : 7,
                     {"kind", "name", "code", "count", "countPercent", "time", "timePercent"}};
    if (withObject) layout.tables.insert(layout.tables.begin() + 1, "object");
    return layout;
}

Cell percent(double fraction) {
    return fraction < 0 ? Cell() : Cell(100 * fraction);
}

std::string event_code(const LegendEvent& event) {
    const auto part = [&event](uint32_t wild, uint16_t code) {
        return event.flags & wild ? std::string("*") : gen_format("0x%x", code);
    };
    return part(LegendEvent_AnyType, event.type) + '/' + part(LegendEvent_AnySubtype, event.subtype);
}

struct Figures {
    const char* kind;
    Cell name, code, count;
    double countFraction;  // below 0 for none
    Cell time;
    double timeFraction;
    Cell object = {};
};

void put_figures(RowWriter& rows, const Figures& figures) {
    rows.row({figures.kind, figures.name, figures.code, figures.count, percent(figures.countFraction),
              figures.time, percent(figures.timeFraction), figures.object});
}

const char* kind_word(ReportRowKind kind) {
    switch (kind) {
        case ReportRowKind::Status:
            return "status";
        case ReportRowKind::Switch:
            return "switch";
        case ReportRowKind::Category:
            return "category";
        case ReportRowKind::Event:
        case ReportRowKind::Object:
        case ReportRowKind::Empty:
            break;
    }
    return "event";
}

void put_statistics(const AnalysisLine& analysis, const LegendStatistics& statistics, bool oneObject,
                    RowWriter& rows) {
    const Legend& legend = analysis.named.legend;
    rows.note(report_Title(analysis.words, statistics, oneObject));
    rows.note(report_Subtitle(analysis.words, statistics));
    for (const ReportRow& row : report_Rows(analysis.words, statistics, oneObject)) {
        const auto at = static_cast<size_t>(row.row);
        if (row.kind == ReportRowKind::Empty) continue;
        if (row.kind == ReportRowKind::Status || row.kind == ReportRowKind::Switch) {
            put_figures(rows, {kind_word(row.kind), legend.statuses[at].name, legend.statuses[at].code,
                               statistics.statusCounts[at], row.countFraction,
                               analysis.shownLength(statistics.statusTimes[at]), row.timeFraction});
            continue;
        }
        const std::string code = event_code(legend.events[at]);
        put_figures(rows, {kind_word(row.kind), legend.events[at].name,
                           row.kind == ReportRowKind::Category ? Cell() : Cell(code),
                           statistics.eventCounts[at], row.countFraction, nullptr, -1});
    }
    put_figures(rows, {"total", "statuses", nullptr, statistics.totalStatusCount, -1,
                       analysis.shownLength(statistics.totalStatusTime), -1});
    put_figures(rows, {"total", "events", nullptr, statistics.totalEvents, -1,
                       analysis.shownLength(statistics.rangeLength), -1});
}

// True when the outcome ends the command, with its exit status.
bool over(const CommandLine& line, const AnalysisLine& analysis, ReportOutcome outcome, int& status) {
    if (outcome == ReportOutcome::Failed) status = cli_Failure(line.path + ": the store can't be read");
    if (outcome == ReportOutcome::NoObjects) {
        analysis.say(report_NoObjectsMessage(analysis.words));
        status = Exit_Done;
    }
    return outcome != ReportOutcome::Done;
}

int report_statistics(const CommandLine& line, AnalysisLine& analysis) {
    const bool one = line.subject == "object";
    uint32_t object = 0;
    if (one) {
        const Result found = analysis_FindObject(line.object, analysis.objects, analysis.names, object);
        if (!found) {
            cli_Say("--object: " + found.text());
            return analysis.refused();
        }
    }
    RowWriter rows(line, figure_layout(false), analysis.clock());
    if (!rows.good()) return Exit_Failed;
    LegendStatistics statistics;
    const ReportOutcome outcome =
        one ? report_OneObject(analysis.source, object, analysis.from, analysis.to, statistics)
            : report_AllObjects(analysis.source, analysis.from, analysis.to, statistics);
    int status = Exit_Done;
    if (over(line, analysis, outcome, status))
        return status == Exit_Done ? analysis.finish(rows, nullptr) : status;
    put_statistics(analysis, statistics, one, rows);
    return analysis.finish(rows, statistics.damaged ? &statistics.lost : nullptr);
}

std::optional<SearchRequest> general_request(const CommandLine& line, const AnalysisLine& analysis) {
    std::optional<SearchRequest> request = analysis.request();
    if (!request) return request;
    request->kind = Search_Switch;
    std::optional<int32_t> row = analysis.named.legend.contextSwitchStatus;
    if (!line.event.empty()) {
        request->kind = Search_Event;
        row = analysis.event(line.event, "--event");
    } else if (!line.status.empty()) {
        request->kind = Search_Status;
        row = analysis.status(line.status, "--status");
    }
    if (!row) return std::nullopt;
    request->target = *row;
    return request;
}

int report_general(const CommandLine& line, AnalysisLine& analysis) {
    const auto request = general_request(line, analysis);
    if (!request) return analysis.refused();
    RowWriter rows(line, figure_layout(true), analysis.clock());
    if (!rows.good()) return Exit_Failed;
    ChosenReport report;
    const ReportOrder order{line.increasing, line.sort == "time"};
    int status = Exit_Done;
    if (over(line, analysis, report_ChosenObjects(analysis.source, *request, order, report), status))
        return status == Exit_Done ? analysis.finish(rows, nullptr) : status;
    const bool timed = request->kind == Search_Status;
    rows.note("Statistics for the Selected Object on the Selected " + analysis.words.term +
              "s: " + report_ChosenTypeName(request->kind) + ' ' +
              (request->kind == Search_Event ? analysis_EventName(analysis.named.legend, request->target)
                                             : analysis_StatusName(analysis.named.legend, request->target)));
    double time = 0;
    const auto shown = report_ChosenRows(analysis.words, report);
    for (size_t i = 0; i < shown.size(); ++i) {
        const ObjectFigures& figures = *report.sorted[i];
        time += figures.time;
        put_figures(rows, {"object", analysis.nameOf(figures.object), nullptr, figures.count,
                           shown[i].countFraction, timed ? analysis.shownLength(figures.time) : Cell(),
                           timed ? shown[i].timeFraction : -1, figures.object});
    }
    put_figures(rows, {"total", "objects", nullptr, report.totalCount, -1,
                       timed ? analysis.shownLength(time) : Cell(), -1});
    return analysis.finish(rows, report.damaged ? &report.lost : nullptr);
}

int report_load(const CommandLine& line, AnalysisLine& analysis) {
    std::vector<uint32_t> idle;
    if (!line.idle.empty()) {
        const auto ids = analysis.objectList(line.idle, "--idle", true);
        if (!ids) return analysis.refused();
        idle = *ids;
    }
    RowLayout layout{{{"kind", -9},
                      {"processor", 9},
                      {"object", 10, CellForm::Id},
                      {"name"},
                      {"time", 14},
                      {"timePercent", 11, CellForm::Percent}}};
    layout.tables = {"kind", "processor", "object", "time", "timePercent", "name"};
    RowWriter rows(line, layout, analysis.clock());
    if (!rows.good()) return Exit_Failed;
    LoadReport report;
    int status = Exit_Done;
    if (over(line, analysis, report_ProcessorLoad(analysis.source, idle, analysis.from, analysis.to, report),
             status))
        return status == Exit_Done ? analysis.finish(rows, nullptr) : status;
    const double length = report.RangeLength();
    const auto put = [&](const char* kind, uint32_t processor, const Cell& object, double time,
                         const Cell& name) {
        rows.row({kind, processor, object, name, analysis.shownLength(time),
                  percent(length > 0 ? time / length : -1)});
    };
    rows.note(
        gen_format("Share of %s in which some object executes on the processor%s, and the objects that "
                   "execute there",
                   analysis.shownRange(length).c_str(), idle.empty() ? "" : ", those of --idle left out"));
    for (const ProcessorLoad& load : report.processors) {
        put("processor", load.processor, nullptr, load.busy, nullptr);
        for (const ObjectTime& object : load.objects)
            put("object", load.processor, object.object, object.time, analysis.nameOf(object.object));
    }
    return analysis.finish(rows, report.damaged ? &report.lost : nullptr);
}

// An option that the kind does not know is told rather than passed over.
bool fits_kind(const CommandLine& line) {
    const bool general = line.subject == "general";
    const struct {
        bool given, taken;
        const char* option;
    } rules[] = {
        {!line.event.empty(), general, "--event"},
        {!line.status.empty(), general, "--status"},
        {line.contextSwitch, general, "--switch"},
        {!line.objects.empty(), general, "--objects"},
        {!line.sort.empty(), general, "--sort"},
        {line.increasing, general, "--increasing"},
        {!line.object.empty(), line.subject == "object", "--object"},
        {!line.idle.empty(), line.subject == "load", "--idle"},
    };
    for (const auto& rule : rules)
        if (rule.given && !rule.taken) {
            cli_UsageError("report " + line.subject + " does not take " + rule.option);
            return false;
        }
    std::string problem;
    if (line.subject == "object" && line.object.empty()) problem = "report object: --object is required";
    if (!line.event.empty() + !line.status.empty() + line.contextSwitch > 1)
        problem = "report general: one of --event, --status and --switch";
    if (!line.sort.empty() && line.sort != "number" && line.sort != "time")
        problem = "--sort: number or time, not " + line.sort;
    if (!problem.empty()) cli_UsageError(problem);
    return problem.empty();
}

}  // namespace

int command_Report(const CommandLine& line) {
    if (!fits_kind(line)) return Exit_Usage;
    AnalysisLine analysis(line);
    int status = Exit_Usage;
    if (!analysis.open(status)) return status;
    // What a report covers is no longer than the trace.
    const double length = analysis.source.totalLength;
    analysis.from = std::min(analysis.from, length);
    analysis.to = std::min(analysis.to, length);
    if (line.subject == "general") analysis.from = std::max(0.0, analysis.from);
    const bool given = !line.from.empty() || !line.to.empty();
    if (given && !(analysis.from >= 0 && analysis.from < analysis.to)) {
        cli_Say("Invalid time range.");
        return analysis.refused();
    }
    if (line.subject == "general") return report_general(line, analysis);
    if (line.subject == "load") return report_load(line, analysis);
    return report_statistics(line, analysis);
}
