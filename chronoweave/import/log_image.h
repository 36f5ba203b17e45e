// The second kind of raw event file: a memory dump of the target's event log, with its task table and its
// ring of records. Its addresses come from the file, so each is checked before it is followed.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "chronoweave/import/raw_decoder.h"
#include "chronoweave/import/task_table.h"

// Offsets count from behind the file's header.
struct RawLogImage {
    std::vector<uint8_t> bytes;
    bool bigEndian = false;
    uint32_t taskCount = 0;  // entries that stand whole in the image
    uint32_t base = 0;       // target address of offset 0
    uint64_t wrap = 0;       // where the ring's used part ends, 0 when it has not wrapped
    uint64_t end = 0;        // where the newest record ends
    uint64_t start = 0;      // the oldest record
    uint64_t ring = 0;       // the ring's first byte
    int64_t taskCursor = -1;
    uint64_t position = 0;
    bool positionSet = false;
    bool wrapped = false;    // the position has gone back to the ring's first byte
    bool ringStands = true;  // the image reaches to the ring
    std::string damage;      // what is wrong with it, the first thing met; empty for a sound image
};

// Takes the bytes behind the header. False when they don't hold the fixed fields.
[[nodiscard]] bool log_Read(std::vector<uint8_t> bytes, bool bigEndian, RawLogImage& image);

// The next record: first a Refresh record for each task in use, then the ring from the oldest record on. The
// result is its length; 0 at the end, and when the image is damaged. record holds raw_RecordRoom bytes.
uint32_t log_NextRecord(RawLogImage& image, uint8_t* record);

// Feeds all records to the session, whose writer is open.
void log_ReadThrough(RawSession& session, RawLogImage& image);
