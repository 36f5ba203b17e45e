// The runs of processors, from the lanes.
#pragma once

#include <string_view>
#include <vector>

#include "chronoweave/traxfunc/model/items.h"
#include "chronoweave/traxfunc/model/looks.h"

// Makes them for the present items. from: of earlier times nothing changed since they were made last, but
// what reaches to here; below 0 all is made anew. True when processors came or went. separator: of object
// names.
bool laProcessors_Make(LaItems& items, const LaLooks& looks, int osKind, std::string_view separator,
                       double from);
// Whether those that the items have are all that there are of them.
bool laProcessors_Stand(const LaItems& items, std::string_view separator);
// Takes runs that were made beside the items: of each processor once, in any order, and not cut by each
// other.
void laProcessors_Take(LaItems& items, std::vector<LaProcessor> made, std::string_view separator);
void laProcessors_Clear(LaItems& items);
