// The packets of the .trs, one by one: what stands behind a type byte, with no knowledge of the packets
// around it. What holds them against one another and against the index is block_reader.h.
#pragma once

#include <cstddef>
#include <cstdint>

#include "libtrv/event.h"
#include "libtrv/gfile.h"
#include "libtrv/state_table.h"

constexpr size_t mt_EntryHead = 10;  // of an entry of a state table: type, id, length
constexpr size_t mt_KeySize = 6;     // of an objects-used key: type, id

// True when the bytes of a task's state block are such as a task can have: each flag 0 or 1, what is reserved
// 0. Smaller blocks are not known here, and true; there are no larger ones.
[[nodiscard]] bool mt_IsPlausibleBlock(uint16_t objectType, std::span<const uint8_t> block);

constexpr uint32_t mt_LargestBlock = 0xFFFF;  // bytes of a state block that a change can create
// A change of a task that reaches behind its block is ignored, but none reaches so far.
constexpr uint32_t mt_FarBehindTask = 256;

// How the parse of an event ended: it is whole, more bytes are needed, a change is of no known kind, or one
// is such as none can be.
enum class mt_Parse { Whole, NeedMore, UnknownChange, Implausible };

// Parses the event whose first field, its time, is at start; there bytes can be looked at. size becomes the
// event's length (NeedMore: what is certainly needed, the others: as far as it is known). The event's
// spans point into the bytes.
inline mt_Parse mt_ParseEvent(const uint8_t* start, size_t there, EventRecord& event, size_t& size) {
    constexpr size_t head = 16;
    size = head;
    if (there < head) return mt_Parse::NeedMore;
    event.time = load_be64(start);
    const size_t extra = load_be32(start + 8);
    event.type = load_be16(start + 12);
    event.subtype = load_be16(start + 14);
    event.extra = {start + head, extra};
    const size_t changes = head + extra;
    size_t at = changes;
    for (;;) {
        size = at + 1;
        if (there <= at) return mt_Parse::NeedMore;
        const uint8_t kind = start[at];
        if (kind == mt_ChangeEnd) break;
        if (kind > mt_ChangeEnd) return mt_Parse::UnknownChange;
        const size_t fixed = kind == mt_ChangeCreate ? 9 : kind == mt_ChangeModify ? 10 : 7;
        size = at + fixed;
        if (there < size) return mt_Parse::NeedMore;
        at = size;
        if (kind == mt_ChangeModify) {
            const uint32_t length = start[size - 1], end = load_be16(start + size - 3) + length;
            at += length;
            if (end > (load_be16(start + size - 9) == mt_ObjectTask ? mt_FarBehindTask : mt_LargestBlock))
                return mt_Parse::Implausible;
        } else if (kind == mt_ChangeCreate) {
            const size_t length = load_be16(start + size - 2);
            const bool far = length > mt_TaskBlockSize && load_be16(start + size - 8) == mt_ObjectTask;
            if (length == 0 || far) return mt_Parse::Implausible;
            at += length;
            if (there < at) continue;
            if (!mt_IsPlausibleBlock(load_be16(start + size - 8), {start + size, length}))
                return mt_Parse::Implausible;
        }
    }
    event.changes = ChangeList({start + changes, at - changes});
    return mt_Parse::Whole;
}

// Reads the event whose type byte was just taken. False when the file ends within it; a change of no known
// kind is reported and ends its changes. The spans of the event point into the file's buffer and last until
// the next read.
[[nodiscard]] bool mt_ReadEvent(GFile& file, EventRecord& event);
// Reads the entries of a state table packet whose type byte was just taken; false when the file ends within
// it.
[[nodiscard]] bool mt_ReadStateTable(GFile& file, StateTable& table);
void mt_SkipObjectsUsed(GFile& file);
