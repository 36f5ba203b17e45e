#include "chronoweave/import/source/object_look.h"

#include <algorithm>
#include <utility>

#include "libtrv/byte_order.h"

namespace {

constexpr uint64_t bare_event = 18;     // type byte, time, length, type and subtype, end of changes
constexpr uint64_t status_change = 12;  // a modify record of two bytes
constexpr uint64_t object_at_checkpoint = 6 + 10 + mt_TaskBlockSize;  // used key, and entry with state block
constexpr uint64_t largest_interval = 4'000'000'000;

// What an event of a type writes at most as a rule: a context switch takes one task out and puts one in.
uint64_t packet_size(uint16_t type) {
    switch (type) {
        case mt_TaskChange:
            return bare_event + 2 * status_change;
        case mt_StatusChange:
            return bare_event + status_change;
        default:
            return bare_event;
    }
}

}  // namespace

void ObjectLook::enter(uint16_t type, std::span<const uint8_t> extra, bool bigEndian) {
    ++records_;
    bytes_ += packet_size(type);
    if (extra.size() >= 4) enter_id(load_32(extra.data(), bigEndian));
}

void ObjectLook::enter_id(uint32_t id) {
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
        if (id != 0) enter_id(id);
}

uint32_t look_Interval(const SourceLook& look) {
    if (look.records == 0) return mt_CheckpointInterval;
    const uint64_t state = object_at_checkpoint * look.objects;
    const uint64_t room = std::max<uint64_t>(1, look.bytes * mt_CheckpointInterval / look.records);
    const uint64_t hundreds = std::max<uint64_t>(1, (state + room - 1) / room);
    return static_cast<uint32_t>(std::min(hundreds * mt_CheckpointInterval, largest_interval));
}
