// Which range a fetch takes (range_fetch.h does it), and what is known of what was fetched.
#pragma once

#include "chronoweave/traxfunc/model/items.h"
#include "chronoweave/traxfunc/model/source.h"

// Of the time base; an event at low is in, one at high is not.
struct laFetchRange {
    double low = 0, high = 0;
};

// Whether a fetch takes more than was asked for: twice the range, half of it on each side.
enum class laFetchAhead { No, Yes };
// What a fetch for this range takes. Time behind the end of the trace holds nothing: low may then be above
// high, and there is nothing to fetch.
laFetchRange laFetch_RangeFor(const LaSource& source, laFetchRange asked, laFetchAhead ahead);

// The first tick behind a range.
uint64_t laFetch_EndTick(const LaSource& source, laFetchRange range);

// What was found to be damaged in the source's store since the last call goes to the console; the result is a
// sentence for the message line, empty when there is nothing new, which the source keeps.
std::string laSource_TellDamage(LaSource& source);

// True when a view of this range needs no fetch.
bool laCanvas_IsCached(const LaItems& items, const LaSource& source, double low, double high);
