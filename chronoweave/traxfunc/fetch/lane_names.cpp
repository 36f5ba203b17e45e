#include "chronoweave/traxfunc/fetch/lane_names.h"

#include <algorithm>
#include <array>
#include <span>

#include "chronoweave/traxfunc/fetch/sweep.h"

namespace {

// What was set last ahead of the range, and what was in it.
template <class Set>
std::span<const Set> of_range(std::span<const Set> sets, const LaLaneRange& range) {
    const auto aheadOf = [](uint32_t sequence) {
        return [sequence](const Set& set) { return set.sequence < sequence; };
    };
    const auto first = std::partition_point(sets.begin(), sets.end(), aheadOf(range.first));
    const auto end = std::partition_point(first, sets.end(), aheadOf(range.end));
    return {first == sets.begin() ? first : first - 1, end};
}

}  // namespace

void laLaneNames_Learn(laItem_Line& lane, const TraceStore& store, const LaLaneRange& range, uint32_t known,
                       std::string_view separator) {
    const char joins = separator.empty() ? '\0' : separator[0];
    for (const auto& set : of_range(range.table->Names(known), range)) {
        std::array<uint8_t, mt_TaskBlockSize> block = {};
        std::copy(set.name.begin(), set.name.end(), block.begin() + lane_NameAt);
        StateTable state;
        const uint32_t position = state.create(mt_ObjectTask, lane.objectId, block);
        laLn_LearnFacts(lane, store, state, position, joins);
        if (lane.hasName) break;
    }
    lane.priority = -1;
    for (const auto& set : of_range(range.table->Priorities(known), range))
        if (lane.priority == -1 && set.priority.known)
            lane.priority = static_cast<int32_t>(set.priority.value);
}
