// What happened in a range, in figures: events by kind, how long each object and each processor ran, and the
// longest that an object waited in the ready status. They are those of the reports on the range.
//
// They are made in pieces of bounded work, so that a window stays alive: for a long range first an estimate
// from samples spread over it, whatever its length, then the exact figures. Times are those of source.h; the
// tick of the range's end is included.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "chronoweave/engine/processor_load.h"

struct ReadyWait {
    uint32_t object = 0;
    double from = 0, length = 0;  // within the range
};

struct RangeFigures {
    double from = 0, to = 0;  // to is where the walk ended when damage ends it
    bool exact = false;       // else estimated; longestWait is then the longest that was seen
    uint64_t events = 0;
    std::vector<uint64_t> eventCounts;  // by row of the legend's event table; 0 for categories
    std::vector<ProcessorLoad> processors;
    std::optional<ReadyWait>
        longestWait;       // of no idle one; none: nobody was ready, or there is no such status
    bool damaged = false;  // some of the range can't be read
    TimeGap lost;          // the first of it
    double Length() const { return to - from; }
};

// The row of the status of objects that could run; none where the legend has none.
std::optional<int32_t> analysis_ReadyStatus(const Legend& legend);

class RangeTally {
  public:
    // The store and the legend outlive it. idle: objects that count as idle. from <= to.
    RangeTally(const AnalysisSource& source, std::vector<uint32_t> idle, double from, double to);
    ~RangeTally();
    RangeTally(const RangeTally&) = delete;
    RangeTally& operator=(const RangeTally&) = delete;

    // Does the next piece, about a millisecond's. False when all is done, and then at every later call.
    bool Step();
    // The newest figures; null until there are any, and where the store gives nothing.
    const RangeFigures* Figures() const { return figures_ ? &*figures_ : nullptr; }

  private:
    struct Walk;
    struct Sampling;

    void PlanSamples();
    void Sample();
    AnalysisSource source_;
    std::vector<uint32_t> idle_;
    double from_, to_;
    std::unique_ptr<Sampling> sampling_;  // while there is one
    std::unique_ptr<Walk> walk_;
    std::optional<RangeFigures> figures_;
    bool over_ = false;
};
