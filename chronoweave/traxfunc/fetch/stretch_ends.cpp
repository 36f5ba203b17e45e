#include "chronoweave/traxfunc/fetch/stretch_ends.h"

#include <algorithm>

namespace {

constexpr uint32_t firstBlock = 4096, mostBlock = 65536, leastBlock = 256;  // events
constexpr uint32_t progressMask = 0x3FF;

// The status of one object through a walk.
class OneStatus {
  public:
    OneStatus(const Legend& legend, uint32_t object) : legend_(legend), object_(object) {}

    // Its row; negative for none.
    int32_t in(const StateTable& state) const {
        const uint32_t position = state.find(mt_ObjectTask, object_);
        const auto code = position == StateTable::npos ? std::nullopt : mt_TaskStatusAt(state, position);
        return code ? legend_.StatusIndex(*code) : -1;
    }
    // The status behind an event that names the object; the one before for any other, and for one that leaves
    // it without a status.
    int32_t behind(const EventRecord& event, StateTable& state, int32_t before) const {
        StateChange change;
        bool named = false;
        for (ChangeList list = event.changes; !named && list.next(change);)
            named = change.objectType == mt_ObjectTask && change.objectId == object_;
        if (!named) return before;
        mt_ApplyEventToState(state, event);
        const int32_t row = in(state);
        return row < 0 ? before : row;
    }

  private:
    const Legend& legend_;
    uint32_t object_;
};

// Number of the first event not before a time; one past the last one's when there is none.
uint32_t first_from(const LaSource& source, double time) {
    EventWalk walk;
    EventRecord event;
    if (mt_StartWalkInTimeRange(*source.store, source.clock.TickFrom(time), INT64_MAX, nullptr, walk) &&
        mt_NextEvent(walk, event))
        return event.sequence;
    return mt_GetEventCount(*source.store) + 1;
}

class BeginSearch {
  public:
    BeginSearch(const LaSource& source, const Legend& legend, const LaStretchKey& key, LaStretchEnd& end,
                const Progress& progress)
        : source_(source), key_(key), status_(legend, key.object), end_(end), progress_(progress) {}

    bool Run() {
        if (end_.sequence == 0) end_.sequence = first_from(source_, end_.time);
        if (end_.block == 0) end_.block = firstBlock;
        total_ = mt_GetEventCount(*source_.store);
        while (!end_.settled())
            if (!Piece()) return false;
        return true;
    }

  private:
    void Settle(LaEndKnown known) { end_.known = known; }

    // One piece of events ahead of what is known. False when it was stopped in its middle: a smaller one then
    // comes next.
    bool Piece() {
        const uint32_t behind = end_.sequence, first = behind > end_.block ? behind - end_.block : 1;
        StateTable state;
        EventWalk walk;
        if (!mt_StartWalkAtEvent(*source_.store, first, 0, &state, walk))
            return Settle(LaEndKnown::Lost), true;
        int32_t now = status_.in(state);
        const bool there = now == key_.status;
        std::optional<double> begin, lost;  // lost: where it was in the status already behind a gap
        double earliest = end_.time;
        uint32_t last = first - 1;
        EventRecord event;
        for (uint32_t read = 1; mt_NextEvent(walk, event); ++read) {
            const double time = source_.clock.TimeOf(event.time);
            if (walk.gap()) {
                now = status_.in(state);
                begin.reset();
                lost = now == key_.status ? std::optional(std::min(time, end_.time)) : std::nullopt;
            }
            if (event.sequence >= behind) break;
            if (read == 1) earliest = std::min(earliest, time);
            const int32_t next = status_.behind(event, state, now);
            if (next != now) {
                begin = next == key_.status ? std::optional(time) : std::nullopt;
                lost.reset();
            }
            now = next;
            last = event.sequence;
            if ((read & progressMask) == 0 && !Tell(total_ - behind + read)) {
                end_.block = std::max(leastBlock, end_.block / 4);
                return false;
            }
        }
        if (lost) end_.time = *lost;
        if (lost || last + 1 < behind)
            return Settle(LaEndKnown::Lost), true;  // the store breaks off on the way
        Take(there, now, begin, earliest, first);
        return end_.settled() || Tell(total_ - end_.sequence);
    }

    void Take(bool there, int32_t now, std::optional<double> begin, double earliest, uint32_t first) {
        if (now != key_.status) return Settle(LaEndKnown::Exact);  // it begins right where it was cut
        if (begin) {
            end_.time = *begin;
            return Settle(LaEndKnown::Exact);
        }
        if (!there) return Settle(LaEndKnown::Lost);
        end_.time = earliest;
        end_.sequence = first;
        end_.block = std::min(end_.block * 2, mostBlock);
        if (first == 1) Settle(LaEndKnown::Beyond);
    }

    bool Tell(uint32_t done) const { return !progress_ || progress_(std::min(done, total_), total_); }

    const LaSource& source_;
    LaStretchKey key_;
    OneStatus status_;
    LaStretchEnd& end_;
    const Progress& progress_;
    uint32_t total_ = 0;
};

bool cut_before(const LaItems& items, const laItem_Line& lane, size_t index) {
    return index == 0 && lane.segments[0].t0 <= items.cachedLow;
}
bool cut_behind(const LaItems& items, const laItem_Line& lane, size_t index) {
    return lane.segments.Next(index) == lane.segments.size() && lane.segments[index].t1 >= items.cachedHigh;
}

}  // namespace

bool laStretch_FindBegin(const LaSource& source, const Legend& legend, const LaStretchKey& key,
                         LaStretchEnd& end, const Progress& progress) {
    if (end.settled() || source.store == nullptr) return end.settled();
    return BeginSearch(source, legend, key, end, progress).Run();
}

bool laStretch_FindEnd(const LaSource& source, const Legend& legend, const LaStretchKey& key,
                       LaStretchEnd& end, const Progress& progress) {
    if (end.settled() || source.store == nullptr) return end.settled();
    const OneStatus status(legend, key.object);
    const uint32_t count = mt_GetEventCount(*source.store);
    if (end.sequence == 0) end.sequence = first_from(source, end.time);
    StateTable state;
    EventWalk walk;
    EventRecord event;
    int32_t now = -1;
    uint32_t last = end.sequence - 1;
    if (last < count && mt_StartWalkAtEvent(*source.store, end.sequence, 0, &state, walk)) {
        now = status.in(state);
        for (uint32_t read = 1; mt_NextEvent(walk, event); ++read) {
            if (walk.gap() && event.sequence >= end.sequence) break;
            const int32_t next = status.behind(event, state, now);
            const double time = source.clock.TimeOf(event.time);
            if (event.sequence >= end.sequence && now == key.status && next != now) {
                end.time = time;
                end.known = LaEndKnown::Exact;
                return true;
            }
            now = next;
            last = event.sequence;
            end.time = std::max(end.time, time);
            if ((read & progressMask) == 0 && progress && !progress(last, count)) {
                end.sequence = last + 1;
                return false;
            }
        }
    }
    end.known = last < count ? LaEndKnown::Lost : LaEndKnown::Beyond;
    // The trace ends with its last event, though its picture reaches a tick further.
    if (end.known == LaEndKnown::Beyond)
        end.time = source.clock.TimeOf(mt_GetTimeRange(*source.store).end - 1);
    return true;
}

bool laStretch_Find(const LaSource& source, const Legend& legend, const LaStretchKey& key, LaStretch& stretch,
                    const Progress& progress) {
    return laStretch_FindBegin(source, legend, key, stretch.from, progress) &&
           laStretch_FindEnd(source, legend, key, stretch.to, progress);
}

LaStretch laStretch_Of(const LaItems& items, const laItemRef& segment) {
    const laItem_Line& lane = items.lanes[segment.lane];
    const LaLnSeg shown = lane.segments[segment.index];
    LaStretch stretch{{LaEndKnown::Exact, shown.t0}, {LaEndKnown::Exact, shown.t1}};
    const auto cut = [](const LaStretchEnd& kept, double time) {
        return kept.sequence > 0 || kept.settled() ? kept : LaStretchEnd{LaEndKnown::NotYet, time};
    };
    if (cut_before(items, lane, segment.index)) stretch.from = cut(lane.firstBegin, shown.t0);
    if (cut_behind(items, lane, segment.index)) stretch.to = cut(lane.lastEnd, shown.t1);
    return stretch;
}

LaStretch laStretch_Complete(LaItems& items, const LaSource& source, const Legend& legend,
                             const laItemRef& segment, const Progress& progress) {
    laItem_Line& lane = items.lanes[segment.lane];
    LaStretch stretch = laStretch_Of(items, segment);
    laStretch_Find(source, legend, {lane.objectId, lane.segments[segment.index].status}, stretch, progress);
    if (cut_before(items, lane, segment.index)) lane.firstBegin = stretch.from;
    if (cut_behind(items, lane, segment.index)) lane.lastEnd = stretch.to;
    return stretch;
}
