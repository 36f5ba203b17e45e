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

// Cells of both, in order, and those of one key together.
template <class Cell>
std::vector<Cell> join(const std::vector<Cell>& a, const std::vector<Cell>& b) {
    std::vector<Cell> cells;
    auto ofA = a.begin(), ofB = b.begin();
    while (ofA != a.end() && ofB != b.end()) {
        if (key_of(*ofA) < key_of(*ofB)) {
            cells.push_back(*ofA++);
        } else if (key_of(*ofB) < key_of(*ofA)) {
            cells.push_back(*ofB++);
        } else {
            cells.push_back(*ofA++);
            add(cells.back(), *ofB++);
        }
    }
    cells.insert(cells.end(), ofA, a.end());
    cells.insert(cells.end(), ofB, b.end());
    return cells;
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
    if (parts.empty()) return {};
    if (parts.size() == 1) return parts[0];
    const LaneSums a = lane_Merge(parts.first(parts.size() / 2)),
                   b = lane_Merge(parts.subspan(parts.size() / 2));
    return {join(a.events, b.events), join(a.statuses, b.statuses)};
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
