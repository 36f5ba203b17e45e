#include "chronoweave/traxfunc/model/processors.h"

#include <algorithm>

size_t laProcessor_FirstEndingBehind(const LaProcessor& processor, double time) {
    return static_cast<size_t>(
        std::ranges::partition_point(processor.runs, [time](const LaRun& run) { return run.t1 <= time; }) -
        processor.runs.begin());
}

size_t laProcessor_FirstFrom(const LaProcessor& processor, double time) {
    return static_cast<size_t>(
        std::ranges::partition_point(processor.runs, [time](const LaRun& run) { return run.t0 < time; }) -
        processor.runs.begin());
}

double laProcessor_BusyUpTo(const LaProcessor& processor, double time) {
    const size_t next = laProcessor_FirstFrom(processor, time);
    if (next == 0) return 0;
    const LaRun& run = processor.runs[next - 1];
    return run.before + (run.idle ? 0 : std::min(time, run.t1) - run.t0);
}
