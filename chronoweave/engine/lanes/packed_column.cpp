#include "chronoweave/engine/lanes/packed_column.h"

#include <algorithm>
#include <array>
#include <bit>
#include <utility>

#include "libtrv/byte_order.h"

namespace {

unsigned width_of(uint64_t value) {
    return static_cast<unsigned>(std::bit_width(value));
}

size_t bytes_of(size_t count, unsigned width) {
    return (count * width + 7) / 8;
}

// Puts values of a width into bits.
class BitWriter {
  public:
    BitWriter(ByteBuffer& out, size_t count, unsigned width)
        : to_(out.room(bytes_of(count, width) + 8)), width_(width) {
        size_ = bytes_of(count, width);
    }
    void put(uint64_t value) {
        held_ |= value << used_;
        if (used_ + width_ < 64) {
            used_ += width_;
            return;
        }
        std::memcpy(to_, &held_, 8);
        to_ += 8;
        const unsigned done = 64 - used_;
        held_ = done < 64 ? value >> done : 0;
        used_ = width_ - done;
    }
    // The number of bytes that all of it takes.
    size_t finish() {
        if (used_ > 0) std::memcpy(to_, &held_, 8);
        return size_;
    }

  private:
    uint8_t* to_;
    unsigned width_, used_ = 0;
    uint64_t held_ = 0;
    size_t size_ = 0;
};

template <class Value>
void put_bits(ByteBuffer& out, size_t count, unsigned width, Value&& value) {
    BitWriter bits(out, count, width);
    for (size_t i = 0; i < count; ++i) bits.put(value(i));
    out.took(bits.finish());
}

uint64_t mask_of(unsigned width) {
    return width >= 64 ? UINT64_MAX : (uint64_t{1} << width) - 1;
}

// The value at a place; 9 bytes from its first bit on are looked at.
uint64_t bits_at(const uint8_t* bits, size_t bit, unsigned width) {
    uint64_t word;
    std::memcpy(&word, bits + bit / 8, 8);
    const unsigned shift = bit % 8;
    uint64_t value = word >> shift;
    if (shift + width > 64) value |= uint64_t{bits[bit / 8 + 8]} << (64 - shift);
    return value & mask_of(width);
}

// Values of a width that the compiler knows, eight at a time, as they fill whole bytes. What is left over is
// for the caller.
template <class Value, unsigned width>
void unpack_eights(const uint8_t* bits, size_t eights, Value* values) {
    for (; eights > 0; --eights, bits += width, values += 8)
        for (unsigned i = 0; i < 8; ++i) {
            uint64_t word;
            std::memcpy(&word, bits + i * width / 8, 8);
            values[i] = static_cast<Value>(word >> i * width % 8 & ((uint64_t{1} << width) - 1));
        }
}

constexpr unsigned quick_widths = 33;  // those below; more than columns of this system need
template <class Value, unsigned... widths>
constexpr auto unpackers(std::integer_sequence<unsigned, widths...>) {
    return std::array{&unpack_eights<Value, widths>...};
}

template <class Value>
void unpack(const uint8_t* bits, size_t count, unsigned width, Value* values) {
    constexpr auto quick = unpackers<Value>(std::make_integer_sequence<unsigned, quick_widths>());
    size_t done = 0;
    if (width < quick_widths) {
        done = count / 8 * 8;
        quick[width](bits, count / 8, values);
    }
    for (; done < count; ++done) values[done] = static_cast<Value>(bits_at(bits, done * width, width));
}

}  // namespace

void column_PutFlat(ByteBuffer& out, std::span<const uint32_t> values) {
    uint32_t most = 0;
    for (const uint32_t value : values) most |= value;
    const unsigned width = width_of(most);
    out.put8(static_cast<uint8_t>(width));
    put_bits(out, values.size(), width, [values](size_t i) { return uint64_t{values[i]}; });
}

// The first values of the groups stand ahead of all, as a column of their own.
void column_PutRising(ByteBuffer& out, std::span<const uint64_t> values) {
    const size_t groups = (values.size() + column_Group - 1) / column_Group;
    const uint64_t most = groups == 0 ? 0 : values[(groups - 1) * column_Group];
    const unsigned width = width_of(most);
    out.put8(static_cast<uint8_t>(width));
    put_bits(out, groups, width, [values](size_t i) { return values[i * column_Group]; });
    for (size_t first = 0; first < values.size(); first += column_Group) {
        const size_t count = std::min(column_Group, values.size() - first);
        const unsigned own = width_of(values[first + count - 1] - values[first]);
        out.put8(static_cast<uint8_t>(own));
        put_bits(out, count, own, [values, first](size_t i) { return values[first + i] - values[first]; });
    }
}

uint32_t ColumnReader::Number() {
    if (!ok_ || left() < 4) return fail();
    at_ += 4;
    return load_be32(at_ - 4);
}

bool ColumnReader::TakeFlat(size_t count, unsigned& width, const uint8_t*& bits) {
    if (!ok_ || left() < 1) return fail();
    width = *at_++;
    if (width > 64 || (width > 0 && count > left() * 8 / width)) return fail();
    bits = at_;
    at_ += bytes_of(count, width);
    return true;
}

void ColumnReader::SkipFlat(size_t count) {
    unsigned width = 0;
    const uint8_t* bits = nullptr;
    static_cast<void>(TakeFlat(count, width, bits));
}

template <class Value>
bool ColumnReader::Unpack(size_t count, uint64_t limit, std::vector<Value>& values) {
    unsigned width = 0;
    const uint8_t* bits = nullptr;
    values.clear();
    if (!TakeFlat(count, width, bits)) return false;
    values.resize(count);
    unpack(bits, count, width, values.data());
    Value most = 0;
    for (const Value value : values) most = std::max(most, value);
    return count == 0 || most < limit || fail();
}

void ColumnReader::Flat(size_t count, uint64_t limit, std::vector<uint32_t>& values) {
    static_cast<void>(Unpack(count, std::min<uint64_t>(limit, uint64_t{1} << 32), values));
}

void ColumnReader::Rising(size_t count, uint64_t limit, std::vector<uint64_t>& values) {
    std::vector<uint64_t> firsts;
    values.clear();
    if (count / column_Group > left() || limit == UINT64_MAX) ok_ = false;
    if (!ok_ || !Unpack((count + column_Group - 1) / column_Group, limit + 1, firsts)) return;
    values.resize(count);
    uint64_t before = 0;
    for (size_t first = 0; first < count; first += column_Group) {
        const size_t size = std::min(column_Group, count - first);
        unsigned width = 0;
        const uint8_t* bits = nullptr;
        if (!TakeFlat(size, width, bits)) return;
        const uint64_t base = firsts[first / column_Group];
        if (base < before) {
            ok_ = false;
            return;
        }
        uint64_t* const group = values.data() + first;
        unpack(bits, size, width, group);
        bool rises = true;
        for (size_t i = 0; i < size; ++i) {
            rises = rises && group[i] <= limit - base && base + group[i] >= before;
            group[i] = before = base + group[i];
        }
        if (!rises) {
            ok_ = false;
            return;
        }
    }
}
