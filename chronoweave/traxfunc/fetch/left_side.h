// Dropping the left side of what was fetched, so that a source that is followed for long takes no more memory
// than its view needs.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "chronoweave/traxfunc/model/items.h"
#include "chronoweave/traxfunc/model/looks.h"
#include "chronoweave/traxfunc/model/source.h"

enum class laLeftDrop {
    Done,
    NotPossible  // nothing was changed; a fetch gives the items
};

// The items become those that a fetch from low on would give: a time of the time base that is a tick's,
// within the cached range. ordered is how many lanes, from the first on, are of objects that the store knows;
// those behind have icons only. moved takes the new places of the lanes, as in laItems_MoveLanes; it is empty
// when all stay. No object may have been deleted in the range.
laLeftDrop laItems_DropLeft(LaItems& items, const LaSource& source, const LaLooks& looks,
                            std::string_view separator, double low, uint32_t ordered,
                            std::vector<uint32_t>& moved);
