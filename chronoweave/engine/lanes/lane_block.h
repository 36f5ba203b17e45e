// A block of the lane index: what so many events in a row tell of who did what when, in columns. It holds
// three parts: the head, which alone is kept in memory; the summary, which tells of the objects, of their
// status just before the block, and how many events of each kind each had; and the columns, event by event.
//
// Within a block, objects and kinds are numbered in the order of their ids and codes.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

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

struct LaneHead {
    uint64_t mark = 0;   // of the store up to the block's last event
    uint32_t first = 0;  // sequence number of the first event
    uint32_t count = 0;  // of events; at least 1
    mt_Time firstTick = 0, lastTick = 0;
    uint32_t summaryBytes = 0, columnBytes = 0;
    uint64_t summaryCheck = 0, columnCheck = 0;     // sums over the bytes of the two parts
    uint32_t end() const { return first + count; }  // sequence number behind the last event
};
constexpr size_t lane_HeadBytes = 64;  // with a check sum over the others

void lane_EncodeHead(const LaneHead& head, ByteBuffer& out);
// False when the bytes, which are lane_HeadBytes, are no head.
[[nodiscard]] bool lane_DecodeHead(std::span<const uint8_t> bytes, LaneHead& head);
uint64_t lane_CheckSum(std::span<const uint8_t> bytes);

struct LaneSummary {
    std::vector<uint64_t> objects;  // ids, ascending: all that were known up to the block's end
    std::vector<uint32_t> kinds;    // of its events, ascending
    std::vector<uint32_t> states;   // that occur, ascending
    std::vector<uint32_t> start;    // by object, number of the state just before the block
    uint32_t changes = 0;           // entries of the columns
    // How many events of a kind an object had, for those that had any; by object, then by kind.
    std::vector<uint32_t> ofObject, ofKind, count;
};

struct LaneColumns {
    std::vector<uint64_t> ticks;           // from the block's first one
    std::vector<uint32_t> kinds, objects;  // numbers of the summary
    // Statuses that another event left; of one event by object.
    std::vector<uint64_t> changeAt;  // event of the block
    std::vector<uint32_t> changeObject, changeState;
    void clear();
};
enum class LaneColumnSet { Times, All };  // Times: without kinds and objects

// The bytes must be followed by column_Slack more. False when they can't be parts of such a block.
[[nodiscard]] bool lane_DecodeSummary(const LaneHead& head, std::span<const uint8_t> bytes,
                                      LaneSummary& summary);
[[nodiscard]] bool lane_DecodeColumns(const LaneHead& head, const LaneSummary& summary,
                                      std::span<const uint8_t> bytes, LaneColumnSet set,
                                      LaneColumns& columns);
void lane_EncodeSummary(const LaneSummary& summary, ByteBuffer& out);
void lane_EncodeColumns(const LaneColumns& columns, ByteBuffer& out);
