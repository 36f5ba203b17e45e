#include "chronoweave/engine/range_figures.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "chronoweave/engine/report_tracking.h"

namespace {

constexpr uint32_t pieceEvents = 4096;   // of one step
constexpr uint32_t shortRange = 16384;   // events that need no estimate
constexpr uint32_t samples = 16;         // of a long range
constexpr uint32_t sampleEvents = 2048;  // at most, of one of them

// Run times, and the longest wait.
class FigureSums {
  public:
    using Record = SearchTracker::Record;

    FigureSums(const AnalysisSource& source, const std::vector<uint32_t>& objects,
               const std::vector<uint32_t>& idle)
        : load(source, objects, idle), ready_(analysis_ReadyStatus(*source.legend)) {}
    void entered(const Record& record) { load.entered(record); }
    void left(const Record& record, double until) {
        load.left(record, until);
        if (record.status != ready_ || load.IsIdle(record)) return;
        const double length = until - record.time;
        if (!longest || length > longest->length) longest = ReadyWait{record.object, record.time, length};
    }
    void TookOver(const Record&) {}

    LoadSums load;
    std::optional<ReadyWait> longest;

  private:
    std::optional<int32_t> ready_;
};

}  // namespace

std::optional<int32_t> analysis_ReadyStatus(const Legend& legend) {
    for (size_t row = 0; row < legend.statuses.size(); ++row)
        if (legend.statuses[row].code == mt_Ready && !legend.statuses[row].isContextSwitch)
            return static_cast<int32_t>(row);
    return std::nullopt;
}

// A walk over a range that may be left and taken up again.
struct RangeTally::Walk {
    Walk(const AnalysisSource& of, const std::vector<uint32_t>& idle, double low, double high, Passed passed)
        : source(of),
          from(low),
          to(high),
          objects(analysis_ObjectsAlive(source, from, to)),
          sums(source, objects, idle),
          walk(source, objects, from, to, sums, passed),
          counts(source.legend->events.size(), 0) {}
    // False when the range came to its end.
    bool Step(uint32_t events) {
        for (uint32_t i = 0; i < events; ++i) {
            if (!walk.next()) return false;
            if (const EventRecord* event = walk.event()) Count(event->type, event->subtype, 1);
        }
        return true;
    }
    void Count(uint16_t type, uint16_t subtype, uint64_t events) {
        seen += events;
        const int32_t row = source.legend->EventIndex(type, subtype);
        if (row >= 0) counts[static_cast<size_t>(row)] += events;
    }
    // Of a walk that is over, or was cut at a time. Called once.
    RangeFigures Figures(double end) {
        analysis_CountEvents(source, walk.ByLanes(), [this](uint32_t, uint32_t kind, uint64_t events) {
            Count(lane_TypeOf(kind), lane_SubtypeOf(kind), events);
        });
        RangeFigures figures;
        figures.from = from;
        figures.to = end;
        figures.events = seen;
        figures.eventCounts = counts;
        figures.processors = sums.load.Processors(objects, end);
        figures.longestWait = sums.longest;
        figures.damaged = walk.end().damaged;
        figures.lost = walk.end().lost;
        return figures;
    }

    AnalysisSource source;
    double from, to;
    std::vector<uint32_t> objects;
    FigureSums sums;
    TrackedWalk<FigureSums> walk;
    std::vector<uint64_t> counts;
    uint64_t seen = 0;
};

// The range in parts of as many blocks each, of which one block stands for the part: its events for as many
// as the part has, its times for the time that the part takes.
struct RangeTally::Sampling {
    uint32_t firstBlock = 0, endBlock = 0;  // of the store; what the range meets
    uint32_t next = 0;                      // part
    RangeFigures sums;                      // events stay 0
    std::vector<double> counts;
    std::map<uint32_t, double> busy;                          // by processor
    std::map<uint32_t, std::map<uint32_t, double>> executed;  // by processor and object

    void Add(const RangeFigures& sample, double eventFactor, double timeFactor) {
        for (size_t row = 0; row < counts.size(); ++row)
            counts[row] += static_cast<double>(sample.eventCounts[row]) * eventFactor;
        for (const ProcessorLoad& load : sample.processors) {
            busy[load.processor] += load.busy * timeFactor;
            for (const ObjectTime& one : load.objects)
                executed[load.processor][one.object] += one.time * timeFactor;
        }
        if (const auto& wait = sample.longestWait;
            wait && (!sums.longestWait || wait->length > sums.longestWait->length))
            sums.longestWait = wait;
        if (sample.damaged && !sums.damaged) sums.lost = sample.lost;
        sums.damaged = sums.damaged || sample.damaged;
    }
    RangeFigures Figures() {
        for (size_t row = 0; row < counts.size(); ++row) {
            sums.eventCounts[row] = static_cast<uint64_t>(std::llround(counts[row]));
            sums.events += sums.eventCounts[row];
        }
        for (const auto& [processor, time] : busy) {
            ProcessorLoad& load = sums.processors.emplace_back();
            load.processor = processor;
            load.busy = std::min(time, sums.Length());
            for (const auto& [object, run] : executed[processor])
                load.objects.push_back({object, std::min(run, sums.Length())});
            load_SortObjects(load.objects);
        }
        return std::move(sums);
    }
};

RangeTally::RangeTally(const AnalysisSource& source, std::vector<uint32_t> idle, double from, double to)
    : source_(source), idle_(std::move(idle)), from_(from), to_(to) {
    source_.progress = {};
    over_ = source_.store == nullptr || source_.legend == nullptr || source_.legend->empty();
    if (!over_) PlanSamples();
}

RangeTally::~RangeTally() = default;

// The blocks are found by halving; a range of few events has no samples.
void RangeTally::PlanSamples() {
    TraceStore& store = *source_.store;
    const uint32_t blocks = mt_GetBlockCount(store);
    const auto behind = [&](double time) {  // number of blocks that begin up to it
        const mt_Time tick = source_.clock.NearestTick(time);
        uint32_t low = 0, high = blocks;
        while (low < high) {
            const uint32_t middle = low + (high - low) / 2;
            if (mt_GetBlockTime(store, middle) <= tick)
                low = middle + 1;
            else
                high = middle;
        }
        return low;
    };
    auto plan = std::make_unique<Sampling>();
    plan->firstBlock = std::max<uint32_t>(behind(from_), 1) - 1;
    plan->endBlock = behind(to_);
    const uint64_t events =
        static_cast<uint64_t>(plan->endBlock - std::min(plan->endBlock, plan->firstBlock)) *
        mt_GetCheckpointInterval(store);
    if (events <= shortRange || plan->endBlock - plan->firstBlock < 2 * samples) return;
    plan->counts.assign(source_.legend->events.size(), 0.0);
    plan->sums.eventCounts.assign(source_.legend->events.size(), 0);
    plan->sums.from = from_;
    plan->sums.to = to_;
    sampling_ = std::move(plan);
}

void RangeTally::Sample() {
    Sampling& plan = *sampling_;
    const auto part = [&](uint32_t number) {
        return plan.firstBlock +
               static_cast<uint32_t>(static_cast<uint64_t>(plan.endBlock - plan.firstBlock) * number /
                                     samples);
    };
    const auto begins = [&](uint32_t block) {
        const double time =
            block >= plan.endBlock ? to_ : source_.clock.TimeOf(mt_GetBlockTime(*source_.store, block));
        return std::clamp(time, from_, to_);
    };
    const uint32_t first = part(plan.next), end = part(plan.next + 1), chosen = first + (end - first) / 2;
    ++plan.next;
    const double length = begins(end) - begins(first), low = begins(chosen), high = begins(chosen + 1);
    Walk walk(source_, idle_, low, high, Passed::None);
    if (!walk.walk.started()) return;
    const bool cut = walk.Step(sampleEvents);
    if (cut) walk.walk.cut();
    const RangeFigures seen = walk.Figures(cut ? walk.walk.time() : walk.walk.end().reached);
    const double events = static_cast<double>(end - first) * mt_GetCheckpointInterval(*source_.store);
    plan.Add(seen, seen.events > 0 ? events / static_cast<double>(seen.events) : 0,
             seen.Length() > 0 ? length / seen.Length() : 0);
}

bool RangeTally::Step() {
    if (over_) return false;
    if (sampling_) {
        Sample();
        if (sampling_->next < samples) return true;
        figures_ = sampling_->Figures();
        sampling_.reset();
        return true;
    }
    if (!walk_) {
        walk_ = std::make_unique<Walk>(source_, idle_, from_, to_, Passed::Over);
        if (walk_->walk.started()) return true;
    } else if (walk_->Step(pieceEvents)) {
        return true;
    }
    over_ = true;
    if (walk_->walk.started()) {
        figures_ = walk_->Figures(walk_->walk.end().reached);
        figures_->exact = true;
    }
    walk_.reset();
    return false;
}
