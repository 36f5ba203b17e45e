// Pictures of large ranges that are read from the lane index, against the same pictures by a fetch.
#include <malloc.h>

#include <algorithm>

#include "bench/inputs.h"
#include "bench/measure.h"
#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/canvas/rows.h"
#include "chronoweave/traxfunc/input/view.h"

namespace {

constexpr uint32_t never = UINT32_MAX;
enum class ProcessorRows { Without, With };

// The picture of a share of the trace from its middle on.
bool show(_LaCanvasData& canvas, double share, uint32_t leastFromLanes) {
    canvas.options.leastFromLanes = leastFromLanes;
    laCanvas_ClearItems(canvas);
    const double length = canvas.source.totalLength * share;
    const double low = canvas.source.totalLength / 2 - length / 2;
    return laCanvas_ShowRange(canvas, low, low + length, {.paint = true, .refetch = true}) &&
           (canvas.items.bitmaps.bytes() == 0) == (leastFromLanes != never);
}

Outcome outcome_of(const Turns& turns, bool good) {
    if (!good) return outcome_OfTrouble("the picture could not be made that way");
    Outcome outcome;
    outcome.turns = turns;
    outcome.value = turns.subject * 1e3;
    outcome.unit = "ms";
    return outcome;
}

// From opening the store to the pixels of the whole trace.
Outcome first_picture(const BenchPlace& place, const std::string& trace, ProcessorRows rows) {
    Outcome outcome = outcome_OfTrouble("the trace can't be shown");
    bench_WithSurface([&](Surface& surface) {
        bool good = true;
        const auto open = [&](uint32_t leastFromLanes) {
            LaGraph graph;
            graph.surface = &surface;
            graph.font = surface.fontMetrics(Font_Application);
            const auto canvas = input_Canvas(place, trace, graph, view_width, view_height);
            if (canvas) canvas->list.processorRows = rows == ProcessorRows::With;
            good = canvas && show(*canvas, 1, leastFromLanes) && good;
        };
        const Turns turns = measure_Turns(
            {.count = 3, .clock = Clock::Processor}, {}, [&] { open(1); }, [&] { open(never); });
        outcome = outcome_of(turns, good);
    });
    return outcome;
}

Outcome next_view(const BenchPlace& place, const std::string& trace, double share) {
    Outcome outcome = outcome_OfTrouble("the trace can't be shown");
    bench_WithSurface([&](Surface& surface) {
        LaGraph graph;
        graph.surface = &surface;
        graph.font = surface.fontMetrics(Font_Application);
        const auto canvas = input_Canvas(place, trace, graph, view_width, view_height);
        if (!canvas) return;
        bool good = true;
        const Turns turns = measure_Turns(
            {.count = 5, .least = 0.02, .clock = Clock::Processor}, {},
            [&] { good = show(*canvas, share, 1) && good; },
            [&] { good = show(*canvas, share, never) && good; });
        outcome = outcome_of(turns, good);
    });
    return outcome;
}

// A whole picture again, of items that stand.
Outcome repaint(const BenchPlace& place, const std::string& trace) {
    Outcome outcome = outcome_OfTrouble("the trace can't be shown");
    bench_WithSurface([&](Surface& surface) {
        LaGraph graphs[2];
        std::unique_ptr<_LaCanvasData> canvases[2];
        for (int i = 0; i < 2; ++i) {
            graphs[i].surface = &surface;
            graphs[i].font = surface.fontMetrics(Font_Application);
            canvases[i] = input_Canvas(place, trace, graphs[i], view_width, view_height);
            if (!canvases[i] || !show(*canvases[i], 1, i == 0 ? 1 : never)) return;
        }
        const Turns turns = measure_Turns(
            {.count = 9, .least = 0.02, .clock = Clock::Processor}, {},
            [&] { laCanvas_Repaint(*canvases[0]); }, [&] { laCanvas_Repaint(*canvases[1]); });
        outcome = outcome_of(turns, true);
    });
    return outcome;
}

size_t heap_bytes() {
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

// What the whole picture keeps on the heap.
Outcome view_memory(const BenchPlace& place, const std::string& trace, uint32_t leastFromLanes) {
    Outcome outcome = outcome_OfTrouble("the trace can't be shown");
    bench_WithSurface([&](Surface& surface) {
        LaGraph graph;
        graph.surface = &surface;
        graph.font = surface.fontMetrics(Font_Application);
        const auto canvas = input_Canvas(place, trace, graph, view_width, view_height);
        if (!canvas) return;
        const size_t before = heap_bytes();
        if (!show(*canvas, 1, leastFromLanes)) return;
        outcome = {};
        outcome.value = static_cast<double>(heap_bytes() - std::min(before, heap_bytes())) / 0x1p20;
        outcome.unit = "MiB";
    });
    return outcome;
}

}  // namespace

void register_LaneBenchmarks(const BenchPlace& place) {
    struct Trace {
        std::string name, file;
    };
    std::vector<Trace> traces{{"1M events, 100 lanes", place.hundredTasks}};
    for (const BenchInput& input : place.inputs)
        if (input.large) traces.push_back({input.name, input.file});
    for (const Trace& trace : traces) {
        const auto add = [&](const std::string& what, auto run) {
            measure_Register(what + '/' + trace.name,
                             [&place, file = trace.file, run] { return run(place, file); });
        };
        add("first picture from lanes", [](const BenchPlace& at, const std::string& file) {
            return first_picture(at, file, ProcessorRows::Without);
        });
        add("first picture from lanes, processors", [](const BenchPlace& at, const std::string& file) {
            return first_picture(at, file, ProcessorRows::With);
        });
        for (const double share : {1.0, 0.5, 0.1, 0.03})
            add("next view from lanes, " + std::to_string(static_cast<int>(share * 100)) + " %",
                [share](const BenchPlace& at, const std::string& file) {
                    return next_view(at, file, share);
                });
        add("repaint from lanes", repaint);
        add("whole view's memory, lanes",
            [](const BenchPlace& at, const std::string& file) { return view_memory(at, file, 1); });
        add("whole view's memory, fetch",
            [](const BenchPlace& at, const std::string& file) { return view_memory(at, file, never); });
    }
}
