#include "chronoweave/engine/lanes/lane_sums.h"

#include <algorithm>
#include <tuple>

#include "chronoweave/engine/lanes/packed_column.h"

namespace {

auto key_of(const LaneSums::Events& cell) {
    return std::tie(cell.object, cell.kind);
}
auto key_of(const LaneSums::Status& cell) {
    return std::tie(cell.object, cell.state);
}
void add(LaneSums::Events& to, const LaneSums::Events& cell) {
    to.count += cell.count;
}
void add(LaneSums::Status& to, const LaneSums::Status& cell) {
    to.entered += cell.entered;
    to.ticks += cell.ticks;
}

// Puts cells in order, and those of one key together.
template <class Cell>
void settle(std::vector<Cell>& cells) {
    std::sort(cells.begin(), cells.end(), [](const Cell& a, const Cell& b) { return key_of(a) < key_of(b); });
    size_t kept = 0;
    for (size_t at = 0; at < cells.size(); ++at)
        if (kept > 0 && key_of(cells[kept - 1]) == key_of(cells[at]))
            add(cells[kept - 1], cells[at]);
        else
            cells[kept++] = cells[at];
    cells.resize(kept);
}

// A column of each member of the cells; objects by their numbers.
template <class Cell, class Value>
void put_column(const std::vector<Cell>& cells, Value&& value, ByteBuffer& out) {
    std::vector<uint64_t> column;
    column.reserve(cells.size());
    for (const Cell& cell : cells) column.push_back(value(cell));
    column_PutFlat(out, column);
}

template <class Cell>
void put_objects(const std::vector<Cell>& cells, std::span<const uint64_t> objects, ByteBuffer& out) {
    size_t number = 0;
    put_column(
        cells,
        [&](const Cell& cell) {
            while (objects[number] != cell.object) ++number;
            return uint64_t{number};
        },
        out);
}

struct Columns {
    std::vector<uint64_t> object, key, first, second;
};

bool take_columns(ColumnReader& reader, size_t count, size_t objects, bool both, Columns& columns) {
    reader.Flat(count, objects, columns.object);
    reader.Flat(count, uint64_t{1} << 32, columns.key);
    reader.Flat(count, UINT64_MAX, columns.first);
    if (both) reader.Flat(count, UINT64_MAX, columns.second);
    return reader.ok();
}

bool take_level(ColumnReader& reader, std::span<const uint64_t> objects, LaneSums& sums) {
    const uint32_t events = reader.Number(), statuses = reader.Number();
    Columns columns;
    sums = {};
    if (!take_columns(reader, events, objects.size(), false, columns)) return false;
    for (size_t i = 0; i < events; ++i)
        sums.events.push_back({static_cast<uint32_t>(objects[columns.object[i]]),
                               static_cast<uint32_t>(columns.key[i]), columns.first[i]});
    if (!take_columns(reader, statuses, objects.size(), true, columns)) return false;
    for (size_t i = 0; i < statuses; ++i)
        sums.statuses.push_back({static_cast<uint32_t>(objects[columns.object[i]]),
                                 static_cast<uint32_t>(columns.key[i]), columns.first[i], columns.second[i]});
    return true;
}

}  // namespace

LaneSums lane_Merge(std::span<const LaneSums> parts) {
    LaneSums sums;
    for (const LaneSums& part : parts) {
        sums.events.insert(sums.events.end(), part.events.begin(), part.events.end());
        sums.statuses.insert(sums.statuses.end(), part.statuses.begin(), part.statuses.end());
    }
    settle(sums.events);
    settle(sums.statuses);
    return sums;
}

std::vector<LaneSums> LaneLevels::Add(LaneSums sums) {
    std::vector<LaneSums> ended{std::move(sums)};
    for (size_t level = 0;; ++level) {
        if (level == open_.size()) open_.emplace_back();
        open_[level].push_back(ended.back());
        if (open_[level].size() < lane_SumsOf) return ended;
        ended.push_back(lane_Merge(open_[level]));
        open_[level].clear();
    }
}

LaneStride lane_StrideAt(size_t first, size_t end) {
    LaneStride stride;
    for (size_t blocks = lane_SumsOf; first % blocks == 0 && first + blocks <= end; blocks *= lane_SumsOf)
        stride = {stride.level + 1, blocks};
    return stride;
}

void lane_EncodeSums(std::span<const LaneSums> levels, std::span<const uint64_t> objects, ByteBuffer& out) {
    using Events = LaneSums::Events;
    using Status = LaneSums::Status;
    for (const LaneSums& sums : levels) {
        out.put32(static_cast<uint32_t>(sums.events.size()));
        out.put32(static_cast<uint32_t>(sums.statuses.size()));
        put_objects(sums.events, objects, out);
        put_column(
            sums.events, [](const Events& cell) { return uint64_t{cell.kind}; }, out);
        put_column(
            sums.events, [](const Events& cell) { return cell.count; }, out);
        put_objects(sums.statuses, objects, out);
        put_column(
            sums.statuses, [](const Status& cell) { return uint64_t{cell.state}; }, out);
        put_column(
            sums.statuses, [](const Status& cell) { return cell.entered; }, out);
        put_column(
            sums.statuses, [](const Status& cell) { return cell.ticks; }, out);
    }
}

bool lane_DecodeSums(std::span<const uint8_t> bytes, std::span<const uint64_t> objects, size_t level,
                     LaneSums& sums) {
    ColumnReader reader(bytes);
    for (size_t at = 0; at <= level; ++at)
        if (!take_level(reader, objects, sums)) return false;
    return true;
}
