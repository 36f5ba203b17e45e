#include "chronoweave/traxfunc/list/activity.h"

#include <algorithm>

namespace {

bool is_execution(const LaLooks& looks, int32_t status) {
    return status >= 0 && looks.statusLooks[static_cast<size_t>(status)].isExecution;
}

// The stretches of the range, each with its part in it.
laActivity of_segments(const LaItems& items, const LaLooks& looks, const laItem_Line& lane, double low,
                       double high) {
    laActivity activity;
    const auto& segments = lane.segments;
    auto at = std::partition_point(segments.begin(), segments.end(),
                                   [&](const LaLnSeg& segment) { return segment.t1 <= low; });
    for (; at != segments.end() && at->t0 < high; ++at) {
        const bool began = at->t0 > low && at->t0 > items.cachedLow;
        const bool ended = at->t1 < high && at->t1 < items.cachedHigh;
        if (began || ended) activity.active = true;
        if (!is_execution(looks, at->status)) continue;
        activity.active = true;
        activity.ran += std::min(at->t1, high) - std::max(at->t0, low);
    }
    return activity;
}

bool has_event(const LaLooks& looks, const laItem_Line& lane, double low, double high) {
    const auto& times = lane.iconTimes;
    const auto from = std::lower_bound(times.begin(), times.end(), low) - times.begin();
    const auto end = std::upper_bound(times.begin() + from, times.end(), high) - times.begin();
    return std::any_of(lane.iconEvents.begin() + from, lane.iconEvents.begin() + end,
                       [&](uint16_t event) { return looks.eventLooks[event].shown; });
}

}  // namespace

laActivity laActivity_Of(const LaItems& items, const LaLooks& looks, const laItem_Line& lane, double low,
                         double high) {
    laActivity activity = of_segments(items, looks, lane, low, high);
    if (!activity.active) activity.active = lane.isAgent || has_event(looks, lane, low, high);
    return activity;
}

laActivities laActivity_InRange(const LaItems& items, const LaLooks& looks, double low, double high) {
    laActivities all;
    all.reserve(items.lanes.size());
    for (uint32_t i = 0; i < items.lanes.size(); ++i) {
        const laItem_Line& lane = items.lanes[i];
        all[lane.objectId] = laActivity_Of(items, looks, lane, low, high);
    }
    return all;
}
