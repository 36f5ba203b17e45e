// Windows over very many rows: they open and follow without a wait, whatever they hold, since rows are asked
// for when they are seen. Processor time, each against a plain look at as many rows.
#include <numeric>

#include "bench/inputs.h"
#include "bench/measure.h"
#include "chronoweave/analysis/event_table.h"
#include "chronoweave/analysis/search_window.h"
#include "chronoweave/traxfunc/input/navigate.h"
#include "windlib/dialog/host_testing.h"
#include "windlib/lagraph/recording_surface.h"

namespace {

constexpr int screenful = 40;  // rows
constexpr size_t manyRows = 1'000'000;

// What a plain look at as many rows costs.
void look_at_rows() {
    static std::vector<uint64_t> rows(manyRows, 1);
    benchmark::DoNotOptimize(std::accumulate(rows.begin(), rows.end(), uint64_t{0}));
    benchmark::ClobberMemory();
}

struct Opened {
    RecordingSurface surface{view_width, view_height, false};
    LaGraph graph;
    RecordingHost host;
    std::unique_ptr<_LaCanvasData> canvas;

    // A million events in one view.
    explicit Opened(const BenchPlace& place) {
        graph.surface = &surface;
        graph.font = surface.fontMetrics(Font_Application);
        canvas = input_Canvas(place, place.hundredTasks, graph, view_width, view_height);
        if (!canvas) return;
        canvas->calls.host = &host;
        laCanvas_ShowAll(*canvas);
    }
};

Outcome cost(const std::function<void()>& work, double atMostMs) {
    Outcome outcome;
    outcome.turns =
        measure_Turns({.count = 5, .least = 0.005, .clock = Clock::Processor}, {}, work, look_at_rows);
    outcome.value = outcome.turns.subject * 1e3;
    outcome.unit = "ms";
    outcome.bound = atMostMs;
    outcome.limit = Outcome::AtMost;
    return outcome;
}

Outcome event_table(const BenchPlace& place,
                    const std::function<std::function<void()>(Opened&, EventTable&)>& work, double atMostMs) {
    Opened opened(place);
    if (!opened.canvas) return outcome_OfTrouble("the trace can't be shown");
    EventTable table(*opened.canvas);
    table.Sync();
    if (table.model().list("list").RowCount() < static_cast<int>(manyRows) * 9 / 10)
        return outcome_OfTrouble("the table has not the rows of the trace");
    return cost(work(opened, table), atMostMs);
}

Outcome result_window(const BenchPlace& place) {
    Opened opened(place);
    if (!opened.canvas) return outcome_OfTrouble("the trace can't be shown");
    const auto facts = std::make_shared<CanvasFacts>(*opened.canvas);
    SearchResult result;
    result.request.kind = Search_Status;
    result.request.target = 0;
    for (uint32_t i = 0; i < manyRows; ++i)
        result.rows.push_back({i % 1000, i % 1000, i * 1e-6, i * 1e-6 + (i * 7919 % 1000) * 1e-6});
    return cost(
        [&] {
            const auto desk = std::make_shared<SearchDesk>();
            search_OpenResult(desk, facts, result);
            opened.host.windows.back()->dismiss();
            opened.host.dropClosed();
        },
        1000);
}

}  // namespace

void register_WindowBenchmarks(const BenchPlace& place) {
    measure_Register("open result window/1M rows", [&place] { return result_window(place); });
    measure_Register("event table fills/1M events", [&place] {
        const auto refill = [](Opened& opened, EventTable& table) {
            return [&opened, &table] {
                auto& unit = opened.canvas->axis.timeMode;
                unit = unit == Time_Second ? Time_Millisecond : Time_Second;
                table.Sync();
            };
        };
        return event_table(place, refill, 1000);
    });
    measure_Register("event table follows nothing new/1M events", [&place] {
        return event_table(
            place, [](Opened&, EventTable& table) { return [&table] { table.Sync(); }; }, 100);
    });
    measure_Register("event table texts/40 rows", [&place] {
        const auto look = [](Opened&, EventTable& table) {
            return [&list = table.model().list("list"), at = 0]() mutable {
                at = (at + 7919) % static_cast<int>(manyRows / 2);
                for (int row = at; row < at + screenful; ++row)
                    for (int column = 0; column < list.ColumnCount(); ++column)
                        benchmark::DoNotOptimize(list.Text(row, column));
            };
        };
        return event_table(place, look, 500);
    });
}
