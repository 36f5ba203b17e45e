#include "libtrv/event.h"

#include <algorithm>

namespace {
constexpr size_t block_size = 256 * 1024;
}

std::span<const uint8_t> EventList::keep(std::span<const uint8_t> bytes) {
    if (bytes.empty()) return {};
    if (room_ - used_ < bytes.size()) {
        room_ = std::max(block_size, bytes.size());
        used_ = 0;
        blocks_.push_back(std::make_unique_for_overwrite<uint8_t[]>(room_));
    }
    uint8_t* at = blocks_.back().get() + used_;
    std::copy(bytes.begin(), bytes.end(), at);
    used_ += bytes.size();
    return {at, bytes.size()};
}

void EventList::append(const EventRecord& event) {
    EventRecord kept = event;
    kept.extra = keep(event.extra);
    kept.changes = ChangeList(keep(event.changes.bytes()));
    records_.push_back(kept);
}

void EventList::clear() {
    records_.clear();
    blocks_.clear();
    used_ = room_ = 0;
}

void mt_ApplyEventToState(StateTable& table, const EventRecord& event) {
    StateChange change;
    for (ChangeList changes = event.changes; changes.next(change);) {
        if (change.kind == mt_ChangeModify)
            table.modify(change.objectType, change.objectId, change.offset, change.bytes);
        else if (change.kind == mt_ChangeCreate)
            table.create(change.objectType, change.objectId, change.bytes);
        else
            table.remove(change.objectType, change.objectId);
    }
}
