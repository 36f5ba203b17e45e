// The figures of reports by the lane index alone: of each object how often it came into each status, how long
// it was in it, and how often it took over its processor. They are those that ReportTracking tells a sink;
// but only what makes one object take over from another is looked at in the order of the events, and all else
// object by object.
#pragma once

#include <cstdint>
#include <vector>

#include "chronoweave/engine/source.h"

struct LaneFigures {
    // By place of the object, then by row of the status table: at place * rows + row.
    size_t rows = 0;
    std::vector<uint32_t> entered;
    std::vector<int64_t> ticks;
    std::vector<int32_t> open;       // by place, the row in which the range's end found it; -1 for none
    std::vector<uint32_t> tookOver;  // by place
    // How often someone took over when the one who had done so before, on any processor, was in a row then:
    // at row + 1; at 0 for the first.
    std::vector<uint32_t> tookOverAfter;
    // Of the objects that are no idle ones, on a processor: for how long some of them was held to execute,
    // but for what is not over where the range's end finds it: how many are then, since when some of them
    // is, and how many of them the end closes.
    struct Load {
        int64_t ticks = 0;
        uint32_t executing = 0, closed = 0;
        mt_Time since = 0;
    };
    std::vector<Load> loads;  // by number of the processor
    EventSpan span;           // of the range
    double closing = 0;       // where what was open is closed; ticks are up to the one nearest to it
};

enum class LaneAnswer {
    Given,
    None,    // the index can't tell, as it does not cover the range, or is damaged
    Stopped  // progress asked for it; the figures are of no use
};
// What is asked beside the statuses.
struct LaneAsk {
    enum class Turns { PassedOver, Switches, Load } turns = Turns::PassedOver;
    const std::vector<bool>* idle = nullptr;  // of a load, by place
};
// Objects ascending; from <= to.
LaneAnswer analysis_LaneFigures(const AnalysisSource& source, const std::vector<uint32_t>& objects,
                                double from, double to, const LaneAsk& ask, LaneFigures& figures);
