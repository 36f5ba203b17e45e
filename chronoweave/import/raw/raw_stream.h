// A stream of raw records behind a header: a file read once, one that still grows, or a pipe.
#pragma once

#include <string>
#include <vector>

#include "chronoweave/import/raw/raw_header.h"
#include "chronoweave/import/raw/raw_record.h"
#include "chronoweave/import/source/byte_source.h"
#include "chronoweave/import/source/source.h"

class RawStream : public EventSource {
  public:
    // first is the offset of the first record. name stands in messages.
    RawStream(std::unique_ptr<ByteSource> bytes, const EventSourceHeader& header, uint64_t first,
              const std::string& name);

    const SourceFacts& facts() const override { return facts_; }
    SourceStep next(SourceRecord& record) override;
    size_t NextAtHand(std::span<SourceRecord> records) override;
    SourceExtent extent() const override;
    std::optional<SourceLook> look(const Progress& progress) override;
    std::optional<mt_Time> LookForNewest(const Progress& progress) override;
    const SourceCounts& counts() const override { return records_.counts(); }
    Result damage() const override { return damage_; }
    void SetDeadline(bool isThere) override { deadline_ = isThere; }
    void settle() override { records_.settle(); }

    // Where the next unread record begins.
    uint64_t offset() const { return base_ + at_; }

  private:
    SourceStep ReadMore();
    SourceStep WaitForMore(SourceStatus status);
    template <typename Enter>
    bool look_ahead(const Progress& progress, const Enter& enter);

    std::unique_ptr<ByteSource> bytes_;
    SourceFacts facts_;
    std::string name_;
    RawRecords records_;
    Result damage_;
    bool deadline_ = false;
    std::vector<uint8_t> buffer_;
    uint64_t base_ = 0;  // offset of buffer_[0]
    size_t at_ = 0, there_ = 0;
    bool walked_ = false;  // the bytes that are there were walked, and no pause was made since
};
