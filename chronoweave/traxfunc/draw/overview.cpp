#include "chronoweave/traxfunc/draw/overview.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

constexpr int edgeReach = 4;  // columns
constexpr Colour busyColour = 0x5B8DB8;
constexpr Colour frameColour = 0xC06020;

// The most of any bin that a column touches.
float column_activity(const laOverview& overview, int width, int x) {
    constexpr double hair = 1e-6;  // of a bin: an edge that rounding moved by so much still is that edge
    const double from = laOverview_Time(overview, width, x) / overview.binWidth + hair;
    const double to = std::ceil(laOverview_Time(overview, width, x + 1) / overview.binWidth - hair);
    const size_t first = std::min<size_t>(static_cast<size_t>(from), laOverview_Bins - 1);
    const size_t end = std::clamp<size_t>(static_cast<size_t>(to), first + 1, laOverview_Bins);
    return *std::max_element(overview.activity.begin() + static_cast<ptrdiff_t>(first),
                             overview.activity.begin() + static_cast<ptrdiff_t>(end));
}

}  // namespace

int laOverview_Column(const laOverview& overview, int width, double time) {
    if (!(overview.length > 0)) return 0;
    return static_cast<int>(std::clamp(time / overview.length, 0.0, 1.0) * width);
}

double laOverview_Time(const laOverview& overview, int width, int x) {
    return width > 0 ? overview.length * x / width : 0;
}

void laOverview_Draw(const laOverview& overview, const LaView& view, const LaMarks& marks, Surface& surface,
                     int width, int height) {
    surface.clearRect(0, 0, width, height);
    if (overview.activity.empty() || width <= 0 || height <= 2) return;
    // Busy and quiet stretches differ by powers of ten: their heights are logarithms.
    const double peak = std::log1p(*std::max_element(overview.activity.begin(), overview.activity.end()));
    for (int x = 0; x < width; ++x) {
        const double part = std::log1p(column_activity(overview, width, x)) / std::max(peak, 1e-12);
        const int tall = static_cast<int>(std::ceil(part * (height - 2)));
        if (tall > 0) surface.fillRect(x, height - 1 - tall, 1, tall, busyColour);
    }
    for (const LaBookmark& mark : marks.bookmarks) {
        const int x = std::min(laOverview_Column(overview, width, mark.time), width - 1);
        surface.drawStyledLine(x, 0, x, height - 1, mark.colour, 1, mark.style, 0);
    }
    const int left = std::min(laOverview_Column(overview, width, view.viewLow), width - 1);
    const int right = std::clamp(laOverview_Column(overview, width, view.viewHigh), left + 1, width) - 1;
    surface.drawLine(left, 0, left, height - 1, frameColour);
    surface.drawLine(right, 0, right, height - 1, frameColour);
    surface.drawLine(left, 0, right, 0, frameColour);
    surface.drawLine(left, height - 1, right, height - 1, frameColour);
}

laOverviewPart laOverview_HitTest(const laOverview& overview, const LaView& view, int width, int x) {
    const int left = laOverview_Column(overview, width, view.viewLow);
    const int right = laOverview_Column(overview, width, view.viewHigh);
    // A narrow frame keeps a middle to drag it by.
    const int inner = std::min(edgeReach, (right - left) / 3);
    if (x > left + inner && x < right - inner) return laOverviewPart::Inside;
    if (right - left < 3 && x >= left && x <= right) return laOverviewPart::Inside;
    if (x >= left - edgeReach && x <= left + inner) return laOverviewPart::LeftEdge;
    if (x >= right - inner && x <= right + edgeReach) return laOverviewPart::RightEdge;
    return laOverviewPart::Outside;
}

laOverviewRange laOverview_Drag(const laOverview& overview, int width, laOverviewPart part,
                                laOverviewRange start, int grabbed, int x) {
    const double moved = laOverview_Time(overview, width, x) - laOverview_Time(overview, width, grabbed);
    const double length = start.high - start.low,
                 least = std::min(length, laOverview_Time(overview, width, 1));
    const double end = std::max(overview.length, start.high);
    if (part == laOverviewPart::LeftEdge)
        return {std::clamp(start.low + moved, 0.0, std::max(0.0, start.high - least)), start.high};
    if (part == laOverviewPart::RightEdge)
        return {start.low, std::clamp(start.high + moved, std::min(end, start.low + least), end)};
    const double from =
        part == laOverviewPart::Inside ? start.low + moved : laOverview_Time(overview, width, x) - length / 2;
    const double low = std::clamp(from, 0.0, std::max(0.0, end - length));
    return {low, low + length};
}
