// Core files: the event log of a target that stopped, saved whole from its memory. Two layouts: versions 1
// and 4 with a log of records and a table of their addresses, version 2 with an array of fixed records.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "chronoweave/import/raw_decoder.h"

// The reader's state. It owns nothing, so that a non-local return may leave its reader at any point; the
// pointers lead into the file's bytes, whose size was checked against the counts.
struct CoreLogImage {
    int version = 0;
    bool bigEndian = false;
    uint32_t taskCount = 0;
    uint32_t slotCount = 0;  // entries of the event table, or events of the array
    uint32_t firstSlot = 0;  // the oldest event
    uint32_t nextSlot = 0;   // behind the newest
    uint32_t ticksPerSecond = 0;
    uint32_t logSize = 0;
    uint32_t logBase = 0;  // target address of the log's first byte
    const uint8_t* tasks = nullptr;
    const uint8_t* log = nullptr;     // the records; versions 1 and 4
    const uint8_t* events = nullptr;  // the address table, or the array
    int64_t taskCursor = -1;
    int64_t slotCursor = -1;
    uint32_t slotsRead = 0;
    bool wild = false;  // a slot outside the table was asked for
};

// Decodes a core file's header. False with the words in error: bad format, unknown version or bad size. fatal
// tells that they are of the kind that ends the program: the caller shows them and nothing else.
[[nodiscard]] bool core_ReadHeader(std::span<const uint8_t> file, CoreLogImage& image, std::string& error,
                                   bool& fatal);
// The length of the next record, 0 at the end, -1 when the log is damaged. record holds raw_RecordRoom bytes.
// With trace, tells of each event of the log on standard output.
int core_NextRecord(CoreLogImage& image, uint8_t* record, bool trace);

// Decodes a whole core file into a store. False when there is none. error then tells why, and else what
// damage ended the log; the store holds what stood before it.
bool core_Import(RawSession& session, std::span<const uint8_t> file, const std::string& name,
                 const WriterMaker& make, std::string& error, bool& fatal);
