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

bool TrackedRange::next(double& time) {
    using Stop = RangeWalk::Stop;
    ofLanes_ = walk_.NextOfLanes(time, tracker_.IsSettled() ? Stop::Wanted : Stop::Every);
    if (ofLanes_) return true;
    const bool stopped = !walk_.FromStore();
    if (!stopped && walk_.next(event_, time)) return true;
    if (stopped) walk_.Settle();
    return false;
}

void TrackedRange::Take() {
    if (!ofLanes_) return tracker_.Take(event_, state_);
    if (block_ != walk_.lanes().BlockNumber()) Number();
    walk_.lanes().TakeChanges([this](uint32_t object, uint32_t state) {
        if (places_[object] != ObjectIndex::none) tracker_.Tell(places_[object], rows_[state]);
    });
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
