// What searches and reports walk: a store with its legend and time base, and who runs on each processor.
// Borrows the store and the legend; one thread.
//
// Times are doubles in the time base of the trace: seconds from the first event (ticks where the canvas
// counts ticks).
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "chronoweave/engine/lanes/lane_walk.h"
#include "chronoweave/engine/running_objects.h"
#include "chronoweave/engine/time_base.h"
#include "chronoweave/rtos/legend.h"
#include "libtrv/trace_store.h"
#include "shared/libcxxutil/progress.h"

struct AnalysisSource {
    TraceStore* store = nullptr;
    // The store's lane index, by which much can be answered; null for none. Work in slices keeps the one that
    // it began with.
    std::shared_ptr<LaneIndex> lanes;
    const Legend* legend = nullptr;
    int osKind = Os_Other;
    TimeBase clock;
    double totalLength = 0;  // of the trace: up to one tick past the last event
    Progress progress;       // of the walks; may be empty
    RunningObjects running;  // consulted and updated by walks that follow context switches

    uint32_t ProcessorOf(uint32_t object) const { return RunningObjects::ProcessorOf(osKind, object); }
};

// Of a store on its own; both must outlive the source.
AnalysisSource analysis_SourceOfStore(TraceStore& store, const Legend& legend);

// Ids of the objects that live in a range of times, ascending; the end's tick is included.
std::vector<uint32_t> analysis_ObjectsAlive(const AnalysisSource& source, double from, double to);

// A stretch of a range whose events can't be read.
struct TimeGap {
    double from = 0, to = 0;
};

// How a walk over a range ended.
struct WalkEnd {
    bool started = false;  // the store has blocks
    bool stopped = false;  // progress asked for it
    bool damaged = false;  // some of the range can't be read, the first of it from lost.from to lost.to
    TimeGap lost;
    // Time of the last event seen when it was stopped, or when nothing behind it can be read, else the
    // range's end.
    double reached = 0;
};

// Events that follow each other, by their sequence numbers; end is not included.
struct EventSpan {
    uint32_t first = 1, end = 1;
};
// How many events of each kind each object has among them, in portions, to be summed up.
void analysis_CountEvents(const AnalysisSource& source, EventSpan span, const LaneIndex::Visit& visit);

// The events from one time to another, the end's tick included, one after the other; nothing of them is kept.
class RangeWalk {
  public:
    using Stop = LaneWalk::Stop;
    // state becomes the state just before the range; it may be null. With wants, events that are not wanted
    // may be passed over, and of the others and of the state no more may be told than a lane index knows
    // (lane_walk.h); without, all is told.
    RangeWalk(const AnalysisSource& source, double from, double to, StateTable* state,
              std::optional<LaneWants> wants = {});
    bool started() const { return end_.started; }
    // False behind the last event, and when progress asks to stop. With Every no event is passed over.
    bool next(EventRecord& event, double& time, Stop stop = Stop::Wanted);
    // As long as it gives true, the next event by the lane index, which is told by that index alone; behind
    // the last one it gives false, and next goes on. The state is brought forward when that begins, and by
    // Settle.
    bool NextOfLanes(double& time, Stop stop) {
        if (over_ || !byLanes_) return false;
        if (!laneWalk_.Advance(stop)) return EndLanes();
        const uint32_t sequence = laneWalk_.sequence();
        time = last_ = source_.clock.TimeOf(laneWalk_.tick());
        spanned_.end = sequence + 1;
        return !IsDue(sequence) || GoesOnAt(sequence, time);
    }
    LaneWalk& lanes() { return laneWalk_; }
    void Settle();
    // The event last given is whole, as the store has it, and none will be passed over any more.
    bool FromStore() const { return !byLanes_; }
    // The events that were given or passed over by a lane index, so far.
    EventSpan ByLanes() const { return spanned_; }
    // The stretch that can't be read just ahead of the event last given, or behind the last one; ahead of the
    // first event, between the state and the range's start. Null when there is none. What an object's status
    // is within it is not known; behind it the state is that of its end.
    const TimeGap* gap() const { return gap_ ? &*gap_ : nullptr; }
    // How it ended, once next was false; ahead of that, as if it were whole.
    const WalkEnd& end() const { return end_; }
    // Where what is still open at the end of the walk is closed: there, but not ahead of an event that was
    // seen, as the range's end is rounded to a tick.
    double closing() const { return end_.reached > last_ ? end_.reached : last_; }

  private:
    bool finish();
    void TakeGap();
    bool StartByLanes(LaneWants wants, StateTable* state);
    bool LeaveLanes();
    bool EndLanes();
    bool GoesOnAt(uint32_t sequence, double time);
    // Whether progress is to be asked, so many events having been seen.
    bool IsDue(uint32_t seen) {
        constexpr uint32_t progressMask = 0x3FFF;
        return (std::exchange(seen_, seen) ^ seen) > progressMask;
    }
    bool NextOfStore(EventRecord& event);
    bool MayGoOn(double time);
    const AnalysisSource& source_;
    EventWalk walk_;
    StateTable* state_;
    double from_, to_, last_;
    uint32_t seen_ = 0;
    bool over_ = false;
    mt_Time endTick_ = 0;  // the first one behind the range

    // The part of the range that is read by the lane index.
    LaneWalk laneWalk_;
    bool byLanes_ = false;
    uint32_t lanesEnd_ = 1;  // the event behind that part
    bool goesOn_ = false;    // events behind it may be in the range
    EventSpan spanned_;
    std::optional<TimeGap> gap_;
    WalkEnd end_;
};
