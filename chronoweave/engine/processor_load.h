// The load of processors: the share of a range in which some object executes there, objects that count as
// idle left out, and how long each object does. Times are those of source.h.
#pragma once

#include <cstdint>
#include <vector>

#include "chronoweave/engine/lane_figures.h"
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
        times_[record.place].add(source_.clock, record.time, until);
        if (idle_[record.place]) return;
        Processor& processor = processors_[record.processor];
        if (--processor.executing == 0) processor.busy.add(source_.clock, processor.since, until);
    }
    // What the lane index has of a whole range, in place of all that is told.
    LaneAsk ask() const { return {LaneAsk::Turns::Load, &idle_}; }
    void take(const LaneFigures& figures);
    void TookOver(const Record&) {}
    bool IsIdle(const Record& record) const { return idle_[record.place]; }
    // By number; each processor that one of the objects, which are those of the beginning, belongs to. end:
    // where the walk ended.
    std::vector<ProcessorLoad> Processors(const std::vector<uint32_t>& objects, double end);

  private:
    // In ticks, so that it does not matter in which order times are added; what an end lies beside its tick
    // is all that is no whole tick.
    struct Sum {
        int64_t ticks = 0;
        double rest = 0;
        void add(const TimeBase& clock, double from, double until) {
            ticks += static_cast<int64_t>(clock.TicksIn(clock.OnTick(until) - from));
            rest += until - clock.OnTick(until);
        }
        double time(const TimeBase& clock) const { return clock.LengthOf(static_cast<double>(ticks)) + rest; }
    };
    struct Processor {
        bool there = false;
        uint32_t executing = 0;  // objects, idle ones left out
        double since = 0;
        Sum busy;
    };
    bool executes(const Record& record) const {
        return source_.legend->statuses[static_cast<size_t>(record.status)].isExecution;
    }
    const AnalysisSource& source_;
    std::vector<Sum> times_;
    std::vector<bool> idle_;
    std::vector<Processor> processors_;
};

// Longest first; those of the same time in their order.
void load_SortObjects(std::vector<ObjectTime>& objects);
