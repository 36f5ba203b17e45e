#include "chronoweave/engine/lanes/lane_block.h"

#include <algorithm>

#include "chronoweave/engine/lanes/packed_column.h"
#include "libtrv/byte_order.h"

namespace {

constexpr uint64_t most_ticks = INT64_MAX;
constexpr size_t checked_bytes = lane_HeadBytes - 8;

bool ascends(const std::vector<uint64_t>& values) {
    return std::adjacent_find(values.begin(), values.end(), std::greater_equal<>()) == values.end();
}

}  // namespace

// Eight bytes at a time, in four sums that don't wait for each other.
uint64_t lane_CheckSum(std::span<const uint8_t> bytes) {
    constexpr uint64_t factor = 0x9E3779B97F4A7C15ull;
    uint64_t sums[4] = {bytes.size(), 1, 2, 3};
    const auto take = [&sums](size_t which, uint64_t word) {
        sums[which] = (sums[which] ^ word) * factor;
        sums[which] ^= sums[which] >> 32;
    };
    size_t at = 0;
    for (; at + 32 <= bytes.size(); at += 32)
        for (size_t i = 0; i < 4; ++i) take(i, load_be64(bytes.data() + at + 8 * i));
    for (; at < bytes.size(); ++at) take(at & 3, bytes[at]);
    for (size_t i = 1; i < 4; ++i) take(0, sums[i]);
    return sums[0];
}

void lane_EncodeHead(const LaneHead& head, ByteBuffer& out) {
    uint8_t* at = out.room(lane_HeadBytes);
    store_be64(at, head.mark);
    store_be32(at + 8, head.first);
    store_be32(at + 12, head.count);
    store_be64(at + 16, head.firstTick);
    store_be64(at + 24, head.lastTick);
    store_be32(at + 32, head.summaryBytes);
    store_be32(at + 36, head.columnBytes);
    store_be64(at + 40, head.summaryCheck);
    store_be64(at + 48, head.columnCheck);
    store_be64(at + checked_bytes, lane_CheckSum({at, checked_bytes}));
    out.took(lane_HeadBytes);
}

bool lane_DecodeHead(std::span<const uint8_t> bytes, LaneHead& head) {
    const uint8_t* at = bytes.data();
    if (load_be64(at + checked_bytes) != lane_CheckSum(bytes.first(checked_bytes))) return false;
    head = {load_be64(at),      load_be32(at + 8),  load_be32(at + 12),
            load_be64(at + 16), load_be64(at + 24), load_be32(at + 32),
            load_be32(at + 36), load_be64(at + 40), load_be64(at + 48)};
    return head.first > 0 && head.count > 0 && head.count <= lane_BlockEvents &&
           head.first <= UINT32_MAX - head.count && head.firstTick <= head.lastTick &&
           head.lastTick <= most_ticks;
}

void lane_EncodeSummary(const LaneSummary& summary, ByteBuffer& out) {
    for (const size_t size :
         {summary.objects.size(), summary.kinds.size(), summary.states.size(), summary.count.size()})
        out.put32(static_cast<uint32_t>(size));
    out.put32(summary.changes);
    column_PutRising(out, summary.objects);
    for (const uint32_t kind : summary.kinds) out.put32(kind);
    for (const uint32_t state : summary.states) out.put32(state);
    column_PutFlat(out, summary.start);
    column_PutFlat(out, summary.ofObject);
    column_PutFlat(out, summary.ofKind);
    column_PutFlat(out, summary.count);
}

bool lane_DecodeSummary(const LaneHead& head, std::span<const uint8_t> bytes, LaneSummary& summary) {
    ColumnReader reader(bytes);
    const uint32_t objects = reader.Number(), kinds = reader.Number(), states = reader.Number(),
                   counts = reader.Number();
    summary.changes = reader.Number();
    if (!reader.ok() || objects == 0 || kinds == 0 || states == 0 || kinds > head.count ||
        counts > head.count || kinds > bytes.size() / 4 || states > bytes.size() / 4)
        return false;
    reader.Rising(objects, UINT32_MAX, summary.objects);
    summary.kinds.resize(kinds);
    for (uint32_t& kind : summary.kinds) kind = reader.Number();
    summary.states.resize(states);
    for (uint32_t& state : summary.states) state = reader.Number();
    if (!reader.ok()) return false;
    reader.Flat(objects, states, summary.start);
    reader.Flat(counts, objects, summary.ofObject);
    reader.Flat(counts, kinds, summary.ofKind);
    reader.Flat(counts, uint64_t{head.count} + 1, summary.count);
    const bool statesFit = std::all_of(summary.states.begin(), summary.states.end(),
                                       [](uint32_t state) { return state <= lane_Absent; });
    return reader.AtEnd() && statesFit && ascends(summary.objects);
}

void LaneColumns::clear() {
    for (std::vector<uint64_t>* column : {&ticks, &changeAt}) column->clear();
    for (std::vector<uint32_t>* column : {&kinds, &objects, &changeObject, &changeState}) column->clear();
}

void lane_EncodeColumns(const LaneColumns& columns, ByteBuffer& out) {
    column_PutRising(out, columns.ticks);
    column_PutRising(out, columns.changeAt);
    column_PutFlat(out, columns.changeObject);
    column_PutFlat(out, columns.changeState);
    column_PutFlat(out, columns.kinds);
    column_PutFlat(out, columns.objects);
}

bool lane_DecodeColumns(const LaneHead& head, const LaneSummary& summary, std::span<const uint8_t> bytes,
                        LaneColumnSet set, LaneColumns& columns) {
    ColumnReader reader(bytes);
    const size_t objects = summary.objects.size();
    if (summary.changes / column_Group > bytes.size()) return false;
    reader.Rising(head.count, head.lastTick - head.firstTick, columns.ticks);
    reader.Rising(summary.changes, head.count - 1, columns.changeAt);
    reader.Flat(summary.changes, objects, columns.changeObject);
    reader.Flat(summary.changes, summary.states.size(), columns.changeState);
    switch (set) {
        case LaneColumnSet::Times:
            reader.SkipFlat(head.count);
            reader.SkipFlat(head.count);
            break;
        case LaneColumnSet::All:
            reader.Flat(head.count, summary.kinds.size(), columns.kinds);
            reader.Flat(head.count, objects, columns.objects);
            break;
    }
    return reader.AtEnd() && columns.ticks.front() == 0 &&
           columns.ticks.back() == head.lastTick - head.firstTick;
}
