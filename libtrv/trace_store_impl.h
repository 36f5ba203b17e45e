// The inside of a reading store, shared by the files that implement trace_store.h, and the packet reader that
// the writer's recovery uses too.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "libtrv/event.h"
#include "libtrv/gfile.h"
#include "libtrv/trace_store.h"

struct TraceStore {
    std::string base;
    std::unique_ptr<GFile> version, events, index;  // .trv, .trs, .tri

    uint32_t formatVersion = 0;
    uint32_t ticksPerSecond = 0;
    std::string osName;
    bool bigEndian = false;
    uint32_t checkpointInterval = mt_CheckpointInterval;

    // The index in memory: time of each block's first event, offset of its first packet.
    std::vector<mt_Time> blockTimes;
    std::vector<uint32_t> blockOffsets;
    uint64_t tail = 0;       // where the .trs ended when it was last scanned; 0 before
    uint64_t indexTail = 0;  // where the next refresh of the index begins
};

// Times compare with their high halves signed.
inline bool mt_Earlier(mt_Time a, mt_Time b) {
    return static_cast<int64_t>(a) < static_cast<int64_t>(b);
}

// The last block whose first event is strictly earlier than t, or block 0. The index must not be empty.
uint32_t mt_BlockOfTime(const TraceStore& store, mt_Time t);

// Reads the event whose type byte was just taken. False when the file ends within it. The spans of the event
// point into the file's buffer and last until the next read.
[[nodiscard]] bool mt_ReadEvent(GFile& file, EventRecord& event);
// Reads the entries of a state table packet whose type byte was just taken; false when the file ends within
// it.
bool mt_ReadStateTable(GFile& file, StateTable& table);
bool mt_SkipStateTable(GFile& file);
void mt_SkipObjectsUsed(GFile& file);
