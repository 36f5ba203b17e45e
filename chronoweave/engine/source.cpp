#include "chronoweave/engine/source.h"

#include <algorithm>
#include <utility>

#include "chronoweave/engine/lanes/lane_table.h"

AnalysisSource analysis_SourceOfStore(TraceStore& store, const Legend& legend) {
    AnalysisSource source;
    source.store = &store;
    source.legend = &legend;
    const char* osName = mt_GetOsName(&store);
    source.osKind = legend_OsKind(osName ? osName : "");
    source.clock.ticksPerSecond = static_cast<double>(std::max<uint64_t>(1, mt_GetTicksPerSecond(store)));
    const mt_Range range = mt_GetTimeRange(store);
    source.clock.baseTick = range.first;
    source.totalLength = source.clock.TimeOf(range.end);
    return source;
}

namespace {

// By the lane index; nothing where it can't say.
std::optional<std::vector<uint32_t>> alive_by_lanes(const AnalysisSource& source, mt_Time from, mt_Time end) {
    if (!source.lanes || mt_IsDamaged(*source.store)) return std::nullopt;
    const LaneTable table(*source.lanes);
    const uint32_t first = table.FirstFrom(from), behind = table.FirstFrom(end);
    if (first >= table.EndEvent() ||
        (behind == table.EndEvent() && behind <= mt_GetEventCount(*source.store)))
        return std::nullopt;
    std::vector<uint32_t> objects;
    for (const uint32_t lane : table.ById()) {
        LaneReader reader(table, lane);
        const uint32_t number = reader.FirstStatusAt(first);
        if (reader.StateAhead(number) != lane_Absent || reader.FirstStatusAt(behind) > number)
            objects.push_back(reader.object());
    }
    if (!table.damage().ok()) return std::nullopt;
    return objects;
}

}  // namespace

std::vector<uint32_t> analysis_ObjectsAlive(const AnalysisSource& source, double from, double to) {
    if (auto objects =
            alive_by_lanes(source, source.clock.NearestTick(from), source.clock.NearestTick(to) + 1))
        return *std::move(objects);
    return mt_GetObjectIdsUsedInTimeRange(*source.store, mt_ObjectTask, source.clock.NearestTick(from),
                                          source.clock.NearestTick(to) + 1);
}

void analysis_CountEvents(const AnalysisSource& source, EventSpan span, const LaneIndex::Visit& visit) {
    if (span.first >= span.end) return;
    struct Portion {
        uint32_t object, kind;
        uint64_t count;
    };
    std::vector<Portion> portions;  // kept back until it is sure that there are all
    const auto keep = [&portions](uint32_t object, uint32_t kind, uint64_t count) {
        portions.push_back({object, kind, count});
    };
    if (source.lanes && span.end <= source.lanes->EndEvent() &&
        source.lanes->Count(span.first, span.end, keep)) {
        for (const Portion& portion : portions) visit(portion.object, portion.kind, portion.count);
        return;
    }
    EventWalk walk;
    EventRecord event;
    if (!mt_StartWalkAtEvent(*source.store, span.first, span.end - span.first, nullptr, walk)) return;
    while (mt_NextEvent(walk, event)) {
        uint16_t type = 0;
        uint32_t object = 0;
        if (event.sequence < span.end && mt_GetEventObject(*source.store, event, type, object))
            visit(object, lane_Kind(event.type, event.subtype), 1);
    }
}

RangeWalk::RangeWalk(const AnalysisSource& source, double from, double to, StateTable* state,
                     std::optional<LaneWants> wants)
    : source_(source), state_(state), from_(from), to_(to), last_(source.clock.OnTick(from)) {
    end_.reached = to;
    endTick_ = source.clock.NearestTick(to) + 1;
    if (!source.store || (wants && StartByLanes(*std::move(wants), state))) return;
    end_.started =
        mt_StartWalkInTimeRange(*source.store, source.clock.NearestTick(from), endTick_, state, walk_);
    TakeGap();
}

bool RangeWalk::StartByLanes(LaneWants wants, StateTable* state) {
    LaneIndex* const lanes = source_.lanes.get();
    if (!lanes || mt_IsDamaged(*source_.store)) return false;
    const auto first = lanes->FirstFrom(source_.clock.NearestTick(from_));
    const auto end = lanes->FirstFrom(endTick_);
    if (!first || !end || *first >= lanes->EndEvent()) return false;
    lanesEnd_ = std::max(*first, *end);
    laneWalk_ =
        LaneWalk(*lanes, mt_IsBigEndianTarget(*source_.store), *first, lanesEnd_, std::move(wants), state);
    if (!lanes->damage().ok()) return false;
    spanned_ = {*first, *first};
    goesOn_ = *end == lanes->EndEvent();
    return byLanes_ = end_.started = true;
}

void RangeWalk::TakeGap() {
    gap_.reset();
    const mt_Gap* gap = walk_.gap();
    if (!gap) return;
    gap_ = TimeGap{std::max(source_.clock.TimeOf(gap->from), last_),
                   gap->to == mt_NoTime ? to_ : std::min(source_.clock.TimeOf(gap->to), to_)};
    if (!end_.damaged) end_.lost = *gap_;
    end_.damaged = true;
}

bool RangeWalk::finish() {
    over_ = true;
    return false;
}

// Behind the part that the index covers, and where it turned out to be damaged, the store's walk goes on.
// Always false.
bool RangeWalk::LeaveLanes() {
    const uint32_t position = laneWalk_.position();
    spanned_.end = position;
    byLanes_ = false;
    if (spanned_.first < position)
        if (const auto tick = source_.lanes->TickOf(position - 1)) last_ = source_.clock.TimeOf(*tick);
    const bool more = position < lanesEnd_ || goesOn_;
    if (more) static_cast<void>(mt_StartWalkAtEvent(*source_.store, position, 0, nullptr, walk_));
    return false;
}

void RangeWalk::Settle() {
    if (state_ && spanned_.first < spanned_.end) laneWalk_.TakeState(*state_);
}

bool RangeWalk::EndLanes() {
    Settle();
    return LeaveLanes();
}

// False when progress stops the walk at an event of the index, which is then not seen.
bool RangeWalk::GoesOnAt(uint32_t sequence, double time) {
    if (MayGoOn(time)) return true;
    spanned_.end = sequence;
    return finish();
}

bool RangeWalk::NextOfStore(EventRecord& event) {
    bool given = mt_NextEvent(walk_, event);
    // A walk that took over from the index has no end of its own.
    if (given && static_cast<int64_t>(event.time) >= static_cast<int64_t>(endTick_)) given = false;
    if (!given || walk_.gap() || gap_) TakeGap();
    if (!given && gap_) end_.reached = gap_->from;
    return given;
}

// False when progress stops the walk at an event's time.
bool RangeWalk::MayGoOn(double time) {
    if (!source_.progress || source_.progress(time - from_, to_ - from_)) return true;
    end_.stopped = true;
    end_.reached = time;
    return false;
}

bool RangeWalk::next(EventRecord& event, double& time, Stop stop) {
    if (over_) return false;
    const bool byLanes = byLanes_ && (laneWalk_.next(event, stop) || LeaveLanes());
    if (!byLanes && !NextOfStore(event)) return finish();
    time = last_ = source_.clock.TimeOf(event.time);
    if (byLanes) spanned_.end = event.sequence + 1;
    if (!IsDue(byLanes ? event.sequence : seen_ + 1)) return true;
    if (byLanes) return GoesOnAt(event.sequence, time);
    return MayGoOn(time) || finish();
}
