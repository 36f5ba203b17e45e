// Fetch, layout and repaint of a view, and what a view holds in memory.
#include <algorithm>

#include "bench/inputs.h"
#include "bench/measure.h"
#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/canvas/rows.h"
#include "chronoweave/traxfunc/input/view.h"
#include "windlib/lagraph/recording_surface.h"
#ifdef CW_BENCH_QT
#include "windlib/qt/picture_file.h"
#endif

namespace {

constexpr uint32_t view_events = 1'000'000;
struct View {
    double high = 0;  // time base
    uint32_t events = 0;
    mt_Time end = 0;  // tick
};
// The first million events of the canvas's trace, or all there are.
View first_view(_LaCanvasData& canvas) {
    View view;
    view.events = std::min(view_events, mt_GetEventCount(*canvas.source.store));
    view.end = mt_GetTimeRange(*canvas.source.store).end;
    EventWalk walk;
    EventRecord event;
    if (mt_StartWalkAtEvent(*canvas.source.store, view.events + 1, 1, nullptr, walk) &&
        mt_NextEvent(walk, event))
        view.end = event.time;
    view.high = canvas.source.clock.TimeOf(view.end);
    return view;
}

Outcome fetch_view(const BenchPlace& place, const BenchInput& input) {
    LaGraph graph;
    const auto canvas = input_Canvas(place, input.file, graph, view_width, view_height);
    if (!canvas) return outcome_OfTrouble("the trace can't be shown");
    canvas->options.leastFromLanes = UINT32_MAX;
    const View view = first_view(*canvas);
    bool good = true;
    const auto subject = [&] {
        good = laCanvas_FetchRange(*canvas, 0, view.high) && good;
        laCanvas_Resort(*canvas);
    };
    const auto baseline = [&] {
        uint64_t bytes = 0;
        mt_VisitEventsInTimeRange(*canvas->source.store, 0, view.end, nullptr,
                                  [&bytes](const EventRecord& event) {
                                      bytes += event.extra.size();
                                      return true;
                                  });
        good = bytes > 0 && good;
    };
    const Turns turns =
        measure_Turns({.count = 9, .least = 0.02, .clock = Clock::Processor}, {}, subject, baseline);
    if (!good || canvas->items.bitmaps.size() + 1000 < view.events)
        return outcome_OfTrouble("the fetch is not whole");
    Outcome outcome;
    outcome.turns = turns;
    outcome.value = view.events / turns.subject / 1e6;
    outcome.unit = "Mevents/s";
    outcome.bound = 4;
    if (input.large) outcome.limit = Outcome::AtLeast;
    return outcome;
}

Outcome view_memory(const BenchPlace& place, const BenchInput& input) {
    LaGraph graph;
    const auto canvas = input_Canvas(place, input.file, graph, view_width, view_height);
    if (!canvas) return outcome_OfTrouble("the trace can't be shown");
    canvas->options.leastFromLanes = UINT32_MAX;
    const View view = first_view(*canvas);
    if (!laCanvas_FetchRange(*canvas, 0, view.high)) return outcome_OfTrouble("the fetch failed");
    size_t bytes =
        canvas->items.lanes.bytes() + canvas->items.bitmaps.bytes() + canvas->items.ctxLines.bytes();
    for (uint32_t lane = 0; lane < canvas->items.lanes.size(); ++lane)
        bytes += canvas->items.lanes[lane].segments.bytes();
    Outcome outcome;
    outcome.value = static_cast<double>(bytes) / canvas->items.bitmaps.size();
    outcome.unit = "bytes/event";
    outcome.limit = Outcome::AtMost;
    outcome.bound = 100;
    return outcome;
}

enum class Look { Window, Plain };  // Plain: no rows of processors, no tints and no numbers

// A whole picture of a hundred lanes and a million events, against clearing the same pixels; processor time.
Outcome repaint(const BenchPlace& place, Look look) {
    Outcome outcome = outcome_OfTrouble("the trace can't be shown");
    bench_WithSurface([&](Surface& surface) {
        LaGraph graph;
        graph.surface = &surface;
        graph.font = surface.fontMetrics(Font_Application);
        const auto canvas = input_Canvas(place, place.hundredTasks, graph, view_width, view_height);
        if (!canvas) return;
        canvas->options.leastFromLanes = UINT32_MAX;  // of kept items; others are lanes_bench.cpp's
        canvas->list.processorRows = look == Look::Window;
        canvas->options.plainMarks = canvas->options.plainSwitches = look == Look::Plain;
        if (!laCanvas_ShowRange(*canvas, 0, canvas->source.totalLength, {.paint = true})) return;
        laCanvas_Resort(*canvas);
        const auto subject = [&] { laCanvas_Repaint(*canvas); };
        const auto baseline = [&] { surface.clearRect(0, 0, view_width, view_height); };
        outcome = {};
        outcome.turns =
            measure_Turns({.count = 25, .least = 0.005, .clock = Clock::Processor}, {}, subject, baseline);
        outcome.value = outcome.turns.subject * 1e3;
        outcome.unit = "ms";
        outcome.limit = Outcome::AtMost;
        outcome.bound = 16;
    });
    return outcome;
}

}  // namespace

void bench_WithSurface(const std::function<void(Surface&)>& work) {
#ifdef CW_BENCH_QT
    picture_StartHeadless();
    picture_Measure(work, view_width, view_height);
#else
    RecordingSurface surface(view_width, view_height, false);
    work(surface);
#endif
}

void register_CanvasBenchmarks(const BenchPlace& place) {
    for (const BenchInput& input : place.inputs) {
        measure_Register("fetch and layout/" + input.name,
                         [&place, input] { return fetch_view(place, input); });
        if (input.large)
            measure_Register("view memory/" + input.name,
                             [&place, input] { return view_memory(place, input); });
    }
    measure_Register("repaint/100 lanes", [&place] { return repaint(place, Look::Window); });
    measure_Register("repaint, plain look/100 lanes", [&place] { return repaint(place, Look::Plain); });
}
