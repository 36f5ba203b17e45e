// The task table of log images and core files, and the records that tell the store of its tasks.
#pragma once

#include <cstdint>
#include <cstring>

constexpr uint32_t task_EntrySize = 44;
constexpr uint32_t task_RecordSize = 51;

// Makes the Refresh record of an entry (task_EntrySize bytes): type 6, subtype 10, time 0, id, priority and
// name as they stand in the table.
inline void task_MakeRefresh(const uint8_t* entry, uint8_t* record) {
    static constexpr uint8_t head[12] = {0, 6, 0, 10};
    std::memcpy(record, head, 12);
    std::memcpy(record + 12, entry + 36, 8);
    std::memcpy(record + 20, entry, 31);
}

// The record of the next entry in use behind cursor, which starts at -1: task_RecordSize, or 0 when there is
// none.
inline uint32_t task_NextRecord(const uint8_t* table, uint32_t count, int64_t& cursor, uint8_t* record) {
    while (cursor + 1 < static_cast<int64_t>(count)) {
        const uint8_t* entry = table + ++cursor * task_EntrySize;
        if (entry[34] == 0) continue;
        task_MakeRefresh(entry, record);
        return task_RecordSize;
    }
    return 0;
}
