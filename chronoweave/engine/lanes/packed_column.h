// Columns of numbers in as few bits as their values need. The bits of a column are counted from the lowest of
// its first byte. A flat column has one width for all values. A rising one, and a stepped one, has for each
// group of 64 values the group's first value and what the others lie above it; of a stepped one each value
// can be read where it stands, as those of a flat one can.
#pragma once

#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

#include "libtrv/byte_buffer.h"

constexpr size_t column_Group = 64;
// Bytes that must be there to be looked at behind a column that is read; whatever they are.
constexpr size_t column_Slack = 16;

void column_PutFlat(ByteBuffer& out, std::span<const uint16_t> values);
void column_PutFlat(ByteBuffer& out, std::span<const uint32_t> values);
void column_PutFlat(ByteBuffer& out, std::span<const uint64_t> values);
// Values never fall.
void column_PutRising(ByteBuffer& out, std::span<const uint64_t> values);
void column_PutStepped(ByteBuffer& out, std::span<const uint64_t> values);

// A flat column where it stands. One of nothing gives zeros.
class FlatView {
  public:
    FlatView() = default;
    FlatView(const uint8_t* bits, unsigned width)
        : bits_(bits), width_(width), mask_(width >= 64 ? UINT64_MAX : (uint64_t{1} << width) - 1) {}
    // Of a column of at most 57 bits a value.
    uint64_t at(size_t number) const {
        const size_t bit = number * width_;
        uint64_t word;
        std::memcpy(&word, bits_ + bit / 8, 8);
        return word >> bit % 8 & mask_;
    }
    // Of any column.
    uint64_t WideAt(size_t number) const {
        const size_t bit = number * width_, shift = bit % 8;
        uint64_t word;
        std::memcpy(&word, bits_ + bit / 8, 8);
        word >>= shift;
        if (shift + width_ > 64) word |= uint64_t{bits_[bit / 8 + 8]} << (64 - shift);
        return word & mask_;
    }

  private:
    static constexpr uint8_t nothing[column_Slack] = {};
    const uint8_t* bits_ = nothing;
    unsigned width_ = 0;
    uint64_t mask_ = 0;
};

class SteppedView {
  public:
    SteppedView() = default;
    uint64_t at(size_t number) const {
        const size_t group = number / column_Group;
        const uint64_t first = firsts_.WideAt(group), from = places_.at(group), to = places_.at(group + 1);
        if (to - from - 1 > 63 || to > end_) return first;  // no bits, or no sense
        return first + FlatView(bits_ + from * 8, static_cast<unsigned>(to - from)).WideAt(number % 64);
    }
    // The number of the first value that is not below one; the count for none.
    size_t FirstFrom(uint64_t value) const;

  private:
    friend class ColumnReader;
    FlatView firsts_, places_;
    const uint8_t* bits_ = nullptr;
    uint64_t end_ = 0;  // of the places
    size_t count_ = 0;
};

// Takes columns off bytes, one after the other. What does not fit its bytes or its limits is a failure, and
// then everything behind it is too. Behind the bytes there must be column_Slack more.
class ColumnReader {
  public:
    explicit ColumnReader(std::span<const uint8_t> bytes)
        : at_(bytes.data()), end_(bytes.data() + bytes.size()) {}
    bool ok() const { return ok_; }
    bool AtEnd() const { return ok_ && at_ == end_; }

    uint32_t Number();  // 32 bits, most significant byte first
    // So many of them where they stand; null on a failure.
    const uint8_t* Numbers(size_t count);
    std::span<const uint8_t> Bytes(size_t count);
    // So many values, each below the limit.
    void Flat(size_t count, uint64_t limit, std::vector<uint32_t>& values);
    void Flat(size_t count, uint64_t limit, std::vector<uint64_t>& values);
    // So many values that never fall, the last one at most the limit, which is below 2^64 - 1.
    void Rising(size_t count, uint64_t limit, std::vector<uint64_t>& values);
    void Stepped(size_t count, uint64_t limit, std::vector<uint64_t>& values);
    // Columns to be read where they stand; values are not looked at. Of at most 57 bits a value.
    FlatView FlatAt(size_t count);
    SteppedView SteppedAt(size_t count);

  private:
    size_t left() const { return static_cast<size_t>(end_ - at_); }
    bool fail() { return ok_ = false; }
    bool TakeFlat(size_t count, unsigned& width, const uint8_t*& bits);
    template <class Value>
    bool Unpack(size_t count, uint64_t limit, std::vector<Value>& values);
    struct Group {
        unsigned width = 0;
        const uint8_t* bits = nullptr;
    };
    template <class NextGroup>
    void Groups(const std::vector<uint64_t>& firsts, size_t count, uint64_t limit,
                std::vector<uint64_t>& values, NextGroup&& next);

    const uint8_t* at_;
    const uint8_t* end_;
    bool ok_ = true;
};
