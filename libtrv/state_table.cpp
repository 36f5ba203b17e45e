#include "libtrv/state_table.h"

#include <algorithm>
#include <numeric>

#include "libtrv/byte_order.h"

namespace {
constexpr size_t entry_head = 10;  // type, id, length
constexpr size_t first_buckets = 64;
}  // namespace

void StateTable::clear() {
    image_.clear();
    slots_.clear();
    std::fill(buckets_.begin(), buckets_.end(), 0u);
}

ObjectEntry StateTable::entry(uint32_t position) const {
    const Slot& slot = slots_[position];
    return {slot.type, slot.id, {image_.data() + slot.block, slot.size}};
}

void StateTable::rehash(size_t buckets) {
    buckets_.assign(buckets, 0);
    for (uint32_t position = 0; position < slots_.size(); ++position) {
        size_t b = BucketOf(slots_[position].type, slots_[position].id);
        while (buckets_[b] != 0) b = (b + 1) & (buckets_.size() - 1);
        buckets_[b] = position + 1;
    }
}

void StateTable::AddSlot(uint16_t type, uint32_t id, uint32_t block, uint32_t size) {
    if ((slots_.size() + 1) * 2 > buckets_.size()) rehash(std::max(first_buckets, buckets_.size() * 2));
    slots_.push_back({id, block, size, type});
    size_t b = BucketOf(type, id);
    while (buckets_[b] != 0) b = (b + 1) & (buckets_.size() - 1);
    buckets_[b] = static_cast<uint32_t>(slots_.size());
}

uint32_t StateTable::create(uint16_t type, uint32_t id, std::span<const uint8_t> block) {
    if (find(type, id) != npos) return npos;
    uint8_t head[entry_head];
    store_be16(head, type);
    store_be32(head + 2, id);
    store_be32(head + 6, static_cast<uint32_t>(block.size()));
    image_.insert(image_.end(), head, head + entry_head);
    const auto at = static_cast<uint32_t>(image_.size());
    image_.insert(image_.end(), block.begin(), block.end());
    AddSlot(type, id, at, static_cast<uint32_t>(block.size()));
    return size() - 1;
}

bool StateTable::modify(uint16_t type, uint32_t id, uint32_t offset, std::span<const uint8_t> bytes) {
    const uint32_t position = find(type, id);
    return position != npos && ModifyAt(position, offset, bytes);
}

void StateTable::remove(uint16_t type, uint32_t id) {
    const uint32_t position = find(type, id);
    if (position == npos) return;
    const auto gone = static_cast<uint32_t>(entry_head + slots_[position].size);
    const auto from = image_.begin() + slots_[position].block - static_cast<ptrdiff_t>(entry_head);
    image_.erase(from, from + gone);
    slots_.erase(slots_.begin() + position);
    for (uint32_t later = position; later < slots_.size(); ++later) slots_[later].block -= gone;
    rehash(buckets_.size());
}

std::vector<uint32_t> StateTable::sorted() const {
    std::vector<uint32_t> order(slots_.size());
    std::iota(order.begin(), order.end(), 0u);
    std::sort(order.begin(), order.end(), [&](uint32_t a, uint32_t b) {
        return slots_[a].type != slots_[b].type ? slots_[a].type < slots_[b].type
                                                : slots_[a].id < slots_[b].id;
    });
    return order;
}
