// What blocks of the lane index have in sum: how many events of each kind each object had, how often it got
// each status, and for how long it was in it. Sums stand in levels: each block has its own, the last of 16
// has those of the 16 as well, the last of 256 those of the 256, and so on, so that any row of blocks is the
// sum of few.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "libtrv/byte_buffer.h"

constexpr size_t lane_SumsOf = 16;  // of a level make one of the next

struct LaneSums {
    struct Events {
        uint32_t object, kind;
        uint64_t count;
    };
    // Of the time behind the block before's last event, up to the last one's of the block.
    struct Status {
        uint32_t object, state;
        uint64_t entered, ticks;  // entered: how many statuses were this one
    };
    // Each ascending by object, then by kind or state; of nothing there is none.
    std::vector<Events> events;
    std::vector<Status> statuses;
};
LaneSums lane_Merge(std::span<const LaneSums> parts);

// What the blocks ahead leave to be summed up.
class LaneLevels {
  public:
    // Takes the sums of the next block. Gives all that end with it: its own first.
    std::vector<LaneSums> Add(LaneSums sums);

  private:
    std::vector<std::vector<LaneSums>> open_;  // by level, fewer than lane_SumsOf each
};
// Which level's sums, ending with which block, begin a row of blocks and don't go beyond it.
struct LaneStride {
    size_t level = 0, blocks = 1;
};
LaneStride lane_StrideAt(size_t first, size_t end);

// As a part of a block, whose objects these are.
void lane_EncodeSums(std::span<const LaneSums> levels, std::span<const uint64_t> objects, ByteBuffer& out);
// Of one of the levels. The bytes are followed by column_Slack more. False when they are damaged, or there is
// no such level.
[[nodiscard]] bool lane_DecodeSums(std::span<const uint8_t> bytes, std::span<const uint64_t> objects,
                                   size_t level, LaneSums& sums);
