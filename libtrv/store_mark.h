// A number that tells stores apart: made of what a store says of itself, and of the time and the place of
// each checkpoint up to an event. What is kept beside a store bears it, to be known for that of another one.
#pragma once

#include <cstdint>

#include "libtrv/store_files.h"

struct TraceStore;

class StoreMark {
  public:
    StoreMark() = default;
    explicit StoreMark(const StoreFacts& facts);
    // The next checkpoint: the time of its event, and where its first packet stands in the .trs.
    void Add(mt_Time time, uint64_t offset) {
        mix(time);
        mix(offset);
    }
    uint64_t value() const { return value_; }

  private:
    void mix(uint64_t word) {
        value_ = (value_ ^ word) * 0x9E3779B97F4A7C15ull;
        value_ ^= value_ >> 29;
    }
    uint64_t value_ = 0;
};

// Of an open store up to so many events, as its index has it.
uint64_t mt_MarkOf(const TraceStore& store, uint32_t events);
