// How a store's size and speed depend on the number of its objects. Measures one trace and prints its
// figures; bench/store_figures.py makes the traces, runs this for one or two builds in turn, and prints the
// table. With CW_MEASURE_ONLY it uses nothing but what older trees have too, so that it can be compiled
// against them.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "chronoweave/import/import.h"
#include "libtrv/trace_store.h"
#include "shared/libcxxutil/report.h"
#ifndef CW_MEASURE_ONLY
#include "bench/generate.h"
#endif

namespace {

// Processor time, so that a busy machine does not count.
double seconds() {
    timespec now{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

double median_of(int count, const std::function<void(int)>& work) {
    std::vector<double> times;
    for (int i = 0; i < count; ++i) {
        const double start = seconds();
        work(i);
        times.push_back(seconds() - start);
    }
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

// What a view asks the store: the state at its start, its events, and the objects that it touches.
uint64_t view(TraceStore& store, mt_Time from, mt_Time to) {
    StateTable state;
    EventWalk walk;
    EventRecord event;
    uint64_t seen = 0;
    if (mt_StartWalkInTimeRange(store, from, to, &state, walk))
        while (mt_NextEvent(walk, event)) seen += event.time + event.extra.size();
    return seen + state.size() + mt_GetObjectIdsUsedInTimeRange(store, mt_ObjectTask, from, to).size();
}

struct Figures {
    double bytes = 0;  // an event, extra data not counted
    double importing = 0, open = 0, state = 0, view = 0;
};

bool measure(const std::string& trace, const std::string& base, Figures& figures) {
    ImportOptions options;
    options.outputBase = base;
    bool good = true;
    figures.importing = median_of(1, [&](int) { good = import_OpenSource(trace, options).store && good; });
    figures.open = median_of(25, [&](int) {
        const TraceStorePtr store = mt_OpenForRead(base);
        good = store && mt_GetEventCount(*store) > 0 && mt_GetTimeRange(*store).end > 0 && good;
    });
    const TraceStorePtr store = mt_OpenForRead(base);
    if (!good || !store) return false;
    const uint32_t events = mt_GetEventCount(*store);
    const mt_Range range = mt_GetTimeRange(*store);
    const mt_Time length = range.end - range.first;
    const auto at = [&](int i) { return range.first + length / 100 * static_cast<mt_Time>(3 + 37 * i % 90); };
    figures.state = median_of(45, [&](int i) { good = view(*store, at(i), at(i)) > 0 && good; });
    figures.view =
        median_of(45, [&](int i) { good = view(*store, at(i), at(i) + length / 100) > 0 && good; });
    double bytes = 0;
    for (const char* extension : {".trv", ".tri", ".trs", ".trl"})
        bytes += static_cast<double>(std::filesystem::file_size(base + extension));
    mt_VisitEventsInTimeRange(*store, 0, INT64_MAX, nullptr, [&bytes](const EventRecord& event) {
        bytes -= static_cast<double>(event.extra.size());
        return true;
    });
    figures.bytes = bytes / events;
    figures.importing /= events;
    return good;
}

}  // namespace

int main(int argc, char** argv) {
    gen_set_console_sink([](std::string_view) {});
#ifndef CW_MEASURE_ONLY
    if (argc == 5 && std::string(argv[1]) == "--generate") {
        GeneratedTrace trace;
        trace.tasks = static_cast<uint32_t>(std::atoi(argv[3]));
        trace.events = static_cast<uint64_t>(std::atoll(argv[4]));
        return generate_Trr(argv[2], trace) ? 0 : 1;
    }
#endif
    if (argc != 3) {
        std::fputs("usage: store_figures TRACE.trr BASE | --generate FILE TASKS EVENTS\n", stderr);
        return 2;
    }
    Figures figures;
    if (!measure(argv[1], argv[2], figures)) {
        std::fprintf(stderr, "%s: can't be measured\n", argv[1]);
        return 1;
    }
    std::printf("%.2f %.4f %.4f %.4f %.4f\n", figures.bytes, figures.importing * 1e6, figures.open * 1e3,
                figures.state * 1e3, figures.view * 1e3);
    return 0;
}
