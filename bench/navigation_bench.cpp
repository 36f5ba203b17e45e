// Moving about: a step of scrolling inside what is fetched, a zoom step with its fetch, hiding and sorting a
// thousand objects. Processor time, each against clearing the same pixels.
#include "bench/inputs.h"
#include "bench/measure.h"
#include "chronoweave/traxfunc/canvas/followed_rows.h"
#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/canvas/rows.h"
#include "chronoweave/traxfunc/input/navigate.h"
#include "chronoweave/traxfunc/input/view.h"
#include "chronoweave/traxfunc/list/task_list.h"

namespace {

constexpr int scrollStep = 16;  // columns

using Step = std::function<void(_LaCanvasData&)>;

Outcome step_cost(const BenchPlace& place, const std::string& trace, const Step& prepare, const Step& step,
                  double atMostMs) {
    Outcome outcome = outcome_OfTrouble("the trace can't be shown");
    bench_WithSurface([&](Surface& surface) {
        LaGraph graph;
        graph.surface = &surface;
        graph.font = surface.fontMetrics(Font_Application);
        const auto canvas = input_Canvas(place, trace, graph, view_width, view_height);
        if (!canvas) return;
        prepare(*canvas);
        outcome = {};
        outcome.turns = measure_Turns(
            {.count = 15, .least = 0.005, .clock = Clock::Processor}, {}, [&] { step(*canvas); },
            [&] { surface.clearRect(0, 0, view_width, view_height); });
        outcome.value = outcome.turns.subject * 1e3;
        outcome.unit = "ms";
        outcome.bound = atMostMs;
        if (atMostMs > 0) outcome.limit = Outcome::AtMost;
    });
    return outcome;
}

// A view of so many events in the middle of the trace.
Step view_of(double events) {
    return [events](_LaCanvasData& canvas) {
        const double length = canvas.source.totalLength * events / mt_GetEventCount(*canvas.source.store);
        const double low = std::max(0.0, canvas.source.totalLength / 2 - length / 2);
        laCanvas_ShowRange(canvas, low, std::min(low + length, canvas.source.totalLength), {.paint = true});
    };
}

void show_whole(_LaCanvasData& canvas) {
    laCanvas_ShowAll(canvas);
}

void register_followed_rows(const BenchPlace& place) {
    // All that comes when the view rests, the picture included.
    for (const auto& [name, trace] :
         {std::pair{"1M events", &place.hundredTasks}, {"1000 objects", &place.thousandTasks}})
        measure_Register(std::string("rows that follow the view/") + name, [&place, trace = trace] {
            const auto prepare = [](_LaCanvasData& canvas) {
                show_whole(canvas);
                laRows_ToggleOnlyActive(canvas);
                laRows_ToggleMostActiveFirst(canvas);
            };
            const auto settle = [](_LaCanvasData& canvas) {
                canvas.list.madeFor.reset();
                laRows_Settle(canvas);
                laCanvas_Repaint(canvas);
            };
            return step_cost(place, *trace, prepare, settle, 50);
        });
}

}  // namespace

void register_NavigationBenchmarks(const BenchPlace& place) {
    measure_Register("scroll step/100 lanes", [&place] {
        // There and back, so that the fetched range is never left.
        auto forward = std::make_shared<bool>(true);
        const auto prepare = [](_LaCanvasData& canvas) {
            canvas.options.prefetch =
                true;  // as in the program; otherwise each step leaves the fetched range
            view_of(20'000)(canvas);
        };
        return step_cost(
            place, place.hundredTasks, prepare,
            [forward](_LaCanvasData& canvas) {
                laCanvas_ScrollColumns(canvas, *forward ? scrollStep : -scrollStep);
                *forward = !*forward;
            },
            4);
    });
    for (const double events : {1'000.0, 10'000.0, 100'000.0, 500'000.0})
        measure_Register("zoom step with fetch/" + std::to_string(static_cast<int>(events)) + " events",
                         [&place, events] {
                             return step_cost(
                                 place, place.hundredTasks, view_of(events),
                                 [events](_LaCanvasData& canvas) {
                                     canvas.options.leastFromLanes = UINT32_MAX;
                                     laCanvas_ClearItems(canvas);  // so that the step must fetch
                                     view_of(events * 0.8)(canvas);
                                     laCanvas_ClearItems(canvas);
                                     view_of(events)(canvas);
                                 },
                                 0);
                         });
    const Step whole = show_whole;
    register_followed_rows(place);
    measure_Register("hide/1000 objects", [&place, whole] {
        return step_cost(
            place, place.thousandTasks, whole,
            [](_LaCanvasData& canvas) {
                canvas.taskList->SetHiddenPaths({laTask_PatternPath("task1*"), laTask_PatternPath("*7")});
                laCanvas_Resort(canvas);
                canvas.taskList->SetHiddenPaths({});
                laCanvas_Resort(canvas);
            },
            100);  // hides and shows: two of 50 ms
    });
    measure_Register("sort/1000 objects", [&place, whole] {
        return step_cost(
            place, place.thousandTasks, whole,
            [](_LaCanvasData& canvas) {
                canvas.list.sortAscending = !canvas.list.sortAscending;
                laCanvas_Resort(canvas);
            },
            50);
    });
}
