// What the lane index has of objects besides their statuses: their priorities and names, as events set them.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "libtrv/byte_buffer.h"
#include "libtrv/store_format.h"

// A priority, or that none is known.
struct LanePriority {
    bool known = false;
    uint32_t value = 0;
    bool operator==(const LanePriority& other) const {
        return known == other.known && (!known || value == other.value);
    }
};
// Where the name of a task stands in its state block: the name, the prefix and whether they are valid.
constexpr size_t lane_NameAt = mt_TaskName, lane_NameEnd = mt_TaskPrefixValid + 1;
using LaneNameBytes = std::array<uint8_t, lane_NameEnd - lane_NameAt>;

// What a block's events set.
struct LaneFacts {
    // Object by object, and of one by event; the summary tells how many each has.
    std::vector<uint32_t> priorityAt, nameAt;  // event of the block
    std::vector<LanePriority> priorities;
    std::vector<LaneNameBytes> names;
};
void lane_EncodeFacts(const LaneFacts& facts, ByteBuffer& out);
// The bytes are followed by column_Slack more. False when they are not such a part.
[[nodiscard]] bool lane_DecodeFacts(std::span<const uint8_t> bytes, uint32_t events, size_t priorities,
                                    size_t names, LaneFacts& facts);

// Takes them in the order of the events.
class LaneFactsBuilder {
  public:
    // place: of the object, by which ranks are told below.
    void Add(uint32_t event, uint32_t place, LanePriority priority) {
        priorities_.push_back({event, place, priority});
    }
    void Add(uint32_t event, uint32_t place, const LaneNameBytes& name) {
        names_.push_back({event, place, name});
    }
    // Puts the part behind what is in the buffer, tells how many of each the objects have, which are as many
    // as there are ranks, and begins anew.
    void Seal(std::span<const uint32_t> rank, std::vector<uint32_t>& priorities, std::vector<uint32_t>& names,
              ByteBuffer& out);

  private:
    template <class Value>
    struct Entry {
        uint32_t event, place;
        Value value;
    };
    std::vector<Entry<LanePriority>> priorities_;
    std::vector<Entry<LaneNameBytes>> names_;
};
