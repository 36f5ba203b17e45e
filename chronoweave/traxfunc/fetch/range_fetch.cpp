#include "chronoweave/traxfunc/fetch/range_fetch.h"

#include <algorithm>

#include "chronoweave/traxfunc/model/lane_order.h"

namespace {

constexpr uint32_t progressMask = 0x3FFF;  // events

void make_agent(LaItems& items, const LaList& list) {
    laItem_Line agent;
    agent.objectId = laAgentId;
    agent.isAgent = true;
    agent.hasName = true;
    agent.name = "__VRL_Agent_For_Hidden_" + laCanvas_Plural(list.objectTerm) + "__";
    agent.openSince = -1.0;
    items.hiddenAgent = items.lanes.push_back(std::move(agent));
}

}  // namespace

LaFetch::LaFetch(LaItems& items, const LaSource& source, const LaLooks& looks, const LaList& list)
    : items_(items),
      source_(source),
      looks_(looks),
      list_(list),
      rows_(looks.legend),
      sweep_(items, source, looks, list.separator, state_) {}

// ---- A whole range

bool LaFetch::Run(laFetchRange range, const Progress& progress) {
    range_ = range;
    EventWalk walk;
    if (!Begin(walk)) {
        laItems_Clear(items_);
        return false;
    }
    if (!walk.gap()) sweep_.Begin(range_.low);
    items_.cachedHigh = TakeRange(walk, progress);
    items_.cachedLow = range_.low;
    version_ = items_.itemsVersion;
    return true;
}

// Puts the walk and the state at the start, and makes the lanes of the objects of the range.
bool LaFetch::Begin(EventWalk& walk) {
    TraceStore& store = *source_.store;
    const uint64_t first = source_.clock.TickFrom(range_.low);
    const uint64_t end = laFetch_EndTick(source_, range_);
    const auto objects = mt_GetObjectIdsUsedInTimeRange(store, mt_ObjectTask, first, end);
    if (!mt_StartWalkInTimeRange(store, first, end, &state_, walk)) return false;
    if (list_.showHiddenAgent) make_agent(items_, list_);
    for (uint32_t id : objects)
        if (items_.laneIndex.find(id) == laNoLane) laLn_New(items_, id);
    ordered_ = items_.lanes.size();
    return true;
}

// Gives where the fetch ended: the range's end, or earlier when it was stopped.
double LaFetch::TakeRange(EventWalk& walk, const Progress& progress) {
    EventRecord event;
    for (uint32_t count = 0; mt_NextEvent(walk, event); ++count) {
        if (count == 0) items_.firstSequence = event.sequence;
        const double time = source_.clock.TimeOf(event.time);
        if (!GoOn(count, time, progress)) {
            const double reached = std::max(range_.low, time);
            sweep_.End(reached);
            return reached;
        }
        if (walk.gap()) Bridge(*walk.gap(), time);
        Take(event, time);
    }
    // Nobody knows how long the last statuses held when what follows can't be read.
    if (walk.gap())
        sweep_.Break(EndAhead(*walk.gap()));
    else
        sweep_.End(range_.high);
    open_ = walk.gaps() == 0 && next_ > 0 && range_.high >= source_.totalLength;
    return range_.high;
}

double LaFetch::EndAhead(const mt_Gap& gap) const {
    return std::max(range_.low, source_.clock.TimeOf(gap.from));
}

// Around a stretch that can't be read: statuses end ahead of it and begin anew behind it.
void LaFetch::Bridge(const mt_Gap& gap, double time) {
    sweep_.Break(EndAhead(gap));
    for (uint32_t position = 0; position < state_.size(); ++position) {
        const uint32_t id = state_.IdAt(position);
        if (state_.entry(position).objectType == mt_ObjectTask && items_.laneIndex.find(id) == laNoLane)
            laLn_New(items_, id);
    }
    sweep_.Begin(time);
}

// False when the work is to stop.
bool LaFetch::GoOn(uint32_t count, double time, const Progress& progress) const {
    return (count & progressMask) != progressMask || !progress ||
           progress(std::max(0.0, time - range_.low), range_.high - range_.low);
}

// ---- An event

void LaFetch::TouchChanged(const EventRecord& event) {
    StateChange change;
    std::optional<uint32_t> last;
    for (ChangeList list = event.changes; list.next(change);) {
        if (change.objectType != mt_ObjectTask) continue;
        deleted_ = deleted_ || change.kind == mt_ChangeDelete;
        // Most changes name the object of the one ahead.
        if (last == change.objectId) continue;
        last = change.objectId;
        const uint32_t at = items_.laneIndex.find(change.objectId);
        if (at == laNoLane) continue;
        laItem_Line& lane = items_.lanes[at];
        if (Executing(lane)) lane.ranUntil = event.sequence - items_.firstSequence;
        sweep_.Touch(at);
    }
}

void LaFetch::Step(double time, uint32_t sequence) {
    uint32_t made = items_.ctxLines.size();
    sweep_.Step(time);
    for (; made < items_.ctxLines.size(); ++made) {
        laItem_Ctx& line = items_.ctxLines.kept()[made];
        const laItem_Line& from = items_.lanes[line.fromLane];
        line.leftAt = Executing(from) ? sequence : from.ranUntil;
    }
}

void LaFetch::Take(const EventRecord& event, double time) {
    next_ = event.sequence + 1;
    TouchChanged(event);
    mt_ApplyEventToState(state_, event);
    if (time < range_.low) return;
    const uint32_t sequence = event.sequence - items_.firstSequence;
    Step(time, sequence);
    uint16_t objectType = 0;
    uint32_t objectId = 0;
    if (!mt_GetEventObject(*source_.store, event, objectType, objectId)) return;
    uint32_t lane = items_.laneIndex.find(objectId);
    if (lane == laNoLane) {
        lane = laLn_New(items_, objectId);
        sweep_.Touch(lane);
    }
    const int32_t row = rows_.of(event.type, event.subtype);
    laBm_Append(items_, {time, lane, sequence, row, event.type, event.subtype});
}

// ---- Going on

bool LaFetch::CanExtend() const {
    return open_ && !deleted_ && version_ == items_.itemsVersion && items_.cachedLow == range_.low &&
           items_.cachedHigh == range_.high;
}

uint32_t LaFetch::NamedLanes() const {
    uint32_t named = 0;
    for (uint32_t i = 0; i < items_.lanes.size(); ++i) named += items_.lanes[i].hasName ? 1 : 0;
    return named;
}

std::optional<laFetchGrowth> LaFetch::Extend(double high, const Progress& progress) {
    if (!ContinueWalk()) return std::nullopt;
    const double before = items_.cachedHigh;
    const uint32_t lanes = items_.lanes.size(), named = NamedLanes();
    range_ = {items_.cachedLow, std::max(before, std::min(high, source_.totalLength))};
    laFetchGrowth growth{before};
    for (uint32_t i = 0; i < items_.lanes.size(); ++i) laLn_Reopen(items_.lanes[i], before);
    const uint64_t end = laFetch_EndTick(source_, range_);
    const Ended ended = TakeRest(end, progress, growth);
    if (ended == Ended::Damaged) return std::nullopt;
    open_ = ended == Ended::AtRangeEnd;
    sweep_.End(range_.high);
    items_.cachedHigh = range_.high;
    growth.lanes = lanes != items_.lanes.size() || version_ != items_.itemsVersion || named != NamedLanes();
    version_ = items_.itemsVersion;
    return growth;
}

bool LaFetch::ContinueWalk() {
    return walk_.resume() || mt_StartWalkAtEvent(*source_.store, next_, 0, nullptr, walk_);
}

// The events up to a tick. A range that is stopped ends there.
LaFetch::Ended LaFetch::TakeRest(uint64_t end, const Progress& progress, laFetchGrowth& growth) {
    EventRecord event;
    for (uint32_t count = 0; mt_NextEvent(walk_, event); ++count) {
        if (walk_.gap() || event.sequence != next_) return Ended::Damaged;
        // One that is asked for again is given by a walk of its own.
        if (static_cast<int64_t>(event.time) >= static_cast<int64_t>(end)) {
            walk_ = {};
            break;
        }
        const double time = source_.clock.TimeOf(event.time);
        if (count == 0) growth.from = std::min(growth.from, time);
        if (!GoOn(count, time, progress)) {
            range_.high = std::max(range_.low, time);
            return Ended::Stopped;
        }
        if (MakesLanes(event)) AddLanes(event.sequence, end);
        if (count == items_.lanes.size() / 4) Warm();
        Take(event, time);
    }
    return walk_.gap() ? Ended::Damaged : Ended::AtRangeEnd;
}

// Many events go to lanes in any order, and an import ran since their ends were written to: the ends are
// fetched into the processor's cache at once, where each event would wait for a few of its own.
void LaFetch::Warm() const {
    for (uint32_t i = 0; i < items_.lanes.size(); ++i) {
        const laItem_Line& lane = items_.lanes[i];
        lane.segments.Warm();
        lane.icons.Warm();
    }
}

bool LaFetch::IsNew(uint32_t objectId) const {
    const uint32_t lane = items_.laneIndex.find(objectId);
    return lane == laNoLane || lane >= ordered_;
}

bool LaFetch::MakesLanes(const EventRecord& event) const {
    StateChange change;
    for (ChangeList list = event.changes; list.next(change);)
        if (change.kind == mt_ChangeCreate && change.objectType == mt_ObjectTask && IsNew(change.objectId))
            return true;
    return false;
}

// The lanes of all objects that are new from an event on up to a tick, together: each move of lanes goes over
// all items.
void LaFetch::AddLanes(uint32_t sequence, uint64_t end) {
    std::vector<uint32_t> objects;
    EventWalk walk;
    EventRecord event;
    if (!mt_StartWalkAtEvent(*source_.store, sequence, 0, nullptr, walk)) return;
    while (mt_NextEvent(walk, event) && static_cast<int64_t>(event.time) < static_cast<int64_t>(end)) {
        StateChange change;
        for (ChangeList list = event.changes; list.next(change);)
            if (change.kind == mt_ChangeCreate && change.objectType == mt_ObjectTask &&
                IsNew(change.objectId))
                objects.push_back(change.objectId);
    }
    std::sort(objects.begin(), objects.end());
    objects.erase(std::unique(objects.begin(), objects.end()), objects.end());
    InsertLanes(objects);
}

// Lanes of objects stand in the order of their ids, the agent ahead of them and lanes with icons only behind.
void LaFetch::InsertLanes(const std::vector<uint32_t>& objects) {
    std::vector<uint32_t> order;
    for (uint32_t i = 0; i < ordered_; ++i) order.push_back(i);
    for (const uint32_t id : objects) {
        const uint32_t known = items_.laneIndex.find(id);
        order.push_back(known == laNoLane ? laLn_New(items_, id) : known);
    }
    const auto begin = order.begin() + (items_.hiddenAgent == laNoLane ? 0 : 1);
    std::inplace_merge(begin, order.begin() + ordered_, order.end(), [&](uint32_t a, uint32_t b) {
        return items_.lanes[a].objectId < items_.lanes[b].objectId;
    });
    std::vector<uint32_t> to(items_.lanes.size(), laNoLane);
    uint32_t place = 0;
    for (const uint32_t lane : order) to[lane] = place++;
    for (uint32_t lane = ordered_; lane < to.size(); ++lane)
        if (to[lane] == laNoLane) to[lane] = place++;
    ordered_ = static_cast<uint32_t>(order.size());
    for (uint32_t lane = 0; lane < to.size(); ++lane)
        if (to[lane] != lane) {
            laItems_MoveLanes(items_, to);
            sweep_.LanesMoved(to);
            return;
        }
}

laLeftDrop LaFetch::DropLeft(double low) {
    low = source_.clock.TimeOf(source_.clock.TickAt(low));
    if (!(low > items_.cachedLow) || low > items_.cachedHigh || deleted_) return laLeftDrop::NotPossible;
    std::vector<uint32_t> moved;
    if (laItems_DropLeft(items_, source_, looks_, list_.separator, low, ordered_, moved) ==
        laLeftDrop::NotPossible)
        return laLeftDrop::NotPossible;
    if (!moved.empty()) sweep_.LanesMoved(moved);
    range_.low = low;
    version_ = items_.itemsVersion;
    return laLeftDrop::Done;
}
