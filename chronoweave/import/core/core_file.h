// Core files: the event log of a target that stopped, saved whole from its memory. Two layouts: versions 1
// and 4 with a log of records and a table of their addresses, version 2 with an array of fixed records.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "chronoweave/import/raw/raw_record.h"
#include "chronoweave/import/source/source.h"

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

// Decodes a core file's header. Refused for a bad format, and fatally for an unknown version or a bad size.
Result core_ReadHeader(std::span<const uint8_t> file, CoreLogImage& image);
// The length of the next record, 0 at the end, -1 when the log is damaged. record holds raw_RecordRoom bytes.
// With trace, tells of each event of the log on standard output.
int core_NextRecord(CoreLogImage& image, uint8_t* record, bool trace);

// Records read under one return point. Nothing here owns memory.
struct CoreBatch {
    static constexpr int room = 256;
    int count = 0;
    int end = 1;  // the result that ended the log; 1 while there is more
    int lengths[room];
    uint8_t records[room][raw_RecordRoom];
};

// A core file as a source.
class CoreSource : public EventSource {
  public:
    // Refused for its header, most often fatally. name stands in messages.
    static Result open(std::vector<uint8_t> file, const std::string& name,
                       std::unique_ptr<EventSource>& source);

    const SourceFacts& facts() const override { return facts_; }
    SourceStep next(SourceRecord& record) override;
    SourceExtent extent() const override;
    std::optional<SourceLook> look(const Progress& progress) override;
    const SourceCounts& counts() const override { return records_.counts(); }
    Result damage() const override;
    void settle() override { records_.settle(); }

  private:
    CoreSource(std::vector<uint8_t> file, const std::string& name);
    bool HasBatch() const { return taken_ < batch_->count; }
    void ReadBatch();

    std::vector<uint8_t> file_;
    std::string name_;
    CoreLogImage image_;
    SourceFacts facts_;
    RawRecords records_;
    std::unique_ptr<CoreBatch> batch_;
    int taken_ = 0;           // records of the batch
    uint64_t delivered_ = 0;  // records so far
    bool faulted_ = false;    // a wild address was caught
};
