// Who ran on each processor: the execution of all its objects in one line, for the row that a processor has
// in the picture. Made from the lanes of the cached range, hidden ones too.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// A stretch in which one object executed. t0 <= t1, in the time base.
struct LaRun {
    double t0 = 0, t1 = 0;
    double before = 0;  // busy time of the runs ahead of it
    uint32_t lane = 0;  // position in the lane list
    bool idle = false;  // of an object that runs when there is nothing to do
};

// A processor is a key of the running table. Runs don't overlap and are ordered by time: where two objects
// claim it at once, the later one has it.
struct LaProcessor {
    uint32_t key = 0;
    std::vector<LaRun> runs;
    int row = -1;      // of the object list; -1 while it has none
    int endRow = -1;   // the first row behind the group that the row heads; for a row of its own, all rows
    bool own = false;  // the row is its own, no group's
};

struct LaProcessors {
    std::vector<LaProcessor> list;  // ascending by key: those that anything executed on
    // Of what they were made from: the items' version, the end of their range, and what separates names.
    uint32_t version = 0;
    double high = 0;
    std::string separator;
};

// Positions of runs, by halving: the first that ends behind a time, the first that begins at or behind it.
size_t laProcessor_FirstEndingBehind(const LaProcessor& processor, double time);
size_t laProcessor_FirstFrom(const LaProcessor& processor, double time);
// Busy time up to a time.
double laProcessor_BusyUpTo(const LaProcessor& processor, double time);
