// Columns of numbers in as few bits as their values need. The bits of a column are counted from the lowest of
// its first byte. A flat column has one width for all values; a rising one has, for each group of 64 values,
// the group's first value and what the others lie above it.
#pragma once

#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

#include "libtrv/byte_buffer.h"

constexpr size_t column_Group = 64;
// Bytes that must be there to be looked at behind a column that is read; whatever they are.
constexpr size_t column_Slack = 16;

void column_PutFlat(ByteBuffer& out, std::span<const uint32_t> values);
// Values never fall.
void column_PutRising(ByteBuffer& out, std::span<const uint64_t> values);

// Takes columns off bytes, one after the other. What does not fit its bytes or its limits is a failure, and
// then everything behind it is too. Behind the bytes there must be column_Slack more.
class ColumnReader {
  public:
    explicit ColumnReader(std::span<const uint8_t> bytes)
        : at_(bytes.data()), end_(bytes.data() + bytes.size()) {}
    bool ok() const { return ok_; }
    bool AtEnd() const { return ok_ && at_ == end_; }

    uint32_t Number();  // 32 bits, most significant byte first
    // So many values, each below the limit.
    void Flat(size_t count, uint64_t limit, std::vector<uint32_t>& values);
    // So many values that never fall, the last one at most the limit.
    void Rising(size_t count, uint64_t limit, std::vector<uint64_t>& values);
    void SkipFlat(size_t count);

  private:
    size_t left() const { return static_cast<size_t>(end_ - at_); }
    bool fail() { return ok_ = false; }
    bool TakeFlat(size_t count, unsigned& width, const uint8_t*& bits);
    template <class Value>
    bool Unpack(size_t count, uint64_t limit, std::vector<Value>& values);

    const uint8_t* at_;
    const uint8_t* end_;
    bool ok_ = true;
};
