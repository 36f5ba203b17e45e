#include "chronoweave/engine/lane_figures.h"

#include <algorithm>
#include <span>
#include <utility>

#include "chronoweave/engine/lanes/lane_table.h"

namespace {

// Who executes has come to be in another status, or ceased to, by an event.
struct Turn {
    uint32_t at = 0, place = 0;
    int32_t row = -1;  // -1: it executes no more
};

// Who takes over when, by the rules of ObjectTracker and SearchTracking.
class TurnTracker {
  public:
    TurnTracker(const AnalysisSource& source, const std::vector<uint32_t>& objects, LaneFigures& figures)
        : figures_(figures), rows_(objects.size(), -1) {
        uint32_t processors = 0;
        for (const uint32_t object : objects) {
            processorOf_.push_back(source.ProcessorOf(object));
            processors = std::max(processors, processorOf_.back() + 1);
        }
        running_.assign(processors, nobody);
        counts_.assign(processors, 0);
    }
    // All objects are looked at, these among them.
    void All(std::span<const Turn> turns) { Pass(turns); }
    // The turns of one event. Those since the last one are taken first, as long as someone may take over.
    void Event(uint32_t sequence, std::span<const Turn> turns) {
        Reach(sequence);
        Pass(turns);
        next_ = sequence + 1;
    }
    void Reach(uint32_t sequence) {
        for (; !settled_ && next_ < sequence; ++next_) Pass({});
    }
    void Start(uint32_t sequence) { next_ = sequence; }

  private:
    static constexpr uint32_t nobody = UINT32_MAX;

    // Each looks at itself alone, in order, so that all turns may be taken ahead. Where no two execute on one
    // processor, ahead of the turns and behind them, only who turned can take over.
    void Pass(std::span<const Turn> turns) {
        const bool wasCrowded = crowded_ > 0;
        for (const Turn& turn : turns) Take(turn);
        if (executing_.empty()) {
            if (!turns.empty()) std::fill(running_.begin(), running_.end(), nobody);
            settled_ = true;
        } else if (!wasCrowded && crowded_ == 0) {
            for (const Turn& turn : turns)
                if (turn.row >= 0) TakeOver(turn.place);
            settled_ = true;
        } else {
            for (const uint32_t place : executing_) TakeOver(place);
            settled_ = std::all_of(executing_.begin(), executing_.end(),
                                   [this](uint32_t place) { return running_[processorOf_[place]] == place; });
        }
    }
    void Take(const Turn& turn) {
        const bool did = rows_[turn.place] >= 0, does = turn.row >= 0;
        rows_[turn.place] = turn.row;
        if (did == does) return;
        const auto at = std::find_if(executing_.begin(), executing_.end(),
                                     [&turn](uint32_t place) { return place >= turn.place; });
        uint32_t& count = counts_[processorOf_[turn.place]];
        if (does) {
            executing_.insert(at, turn.place);
            if (++count == 2) ++crowded_;
        } else {
            executing_.erase(at);
            if (--count == 1) --crowded_;
        }
    }
    void TakeOver(uint32_t place) {
        if (std::exchange(running_[processorOf_[place]], place) == place) return;
        ++figures_.tookOver[place];
        ++figures_.tookOverAfter[static_cast<size_t>(int64_t{lastRow_} + 1)];
        lastRow_ = rows_[place];
    }

    LaneFigures& figures_;
    std::vector<uint32_t> processorOf_, running_, executing_;
    std::vector<int32_t> rows_;     // by place, of who executes; -1 for who does not
    std::vector<uint32_t> counts_;  // of who executes, by processor
    uint32_t crowded_ = 0;          // processors where more than one does
    int32_t lastRow_ = -1;
    uint32_t next_ = 1;  // the event behind the last one looked at
    bool settled_ = true;
};

class LanePass {
  public:
    LanePass(const AnalysisSource& source, const std::vector<uint32_t>& objects, const LaneAsk& ask,
             LaneFigures& figures)
        : source_(source),
          index_(*source.lanes),
          legend_(*source.legend),
          objects_(objects),
          figures_(figures),
          turns_(source, objects, figures),
          ask_(ask),
          of_(objects.size()) {
        for (const LegendStatus& status : legend_.statuses) executes_.push_back(status.isExecution ? 1 : 0);
    }

    LaneAnswer Run(mt_Time from, uint32_t first, uint32_t end, const Progress& progress, double length) {
        if (!Start(from, first)) return LaneAnswer::None;
        for (uint32_t at = first; at < end;) {
            const auto block = static_cast<uint32_t>(index_.BlockOf(at));
            if (!TakeBlock(block, first, end)) return LaneAnswer::None;
            at = index_.head(block).end();
            const double passed =
                source_.clock.TimeOf(index_.head(block).lastTick) - source_.clock.TimeOf(from);
            if (progress && !progress(std::min(passed, length), length)) return LaneAnswer::Stopped;
        }
        turns_.Reach(end);
        turns_.All({});
        return Close();
    }

  private:
    struct One {
        int32_t status = -1, now = -1;  // held, and in the state
        mt_Time since = 0;              // of the one held
    };
    bool Executes(int32_t row) const { return row >= 0 && executes_[static_cast<size_t>(row)] != 0; }
    bool IsLoad(uint32_t place) const { return ask_.turns == LaneAsk::Turns::Load && !(*ask_.idle)[place]; }
    LaneFigures::Load& LoadOf(uint32_t place) {
        const uint32_t processor = source_.ProcessorOf(objects_[place]);
        if (processor >= figures_.loads.size()) figures_.loads.resize(processor + 1);
        return figures_.loads[processor];
    }
    void Begin(uint32_t place, mt_Time tick) {
        LaneFigures::Load& load = LoadOf(place);
        if (load.executing++ == 0) load.since = tick;
    }
    void End(uint32_t place, mt_Time tick) {
        LaneFigures::Load& load = LoadOf(place);
        if (--load.executing == 0) load.ticks += static_cast<int64_t>(tick - load.since);
    }
    int32_t RowOf(uint32_t state) const { return state < lane_NotValid ? legend_.StatusIndex(state) : -1; }
    size_t CellOf(uint32_t place, int32_t row) const {
        return place * figures_.rows + static_cast<size_t>(row);
    }

    // Where all are just ahead of the range.
    bool Start(mt_Time from, uint32_t first) {
        const LaneTable table(index_);
        std::vector<Turn> turns;
        for (uint32_t place = 0; place < objects_.size(); ++place) {
            const uint32_t lane = table.find(objects_[place]);
            if (lane == LaneTable::none) continue;
            LaneReader reader(table, lane);
            const int32_t row = RowOf(reader.StateAhead(reader.FirstStatusAt(first)));
            if (row < 0) continue;
            of_[place] = {row, row, from};
            ++figures_.entered[CellOf(place, row)];
            if (!Executes(row)) continue;
            turns.push_back({0, place, row});
            if (IsLoad(place)) Begin(place, from);
        }
        turns_.All(turns);
        turns_.Start(first);
        return index_.damage().ok();
    }

    bool TakeBlock(uint32_t block, uint32_t first, uint32_t end) {
        if (!index_.ReadSummary(block, summary_) || !index_.ReadStatusLists(block, summary_, ticks_, lists_))
            return false;
        const LaneHead& head = index_.head(block);
        const uint32_t from = std::max(first, head.first) - head.first,
                       to = std::min(end, head.end()) - head.first;
        rows_.clear();
        for (const uint32_t state : summary_.states) rows_.push_back(RowOf(state));
        blockTurns_.clear();
        size_t begin = 0;
        for (size_t object = 0; object < summary_.objects.size(); ++object) {
            const size_t behind = begin + summary_.statuses[object];
            const auto known = std::lower_bound(objects_.begin(), objects_.end(), summary_.objects[object]);
            if (behind > begin && known != objects_.end() && *known == summary_.objects[object])
                TakeObject(static_cast<uint32_t>(known - objects_.begin()), begin, behind, from, to,
                           head.firstTick);
            begin = behind;
        }
        if (!blockTurns_.empty()) TakeTurns(head);
        return true;
    }

    // An object's statuses in a block, by their places in the lists; those of events from one to ahead of
    // another.
    void TakeObject(uint32_t place, size_t begin, size_t behind, uint32_t from, uint32_t to,
                    mt_Time firstTick) {
        One one = of_[place];
        int64_t* const ticks = figures_.ticks.data() + CellOf(place, 0);
        uint32_t* const entered = figures_.entered.data() + CellOf(place, 0);
        for (size_t i = begin; i < behind; ++i) {
            const uint32_t at = lists_.statusAt[i];
            if (at < from || at >= to) continue;
            const int32_t before = std::exchange(one.now, rows_[lists_.statusState[i]]);
            if (ask_.turns == LaneAsk::Turns::Switches && before != one.now &&
                (Executes(one.now) || Executes(before)))
                blockTurns_.push_back({at, place, Executes(one.now) ? one.now : -1});
            if (one.now < 0 || one.now == one.status) continue;
            if (Executes(one.now) != Executes(one.status) && IsLoad(place))
                blockTurns_.push_back({at, place, Executes(one.now) ? one.now : -1});
            const mt_Time tick = firstTick + ticks_[at];
            if (one.status >= 0) ticks[one.status] += static_cast<int64_t>(tick - one.since);
            ++entered[one.now];
            one.status = one.now;
            one.since = tick;
        }
        of_[place] = one;
    }

    // Puts the turns in the order of the events, by counting, and takes those of each event together.
    void TakeTurns(const LaneHead& head) {
        next_.assign(size_t{head.count} + 1, 0);
        for (const Turn& turn : blockTurns_) ++next_[turn.at + 1];
        for (size_t at = 1; at < next_.size(); ++at) next_[at] += next_[at - 1];
        ordered_.resize(blockTurns_.size());
        for (const Turn& turn : blockTurns_) ordered_[next_[turn.at]++] = turn;
        if (ask_.turns == LaneAsk::Turns::Load) return TakeLoads(head);
        for (size_t at = 0, behind = 0; at < ordered_.size(); at = behind) {
            for (behind = at + 1; behind < ordered_.size() && ordered_[behind].at == ordered_[at].at;)
                ++behind;
            turns_.Event(head.first + ordered_[at].at, std::span(ordered_).subspan(at, behind - at));
        }
    }

    void TakeLoads(const LaneHead& head) {
        for (const Turn& turn : ordered_) {
            const mt_Time tick = head.firstTick + ticks_[turn.at];
            if (turn.row >= 0)
                Begin(turn.place, tick);
            else
                End(turn.place, tick);
        }
    }

    // Who has no status at the end is not looked at any more: its last one goes uncounted.
    LaneAnswer Close() {
        const mt_Time end = source_.clock.NearestTick(figures_.closing);
        for (uint32_t place = 0; place < of_.size(); ++place) {
            const One& one = of_[place];
            if (one.now < 0) continue;
            figures_.ticks[CellOf(place, one.status)] += static_cast<int64_t>(end - one.since);
            figures_.open[place] = one.status;
            if (Executes(one.status) && IsLoad(place)) ++LoadOf(place).closed;
        }
        return LaneAnswer::Given;
    }

    const AnalysisSource& source_;
    LaneIndex& index_;
    const Legend& legend_;
    const std::vector<uint32_t>& objects_;
    LaneFigures& figures_;
    TurnTracker turns_;
    const LaneAsk ask_;
    std::vector<uint8_t> executes_;  // by row of the status
    std::vector<One> of_;            // by place
    // Of a block.
    LaneSummary summary_;
    LaneLists lists_;
    std::vector<uint64_t> ticks_;
    std::vector<int32_t> rows_;  // by number of the state
    std::vector<Turn> blockTurns_, ordered_;
    std::vector<uint32_t> next_;
};

}  // namespace

LaneAnswer analysis_LaneFigures(const AnalysisSource& source, const std::vector<uint32_t>& objects,
                                double from, double to, const LaneAsk& ask, LaneFigures& figures) {
    if (!source.lanes || mt_IsDamaged(*source.store)) return LaneAnswer::None;
    LaneIndex& index = *source.lanes;
    const mt_Time low = source.clock.NearestTick(from);
    const auto first = index.FirstFrom(low), end = index.FirstFrom(source.clock.NearestTick(to) + 1);
    const bool whole = index.EndEvent() > mt_GetEventCount(*source.store);
    if (!first || !end || *first >= index.EndEvent() || (*end == index.EndEvent() && !whole))
        return LaneAnswer::None;
    figures = {};
    figures.rows = source.legend->statuses.size();
    figures.entered.assign(objects.size() * figures.rows, 0);
    figures.ticks.assign(objects.size() * figures.rows, 0);
    figures.open.assign(objects.size(), -1);
    figures.tookOver.assign(objects.size(), 0);
    figures.tookOverAfter.assign(figures.rows + 1, 0);
    figures.span = {*first, std::max(*first, *end)};
    double last = source.clock.OnTick(from);
    if (*first < *end) {
        const auto tick = index.TickOf(*end - 1);
        if (!tick) return LaneAnswer::None;
        last = source.clock.TimeOf(*tick);
    }
    figures.closing = std::max(to, last);
    LanePass pass(source, objects, ask, figures);
    return pass.Run(low, *first, *end, source.progress, to - from);
}
