// A stretch of an object in one status as the trace has it. The segment of a lane ends where the cached range
// does; the stretch that it is part of may reach further, and its ends are read from the store.
#pragma once

#include <cstdint>

enum class LaEndKnown {
    NotYet,  // it lies further out than the time
    Exact,   // the time is the trace's
    Beyond,  // the trace does not hold it: it began before the trace, or goes on at its end
    Lost     // the store can't be read on behind the time
};

// One end, with where a search for it goes on.
struct LaStretchEnd {
    LaEndKnown known = LaEndKnown::NotYet;
    double time = 0;  // time base; how far out it was looked for while it is not Exact
    uint32_t sequence =
        0;               // of the event to read on from (the start: up to, exclusive); 0 ahead of any search
    uint32_t block = 0;  // events of the next piece that is read backward; 0 for the first
    bool settled() const { return known != LaEndKnown::NotYet; }
};

struct LaStretch {
    LaStretchEnd from, to;
    bool settled() const { return from.settled() && to.settled(); }
    bool whole() const { return from.known == LaEndKnown::Exact && to.known == LaEndKnown::Exact; }
};
