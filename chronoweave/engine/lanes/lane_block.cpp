#include "chronoweave/engine/lanes/lane_block.h"

#include <algorithm>
#include <numeric>
#include <utility>

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
    uint8_t* const begin = out.room(lane_HeadBytes);
    uint8_t* at = begin + 32;
    store_be64(begin, head.mark);
    store_be32(begin + 8, head.first);
    store_be32(begin + 12, head.count);
    store_be64(begin + 16, head.firstTick);
    store_be64(begin + 24, head.lastTick);
    for (size_t part = 0; part < lane_PartCount; ++part, at += 12) {
        store_be32(at, head.bytes[part]);
        store_be64(at + 4, head.checks[part]);
    }
    store_be64(at, lane_CheckSum({begin, checked_bytes}));
    out.took(lane_HeadBytes);
}

bool lane_DecodeHead(std::span<const uint8_t> bytes, LaneHead& head) {
    const uint8_t* at = bytes.data();
    if (load_be64(at + checked_bytes) != lane_CheckSum(bytes.first(checked_bytes))) return false;
    head.mark = load_be64(at);
    head.first = load_be32(at + 8);
    head.count = load_be32(at + 12);
    head.firstTick = load_be64(at + 16);
    head.lastTick = load_be64(at + 24);
    at += 32;
    for (size_t part = 0; part < lane_PartCount; ++part, at += 12) {
        head.bytes[part] = load_be32(at);
        head.checks[part] = load_be64(at + 4);
    }
    return head.first > 0 && head.count > 0 && head.count <= lane_BlockEvents &&
           head.first <= UINT32_MAX - head.count && head.firstTick <= head.lastTick &&
           head.lastTick <= most_ticks;
}

void lane_EncodeSummary(const LaneSummary& summary, ByteBuffer& out) {
    for (const size_t size : {summary.objects.size(), summary.kinds.size(), summary.states.size()})
        out.put32(static_cast<uint32_t>(size));
    for (const uint32_t kind : summary.kinds) out.put32(kind);
    for (const uint32_t state : summary.states) out.put32(state);
    column_PutRising(out, summary.objects);
    for (const std::vector<uint32_t>* column :
         {&summary.start, &summary.statuses, &summary.events, &summary.priorities, &summary.names})
        column_PutFlat(out, *column);
}

bool lane_DecodeSummary(const LaneHead& head, std::span<const uint8_t> bytes, LaneSummary& summary) {
    ColumnReader reader(bytes);
    const uint32_t objects = reader.Number(), kinds = reader.Number(), states = reader.Number();
    const auto numbers = [&reader](uint32_t count, std::vector<uint32_t>& values) {
        const uint8_t* at = reader.Numbers(count);
        values.resize(reader.ok() ? count : 0);
        for (uint32_t& value : values) value = load_be32(std::exchange(at, at + 4));
    };
    if (objects == 0 || kinds == 0 || states == 0 || kinds > head.count) return false;
    numbers(kinds, summary.kinds);
    numbers(states, summary.states);
    reader.Rising(objects, UINT32_MAX, summary.objects);
    if (!reader.ok()) return false;
    reader.Flat(objects, states, summary.start);
    for (std::vector<uint32_t>* column :
         {&summary.statuses, &summary.events, &summary.priorities, &summary.names})
        reader.Flat(objects, uint64_t{head.count} + 1, *column);
    const bool statesFit = std::all_of(summary.states.begin(), summary.states.end(),
                                       [](uint32_t state) { return state <= lane_Absent; });
    return reader.AtEnd() && statesFit && ascends(summary.objects) &&
           std::accumulate(summary.events.begin(), summary.events.end(), uint64_t{0}) == head.count;
}

bool lane_DecodeTimes(const LaneHead& head, std::span<const uint8_t> bytes, std::vector<uint64_t>& ticks) {
    ColumnReader reader(bytes);
    reader.Stepped(head.count, head.lastTick - head.firstTick, ticks);
    return reader.AtEnd() && ticks.front() == 0 && ticks.back() == head.lastTick - head.firstTick;
}

bool lane_DecodeStatusLists(const LaneHead& head, const LaneSummary& summary, std::span<const uint8_t> bytes,
                            LaneLists& lists) {
    const uint64_t count = std::accumulate(summary.statuses.begin(), summary.statuses.end(), uint64_t{0});
    ColumnReader reader(bytes);
    reader.Flat(count, head.count, lists.statusAt);
    reader.Flat(count, summary.states.size(), lists.statusState);
    return reader.AtEnd();
}

// An object's own events rise; those of all are put in order by counting.
bool lane_DecodeStatuses(const LaneHead& head, const LaneSummary& summary, std::span<const uint8_t> bytes,
                         LaneLists& lists, LaneColumns& columns) {
    if (!lane_DecodeStatusLists(head, summary, bytes, lists)) return false;
    const size_t count = lists.statusAt.size();
    std::vector<uint32_t> next(size_t{head.count} + 1, 0);
    for (const uint32_t at : lists.statusAt) ++next[at + 1];
    for (size_t at = 1; at < next.size(); ++at) next[at] += next[at - 1];
    for (std::vector<uint32_t>* column : {&columns.changeAt, &columns.changeObject, &columns.changeState})
        column->resize(count);
    size_t place = 0;
    for (uint32_t object = 0; object < summary.statuses.size(); ++object) {
        uint32_t before = 0;  // event behind the last one
        for (const size_t end = place + summary.statuses[object]; place < end; ++place) {
            const uint32_t at = lists.statusAt[place], to = next[at]++;
            if (at < before) return false;
            before = at + 1;
            columns.changeAt[to] = at;
            columns.changeObject[to] = object;
            columns.changeState[to] = lists.statusState[place];
        }
    }
    return true;
}

// Each event is some object's, and of no other one.
bool lane_DecodeEvents(const LaneHead& head, const LaneSummary& summary, std::span<const uint8_t> bytes,
                       LaneLists& lists, LaneColumns& columns) {
    ColumnReader reader(bytes);
    reader.Flat(head.count, head.count, lists.eventAt);
    reader.Flat(head.count, summary.kinds.size(), lists.eventKind);
    if (!reader.AtEnd()) return false;
    columns.objects.resize(head.count);
    columns.kinds.assign(head.count, UINT32_MAX);
    size_t place = 0;
    bool fits = true;
    for (uint32_t object = 0; object < summary.events.size(); ++object) {
        int64_t before = -1;
        for (const size_t end = place + summary.events[object]; place < end; ++place) {
            const uint32_t at = lists.eventAt[place];
            fits = fits && at > before && columns.kinds[at] == UINT32_MAX;
            before = at;
            columns.objects[at] = object;
            columns.kinds[at] = lists.eventKind[place];
        }
    }
    return fits;
}

void lane_EncodePairs(std::span<const uint32_t> first, std::span<const uint32_t> second, ByteBuffer& out) {
    column_PutFlat(out, first);
    column_PutFlat(out, second);
}
