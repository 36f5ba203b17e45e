#include "chronoweave/engine/lanes/lane_facts.h"

#include <algorithm>

#include "chronoweave/engine/lanes/packed_column.h"

namespace {

// By object, those of one in their order; and how many each has.
template <class Entry>
void arrange(std::vector<Entry>& entries, std::span<const uint32_t> rank, std::vector<uint32_t>& counts) {
    counts.assign(rank.size(), 0);
    for (const Entry& entry : entries) ++counts[rank[entry.place]];
    std::stable_sort(entries.begin(), entries.end(),
                     [rank](const Entry& a, const Entry& b) { return rank[a.place] < rank[b.place]; });
}

size_t length_of(const LaneNameBytes& name) {
    return static_cast<size_t>(
        std::find_if(name.rbegin(), name.rend(), [](uint8_t byte) { return byte != 0; }).base() -
        name.begin());
}

}  // namespace

void lane_EncodeFacts(const LaneFacts& facts, ByteBuffer& out) {
    std::vector<uint32_t> known, values, lengths;
    for (const LanePriority& priority : facts.priorities) {
        known.push_back(priority.known ? 1 : 0);
        values.push_back(priority.known ? priority.value : 0);
    }
    for (const LaneNameBytes& name : facts.names) lengths.push_back(static_cast<uint32_t>(length_of(name)));
    using Column = std::span<const uint32_t>;
    for (const Column column :
         {Column(facts.priorityAt), Column(known), Column(values), Column(facts.nameAt), Column(lengths)})
        column_PutFlat(out, column);
    for (size_t i = 0; i < lengths.size(); ++i) out.put(std::span(facts.names[i]).first(lengths[i]));
}

bool lane_DecodeFacts(std::span<const uint8_t> bytes, uint32_t events, size_t priorities, size_t names,
                      LaneFacts& facts) {
    ColumnReader reader(bytes);
    std::vector<uint32_t> known, values, lengths;
    reader.Flat(priorities, events, facts.priorityAt);
    reader.Flat(priorities, 2, known);
    reader.Flat(priorities, uint64_t{1} << 32, values);
    reader.Flat(names, events, facts.nameAt);
    reader.Flat(names, sizeof(LaneNameBytes) + 1, lengths);
    if (!reader.ok()) return false;
    facts.priorities.clear();
    for (size_t i = 0; i < priorities; ++i) facts.priorities.push_back({known[i] != 0, values[i]});
    facts.names.assign(names, {});
    for (size_t i = 0; i < names; ++i) {
        const auto text = reader.Bytes(lengths[i]);
        std::copy(text.begin(), text.end(), facts.names[i].begin());
    }
    return reader.AtEnd();
}

void LaneFactsBuilder::Seal(std::span<const uint32_t> rank, std::vector<uint32_t>& priorities,
                            std::vector<uint32_t>& names, ByteBuffer& out) {
    arrange(priorities_, rank, priorities);
    arrange(names_, rank, names);
    LaneFacts facts;
    for (const auto& entry : priorities_) {
        facts.priorityAt.push_back(entry.event);
        facts.priorities.push_back(entry.value);
    }
    for (const auto& entry : names_) {
        facts.nameAt.push_back(entry.event);
        facts.names.push_back(entry.value);
    }
    lane_EncodeFacts(facts, out);
    priorities_.clear();
    names_.clear();
}
