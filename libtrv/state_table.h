// StateTable: the state of every object at one instant, each object a block of bytes under (object type,
// object id).
//
// The entries stand one behind the other in the very form of a state table packet (type, id, length, block),
// so that writing a checkpoint is one copy. Look-ups go through an open-addressed hash. Creation,
// modification and look-up cost O(1); removal costs O(n), and the tracker of this system never removes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "libtrv/byte_buffer.h"

// One object of a table. The block is valid until the table changes.
struct ObjectEntry {
    uint16_t objectType = 0;
    uint32_t objectId = 0;
    std::span<const uint8_t> block;
};

class StateTable {
  public:
    static constexpr uint32_t npos = 0xFFFFFFFF;

    uint32_t size() const { return static_cast<uint32_t>(slots_.size()); }
    void clear();

    // Position of a key, npos when it is not in. Positions are stable until a removal.
    uint32_t find(uint16_t type, uint32_t id) const {
        if (slots_.empty()) return npos;
        for (size_t b = BucketOf(type, id);; b = (b + 1) & (buckets_.size() - 1)) {
            if (buckets_[b] == 0) return npos;
            const Slot& slot = slots_[buckets_[b] - 1];
            if (slot.id == id && slot.type == type) return buckets_[b] - 1;
        }
    }
    // The entry at a position, in order of creation.
    ObjectEntry entry(uint32_t position) const;
    uint32_t IdAt(uint32_t position) const { return slots_[position].id; }
    uint16_t TypeAt(uint32_t position) const { return slots_[position].type; }
    // The block's bytes, writable by the tracker's own operations only.
    uint8_t* BlockAt(uint32_t position) { return image_.data() + slots_[position].block; }
    const uint8_t* BlockAt(uint32_t position) const { return image_.data() + slots_[position].block; }
    uint32_t BlockSize(uint32_t position) const { return slots_[position].size; }

    // Adds an entry with a copy of the block and returns its position; npos when the key is in already, and
    // then nothing changes.
    uint32_t create(uint16_t type, uint32_t id, std::span<const uint8_t> block);
    // Overwrites bytes; false, and no change, when the key is not in or its block is shorter than offset +
    // bytes.
    bool modify(uint16_t type, uint32_t id, uint32_t offset, std::span<const uint8_t> bytes);
    bool ModifyAt(uint32_t position, uint32_t offset, std::span<const uint8_t> bytes) {
        const Slot& slot = slots_[position];
        if (slot.size < offset + bytes.size()) return false;
        bytes_Copy(image_.data() + slot.block + offset, bytes);
        return true;
    }
    // Removes the key if it is there.
    void remove(uint16_t type, uint32_t id);

    // The entries as they stand in a state table packet, behind its count.
    std::span<const uint8_t> image() const { return image_; }
    // Positions ordered by object type, then by id, both unsigned.
    std::vector<uint32_t> sorted() const;

  private:
    struct Slot {
        uint32_t id;
        uint32_t block;  // offset of the block in the image
        uint32_t size;
        uint16_t type;
    };
    size_t BucketOf(uint16_t type, uint32_t id) const {
        // Ids are small numbers or addresses: a multiplication spreads either over the buckets.
        const uint64_t key = (static_cast<uint64_t>(type) << 32 | id) * 0x9E3779B97F4A7C15ull;
        return static_cast<size_t>(key >> 32) & (buckets_.size() - 1);
    }
    void AddSlot(uint16_t type, uint32_t id, uint32_t block, uint32_t size);
    void rehash(size_t buckets);

    std::vector<uint8_t> image_;
    std::vector<Slot> slots_;
    std::vector<uint32_t> buckets_;  // position + 1; 0 is free
};
