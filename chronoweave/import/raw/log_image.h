// The second kind of raw event file: a memory dump of the target's event log, with its task table and its
// ring of records. Its addresses come from the file, so each is checked before it is followed.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "chronoweave/import/raw/raw_header.h"
#include "chronoweave/import/raw/raw_record.h"
#include "chronoweave/import/raw/task_table.h"
#include "chronoweave/import/source/source.h"

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
    bool ringStands = true;  // the image reaches to the ring
    // How far it is read.
    struct Cursor {
        int64_t task = -1;
        uint64_t position = 0;
        bool positionSet = false;
        bool wrapped = false;  // the position has gone back to the ring's first byte
    } cursor;
    std::string damage;  // what is wrong with it, the first thing met; empty for a sound image
};

// Takes the bytes behind the header. False when they don't hold the fixed fields.
[[nodiscard]] bool log_Read(std::vector<uint8_t> bytes, bool bigEndian, RawLogImage& image);

// The next record: first a Refresh record for each task in use, then the ring from the oldest record on. The
// result is its length; 0 at the end, and when the image is damaged. record holds raw_RecordRoom bytes.
uint32_t log_NextRecord(RawLogImage& image, uint8_t* record);

// A log image as a source.
class LogImageSource : public EventSource {
  public:
    LogImageSource(RawLogImage image, const EventSourceHeader& header);

    const SourceFacts& facts() const override { return facts_; }
    SourceStep next(SourceRecord& record) override;
    SourceExtent extent() const override;
    std::optional<SourceLook> look(const Progress& progress) override;
    const SourceCounts& counts() const override { return records_.counts(); }
    Result damage() const override;
    void settle() override { records_.settle(); }

  private:
    RawLogImage image_;
    SourceFacts facts_;
    RawRecords records_;
    uint64_t done_ = 0, paused_ = 0;  // bytes of records
    uint8_t record_[raw_RecordRoom];
};
