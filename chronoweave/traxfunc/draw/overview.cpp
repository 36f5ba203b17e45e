#include "chronoweave/traxfunc/draw/overview.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "chronoweave/traxfunc/input/view.h"
#include "chronoweave/traxfunc/model/marks.h"
#include "chronoweave/traxfunc/model/source.h"

namespace {

constexpr uint32_t fewEvents = 400'000;  // counted one by one in a tenth of a second
constexpr int edgeReach = 4;             // columns
constexpr Colour busyColour = 0x5B8DB8;
constexpr Colour frameColour = 0xC06020;

size_t bin_of(const laOverview& overview, double time) {
    const double part = time / overview.length * laOverview_Bins;
    return part <= 0 ? 0 : std::min<size_t>(laOverview_Bins - 1, static_cast<size_t>(part));
}

// Stops when nobody wants to wait any longer.
bool go_on(const _LaCanvasData& canvas, uint32_t done, uint32_t total) {
    return (done & 0x3FFF) != 0x3FFF || !canvas.calls.progress || canvas.calls.progress(done, total);
}

void count_events(_LaCanvasData& canvas, laOverview& overview, uint32_t total) {
    EventWalk walk;
    if (!mt_StartWalkAtEvent(*canvas.source.store, 1, 0, nullptr, walk)) return;
    EventRecord event;
    for (uint32_t done = 0; mt_NextEvent(walk, event) && go_on(canvas, done, total); ++done)
        ++overview.activity[bin_of(overview, laSource_TimeOf(canvas.source, event.time))];
}

// Spreads events over the bins that a stretch of time touches, each by its share.
void spread(laOverview& overview, double from, double to, double events) {
    const size_t first = bin_of(overview, from), last = bin_of(overview, to);
    if (first == last || !(to > from)) {
        overview.activity[first] += static_cast<float>(events);
        return;
    }
    const double width = overview.length / laOverview_Bins;
    for (size_t bin = first; bin <= last; ++bin) {
        const double low = std::max(from, static_cast<double>(bin) * width);
        const double high = std::min(to, static_cast<double>(bin + 1) * width);
        overview.activity[bin] += static_cast<float>(events * std::max(0.0, high - low) / (to - from));
    }
}

void count_blocks(_LaCanvasData& canvas, laOverview& overview, uint32_t total) {
    TraceStore& store = *canvas.source.store;
    const uint32_t blocks = mt_GetBlockCount(store), each = mt_GetCheckpointInterval(store);
    for (uint32_t block = 0; block < blocks && go_on(canvas, block, blocks); ++block) {
        const double from = laSource_TimeOf(canvas.source, mt_GetBlockTime(store, block));
        const bool last = block + 1 == blocks;
        const double to =
            last ? overview.length : laSource_TimeOf(canvas.source, mt_GetBlockTime(store, block + 1));
        const uint64_t before = static_cast<uint64_t>(block) * each;
        const double events = last ? static_cast<double>(total - std::min<uint64_t>(total, before)) : each;
        spread(overview, from, to, events);
    }
}

// The most of any bin that a column touches.
float column_activity(const laOverview& overview, int width, int x) {
    const auto bin = [&](int column) {
        return std::min<size_t>(laOverview_Bins - 1,
                                static_cast<size_t>(column) * laOverview_Bins / static_cast<size_t>(width));
    };
    const size_t first = bin(x), end = std::max(first + 1, bin(x + 1));
    return *std::max_element(overview.activity.begin() + static_cast<ptrdiff_t>(first),
                             overview.activity.begin() + static_cast<ptrdiff_t>(end));
}

}  // namespace

laOverview laOverview_Build(_LaCanvasData& canvas) {
    laOverview overview;
    if (canvas.source.store == nullptr || !canvas.source.storeHasEvents || !(canvas.source.totalLength > 0))
        return overview;
    overview.length = canvas.source.totalLength;
    overview.activity.assign(laOverview_Bins, 0);
    const uint32_t total = mt_GetEventCount(*canvas.source.store);
    if (total <= fewEvents)
        count_events(canvas, overview, total);
    else
        count_blocks(canvas, overview, total);
    return overview;
}

int laOverview_Column(const laOverview& overview, int width, double time) {
    if (!(overview.length > 0)) return 0;
    return static_cast<int>(std::clamp(time / overview.length, 0.0, 1.0) * width);
}

double laOverview_Time(const laOverview& overview, int width, int x) {
    return width > 0 ? overview.length * x / width : 0;
}

void laOverview_Draw(const _LaCanvasData& canvas, const laOverview& overview, Surface& surface, int width,
                     int height) {
    surface.clearRect(0, 0, width, height);
    if (overview.activity.empty() || width <= 0 || height <= 2) return;
    // Busy and quiet stretches differ by powers of ten: their heights are logarithms.
    const double peak = std::log1p(*std::max_element(overview.activity.begin(), overview.activity.end()));
    for (int x = 0; x < width; ++x) {
        const double part = std::log1p(column_activity(overview, width, x)) / std::max(peak, 1e-12);
        const int tall = static_cast<int>(std::ceil(part * (height - 2)));
        if (tall > 0) surface.fillRect(x, height - 1 - tall, 1, tall, busyColour);
    }
    for (const LaBookmark& mark : canvas.marks.bookmarks) {
        const int x = std::min(laOverview_Column(overview, width, mark.time), width - 1);
        surface.drawStyledLine(x, 0, x, height - 1, mark.colour, 1, mark.style, 0);
    }
    const int left = std::min(laOverview_Column(overview, width, canvas.view.viewLow), width - 1);
    const int right =
        std::clamp(laOverview_Column(overview, width, canvas.view.viewHigh), left + 1, width) - 1;
    surface.drawLine(left, 0, left, height - 1, frameColour);
    surface.drawLine(right, 0, right, height - 1, frameColour);
    surface.drawLine(left, 0, right, 0, frameColour);
    surface.drawLine(left, height - 1, right, height - 1, frameColour);
}

laOverviewPart laOverview_HitTest(const _LaCanvasData& canvas, const laOverview& overview, int width, int x) {
    const int left = laOverview_Column(overview, width, canvas.view.viewLow);
    const int right = laOverview_Column(overview, width, canvas.view.viewHigh);
    // A narrow frame keeps a middle to drag it by.
    const int inner = std::min(edgeReach, (right - left) / 3);
    if (x > left + inner && x < right - inner) return Overview_Inside;
    if (right - left < 3 && x >= left && x <= right) return Overview_Inside;
    if (x >= left - edgeReach && x <= left + inner) return Overview_LeftEdge;
    if (x >= right - inner && x <= right + edgeReach) return Overview_RightEdge;
    return Overview_Outside;
}

laOverviewRange laOverview_Drag(const laOverview& overview, int width, laOverviewPart part,
                                laOverviewRange start, int grabbed, int x) {
    const double moved = laOverview_Time(overview, width, x) - laOverview_Time(overview, width, grabbed);
    const double length = start.high - start.low,
                 least = std::min(length, laOverview_Time(overview, width, 1));
    const double end = std::max(overview.length, start.high);
    if (part == Overview_LeftEdge)
        return {std::clamp(start.low + moved, 0.0, std::max(0.0, start.high - least)), start.high};
    if (part == Overview_RightEdge)
        return {start.low, std::clamp(start.high + moved, std::min(end, start.low + least), end)};
    const double from =
        part == Overview_Inside ? start.low + moved : laOverview_Time(overview, width, x) - length / 2;
    const double low = std::clamp(from, 0.0, std::max(0.0, end - length));
    return {low, low + length};
}

bool laOverview_Show(_LaCanvasData& canvas, laOverviewRange range) {
    return laCanvas_ShowRange(canvas, range.low, range.high, true, true);
}
