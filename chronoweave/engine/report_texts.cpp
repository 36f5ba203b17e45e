#include "chronoweave/engine/report_texts.h"

#include "chronoweave/engine/time_unit.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

double fraction_of(double part, double whole) {
    return whole > 0 ? part / whole : -1;
}

void give_bars(ReportRow& row) {
    if (row.countFraction >= 0) row.texts[2] = report_BarText(row.countFraction);
    if (row.timeFraction >= 0) row.texts[4] = report_BarText(row.timeFraction);
}

std::string count_text(uint32_t count) {
    return gen_format("%d", static_cast<int>(count));
}

std::string shown_time(const AnalysisWords& words, double time) {
    return analysis_TimeText(words, time, 6);
}

// A term with its first letter as a capital.
std::string capitalised(std::string term) {
    if (!term.empty() && term[0] >= 'a' && term[0] <= 'z') term[0] = static_cast<char>(term[0] - 'a' + 'A');
    return term;
}

ReportRow status_row(const AnalysisWords& words, const LegendStatistics& statistics, size_t at,
                     bool oneObject) {
    const LegendStatus& status = words.legend->statuses[at];
    ReportRow row;
    row.row = static_cast<int32_t>(at);
    row.kind = status.isContextSwitch ? ReportRowKind::Switch : ReportRowKind::Status;
    row.colourOf = static_cast<int32_t>(at);
    row.texts[0] = status.isContextSwitch ? status.name : "Status " + status.name;
    row.texts[1] = count_text(statistics.statusCounts[at]);
    row.texts[3] = shown_time(words, statistics.statusTimes[at]);
    if (!status.isContextSwitch) {
        row.countFraction = fraction_of(statistics.statusCounts[at], statistics.totalStatusCount);
        row.timeFraction = fraction_of(statistics.statusTimes[at],
                                       oneObject ? statistics.rangeLength : statistics.totalStatusTime);
    }
    give_bars(row);
    return row;
}

ReportRow event_row(const AnalysisWords& words, const LegendStatistics& statistics, size_t at) {
    const LegendEvent& event = words.legend->events[at];
    ReportRow row;
    row.row = static_cast<int32_t>(at);
    row.kind = event.IsCategory() ? ReportRowKind::Category : ReportRowKind::Event;
    row.texts[0] = (event.IsCategory() ? "Event Category " : "  Event ") + event.name;
    row.texts[1] = count_text(statistics.eventCounts[at]);
    row.countFraction = fraction_of(statistics.eventCounts[at], statistics.totalEvents);
    give_bars(row);
    return row;
}

}  // namespace

std::string report_BarText(double fraction) {
    return fraction > 0 ? gen_format("%2.1f%%", 100 * fraction) : std::string();
}

std::string report_WindowTitle(const std::string& canvasTitle) {
    return "Statistics for " + (canvasTitle.empty() ? "NO_NAME" : canvasTitle);
}

std::string report_Title(const AnalysisWords& words, const LegendStatistics& statistics, bool oneObject) {
    if (!oneObject) return "Statistics for all Objects in the System";
    return "Statistics for all Objects of the " + capitalised(words.term) +
           gen_format(" with ID 0x%x", statistics.object);
}

std::string report_Subtitle(const AnalysisWords& words, const LegendStatistics& statistics) {
    const auto trimmed = [&words](double time) {
        return laTime_TrimZeros(laTime_Digits(laTime_Scale(words.clock.ticksPerSecond, words.timeMode),
                                              analysis_ShownTime(words, time), 10));
    };
    return "(from " + trimmed(statistics.rangeFrom) + " to " + trimmed(statistics.rangeTo) + ' ' +
           words.unit + ')';
}

std::array<std::array<std::string, 2>, 5> report_ColumnTitles(const AnalysisWords& words, bool oneObject) {
    return {{{"Object Name", ""},
             {"Object", "Count"},
             {"Percent of", oneObject ? "Total Objects in the " + words.term : "Total Objects"},
             {"Time", "(in " + words.unit + "s)"},
             {"Percent of", oneObject ? "the " + words.term + "'s Total Time" : "Total Time"}}};
}

std::vector<ReportRow> report_Rows(const AnalysisWords& words, const LegendStatistics& statistics,
                                   bool oneObject) {
    const Legend& legend = *words.legend;
    std::vector<ReportRow> rows;
    const auto statuses = [&](bool contextSwitches) {
        for (size_t at = 0; at < legend.statuses.size() && at < statistics.statusCounts.size(); ++at)
            if (legend.statuses[at].isContextSwitch == contextSwitches)
                rows.push_back(status_row(words, statistics, at, oneObject));
    };
    statuses(false);
    if (legend.contextSwitchCount > 0) {
        rows.emplace_back();
        statuses(true);
    }
    rows.emplace_back();
    for (size_t at = 0; at < legend.events.size() && at < statistics.eventCounts.size(); ++at)
        rows.push_back(event_row(words, statistics, at));
    return rows;
}

std::string report_NoObjectsMessage(const AnalysisWords& words) {
    return "There is no " + words.lowerTerm + "s in the file.";
}

bool report_IsIdleName(std::string_view name, std::string_view separator) {
    const size_t end = separator.empty() ? std::string_view::npos : name.find_last_of(separator.front());
    if (end != std::string_view::npos) name.remove_prefix(end + 1);
    constexpr std::string_view idle = "idle";
    if (!text_starts_nocase(name, idle)) return false;
    const char next = name.size() > idle.size() ? text_lower(name[idle.size()]) : '\0';
    return !(next >= 'a' && next <= 'z');
}

std::vector<uint32_t> report_IdleObjects(const AnalysisWords& words, const std::vector<uint32_t>& objects) {
    std::vector<uint32_t> idle;
    for (const uint32_t object : objects) {
        const std::string* name = words.names->find(object);
        if (name && report_IsIdleName(*name, words.legend->misc.separator)) idle.push_back(object);
    }
    return idle;
}

std::string report_LoadTitle(const AnalysisWords& words, bool idleLeftOut) {
    return "Processor load: the share of the time in which some " + words.lowerTerm + " executes" +
           (idleLeftOut ? " (\"idle\" left out)" : "");
}

std::array<std::string, 5> report_ChosenColumnTitles(const AnalysisWords& words) {
    return {words.term, "Count", "Count Percent", "Time (" + words.unit + ')', "Time Percent"};
}

std::string report_ChosenTypeName(int kind) {
    return kind == Search_Event ? "Event" : kind == Search_Status ? "Status" : "Context Switch";
}

std::vector<ReportRow> report_ChosenRows(const AnalysisWords& words, const ChosenReport& report) {
    const SearchRequest& request = report.request;
    std::vector<ReportRow> rows;
    for (const ObjectFigures* figures : report.sorted) {
        ReportRow row;
        row.kind = ReportRowKind::Object;
        row.object = figures->object;
        row.colourOf = request.kind == Search_Status ? request.target : -1;
        const std::string* name = words.names->find(figures->object);
        row.texts[0] = words.term + gen_format(" 0x%x", figures->object);
        if (name) row.texts[0] += " (" + *name + ')';
        row.texts[1] = gen_format("%d", figures->count);
        row.texts[3] = shown_time(words, figures->time);
        row.countFraction = fraction_of(figures->count, static_cast<double>(report.totalCount));
        row.timeFraction = fraction_of(figures->time, report.RangeLength());
        give_bars(row);
        rows.push_back(row);
    }
    return rows;
}
