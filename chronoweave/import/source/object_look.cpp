#include "chronoweave/import/source/object_look.h"

#include <algorithm>
#include <utility>

namespace {

constexpr uint64_t bare_event = 18;     // type byte, time, length, type and subtype, end of changes
constexpr uint64_t status_change = 12;  // a modify record of two bytes
constexpr uint64_t object_at_checkpoint = 6 + 10 + mt_TaskBlockSize;  // used key, and entry with state block
constexpr uint64_t largest_interval = 4'000'000'000;

// Opening a store reads its last block: of the intervals up to a quarter longer, that with the shortest last
// block.
uint64_t with_short_end(uint64_t least, uint64_t records) {
    if (records <= least) return least;
    uint64_t best = least;
    for (uint64_t one = least; one <= least + least / 4; one += mt_CheckpointInterval)
        if ((records - 1) % one < (records - 1) % best) best = one;
    return best;
}

}  // namespace

SourceLook ObjectLook::seen() const {
    return {records_, keys_ + (zero_ ? 1u : 0u), records_ * bare_event + changes_ * status_change, newest_};
}

void ObjectLook::EnterId(uint32_t id) {
    last_ = id;
    if (id == 0) {
        zero_ = true;
        return;
    }
    const size_t mask = slots_.size() - 1;
    size_t slot = (id * 0x9E3779B1u >> 7) & mask;
    while (slots_[slot] != 0 && slots_[slot] != id) slot = (slot + 1) & mask;
    if (slots_[slot] == id) return;
    slots_[slot] = id;
    if (++keys_ * 2 > slots_.size()) grow();
}

void ObjectLook::grow() {
    const std::vector<uint32_t> before = std::exchange(slots_, std::vector<uint32_t>(slots_.size() * 4));
    keys_ = 0;
    for (const uint32_t id : before)
        if (id != 0) EnterId(id);
}

uint32_t look_Interval(const SourceLook& look) {
    if (look.records == 0) return mt_CheckpointInterval;
    const uint64_t state = object_at_checkpoint * look.objects;
    const uint64_t room = std::max<uint64_t>(1, look.bytes * mt_CheckpointInterval / look.records);
    const uint64_t hundreds = std::max<uint64_t>(1, (state + room - 1) / room);
    const uint64_t least = std::min(hundreds * mt_CheckpointInterval, largest_interval);
    return static_cast<uint32_t>(with_short_end(least, look.records));
}
