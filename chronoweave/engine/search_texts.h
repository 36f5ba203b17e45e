// The texts of searches, as pure functions: messages, titles, the statistics line, column titles and cells.
// Nothing is formatted by user text. Names are bytes as in the trace.
#pragma once

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "chronoweave/engine/search.h"
#include "chronoweave/engine/time_unit.h"

// The names of objects as they stand at the end of a store; an object that lost or never had a name, or whose
// name shows nothing, has none.
class ObjectNames {
  public:
    ObjectNames() = default;
    ObjectNames(TraceStore& store, char separator);
    // Null when it has none.
    const std::string* find(uint32_t object) const;
    const std::unordered_map<uint32_t, std::string>& all() const { return names_; }

  private:
    std::unordered_map<uint32_t, std::string> names_;
};

// What texts need besides the figures. Borrows the legend and the names.
struct AnalysisWords {
    const Legend* legend = nullptr;
    const ObjectNames* names = nullptr;
    std::string term = "Task", lowerTerm = "task";  // the object term
    TimeMode timeMode = Time_Second;                // unit of times shown
    std::string unit = "Second";                    // its word
    bool inTicks = false;                           // times are shown in ticks, whatever the unit
    TimeBase clock;
};
AnalysisWords analysis_WordsOfLegend(const Legend& legend, const ObjectNames& names, const TimeBase& clock);

// "0x%x", with " (NAME)" behind it when there is a name. In tick mode only the name, or the term and the id.
std::string analysis_ObjectText(const AnalysisWords& words, uint32_t object);
// A time of the time base in the unit shown.
double analysis_ShownTime(const AnalysisWords& words, double time);
// The same of a time that the trace holds, or the difference of two: what its double lost comes back.
double analysis_ShownOnTick(const AnalysisWords& words, double time);
// Such a time in digits: no more decimals than a tick has, and no more than most.
std::string analysis_TimeText(const AnalysisWords& words, double time, int most);
// The name of an event's or status's row; "any event" and "any status" for a negative one.
std::string analysis_EventName(const Legend& legend, int32_t row);
std::string analysis_StatusName(const Legend& legend, int32_t row);

// What was searched, as results and messages name it: 'begin*end' for a pattern.
std::string search_NotFoundMessage(const Legend& legend, const SearchRequest& request);
// Empty for a pattern.
std::string search_FoundMessage(const Legend& legend, const SearchResult& result);
// canvasTitle counts unless it is empty or starts with the program's own name; the trace's file name serves
// then.
std::string search_ResultTitle(const Legend& legend, const SearchRequest& request,
                               const std::string& canvasTitle, const std::string& traceFile);
// When what was searched is invisible on the canvas: the message that says so; else empty.
std::string search_InvisibleMessage(const Legend& legend, const SearchRequest& request);

// Of the intervals timeA to timeB: max from 0, min from 1e20, ave 0 without rows.
struct IntervalFigures {
    double max = 0, min = 1e20, ave = 0;
};
IntervalFigures search_IntervalFigures(const SearchResult& result);
std::string search_StatisticsLine(const AnalysisWords& words, const SearchResult& result);

// A column of the result list. It sorts by value for identifiers and numbers.
enum class SearchColumnKind { ObjectId, FromObject, ToObject, Time, FromTime, ToTime, Interval, ObjectName };
struct SearchColumn {
    SearchColumnKind kind;
    std::string title;
};
std::vector<SearchColumn> search_Columns(const AnalysisWords& words, const SearchRequest& request);
std::string search_CellText(const AnalysisWords& words, const SearchRow& row, SearchColumnKind column);
