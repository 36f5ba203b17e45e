#include "chronoweave/traxfunc/draw/layout.h"

#include <algorithm>

#include "chronoweave/traxfunc/draw/draw.h"
#include "chronoweave/traxfunc/list/task_list.h"
#include "chronoweave/traxfunc/model/list.h"
#include "chronoweave/traxfunc/model/time.h"
#include "shared/libcxxutil/report.h"

namespace {

// The union of the execution stretches of the hidden lanes: those of several processors overlap, and a lane's
// stretches are searched by their ends.
void build_agent(_LaCanvasData& canvas, laItem_Line& agent) {
    std::vector<LaLnSeg> stretches;
    for (uint32_t i = 0; i < canvas.items.lanes.size(); ++i) {
        const laItem_Line& lane = canvas.items.lanes[i];
        if (!lane.hidden || lane.isAgent) continue;
        for (const LaLnSeg& segment : lane.segments)
            if (canvas.looks.statusLooks[static_cast<size_t>(segment.status)].isExecution)
                stretches.push_back(segment);
    }
    std::stable_sort(stretches.begin(), stretches.end(),
                     [](const LaLnSeg& a, const LaLnSeg& b) { return a.t0 < b.t0; });
    for (const LaLnSeg& segment : stretches) {
        if (!agent.segments.empty() && segment.t0 <= agent.segments.back().t1)
            agent.segments.back().t1 = std::max(agent.segments.back().t1, segment.t1);
        else
            agent.segments.push_back(segment);
    }
    agent.firstTime = agent.segments.empty() ? -1.0 : agent.segments.front().t0;
}

}  // namespace

bool laCanvas_Layout(_LaCanvasData& canvas, bool adjustVertical) {
    for (uint32_t i = 0; i < canvas.items.lanes.size(); ++i) {
        laItem_Line& lane = canvas.items.lanes[i];
        lane.hidden = lane.row < 0;
        if (!lane.hidden) lane.y = lane.row * canvas.looks.rowHeight + canvas.looks.rowHeight / 2;
    }
    if (canvas.items.hiddenAgent != laNoLane) {
        laItem_Line& agent = canvas.items.lanes[canvas.items.hiddenAgent];
        agent.segments.clear();
        if (!agent.hidden) build_agent(canvas, agent);
    }

    int height = canvas.looks.rowHeight * static_cast<int>(canvas.taskList->rows().size());
    bool scrolled = false;
    if (height < canvas.view.contentHeight) {
        const int visible = static_cast<int>(canvas.graph->vertical.visible());
        if (!adjustVertical) {
            height = canvas.view.contentHeight;
        } else if (height - visible < canvas.view.verticalOffset) {
            canvas.view.verticalOffset = std::max(0, height - visible);
            scrolled = true;
        }
    }
    laCanvas_SetExtent(canvas, laCanvas_AbsolutePixel(canvas.view, canvas.source.scrollExtent), height,
                       false);
    return scrolled;
}

void laCanvas_Resort(_LaCanvasData& canvas) {
    canvas.taskList->Fill();
    laCanvas_Layout(canvas, true);
    if (canvas.graph->listChanged) canvas.graph->listChanged();
}

void laCanvas_Relayout(_LaCanvasData& canvas) {
    laCanvas_Layout(canvas, true);
    if (canvas.graph->listChanged) canvas.graph->listChanged();
    laCanvas_Repaint(canvas);
}

void laCanvas_Rescale(_LaCanvasData& canvas, bool repaint) {
    if (canvas.source.scrollExtent > canvas.view.viewLength * 1e18) {
        gen_console("Cannot show %0.15f out of %0.15f %s.\n", canvas.view.viewLength,
                    canvas.source.scrollExtent, laCanvas_Plural(laTime_UnitName(canvas.axis, false)).c_str());
        return;
    }
    canvas.view.pixelsPerUnit = std::max(1, canvas.graph->width) / canvas.view.viewLength;
    const int rows = canvas.looks.rowHeight * static_cast<int>(canvas.taskList->rows().size());
    laCanvas_SetExtent(canvas, laCanvas_AbsolutePixel(canvas.view, canvas.source.scrollExtent),
                       std::max(rows, canvas.view.contentHeight), repaint);
}

void laCanvas_SetExtent(_LaCanvasData& canvas, uint64_t virtualWidth, int contentHeight, bool repaint) {
    LaGraph& graph = *canvas.graph;
    canvas.view.virtualWidth = virtualWidth;
    canvas.view.contentHeight = contentHeight;
    canvas.view.laidOutWidth = graph.width;
    const auto width = static_cast<uint64_t>(std::max(0, graph.width));
    uint64_t position = laCanvas_AbsolutePixel(canvas.view, canvas.view.viewLow);
    // A double doesn't tell every pixel of a picture this wide from the next: a bar that stands as near as
    // one can say keeps its own.
    const uint64_t at = graph.horizontal.position();
    if ((at > position ? at - position : position - at) <= position >> 50) position = at;
    // Rounding may leave the picture a pixel short of the view at its end; the bar's position must still be
    // exact.
    const uint64_t needed = position > UINT64_MAX - width ? UINT64_MAX : position + width;
    graph.horizontal.setRange(std::max(virtualWidth, needed), width);
    graph.horizontal.setPosition(position);
    canvas.view.scrollPosition = graph.horizontal.position();
    graph.vertical.setRange(static_cast<uint64_t>(std::max(0, contentHeight)), graph.vertical.visible());
    graph.vertical.setPosition(static_cast<uint64_t>(std::max(0, canvas.view.verticalOffset)));
    canvas.view.verticalOffset = static_cast<int>(graph.vertical.position());
    if (repaint) laCanvas_Repaint(canvas);
}
