// A block of the lane index: what so many events in a row tell of who did what when. Its head, which alone is
// kept in memory, tells where its parts stand. All of them but the times go object by object, so that one
// object's share is read without the others'.
//
// Within a block, objects, kinds and states are numbered in the order of their ids and codes.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "chronoweave/engine/lanes/packed_column.h"
#include "libtrv/byte_buffer.h"
#include "libtrv/store_format.h"
#include "shared/libcxxutil/result.h"

// What the state has of an object's status: a code of 16 bits, to which is added that it is not known to be
// the object's; or nothing at all.
constexpr uint32_t lane_NotValid = 0x10000;
constexpr uint32_t lane_Absent = 0x20000;  // the state has no such object

// Events of a block, at most and by default.
constexpr uint32_t lane_BlockEvents = 65536;

// A kind of event.
constexpr uint32_t lane_Kind(uint16_t type, uint16_t subtype) {
    return uint32_t{type} << 16 | subtype;
}
constexpr uint16_t lane_TypeOf(uint32_t kind) {
    return static_cast<uint16_t>(kind >> 16);
}
constexpr uint16_t lane_SubtypeOf(uint32_t kind) {
    return static_cast<uint16_t>(kind);
}

enum class LanePart : uint8_t {
    Summary,   // of the objects and of what there is of each
    Times,     // of the events
    Statuses,  // that the objects got
    Events,    // that they had
    Sums,      // of both
    Facts      // names and priorities
};
constexpr size_t lane_PartCount = 6;
constexpr size_t lane_Number(LanePart part) {
    return static_cast<size_t>(part);
}

struct LaneHead {
    uint64_t mark = 0;   // of the store up to the block's last event
    uint32_t first = 0;  // sequence number of the first event
    uint32_t count = 0;  // of events; at least 1
    mt_Time firstTick = 0, lastTick = 0;
    std::array<uint32_t, lane_PartCount> bytes = {};   // of the parts
    std::array<uint64_t, lane_PartCount> checks = {};  // sums over them
    uint32_t end() const { return first + count; }     // sequence number behind the last event
    // Where a part stands behind the head; of the number of parts, where the block ends.
    uint64_t OffsetOf(size_t part) const {
        uint64_t offset = 0;
        for (size_t i = 0; i < part; ++i) offset += bytes[i];
        return offset + (part == lane_PartCount ? column_Slack : 0);
    }
};
constexpr size_t lane_HeadBytes = 40 + lane_PartCount * 12;  // with a check sum over the others

void lane_EncodeHead(const LaneHead& head, ByteBuffer& out);
// False when the bytes, which are lane_HeadBytes, are no head.
[[nodiscard]] bool lane_DecodeHead(std::span<const uint8_t> bytes, LaneHead& head);
uint64_t lane_CheckSum(std::span<const uint8_t> bytes);

struct LaneSummary {
    std::vector<uint64_t> objects;            // ids, ascending: all that were known up to the block's end
    std::vector<uint32_t> kinds;              // of its events, ascending
    std::vector<uint32_t> states;             // that occur, ascending
    std::vector<uint32_t> start;              // by object, number of the state just before the block
    std::vector<uint32_t> statuses, events;   // how many each object has
    std::vector<uint32_t> priorities, names;  // likewise; of the facts
};

// Event by event.
struct LaneColumns {
    std::vector<uint64_t> ticks;           // from the block's first one
    std::vector<uint32_t> kinds, objects;  // numbers of the summary
    // Statuses that another event left; of one event by object.
    std::vector<uint32_t> changeAt;  // event of the block
    std::vector<uint32_t> changeObject, changeState;
};

// Object by object.
struct LaneLists {
    std::vector<uint32_t> statusAt, statusState;  // event of the block, and number of the state
    std::vector<uint32_t> eventAt, eventKind;
};

// Reading. The bytes must be followed by column_Slack more. False when they can't be parts of such a block.
[[nodiscard]] bool lane_DecodeSummary(const LaneHead& head, std::span<const uint8_t> bytes,
                                      LaneSummary& summary);
[[nodiscard]] bool lane_DecodeTimes(const LaneHead& head, std::span<const uint8_t> bytes,
                                    std::vector<uint64_t>& ticks);
// The lists of statuses alone; whether an object's events rise is not looked at.
[[nodiscard]] bool lane_DecodeStatusLists(const LaneHead& head, const LaneSummary& summary,
                                          std::span<const uint8_t> bytes, LaneLists& lists);
// Both put into columns what the lists have, in the order of the events. Lists are room to work in.
[[nodiscard]] bool lane_DecodeStatuses(const LaneHead& head, const LaneSummary& summary,
                                       std::span<const uint8_t> bytes, LaneLists& lists,
                                       LaneColumns& columns);
[[nodiscard]] bool lane_DecodeEvents(const LaneHead& head, const LaneSummary& summary,
                                     std::span<const uint8_t> bytes, LaneLists& lists, LaneColumns& columns);

// Writing.
void lane_EncodeSummary(const LaneSummary& summary, ByteBuffer& out);
void lane_EncodePairs(std::span<const uint32_t> first, std::span<const uint32_t> second, ByteBuffer& out);
