// The lane index of a store, open for reading: which blocks there are, and what is in them. It covers the
// store's events from the first one on up to some event, not always the last one: what lies behind is to be
// read from the store. The file is read where it stands; only the heads of the blocks are kept.
//
// What is damaged, or of another store, is found by check sums and marks: such an index is not opened, and
// one that turns out to be damaged later says so and gives nothing more. A part is checked when it is come to
// first.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "chronoweave/engine/lanes/lane_block.h"
#include "chronoweave/engine/lanes/lane_facts.h"
#include "chronoweave/engine/lanes/lane_sums.h"
#include "libtrv/trace_store.h"
#include "shared/libcxxutil/mapped_file.h"

class LaneIndex {
  public:
    // The store's, beside it or in the cache directory. Null when there is none that fits; why then tells
    // what is wrong with one that stands there, and is without failure where there is none.
    static std::unique_ptr<LaneIndex> Open(TraceStore& store, Result& why);
    // The file of a name; whether it fits a store is not looked at.
    static Result OpenFile(const std::string& name, std::unique_ptr<LaneIndex>& index);
    // For tests: bytes in place of the file.
    static Result OfBytes(std::vector<uint8_t> bytes, std::unique_ptr<LaneIndex>& index);

    // Takes in blocks that were appended since and whose events the store has by now.
    void Refresh(TraceStore& store);

    // Sequence number of the first event that is not covered; 1 where none is.
    uint32_t EndEvent() const { return heads_.empty() ? 1 : heads_.back().end(); }
    size_t BlockCount() const { return heads_.size(); }
    const LaneHead& head(size_t block) const { return heads_[block]; }
    // The block of an event that is covered.
    size_t BlockOf(uint32_t sequence) const;
    // Sequence number of the first covered event that does not lie ahead of a tick; EndEvent where there is
    // none. Nothing when the index is damaged.
    std::optional<uint32_t> FirstFrom(mt_Time tick);
    // Tick of an event that is covered; nothing when the index is damaged.
    std::optional<mt_Time> TickOf(uint32_t sequence);
    // How many events of each kind each object has among those from one to ahead of another, which are
    // covered: in portions, to be summed up. False when the index is damaged.
    using Visit = std::function<void(uint32_t object, uint32_t kind, uint64_t count)>;
    [[nodiscard]] bool Count(uint32_t first, uint32_t end, const Visit& visit);

    // A part of a block, followed by what readers of columns may look at behind it; it lasts as long as the
    // index. Nothing when the file is damaged there.
    std::optional<std::span<const uint8_t>> Part(size_t block, LanePart part);
    // What parts hold. False when the file is damaged there. Columns of events and of statuses are made of
    // theirs only where wanted.
    [[nodiscard]] bool ReadSummary(size_t block, LaneSummary& summary);
    enum class Columns { Times, Statuses, All };
    [[nodiscard]] bool ReadColumns(size_t block, const LaneSummary& summary, Columns wanted,
                                   LaneColumns& columns);
    // The times of the block's events, from its first one, and the statuses object by object.
    [[nodiscard]] bool ReadStatusLists(size_t block, const LaneSummary& summary, std::vector<uint64_t>& ticks,
                                       LaneLists& lists);
    // Sums of a level that end with the block, which has them.
    [[nodiscard]] bool ReadSums(size_t block, size_t level, LaneSums& sums);
    [[nodiscard]] bool ReadFacts(size_t block, const LaneSummary& summary, LaneFacts& facts);
    // What could not be read of a block was wrong. Always false.
    bool Fail(size_t block, LanePart part);
    // All bytes of a block, as they were appended. False when the file does not have them any more.
    [[nodiscard]] bool ReadWhole(size_t block, std::vector<uint8_t>& bytes);

    const std::string& name() const { return name_; }
    // Not ok once damage was met.
    const Result& damage() const { return damage_; }

  private:
    LaneIndex() = default;
    static Result Begin(std::unique_ptr<MappedFile> file, const std::string& name,
                        std::unique_ptr<LaneIndex>& index);
    Result TakeHeads(TraceStore* store);
    [[nodiscard]] bool Fits(TraceStore& store);
    bool FailAt(uint64_t offset);
    bool CountInBlock(size_t block, uint32_t first, uint32_t end, const Visit& visit);
    SteppedView TimesOf(size_t block);

    std::unique_ptr<MappedFile> file_;
    std::string name_;
    std::vector<LaneHead> heads_;
    std::vector<uint64_t> offsets_;  // of the heads
    std::vector<uint8_t> checked_;   // by block, a bit for each part that was found to be right
    uint64_t tail_ = 0;              // where the next block's first byte stands
    LaneLists lists_;                // room to work in
    Result damage_;
};
