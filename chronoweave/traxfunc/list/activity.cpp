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
    const LaSegments& segments = lane.segments;
    for (size_t at = segments.FirstEndingFrom(low); at < segments.size(); at = segments.Next(at)) {
        const LaLnSeg segment = segments[at];
        if (segment.t1 <= low) continue;
        if (segment.t0 >= high) break;
        const bool began = segment.t0 > low && segment.t0 > items.cachedLow;
        const bool ended = segment.t1 < high && segment.t1 < items.cachedHigh;
        if (began || ended) activity.active = true;
        if (!is_execution(looks, segment.status)) continue;
        activity.active = true;
        activity.ran += std::min(segment.t1, high) - std::max(segment.t0, low);
    }
    return activity;
}

bool has_event(const LaLooks& looks, const laItem_Line& lane, double low, double high) {
    const LaLaneIcons& icons = lane.icons;
    const size_t end = icons.FirstBehind(high);
    for (size_t at = icons.FirstFrom(low); at < end; ++at)
        if (looks.eventLooks[icons.event(at)].shown) return true;
    return false;
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
