// Positioning, walks and lists.
#include <algorithm>
#include <utility>

#include "libtrv/block_reader.h"
#include "libtrv/trace_store.h"
#include "libtrv/trace_store_impl.h"

namespace {

constexpr const char* positioning = "mt_GetEventListAndStateFromTimeRange";

// Reads on, bringing the state forward, up to the first event that isn't ahead of the place looked for.
template <class Before>
void go_to(BlockReader& reader, StateTable* state, Before&& before) {
    EventRecord event;
    while (reader.next(event)) {
        if (!before(event)) {
            reader.hold(event);
            break;
        }
        if (!state) continue;
        reader.TakeStateBehindGap();
        mt_ApplyEventToState(*state, event);
    }
    reader.NameQuery(nullptr);
}

bool is_empty(const TraceStore& store, StateTable* state) {
    if (state) state->clear();
    return store.blockTimes.empty();
}

}  // namespace

bool mt_PositionByTime(TraceStore& store, mt_Time time, StateTable* state, BlockReader& reader) {
    if (is_empty(store, state)) return false;
    reader.NameQuery(positioning);
    reader.StartNear(mt_BlockOfTime(store, time), state);
    go_to(reader, state, [time](const EventRecord& event) { return mt_Earlier(event.time, time); });
    return true;
}

bool mt_PositionBehindEvents(TraceStore& store, uint32_t events, StateTable* state, BlockReader& reader) {
    if (is_empty(store, state)) return false;
    const auto last = static_cast<uint32_t>(store.blockTimes.size() - 1);
    reader.NameQuery(positioning);
    reader.StartNear(std::min(last, events / store.checkpointInterval), state);
    go_to(reader, state, [events](const EventRecord& event) { return event.sequence <= events; });
    return true;
}

namespace {

// How many events stand ahead of the one that a request by sequence starts with: the event of that number, or
// the next one when the number is a multiple of the interval.
uint32_t events_ahead(const TraceStore& store, uint64_t sequence) {
    const uint64_t ahead = sequence % store.checkpointInterval == 0 ? sequence : sequence - 1;
    return static_cast<uint32_t>(std::min<uint64_t>(ahead, UINT32_MAX));
}

}  // namespace

bool mt_GetEventListAndStateFromTimeRange(TraceStore& store, uint64_t key, bool keyIsTime,
                                          CursorPosition& cursor, StateTable* state) {
    BlockReader reader(store);
    const bool positioned = keyIsTime
                                ? mt_PositionByTime(store, key, state, reader)
                                : mt_PositionBehindEvents(store, events_ahead(store, key), state, reader);
    if (!positioned) return false;
    cursor = {static_cast<uint32_t>(reader.position()), reader.sequence()};
    reader.FinishBlock();
    return true;
}

EventWalk::EventWalk() = default;
EventWalk::~EventWalk() = default;
EventWalk::EventWalk(EventWalk&&) noexcept = default;
EventWalk& EventWalk::operator=(EventWalk&&) noexcept = default;

BlockReader& EventWalk::begin(TraceStore& store) {
    *this = {};
    reader_ = std::make_unique<BlockReader>(store);
    left_ = UINT64_MAX;
    over_ = false;
    return *reader_;
}

bool EventWalk::next(EventRecord& event) {
    if (over_) return false;
    if (left_ == 0) return finish({});
    if (!reader_->next(event) || (hasEnd_ && !mt_Earlier(event.time, end_)))
        return finish(reader_->gap() ? std::optional(*reader_->gap()) : std::nullopt);
    if (reader_->gap()) [[unlikely]]
        reader_->TakeStateBehindGap();
    --left_;
    return true;
}

// Reads the rest of the block too, so that damage of the block that the last event came from is found. Always
// false.
bool EventWalk::finish(std::optional<mt_Gap> behind) {
    over_ = true;
    gapBehind_ = behind;
    reader_->FinishBlock();
    return false;
}

const mt_Gap* EventWalk::gap() const {
    if (over_) return gapBehind_ ? &*gapBehind_ : nullptr;
    return reader_->gap();
}

bool EventWalk::resume() {
    if (!over_ || !reader_ || hasEnd_ || left_ == 0 || gapBehind_ || reader_->IsBroken()) return false;
    over_ = false;
    return true;
}

uint32_t EventWalk::gaps() const {
    return reader_ ? reader_->gaps() : 0;
}

bool mt_StartWalkInTimeRange(TraceStore& store, mt_Time t0, mt_Time t1, StateTable* state, EventWalk& walk) {
    if (!mt_PositionByTime(store, t0, state, walk.begin(store))) {
        walk = {};
        return false;
    }
    walk.hasEnd_ = true;
    walk.end_ = t1;
    return true;
}

namespace {

bool start_behind(TraceStore& store, uint32_t events, StateTable* state, BlockReader& reader,
                  EventWalk& walk) {
    if (mt_PositionBehindEvents(store, events, state, reader)) return true;
    walk = {};
    return false;
}

}  // namespace

bool mt_StartWalkBySequence(TraceStore& store, uint32_t sequence, uint32_t count, StateTable* state,
                            EventWalk& walk) {
    if (!start_behind(store, events_ahead(store, sequence), state, walk.begin(store), walk)) return false;
    if (count != 0) walk.left_ = count;
    return true;
}

bool mt_StartWalkAtEvent(TraceStore& store, uint32_t sequence, uint32_t count, StateTable* state,
                         EventWalk& walk) {
    if (!start_behind(store, std::max(sequence, 1u) - 1, state, walk.begin(store), walk)) return false;
    if (count != 0) walk.left_ = count;
    return true;
}

namespace {
bool collect(bool started, EventWalk& walk, EventList& list) {
    list.clear();
    EventRecord event;
    while (started && mt_NextEvent(walk, event)) list.append(event);
    return started;
}
}  // namespace

bool mt_GetEventsInTimeRange(TraceStore& store, mt_Time t0, mt_Time t1, EventList& list, StateTable& state) {
    EventWalk walk;
    return collect(mt_StartWalkInTimeRange(store, t0, t1, &state, walk), walk, list);
}

bool mt_GetEventsBySequence(TraceStore& store, uint32_t sequence, uint32_t count, EventList& list,
                            StateTable& state) {
    EventWalk walk;
    return collect(mt_StartWalkBySequence(store, sequence, count, &state, walk), walk, list);
}
