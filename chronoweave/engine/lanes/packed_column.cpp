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
// Values of a column whose bits tell nothing of their number.
constexpr size_t most_without_bits = size_t{1} << 22;

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
    const FlatView rest(bits, width);
    for (; done < count; ++done) values[done] = static_cast<Value>(rest.WideAt(done));
}

template <class Value>
void put_flat(ByteBuffer& out, std::span<const Value> values) {
    Value most = 0;
    for (const Value value : values) most |= value;
    const unsigned width = width_of(most);
    out.put8(static_cast<uint8_t>(width));
    put_bits(out, values.size(), width, [values](size_t i) { return uint64_t{values[i]}; });
}

std::span<const uint64_t> group_of(std::span<const uint64_t> values, size_t first) {
    return values.subspan(first, std::min(column_Group, values.size() - first));
}

// The first values of the groups, which stand ahead of all.
std::vector<uint64_t> firsts_of(std::span<const uint64_t> values) {
    std::vector<uint64_t> firsts;
    for (size_t first = 0; first < values.size(); first += column_Group) firsts.push_back(values[first]);
    return firsts;
}

}  // namespace

void column_PutFlat(ByteBuffer& out, std::span<const uint16_t> values) {
    put_flat(out, values);
}
void column_PutFlat(ByteBuffer& out, std::span<const uint32_t> values) {
    put_flat(out, values);
}
void column_PutFlat(ByteBuffer& out, std::span<const uint64_t> values) {
    put_flat(out, values);
}

void column_PutRising(ByteBuffer& out, std::span<const uint64_t> values) {
    put_flat<uint64_t>(out, firsts_of(values));
    for (size_t first = 0; first < values.size(); first += column_Group) {
        const auto group = group_of(values, first);
        const unsigned own = width_of(group.back() - group.front());
        out.put8(static_cast<uint8_t>(own));
        put_bits(out, group.size(), own, [group](size_t i) { return group[i] - group[0]; });
    }
}

void column_PutStepped(ByteBuffer& out, std::span<const uint64_t> values) {
    put_flat<uint64_t>(out, firsts_of(values));
    std::vector<uint32_t> places{0};
    for (size_t first = 0; first < values.size(); first += column_Group) {
        const auto group = group_of(values, first);
        places.push_back(places.back() + width_of(group.back() - group.front()));
    }
    put_flat<uint32_t>(out, places);
    for (size_t first = 0, at = 0; first < values.size(); first += column_Group, ++at) {
        const auto group = group_of(values, first);
        // A group that is not full has the room of a full one.
        put_bits(out, column_Group, places[at + 1] - places[at],
                 [group](size_t i) { return i < group.size() ? group[i] - group[0] : 0; });
    }
}

size_t SteppedView::FirstFrom(uint64_t value) const {
    // The last group that begins below it, if any, has the place.
    size_t low = 0, high = (count_ + column_Group - 1) / column_Group;
    while (low < high) {
        const size_t middle = low + (high - low) / 2;
        if (firsts_.WideAt(middle) < value)
            low = middle + 1;
        else
            high = middle;
    }
    if (low == 0) return 0;
    high = std::min(count_, low * column_Group);
    low = (low - 1) * column_Group + 1;
    while (low < high) {
        const size_t middle = low + (high - low) / 2;
        if (at(middle) < value)
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

// ---- Reading

uint32_t ColumnReader::Number() {
    if (!ok_ || left() < 4) return fail();
    at_ += 4;
    return load_be32(at_ - 4);
}

const uint8_t* ColumnReader::Numbers(size_t count) {
    return Bytes(count > left() / 4 ? SIZE_MAX : count * 4).data();
}

std::span<const uint8_t> ColumnReader::Bytes(size_t count) {
    if (!ok_ || count > left()) {
        fail();
        return {};
    }
    at_ += count;
    return {at_ - count, count};
}

bool ColumnReader::TakeFlat(size_t count, unsigned& width, const uint8_t*& bits) {
    if (!ok_ || left() < 1) return fail();
    width = *at_++;
    if (width > 64 || count > (width > 0 ? left() * 8 / width : most_without_bits)) return fail();
    bits = at_;
    at_ += bytes_of(count, width);
    return true;
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
void ColumnReader::Flat(size_t count, uint64_t limit, std::vector<uint64_t>& values) {
    static_cast<void>(Unpack(count, limit, values));
}

// next(group, size) takes the bits of a group.
template <class NextGroup>
void ColumnReader::Groups(const std::vector<uint64_t>& firsts, size_t count, uint64_t limit,
                          std::vector<uint64_t>& values, NextGroup&& next) {
    values.resize(count);
    uint64_t before = 0;
    for (size_t first = 0; first < count; first += column_Group) {
        const size_t size = std::min(column_Group, count - first);
        const uint64_t base = firsts[first / column_Group];
        Group bits;
        if (base < before || !next(bits, size)) {
            ok_ = false;
            return;
        }
        uint64_t* const group = values.data() + first;
        unpack(bits.bits, size, bits.width, group);
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

void ColumnReader::Rising(size_t count, uint64_t limit, std::vector<uint64_t>& values) {
    std::vector<uint64_t> firsts;
    values.clear();
    if (count / column_Group > left()) ok_ = false;
    if (!ok_ || !Unpack((count + column_Group - 1) / column_Group, limit + 1, firsts)) return;
    Groups(firsts, count, limit, values,
           [this](Group& group, size_t size) { return TakeFlat(size, group.width, group.bits); });
}

void ColumnReader::Stepped(size_t count, uint64_t limit, std::vector<uint64_t>& values) {
    std::vector<uint64_t> firsts;
    std::vector<uint32_t> places;
    values.clear();
    const size_t groups = (count + column_Group - 1) / column_Group;
    if (groups > left()) ok_ = false;
    if (!ok_ || !Unpack(groups, limit + 1, firsts) || !Unpack(groups + 1, UINT32_MAX, places)) return;
    const auto bits = Bytes(size_t{places.back()} * 8);
    if (!ok_) return;
    size_t at = 0;
    Groups(firsts, count, limit, values, [&](Group& group, size_t) {
        const uint32_t from = places[at], to = places[at + 1];
        ++at;
        if (from > to || to - from > 64 || to > places.back()) return false;
        group = {to - from, bits.data() + size_t{from} * 8};
        return true;
    });
}

FlatView ColumnReader::FlatAt(size_t count) {
    unsigned width = 0;
    const uint8_t* bits = nullptr;
    if (!TakeFlat(count, width, bits)) return {};
    if (width <= 57) return {bits, width};
    fail();
    return {};
}

SteppedView ColumnReader::SteppedAt(size_t count) {
    SteppedView view;
    const size_t groups = (count + column_Group - 1) / column_Group;
    unsigned width = 0;
    const uint8_t* bits = nullptr;
    if (!TakeFlat(groups, width, bits)) return {};
    view.firsts_ = {bits, width};
    view.places_ = FlatAt(groups + 1);
    view.end_ = view.places_.at(groups);
    view.bits_ = Bytes(view.end_ > left() / 8 ? SIZE_MAX : view.end_ * 8).data();
    view.count_ = count;
    if (ok_) return view;
    return {};
}
