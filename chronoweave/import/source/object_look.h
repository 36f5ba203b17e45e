// How many objects a source's events are of, and how much room its events take in a store, so that the
// store's checkpoints can be set apart far enough; and how far its times go.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

#include "libtrv/byte_order.h"
#include "libtrv/store_format.h"

struct SourceLook {
    uint64_t records = 0;
    uint64_t objects = 0;
    uint64_t bytes = 0;  // of the records' event packets, extra data not counted
    mt_Time newest = 0;  // the highest time, in the source's ticks; 0 when none has one
};

// Enters records one by one.
class ObjectLook {
  public:
    // extra begins with the object's id in the target's byte order; a record without is of no object.
    void enter(uint16_t type, std::span<const uint8_t> extra, bool bigEndian) {
        ++records_;
        // As a rule: a context switch takes one task out and puts one in.
        changes_ += type == mt_TaskChange ? 2 : type == mt_StatusChange ? 1 : 0;
        if (extra.size() < 4) return;
        const uint32_t id = load_32(extra.data(), bigEndian);
        if (id != last_ || id == 0) EnterId(id);
    }
    void EnterTime(mt_Time time) { newest_ = std::max(newest_, time); }
    SourceLook seen() const;

  private:
    void EnterId(uint32_t id);
    void grow();

    std::vector<uint32_t> slots_ = std::vector<uint32_t>(256);  // open addressing; 0 is free
    uint64_t keys_ = 0;                                         // other than 0
    bool zero_ = false;
    uint32_t last_ = 0;  // the id that was entered last
    uint64_t records_ = 0, changes_ = 0;
    mt_Time newest_ = 0;
};

// The checkpoint interval that lets checkpoints take no more room than events once all objects are known: a
// multiple of 100, and 100 as long as so many events take more room than the objects' state. It may be up to
// a quarter longer than that asks, so that the store's last block, which opening reads, is short.
uint32_t look_Interval(const SourceLook& look);
// For a source that can't be looked over.
constexpr uint32_t look_UnknownInterval = 1000;
