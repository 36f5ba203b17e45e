#include "chronoweave/engine/search_tracker.h"

#include <algorithm>

TrackedRange::TrackedRange(AnalysisSource& source, const std::vector<uint32_t>& objects, double from,
                           double to, Follow follow, Passed passed)
    : source_(source),
      objects_(objects),
      walk_(source, from, to, &state_,
            passed == Passed::Over ? std::optional(LaneWants{LaneWants::Changes::Given, {}, {}})
                                   : std::nullopt),
      tracker_(source, state_, objects, follow) {}

bool TrackedRange::NextOfStore(double& time) {
    const bool stopped = !walk_.FromStore();
    if (!stopped && walk_.next(event_, time)) return true;
    if (stopped) walk_.Settle();
    return false;
}

// The numbers of the block that the walk has come to.
void TrackedRange::Number() {
    block_ = walk_.lanes().BlockNumber();
    const LaneSummary& summary = walk_.lanes().summary();
    places_.assign(summary.objects.size(), ObjectIndex::none);
    for (size_t object = 0; object < summary.objects.size(); ++object) {
        const auto at = std::lower_bound(objects_.begin(), objects_.end(), summary.objects[object]);
        if (at != objects_.end() && *at == summary.objects[object])
            places_[object] = static_cast<uint32_t>(at - objects_.begin());
    }
    rows_.clear();
    for (const uint32_t state : summary.states)
        rows_.push_back(state < lane_NotValid ? source_.legend->StatusIndex(state) : -1);
}
