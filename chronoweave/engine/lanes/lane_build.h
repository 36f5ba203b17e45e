// Makes the lane index of a store that has none, or one that covers the store's beginning only, in slices:
// the store stays open to everyone meanwhile. The index comes to stand when it is whole.
#pragma once

#include <memory>

#include "chronoweave/engine/lanes/block_builder.h"
#include "chronoweave/engine/lanes/lane_file.h"
#include "chronoweave/engine/lanes/lane_index.h"
#include "libtrv/trace_store.h"
#include "shared/libcxxutil/file_beside.h"

class LaneBuild {
  public:
    // The store outlives it. before: an index of the store that covers less; may be null, and is only read
    // here.
    LaneBuild(TraceStore& store, LaneIndex* before, uint32_t blockEvents = lane_BlockEvents);

    // Takes in about so many events more. False when it is over, and then at every later call.
    bool Step(uint32_t events);
    // Share of the store that was taken in, 0 to 1.
    double Share() const;
    // Once it is over: whether an index stands now. Where none does, why; without failure when no such store
    // can have one.
    bool Made() const { return made_; }
    const Result& trouble() const { return trouble_; }

  private:
    bool Place();
    bool Copy(LaneIndex& before);
    bool Append(std::span<const uint8_t> block);
    bool Finish();
    bool End(Result trouble = {});

    TraceStore& store_;
    LaneBlockBuilder builder_;
    uint32_t blockEvents_, next_ = 1, total_ = 0;
    FileBeside beside_;
    std::unique_ptr<LaneFile> file_;
    EventWalk walk_;
    ByteBuffer block_;
    bool over_ = false, made_ = false;
    Result trouble_;
};
