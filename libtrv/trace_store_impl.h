// The inside of a reading store, shared by the files that implement trace_store.h.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "libtrv/damage.h"
#include "libtrv/gfile.h"
#include "libtrv/packets.h"
#include "libtrv/store_format.h"

class BlockReader;
class StateTable;

// In place of a block's offset: where it stands must be found by reading the one before. No block stands at
// the front of the file.
constexpr uint64_t mt_UnknownOffset = 0;

struct TraceStore {
    std::string base;
    std::unique_ptr<GFile> version, events, index;  // .trv, .trs, .tri

    uint32_t formatVersion = 0;
    uint32_t ticksPerSecond = 0;
    std::string osName;
    bool bigEndian = false;
    uint32_t checkpointInterval = mt_CheckpointInterval;

    // The index in memory: time of each block's first event, offset of its first packet. Where the file's own
    // is damaged, they are made anew from the stream.
    std::vector<mt_Time> blockTimes;
    std::vector<uint64_t> blockOffsets;
    uint64_t tail = 0;       // where the .trs ended when it was last scanned; 0 before
    uint64_t indexTail = 0;  // where the next refresh of the index begins

    DamageList damage;
    uint64_t checkedTail = 0;  // an end mark with nothing but an unfinished append behind it
    bool toldOfLateTimes = false;

    // Stands at the last event that was read for the bounds and the count; null before.
    std::unique_ptr<BlockReader> tailReader;
};

// Times compare with their high halves signed.
inline bool mt_Earlier(mt_Time a, mt_Time b) {
    return static_cast<int64_t>(a) < static_cast<int64_t>(b);
}

// The last block whose first event is strictly earlier than t, or block 0. The index must not be empty.
uint32_t mt_BlockOfTime(const TraceStore& store, mt_Time t);

// Positions a reader at the first event not before the key, which next then gives; the state becomes the one
// just before it. False when the store has no block.
bool mt_PositionByTime(TraceStore& store, mt_Time time, StateTable* state, BlockReader& reader);
// By events that stand ahead of it: 0 for the first event.
bool mt_PositionBehindEvents(TraceStore& store, uint32_t events, StateTable* state, BlockReader& reader);
