// Statistics reports: counts and times per legend entry or per object over a range. Each is one pass over the
// range's events, and the load of processors another. Times are those of source.h; the tick of the
// range's end is included.
#pragma once

#include <cstdint>
#include <vector>

#include "chronoweave/engine/processor_load.h"
#include "chronoweave/engine/search.h"

struct LegendStatistics {
    std::vector<uint32_t>
        eventCounts;  // by row of the event table; of a category, the sum of the events behind it
    std::vector<uint32_t> statusCounts;  // by row of the status table
    std::vector<double> statusTimes;     // likewise, in the time base
    double rangeLength = 0;
    int32_t totalEvents = 0;        // without the categories
    uint32_t totalStatusCount = 0;  // of the statuses that are no context switch
    double totalStatusTime = 0;     // likewise
    double rangeFrom = 0,
           rangeTo = 0;   // rangeTo is where the walk ended when it was stopped or damage ends it
    uint32_t object = 0;  // of a one-object report
    bool stopped = false, damaged = false;  // damaged: some of the range can't be read
    TimeGap lost;                           // the first of it
};

enum class ReportOutcome {
    Done,
    NoObjects,  // no object is alive in the range
    Failed      // the store gave nothing
};

// All objects alive in the range, summed.
ReportOutcome report_AllObjects(AnalysisSource& source, double from, double to, LegendStatistics& statistics);
// One object alone.
ReportOutcome report_OneObject(AnalysisSource& source, uint32_t object, double from, double to,
                               LegendStatistics& statistics);

// One row of the report on chosen objects.
struct ObjectFigures {
    uint32_t object = 0;
    int32_t count = 0;
    double time = 0;  // stays 0 for events and context switches
};

struct ReportOrder {
    bool increasing = false;
    bool timeFirst = false;  // of no effect for events
};

// Owns its rows; pointers are into figures, so it is not copied.
struct ChosenReport {
    ChosenReport() = default;
    ChosenReport(const ChosenReport&) = delete;
    ChosenReport& operator=(const ChosenReport&) = delete;
    ChosenReport(ChosenReport&&) = default;
    ChosenReport& operator=(ChosenReport&&) = default;

    SearchRequest request;  // kind event, status or switch; objects sorted
    ReportOrder order;
    std::vector<ObjectFigures> figures;  // by id
    std::vector<const ObjectFigures*> sorted;
    int64_t totalCount = 0;
    double rangeFrom = 0, rangeTo = 0;
    bool stopped = false, damaged = false;
    TimeGap lost;
    double RangeLength() const { return rangeTo - rangeFrom; }
};
// A range beyond the trace is cut to it. For events, a negative target counts all of an object's events; for
// statuses, those of any status.
ReportOutcome report_ChosenObjects(AnalysisSource& source, const SearchRequest& request, ReportOrder order,
                                   ChosenReport& report);

struct LoadReport {
    std::vector<ProcessorLoad> processors;  // by number; each that an object alive in the range belongs to
    double rangeFrom = 0, rangeTo = 0;
    bool stopped = false, damaged = false;
    TimeGap lost;
    double RangeLength() const { return rangeTo - rangeFrom; }
};
ReportOutcome report_ProcessorLoad(AnalysisSource& source, const std::vector<uint32_t>& idle, double from,
                                   double to, LoadReport& report);
