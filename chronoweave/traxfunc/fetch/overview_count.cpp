#include "chronoweave/traxfunc/fetch/overview_count.h"

#include <algorithm>

namespace {

size_t bin_of(const laOverview& overview, double time) {
    const double part = overview.binWidth > 0 ? time / overview.binWidth : 0;
    return part <= 0 ? 0 : static_cast<size_t>(std::min(part, laOverview_Bins - 1.0));
}

// Bins twice as wide hold two of the old ones each.
void widen(laOverview& overview) {
    std::vector<float>& bins = overview.activity;
    for (size_t bin = 0; bin < bins.size(); ++bin)
        bins[bin] = bin < bins.size() / 2 ? bins[2 * bin] + bins[2 * bin + 1] : 0;
    overview.binWidth *= 2;
}

void fit(const LaSource& source, laOverview& overview) {
    overview.length = source.totalLength;
    while (overview.binWidth * laOverview_Bins < overview.length) widen(overview);
}

}  // namespace

laOverview laOverview_Begin(const LaSource& source) {
    laOverview overview;
    if (source.store == nullptr || !source.storeHasEvents || !(source.totalLength > 0)) return overview;
    overview.length = source.totalLength;
    overview.binWidth = source.totalLength / laOverview_Bins;
    overview.activity.assign(laOverview_Bins, 0);
    return overview;
}

bool laOverview_Count(const LaSource& source, laOverview& overview, uint32_t most) {
    if (overview.activity.empty()) overview = laOverview_Begin(source);  // it may have grown since
    if (overview.activity.empty()) return false;
    fit(source, overview);
    EventWalk walk;
    if (!mt_StartWalkAtEvent(*source.store, overview.counted + 1, 0, nullptr, walk)) return false;
    EventRecord event;
    for (uint32_t left = most; left > 0; --left) {
        if (!mt_NextEvent(walk, event)) return false;
        ++overview.activity[bin_of(overview, source.clock.TimeOf(event.time))];
        overview.counted = event.sequence;
    }
    return true;
}
