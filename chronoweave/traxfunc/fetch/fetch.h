// The fetch: from a time range of the store to items. One walk over the events of the range; nothing of an
// event is kept but its icon, and texts are decoded when they are shown.
#pragma once

#include "chronoweave/traxfunc/model/items.h"
#include "chronoweave/traxfunc/model/list.h"
#include "chronoweave/traxfunc/model/looks.h"
#include "chronoweave/traxfunc/model/source.h"
#include "shared/libcxxutil/progress.h"

// Of the time base; an event at low is in, one at high is not.
struct laFetchRange {
    double low = 0, high = 0;
};

// Whether a fetch takes more than was asked for: twice the range, half of it on each side.
enum class laFetchAhead { No, Yes };
// What a fetch for this range takes. Time behind the end of the trace holds nothing: low may then be above
// high, and there is nothing to fetch.
laFetchRange laFetch_RangeFor(const LaSource& source, laFetchRange asked, laFetchAhead ahead);

// Fills items, which are empty, for the range. progress is told and may stop the fetch: the items then end
// where it stopped, and so does the cached range. False when the store gave nothing; the items are then
// empty.
bool laFetch_Items(LaItems& items, const LaSource& source, const LaLooks& looks, const LaList& list,
                   laFetchRange range, const Progress& progress);

// What was found to be damaged in the source's store since the last call goes to the console; the result is a
// sentence for the message line, empty when there is nothing new, which the source keeps.
std::string laSource_TellDamage(LaSource& source);

// True when a view of this range needs no fetch.
bool laCanvas_IsCached(const LaItems& items, const LaSource& source, double low, double high);
