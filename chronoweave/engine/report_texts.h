// The rows of the report windows, as texts and the fractions that bars show, in order. Pure functions.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "chronoweave/engine/report.h"
#include "chronoweave/engine/search_texts.h"

enum class ReportRowKind { Empty, Status, Switch, Category, Event, Object };

struct ReportRow {
    ReportRowKind kind = ReportRowKind::Empty;
    int32_t row = -1;     // of the legend's status or event table
    uint32_t object = 0;  // of a report on chosen objects
    // Columns 2 and 4 hold bars: their texts are "%2.1f%%" of the fraction, empty when there is none.
    std::array<std::string, 5> texts;
    double countFraction = -1,
           timeFraction = -1;  // of the bars; negative: there is none, or nothing to share
    int32_t colourOf = -1;     // status whose colour the bars have; negative: the window's default
};

// What stands beside the bar of a fraction.
std::string report_BarText(double fraction);

// The window of the all-objects and one-object reports.
std::string report_WindowTitle(const std::string& canvasTitle);
std::string report_Title(const AnalysisWords& words, const LegendStatistics& statistics, bool oneObject);
std::string report_Subtitle(const AnalysisWords& words, const LegendStatistics& statistics);
std::array<std::array<std::string, 2>, 5> report_ColumnTitles(const AnalysisWords& words, bool oneObject);
std::vector<ReportRow> report_Rows(const AnalysisWords& words, const LegendStatistics& statistics,
                                   bool oneObject);
std::string report_NoObjectsMessage(const AnalysisWords& words);

// True for the name of an object that executes when there is nothing to do: the part behind the last
// character of separator is "idle" in any case, alone or with something behind it that is no letter.
bool report_IsIdleName(std::string_view name, std::string_view separator);
// Those of some objects that bear such a name.
std::vector<uint32_t> report_IdleObjects(const AnalysisWords& words, const std::vector<uint32_t>& objects);
// What stands over the load of processors.
std::string report_LoadTitle(const AnalysisWords& words, bool idleLeftOut);

// The window of the report on chosen objects.
std::array<std::string, 5> report_ChosenColumnTitles(const AnalysisWords& words);
std::string report_ChosenTypeName(int kind);  // "Event", "Status", "Context Switch"
std::vector<ReportRow> report_ChosenRows(const AnalysisWords& words, const ChosenReport& report);
