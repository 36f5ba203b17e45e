#include "chronoweave/traxfunc/draw/layout.h"

#include <algorithm>

#include "chronoweave/traxfunc/model/time.h"

namespace {

// The union of the execution stretches of the hidden lanes: those of several processors overlap, and a lane's
// stretches are searched by their ends.
void build_agent(const LaItems& items, const LaLooks& looks, laItem_Line& agent) {
    std::vector<LaLnSeg> stretches;
    for (uint32_t i = 0; i < items.lanes.size(); ++i) {
        const laItem_Line& lane = items.lanes[i];
        if (!lane.hidden || lane.isAgent) continue;
        for (const LaLnSeg segment : lane.segments)
            if (looks.statusLooks[static_cast<size_t>(segment.status)].isExecution)
                stretches.push_back(segment);
    }
    std::stable_sort(stretches.begin(), stretches.end(),
                     [](const LaLnSeg& a, const LaLnSeg& b) { return a.t0 < b.t0; });
    std::vector<LaLnSeg>& joined = agent.segments.kept();
    for (const LaLnSeg& segment : stretches) {
        if (!joined.empty() && segment.t0 <= joined.back().t1)
            joined.back().t1 = std::max(joined.back().t1, segment.t1);
        else
            joined.push_back(segment);
    }
}

}  // namespace

void laLayout_Lanes(LaItems& items, const LaLooks& looks) {
    for (uint32_t i = 0; i < items.lanes.size(); ++i) {
        laItem_Line& lane = items.lanes[i];
        if (!lane.hidden) lane.y = lane.row * looks.rowHeight + looks.rowHeight / 2;
    }
    if (items.hiddenAgent == laNoLane) return;
    laItem_Line& agent = items.lanes[items.hiddenAgent];
    agent.segments.Clear();
    if (!agent.hidden) build_agent(items, looks, agent);
}

void laLayout_Content(LaView& view, LaGraph& graph, int height) {
    const int visible = static_cast<int>(graph.vertical.visible());
    if (height < view.contentHeight && height - visible < view.verticalOffset)
        view.verticalOffset = std::max(0, height - visible);
    view.contentHeight = height;
}

bool laLayout_Rescale(LaView& view, LaGraph& graph, double scrollExtent, int contentHeight) {
    if (scrollExtent > view.viewLength * 1e18) return false;
    view.pixelsPerUnit = std::max(1, graph.width) / view.viewLength;
    laLayout_SetExtent(view, graph, laCanvas_AbsolutePixel(view, scrollExtent), contentHeight);
    return true;
}

void laLayout_SetExtent(LaView& view, LaGraph& graph, uint64_t virtualWidth, int contentHeight) {
    view.virtualWidth = virtualWidth;
    view.contentHeight = contentHeight;
    const auto width = static_cast<uint64_t>(std::max(0, graph.width));
    uint64_t position = laCanvas_AbsolutePixel(view, view.viewLow);
    // A double doesn't tell every pixel of a picture this wide from the next: a bar that stands as near as
    // one can say keeps its own.
    const uint64_t at = graph.horizontal.position();
    if ((at > position ? at - position : position - at) <= position >> 50) position = at;
    // Rounding may leave the picture a pixel short of the view at its end; the bar's position must still be
    // exact.
    const uint64_t needed = position > UINT64_MAX - width ? UINT64_MAX : position + width;
    graph.horizontal.setRange(std::max(virtualWidth, needed), width);
    graph.horizontal.setPosition(position);
    view.scrollPosition = graph.horizontal.position();
    graph.vertical.setRange(static_cast<uint64_t>(std::max(0, contentHeight)), graph.vertical.visible());
    graph.vertical.setPosition(static_cast<uint64_t>(std::max(0, view.verticalOffset)));
    view.verticalOffset = static_cast<int>(graph.vertical.position());
}
