#include "chronoweave/engine/lanes/lane_table.h"

#include <algorithm>

#include "chronoweave/engine/lanes/lane_walk.h"

namespace {

template <class Entry>
uint32_t first_from(const std::vector<Entry>& entries, mt_Time tick) {
    const auto at = std::partition_point(entries.begin(), entries.end(),
                                         [tick](const Entry& entry) { return entry.tick < tick; });
    return static_cast<uint32_t>(at - entries.begin());
}
template <class Entry>
uint32_t first_at(const std::vector<Entry>& entries, uint32_t sequence) {
    const auto at = std::partition_point(
        entries.begin(), entries.end(), [sequence](const Entry& entry) { return entry.sequence < sequence; });
    return static_cast<uint32_t>(at - entries.begin());
}

}  // namespace

LaneTable::LaneTable(LaneIndex& index) : index_(index) {
    Refresh();
}

LaneTable::~LaneTable() = default;

LaneTable::Lane& LaneTable::LaneOf(uint32_t object) {
    uint32_t lane = find(object);
    if (lane == none) {
        lane = objects_.create(mt_ObjectTask, object, {});
        lanes_.emplace_back();
        byId_.push_back(lane);
    }
    return lanes_[lane];
}

void LaneTable::Refresh() {
    LaneWants all;
    all.changes = LaneWants::Changes::Given;
    all.kind = [](uint16_t, uint16_t) { return true; };
    LaneWalk walk(index_, true, end_, index_.EndEvent(), all, nullptr);
    EventRecord event;
    while (walk.next(event, LaneWalk::Stop::Every)) {
        ticks_.push_back(event.time);
        StateChange change;
        for (ChangeList list = event.changes; list.next(change);) {
            uint32_t state = lane_Absent;
            if (change.kind != mt_ChangeDelete)
                state = load_be16(change.bytes.data()) | (change.bytes[2] != 0 ? 0 : lane_NotValid);
            LaneOf(change.objectId).statuses.push_back({event.time, state, event.sequence});
        }
        LaneOf(load_be32(event.extra.data()))
            .events.push_back({event.time, lane_Kind(event.type, event.subtype), event.sequence});
        end_ = event.sequence + 1;
    }
    std::sort(byId_.begin(), byId_.end(),
              [this](uint32_t a, uint32_t b) { return ObjectOf(a) < ObjectOf(b); });
}

uint32_t LaneTable::FirstFrom(mt_Time tick) const {
    if (static_cast<int64_t>(tick) < 0) tick = 0;
    const auto at = std::lower_bound(ticks_.begin(), ticks_.end(), tick);
    return 1 + static_cast<uint32_t>(at - ticks_.begin());
}

mt_Time LaneTable::TickOf(uint32_t sequence) const {
    return ticks_[sequence - 1];
}

uint32_t LaneTable::FirstSeen(uint32_t lane) const {
    const Lane& of = lanes_[lane];
    uint32_t first = end_;
    if (!of.statuses.empty()) first = of.statuses[0].sequence;
    if (!of.events.empty()) first = std::min(first, of.events[0].sequence);
    return first;
}

uint32_t LaneReader::StatusCount() const {
    return static_cast<uint32_t>(table_->lanes_[lane_].statuses.size());
}
LaneStatus LaneReader::status(uint32_t number) {
    return table_->lanes_[lane_].statuses[number];
}
uint32_t LaneReader::FirstStatusFrom(mt_Time tick) {
    return first_from(table_->lanes_[lane_].statuses, tick);
}
uint32_t LaneReader::FirstStatusAt(uint32_t sequence) {
    return first_at(table_->lanes_[lane_].statuses, sequence);
}
uint32_t LaneReader::EventCount() const {
    return static_cast<uint32_t>(table_->lanes_[lane_].events.size());
}
LaneEvent LaneReader::event(uint32_t number) {
    return table_->lanes_[lane_].events[number];
}
uint32_t LaneReader::FirstEventFrom(mt_Time tick) {
    return first_from(table_->lanes_[lane_].events, tick);
}
uint32_t LaneReader::FirstEventAt(uint32_t sequence) {
    return first_at(table_->lanes_[lane_].events, sequence);
}
