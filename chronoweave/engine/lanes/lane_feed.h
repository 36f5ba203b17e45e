// Makes the lane index of a store while the store is written, in the same pass. The index is never ahead of
// the store: a block is put into the file once readers see all its events in the store.
//
// An index can't fail a store: where it can't be made or written, or a store is such as none can be made of,
// there is none.
#pragma once

#include <deque>
#include <memory>
#include <string>

#include "chronoweave/engine/lanes/block_builder.h"
#include "chronoweave/engine/lanes/lane_file.h"
#include "libtrv/append_observer.h"

class LaneFeed : public AppendObserver {
  public:
    // For a store of this base name, which is begun. Index files of earlier stores of the name go.
    LaneFeed(const std::string& base, bool bigEndian, uint32_t blockEvents);

    void Appended(const EventRecord& event, uint64_t mark) override;
    void Committed(uint32_t events) override;
    bool GiveRoom() override;
    void Refused() override { GiveUp(); }
    // All is committed that is to go in: what is left goes into a block of its own.
    void Finish();

  private:
    struct Sealed {
        uint32_t last;  // event
        ByteBuffer bytes;
    };
    void GiveUp();
    void Seal();

    LaneBlockBuilder builder_;
    std::unique_ptr<LaneFile> file_;  // null once given up
    std::deque<Sealed> sealed_;       // not in the file yet
    ByteBuffer spare_;                // of a block that is, for the next one
    uint32_t taken_ = 0, committed_ = 0;
    uint64_t mark_ = 0;
};
