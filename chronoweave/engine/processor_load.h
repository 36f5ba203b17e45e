// The load of processors: the share of a range in which some object executes there, objects that count as
// idle left out, and how long each object does. Times are those of source.h.
#pragma once

#include <cstdint>
#include <vector>

#include "chronoweave/engine/search_tracker.h"

struct ObjectTime {
    uint32_t object = 0;
    double time = 0;
};
struct ProcessorLoad {
    uint32_t processor = 0;
    double busy = 0;                  // in the time base; 0 to the range's length
    std::vector<ObjectTime> objects;  // those that executed there, longest first, idle ones included
};

// Sums it up, as a sink of report_tracking.h.
class LoadSums {
  public:
    using Record = SearchTracker::Record;

    // The source outlives it. Objects are those tracked, ascending; idle any.
    LoadSums(const AnalysisSource& source, const std::vector<uint32_t>& objects,
             const std::vector<uint32_t>& idle);
    void entered(const Record& record) {
        if (!executes(record) || idle_[record.place]) return;
        Processor& processor = processors_[record.processor];
        if (processor.executing++ == 0) processor.since = record.time;
    }
    void left(const Record& record, double until) {
        if (!executes(record)) return;
        const uint32_t at = record.place;
        times_[at] += until - record.time;
        if (idle_[at]) return;
        Processor& processor = processors_[record.processor];
        if (--processor.executing == 0) processor.busy += until - processor.since;
    }
    void TookOver(const Record&) {}
    bool IsIdle(const Record& record) const { return idle_[record.place]; }
    // By number; each processor that one of the objects, which are those of the beginning, belongs to. end:
    // where the walk ended.
    std::vector<ProcessorLoad> Processors(const std::vector<uint32_t>& objects, double end);

  private:
    struct Processor {
        bool there = false;
        uint32_t executing = 0;  // objects, idle ones left out
        double since = 0, busy = 0;
    };
    bool executes(const Record& record) const {
        return source_.legend->statuses[static_cast<size_t>(record.status)].isExecution;
    }
    const AnalysisSource& source_;
    std::vector<double> times_;
    std::vector<bool> idle_;
    std::vector<Processor> processors_;
};

// Longest first; those of the same time in their order.
void load_SortObjects(std::vector<ObjectTime>& objects);
